// What the records of visits say of a site. All text is UTF-8.
#pragma once

#include "ledger/visit_history.h"
#include "tools/ini/site_places.h"
#include "tools/mutes/mute_file.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ruvo {

/// One relay of the INI file.
struct SRelayVisit {
    std::string key;
    std::string address;
    std::string link;                 ///< "serial", "modem" or "ethernet"
    std::string name;                 ///< MODEL-SERIAL, from its latest visit with one; empty before that
    std::string plant;                ///< likewise
    std::string lastReached;          ///< UTC; empty for never, as far as is known
    std::string missedSince;          ///< when the first visit began that has missed it since; UTC
    std::size_t nights = 0;           ///< on which it was missed since
    std::optional<SVisitEntry> entry; ///< of the last visit; none when that left it out
    std::optional<SMute> mute;        ///< one that counts

    [[nodiscard]] bool IsReached() const { return entry && entry->isReached; }
    [[nodiscard]] bool IsMissed() const { return entry && !entry->isReached; }
    /// Whether day files of that name are its own. In the folder's name the serial number has its blanks, in
    /// those of the files it has lost some.
    [[nodiscard]] bool HasFilesOf(std::string_view relayOfFile) const;
    /// For people: its plant text, else its name, with its key; without either, its key and address.
    [[nodiscard]] std::string Label() const;
};

struct SSiteVisits {
    SVisitSummary summary;
    std::string iniPath;
    std::string linkName;                      ///< of the COM port or the modem; empty for Ethernet
    std::vector<SRelayVisit> relays;           ///< in the order of the INI file
    std::string muteFailure;                   ///< why mutes could not be read; empty when they were
    std::optional<std::int64_t> ageSeconds;    ///< since the last visit began; below 0 in the future
    std::optional<std::int64_t> lengthSeconds; ///< of the last visit; none for a killed one

    [[nodiscard]] std::size_t Reached() const;
    [[nodiscard]] std::size_t Muted() const;
    [[nodiscard]] std::uint64_t EventsTaken() const;
    /// Whether a run has visited the relays, as far as it came.
    [[nodiscard]] bool IsVisited() const;
    /// Whether the last run is known to have had nothing to log.
    [[nodiscard]] bool HasNothingLogged() const;
};

/// `now` is in Unix seconds; `also` as SummariseVisits takes it.
[[nodiscard]] SSiteVisits ReadSiteVisits(const std::string& fullIniPath, const SSitePlaces& places,
                                         std::int64_t now, const CVisitHistory::Take& also = {});

/// Whether details of a connection in the log are those of a relay of that link and address.
[[nodiscard]] bool IsConnectionOf(std::string_view connection, std::string_view link,
                                  const std::string& linkName, const std::string& address);
/// The relay that a line of the log means, by the details of its connection; null for none. A relay at a
/// serial link is another one than that of the same number behind a modem.
[[nodiscard]] const SRelayVisit* RelayOfConnection(const SSiteVisits& visits, std::string_view connection);

/// "not reached since 2026-11-22, 3 nights", of one that the last visit has missed.
[[nodiscard]] std::string MissedSince(const SSiteVisits& visits, const SRelayVisit& relay);
/// "Feeder 7 (RV003) not reached since 2026-11-22, 3 nights".
[[nodiscard]] std::string MissedText(const SSiteVisits& visits, const SRelayVisit& relay);

/// "the end of 2026-12-31", or a time.
[[nodiscard]] std::string MuteEndForPeople(const SMute& mute);
/// "muted until the end of 2026-12-31: CT replaced".
[[nodiscard]] std::string MuteText(const SMute& mute);

/// Unix seconds of "2026-11-25T02:00:01Z"; none of anything else.
[[nodiscard]] std::optional<std::int64_t> SecondsOfRecord(const std::string& time);
/// "2026-11-25 02:00", from the same: the local time of this machine.
[[nodiscard]] std::string RecordTimeForPeople(const std::string& time);
/// "3 min 4 s", "2 h 10 min", "3 days".
[[nodiscard]] std::string LengthForPeople(std::int64_t seconds);

} // namespace ruvo
