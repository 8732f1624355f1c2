// What a login reads of the relay: single cells, and what they say of its access control.
#pragma once

#include "link/login/password_request.h"
#include "link/requests/reads.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace ruvo {

/// Reads made during a password entry report to the entry's monitor. The Extract and Determine operations are
/// as `CP32Wrap` documents them.
class CSecurityCells {
public:
    enum class ENameTrace : bool { Silent, Traced };

    /// Borrows both for its own life.
    CSecurityCells(const CChannel& channel, CReads& reads) : m_channel(channel), m_reads(reads) {}

    /// The first value of a cell, or null when it has none or cannot be read; with the status of the read.
    std::unique_ptr<CParlaneData> ReadFirstValue(CellAddress cell, LinkStatus& status);
    std::optional<std::int64_t> ReadNumber(CellAddress cell, LinkStatus& status);
    std::optional<std::string> ReadText(CellAddress cell, LinkStatus& status);
    LinkStatus ReadLimits(CellAddress cell, CParlaneDataArray& limits);
    /// Length of the password that a cell takes: the size of the first of its limits; none when they cannot
    /// be read.
    std::optional<std::uint32_t> ReadPasswordLength(CellAddress cell);
    /// The names of the first `count` users; false when one cannot be read, or when the column has no room
    /// for so many: a relay may claim billions.
    bool ReadUserNames(std::uint8_t securityColumn, std::int64_t count, std::vector<SUserName>& names,
                       ENameTrace trace);

    LinkStatus ExtractCSVersion(std::uint32_t& version);
    LinkStatus ExtractCSUsernamesCount(std::int64_t& count);
    LinkStatus ExtractCSAvailableUsernames(std::vector<SUserName>& names);
    bool ExtractCSEd3SATSupported();
    LinkStatus DetermineCSPasswordMaxLength(std::uint32_t& length);
    LinkStatus DetermineCSUsernameMaxLength(std::uint32_t& length);
    LinkStatus DetermineCSSATSupported(bool& supported);

private:
    const CChannel& m_channel;
    CReads& m_reads;
};

} // namespace ruvo
