// What a run remembers of its visits: one entry a relay, one line a run, as JSON. All texts are UTF-8, all
// times UTC as "2026-11-25T02:00:01Z".
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ruvo {

/// Bytes of a day file: the first, and the one after the last.
struct SStoredBytes {
    std::string dayFile; ///< FOLDER/FILE below the event root
    std::uint64_t from = 0;
    std::uint64_t to = 0;
};

/// How one relay was visited. What is not known is empty.
struct SVisitEntry {
    std::string key;     ///< of the INI file
    std::string address; ///< the key's value; empty when this only tells of recovered events
    std::string link;    ///< "serial", "modem" or "ethernet"
    std::string name;    ///< MODEL-SERIAL, as the relay's folder is called
    std::string plant;
    std::string begin;
    std::string end;
    bool isReached = false; ///< it has answered
    std::uint64_t taken = 0;
    std::uint64_t stored = 0;
    std::uint64_t lost = 0;
    std::uint64_t setAside = 0;
    std::uint64_t logLines = 0;              ///< of those that the run wrote
    std::uint64_t waiting = 0;               ///< in the journal, for the next run
    std::uint64_t recovered = 0;             ///< of an earlier run, stored by this one
    std::optional<SStoredBytes> recoveredIn; ///< none where all of them were in the day file already
    std::string dayFile;                     ///< FOLDER/FILE below the event root
    std::uint64_t from = 0; ///< what this run added to it: the first byte, and the one after the last
    std::uint64_t to = 0;
    std::uint32_t status = 0; ///< the last one that says how it ended
    std::string statusText;
    std::string lastReached; ///< in this run or before it
};

/// How a run ended.
enum class ERunEnd : std::uint8_t { Whole, Signal, Killed, NotBegun };

/// What a record is of.
enum class ERunKind : std::uint8_t {
    Visit,
    Recover, ///< events that a person has appended; no relay was visited
};

/// One run. What is not known is empty.
struct SVisitLine {
    std::uint64_t number = 0;
    ERunKind kind = ERunKind::Visit;
    std::string iniPath;
    std::uint64_t process = 0;
    std::uint64_t attempt = 1;
    std::string begin;
    std::string end; ///< not known of a killed run
    ERunEnd ended = ERunEnd::Killed;
    std::string signal;       ///< its name, for ERunEnd::Signal
    std::uint64_t result = 0; ///< the code, for ERunEnd::NotBegun
    std::uint64_t logLines = 0;
    std::uint64_t notVisited = 0; ///< relays that an end by a signal has left out
    std::vector<SVisitEntry> entries;
};

/// "whole", "signal", "killed", "not begun": never rename.
[[nodiscard]] std::string_view RunEndName(ERunEnd end);

[[nodiscard]] std::string AsJson(const SVisitEntry& entry);
[[nodiscard]] std::optional<SVisitEntry> ReadVisitEntry(std::string_view json);

/// The members of a run's line that are known when it begins, and when it ends, each as an object of its own.
[[nodiscard]] std::string BeginAsJson(const SVisitLine& line);
[[nodiscard]] std::string EndAsJson(const SVisitLine& line);
/// A run's line, from those two and its entries. With no end the run was killed. Empty when the beginning is
/// none; other parts that are none are left out.
[[nodiscard]] std::string LineAsJson(std::string_view begin, const std::vector<std::string_view>& entries,
                                     std::string_view end);
/// Without `withEntries`, its entries are not read.
[[nodiscard]] std::optional<SVisitLine> ReadVisitLine(std::string_view json, bool withEntries = true);
/// A line that is wanted as its head says, which has no entries yet; none of another.
[[nodiscard]] std::optional<SVisitLine>
ReadWantedLine(std::string_view json, const std::function<bool(const SVisitLine& head)>& isWanted);
/// The number at the front of a line or a beginning; none of anything else.
[[nodiscard]] std::optional<std::uint64_t> NumberOf(std::string_view json);
/// Whether it is what EndAsJson makes.
[[nodiscard]] bool IsRunEnd(std::string_view json);

} // namespace ruvo
