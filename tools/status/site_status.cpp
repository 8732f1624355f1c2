#include "tools/status/site_status.h"

#include "paths/path_utilities.h"
#include "platform/files.h"
#include "platform/full_path.h"
#include "tools/events/day_file_walk.h"
#include "tools/events/event_fields.h"
#include "tools/file_path.h"
#include "tools/given_time.h"
#include "tools/sites/muted_lines.h"
#include "tools/text_encoding.h"

#include <algorithm>
#include <filesystem>

namespace ruvo {

namespace {

class CSiteReader {
public:
    CSiteReader(const SSiteQuestion& question, SConsole& console) : m_question(question), m_console(console) {
        m_status.since = question.since;
        if (question.visits != nullptr) {
            m_status.visits = *question.visits;
        }
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
        ChooseRelays(m_question.choice, m_status);
        ReadLog();
        CRootLeftovers ownLeftovers;
        m_status.leftovers =
            FindLeftovers(FullPath(m_question.eventRoot), m_question.iniPath, EOtherRoots::Former,
                          m_question.leftovers != nullptr ? *m_question.leftovers : ownLeftovers);
        for (const auto& [what, path] : {std::pair("events", FullPath(m_question.eventRoot)),
                                         {"log", ParentFolder(FullPath(m_question.logPath))},
                                         {"state", m_status.leftovers.stateFolder}}) {
            if (const auto bytes = path.empty() ? std::nullopt : FreeSpace(path).bytes) {
                m_status.freeBytes[what] = *bytes;
            }
        }
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
        for (auto& [name, relay] : m_status.relays) {
            for (std::string* const text : {&relay.plant, &relay.description, &relay.model}) {
                *text = ReadableRelayLine(*text);
            }
        }
        m_status.failures.insert(m_status.failures.begin(), walk.Failures().begin(), walk.Failures().end());
    }

    static std::string NameOf(const std::string& path) { return FilePath(path).filename().string(); }

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
        const CEventRecord& record = *item.record;
        for (const auto& [text, own] : {std::pair(&SRelayStatus::plant, &record.GetAuxText1()),
                                        {&SRelayStatus::description, &record.GetAuxText2()},
                                        {&SRelayStatus::model, &record.GetAuxText3()}}) {
            relay.*text = *own; // as the relay has it, until all are read
        }
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
        for (SLogLine line; reader.NextTime(line);) {
            ++m_status.log.lines;
            if (!line.time.empty()) {
                counts = line.time >= m_question.since;
                FlushEarly(early, *counts);
            }
            if (!counts.value_or(true)) {
                continue; // as most of a log of years
            }
            reader.Complete(line);
            if (!counts && early.size() < kMostEarly) {
                early.push_back(line);
            } else {
                AddProblem(line);
            }
        }
        FlushEarly(early, true);
        SortLatest();
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
        const bool isOwn = m_question.ownLines == nullptr || m_question.ownLines->IsOwn(line);
        if (!isOwn || !IsChosenLine(m_question.choice, m_status, m_question.visits, line)) {
            return;
        }
        ++log.problems;
        log.muted += m_question.visits != nullptr && IsMutedLine(*m_question.visits, line) ? 1 : 0;
        SLogGroup& group = log.groups[ShortConnectionName(line.connection)];
        group.connection = line.connection;
        ++group.problems;
        group.lastTime = std::max(group.lastTime, line.time);
        KeepAsLatest(line);
    }

    /// Until the whole log is read, each line takes the place of the one that is the oldest then.
    void KeepAsLatest(const SLogLine& line) {
        SLogStatus& log = m_status.log;
        if (log.latest.size() < SLogStatus::kKeptLines) {
            log.latest.push_back(line);
        } else {
            log.latest[static_cast<size_t>((log.problems - 1) % SLogStatus::kKeptLines)] = line;
        }
    }

    void SortLatest() {
        SLogStatus& log = m_status.log;
        if (log.problems > log.latest.size()) {
            const auto oldest = static_cast<std::ptrdiff_t>(log.problems % SLogStatus::kKeptLines);
            std::rotate(log.latest.begin(), log.latest.begin() + oldest, log.latest.end());
        }
    }

    static constexpr std::size_t kMostEarly = 1000; ///< more of them do not occur in an error log

    const SSiteQuestion& m_question;
    SConsole& m_console;
    const std::int64_t m_today = NowSeconds() / (std::int64_t{24} * 3600);
    SSiteStatus m_status;
};

} // namespace

SSiteStatus ReadSiteStatus(const SSiteQuestion& question, SConsole& console) {
    return CSiteReader(question, console).Read();
}

} // namespace ruvo
