#include "tools/status/site_status.h"

#include "platform/clock.h"
#include "platform/full_path.h"
#include "tools/events/day_file_walk.h"
#include "tools/events/event_fields.h"
#include "tools/events/event_filter.h"
#include "tools/text_encoding.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstdio>
#include <filesystem>

namespace ruvo {

namespace {

using namespace std::chrono;

sys_seconds Moment(const SCalendarTime& time) {
    const auto part = [](int number) { return static_cast<unsigned>(number); };
    return sys_days(year(time.year) / month(part(time.month)) / day(part(time.day))) + hours(time.hour) +
           minutes(time.minute) + seconds(time.second);
}

std::string IsoText(sys_seconds moment) {
    const sys_days date = floor<days>(moment);
    const year_month_day ymd(date);
    const hh_mm_ss time(moment - date);
    char text[48];
    std::snprintf(text, sizeof text, "%04d-%02u-%02uT%02d:%02d:%02d", static_cast<int>(ymd.year()),
                  static_cast<unsigned>(ymd.month()), static_cast<unsigned>(ymd.day()),
                  static_cast<int>(time.hours().count()), static_cast<int>(time.minutes().count()),
                  static_cast<int>(time.seconds().count()));
    return text;
}

/// "36h" or "7d".
std::optional<hours> ParseLength(const std::string& text) {
    int number = 0;
    const char* const end = text.data() + text.size();
    const auto [at, error] = std::from_chars(text.data(), end, number);
    constexpr int kMost = 100'000;
    if (error != std::errc() || at + 1 != end || number < 0 || number > kMost || (*at != 'h' && *at != 'd')) {
        return std::nullopt;
    }
    return *at == 'h' ? hours(number) : hours(days(number));
}

class CSiteReader {
public:
    CSiteReader(const SSiteQuestion& question, SConsole& console) : m_question(question), m_console(console) {
        m_status.since = question.since;
    }

    SSiteStatus Read() {
        ReadDayFiles();
        for (const std::string& relay : m_question.expected) {
            m_status.relays.try_emplace(relay);
        }
        for (auto& [name, relay] : m_status.relays) {
            if (const auto last = DayNumber(relay.lastDay)) {
                relay.silentDays = std::max<std::int64_t>(m_today - *last, 0);
            }
        }
        ReadLog();
        m_status.leftovers = FindLeftovers(FullPath(m_question.eventRoot), EOtherRoots::Gone);
        return std::move(m_status);
    }

private:
    void ReadDayFiles() {
        const std::string root = FullPath(m_question.eventRoot);
        if (m_question.mayHaveNoRoot && GetPathKind(root) == EPathKind::Missing) {
            return;
        }
        const SFoundFiles found = FindDayFiles({m_question.eventRoot});
        std::map<std::string, std::string> newest; // path by relay
        for (const SFoundFile& file : found.files) {
            if (UpdateNewestFile(NameOf(file.path), m_status.relays[file.relay])) {
                newest[file.relay] = SystemTextToUtf8(file.path);
            }
        }
        CDayFileWalk walk(m_console);
        walk.Read(found, [&](const SEventSource& source, const SDayFileItem& item, CProgress& /*progress*/) {
            SRelayStatus& relay = m_status.relays[source.relay];
            CountItem(item, relay, newest[source.relay] == source.file);
            relay.freshDamaged += item.damage && IsFresh(NameOf(source.file)) ? 1 : 0;
            if (item.damage && item.damage->fault == EDayFileFault::ReadFailed) {
                m_status.failures.push_back(source.file + ": could not be read to the end");
            }
        });
        m_status.failures.insert(m_status.failures.begin(), walk.Failures().begin(), walk.Failures().end());
    }

    static std::string NameOf(const std::string& path) {
        return std::filesystem::path(path).filename().string();
    }

    /// True for the relay's newest day file so far. A date in the future, from a clock that was wrong once,
    /// must not hide for years that the relay sends nothing any more.
    [[nodiscard]] bool UpdateNewestFile(const std::string& name, SRelayStatus& relay) const {
        std::string day = DayOfFileName(name);
        const auto number = DayNumber(day);
        const bool isToCome = number && *number > m_today + 1; // a file of tomorrow is one of another clock
        if (isToCome) {
            relay.futureDay = std::max(relay.futureDay, day);
        }
        if (!number || isToCome) {
            day.clear();
        }
        if (!relay.lastFile.empty() && day <= relay.lastDay) {
            return false;
        }
        relay.lastFile = SystemTextToUtf8(name);
        relay.lastDay = day;
        return true;
    }

    /// Whether the day file lies within the requested time, give or take the time zone. A file without a date
    /// may.
    [[nodiscard]] bool IsFresh(const std::string& name) const {
        constexpr std::size_t kDateSize = 10;
        const auto day = DayNumber(DayOfFileName(name));
        const auto first = DayNumber(m_question.since.substr(0, kDateSize));
        return !day || !first || *day + 1 >= *first;
    }

    static void CountItem(const SDayFileItem& item, SRelayStatus& relay, bool isNewestFile) {
        relay.damaged += item.damage ? 1 : 0;
        if (item.record == nullptr) {
            return;
        }
        ++relay.records;
        if (!isNewestFile) {
            return;
        }
        ++relay.lastRecords;
        if (const CParlaneIEC870& time = item.record->GetTimeStamp(); IsRealTime(time)) {
            std::string text;
            AppendTime(text, time, 'T');
            relay.lastEvent = std::max(relay.lastEvent, text);
        }
    }

    void ReadLog() {
        CLogReader reader;
        const SFileResult opened = reader.Open(m_question.logPath);
        m_status.log.isThere = opened.Good();
        m_status.log.isMissing = opened.failure == EFileFailure::NotFound;
        if (m_status.log.isMissing) {
            return; // the first problem creates it
        }
        // A line without a time belongs to the line before it; at the start, to the first line with one.
        std::vector<SLogLine> early;
        std::optional<bool> counts;
        for (SLogLine line; reader.Next(line);) {
            ++m_status.log.lines;
            if (!line.time.empty()) {
                counts = line.time >= m_question.since;
                FlushEarly(early, *counts);
            }
            if (!counts && early.size() < kMostEarly) {
                early.push_back(line);
            } else if (counts.value_or(true)) {
                AddProblem(line);
            }
        }
        FlushEarly(early, true);
        if (!reader.Result().Good()) {
            m_status.failures.push_back(SystemTextToUtf8(m_question.logPath) + ": " +
                                        SystemErrorText(reader.Result().systemCode));
        }
    }

    void FlushEarly(std::vector<SLogLine>& early, bool counts) {
        for (const SLogLine& line : early) {
            if (counts) {
                AddProblem(line);
            }
        }
        early.clear();
    }

    void AddProblem(const SLogLine& line) {
        SLogStatus& log = m_status.log;
        ++log.problems;
        SLogGroup& group = log.groups[ShortConnectionName(line.connection)];
        ++group.problems;
        group.lastTime = std::max(group.lastTime, line.time);
        if (log.latest.size() == SLogStatus::kKeptLines) {
            log.latest.erase(log.latest.begin());
        }
        log.latest.push_back(line);
    }

    static constexpr std::size_t kMostEarly = 1000; ///< more of them do not occur in an error log

    const SSiteQuestion& m_question;
    SConsole& m_console;
    const std::int64_t m_today = floor<days>(Moment(UtcTime())).time_since_epoch().count();
    SSiteStatus m_status;
};

} // namespace

SSiteStatus ReadSiteStatus(const SSiteQuestion& question, SConsole& console) {
    return CSiteReader(question, console).Read();
}

std::optional<std::int64_t> ParseAge(const std::string& text) {
    const auto length = ParseLength(text);
    return length ? std::optional<std::int64_t>(seconds(*length).count()) : std::nullopt;
}

std::string ParseSince(const std::string& text) {
    if (const auto length = ParseLength(text)) {
        return IsoText(Moment(LocalTime().value_or(UtcTime())) - *length);
    }
    std::string moment = text;
    std::ranges::replace(moment, ' ', 'T');
    return ParseTimeKey(moment, EDayEdge::Start) ? moment : std::string();
}

std::optional<std::int64_t> DayNumber(const std::string& date) {
    if (date.empty() || !ParseTimeKey(date, EDayEdge::Start)) {
        return std::nullopt;
    }
    const auto number = [&date](std::size_t at, std::size_t size) {
        return std::stoi(date.substr(at, size)); // digits, as just checked
    };
    const sys_days day_ = year(number(0, 4)) / month(static_cast<unsigned>(number(5, 2))) /
                          day(static_cast<unsigned>(number(8, 2)));
    return day_.time_since_epoch().count();
}

} // namespace ruvo
