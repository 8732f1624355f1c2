// The record of one run's visits. No failure reaches the caller: a record that cannot be written changes
// nothing in a visit.
#pragma once

#include "ledger/visit_entry.h"
#include "ledger/visit_files.h"
#include "platform/files.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>

namespace ruvo {

/// The INI file's path as records name it: full, links resolved, UTF-8.
[[nodiscard]] std::string RecordedIniPath(const std::string& iniPath);

/// Now, as records write it.
[[nodiscard]] std::string RecordedNow();

/// Used by the thread of the run. An end of the program at any time leaves the run's file, from which the
/// next run over the same event root makes the line.
class CVisitRecord {
public:
    /// The path is as it was given to the program.
    CVisitRecord(std::string eventRoot, const std::string& iniPath, SVisitBounds bounds = {},
                 ERunKind kind = ERunKind::Visit);
    CVisitRecord(const CVisitRecord&) = delete;
    CVisitRecord& operator=(const CVisitRecord&) = delete;

    /// Makes lines of killed runs' files, and this run's own file. Nothing is made where the event root is
    /// missing. Any other obstacle is reported on standard error.
    void Begin() noexcept;
    /// Adds events of an earlier run that this one has stored, as an entry of their own without an address:
    /// if this run is killed, they are known all the same.
    void AddRecovered(const std::string& key, std::uint64_t events,
                      std::optional<SStoredBytes> where) noexcept;
    /// Adds a relay's entry. Of one that was not reached it looks up when it last was.
    void Add(SVisitEntry entry) noexcept;
    /// Makes the line; how the run ended is the caller's to say, and the time is now.
    void End(SVisitLine end) noexcept;

private:
    void MakeFile();
    [[nodiscard]] bool TryNumber(std::optional<std::uint64_t>& largest);
    void EndKilledRuns();
    void Write(const SVisitEntry& entry);
    [[nodiscard]] bool WriteLine(const std::string& json);
    [[nodiscard]] std::string LastReached(const std::string& key, const std::string& address);
    void Fail() noexcept;

    std::string m_eventRoot;
    std::string m_folder; ///< of the event root's records; empty without one
    SVisitBounds m_bounds;
    SVisitLine m_line;
    CFile m_file;
    bool m_isOpen = false;
    bool m_isHistoryRead = false;
    std::map<std::pair<std::string, std::string>, std::string> m_lastReached; ///< by key and address
};

} // namespace ruvo
