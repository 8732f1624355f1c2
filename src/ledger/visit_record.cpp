#include "ledger/visit_record.h"

#include "ledger/root_folder.h"
#include "platform/clock.h"
#include "platform/environment.h"
#include "platform/full_path.h"
#include "platform/full_path_rules.h"
#include "platform/native_text.h"
#include "platform/process.h"
#include "platform/standard_error.h"
#include "platform/state_folder.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <exception>
#include <optional>

namespace ruvo {

namespace {

/// A scheduler that repeats a visit after a failure counts the attempts. What is no number of one is the
/// first.
std::uint64_t Attempt() {
    const std::string text = EnvironmentValue("RUVO_ATTEMPT").value_or("1");
    std::uint64_t attempt = 1;
    const char* const end = text.data() + text.size();
    const auto read = std::from_chars(text.data(), end, attempt);
    return read.ec == std::errc() && read.ptr == end && attempt > 0 ? attempt : 1;
}

/// Makes a line of a file that its run has left, and removes it. It is held locked.
bool EndRun(const std::string& folder, const std::string& path, CFile& file, SVisitBounds bounds) {
    SRunFile run;
    if (!ReadRunFile(file, run)) {
        return false;
    }
    const std::string line = LineAsJson(run.begin, run.entries, run.end);
    if (!line.empty() && !AppendVisit(folder, line, bounds)) {
        return false;
    }
    return RemoveFile(path); // with nothing in it, its making was ended
}

} // namespace

std::string RecordedIniPath(const std::string& iniPath) {
    constexpr std::string_view kLongForm = "\\\\?\\"; // of one system's resolved paths
    constexpr std::string_view kServerForm = "\\\\?\\UNC\\";
    const std::string full = FullPath(iniPath);
    std::string path = full.empty() ? full : ResolvedFolder(full);
    if (path.starts_with(kServerForm)) {
        path.replace(0, kServerForm.size(), "\\\\");
    }
    path.erase(0, path.starts_with(kLongForm) ? kLongForm.size() : 0);
    return NativeTextToUtf8(DisplayPath(WithSmallShare(path.empty() ? full : path)));
}

std::string RecordedNow() {
    const SCalendarTime now = UtcTime();
    std::array<char, 80> text{};
    std::snprintf(text.data(), text.size(), "%04d-%02d-%02dT%02d:%02d:%02dZ", now.year, now.month, now.day,
                  now.hour, now.minute, now.second);
    return text.data();
}

CVisitRecord::CVisitRecord(std::string eventRoot, const std::string& iniPath, SVisitBounds bounds,
                           ERunKind kind)
    : m_eventRoot(std::move(eventRoot)), m_bounds(bounds) {
    m_line.kind = kind;
    m_line.iniPath = RecordedIniPath(iniPath);
}

void CVisitRecord::Begin() noexcept {
    try {
        m_folder = FolderOfJournals(m_eventRoot);
        if (m_folder.empty()) {
            return;
        }
        if (PrepareRootFolder(m_folder, m_eventRoot)) {
            EndKilledRuns();
            MakeFile();
        }
    } catch (const std::exception&) { // no memory
        m_isOpen = false;
    }
    if (!m_isOpen) {
        Fail();
    }
}

void CVisitRecord::EndKilledRuns() {
    for (const std::uint64_t number : RunFilesIn(m_folder).value_or(std::vector<std::uint64_t>())) {
        const std::string path = RunFilePath(m_folder, number);
        CFile file;
        if (file.Open(path, {.read = true, .write = true, .plain = true, .removable = true}).Good() &&
            file.TryLock() != EFileLock::HeldByAnother && file.IsAt(path)) {
            static_cast<void>(EndRun(m_folder, path, file, m_bounds)); // else the next run tries
        }
    }
}

/// Under a number that no other run has: a line under one that is in the file already would not be added.
void CVisitRecord::MakeFile() {
    constexpr int kMostNumbers = 1000;
    m_line.process = ProcessNumber();
    m_line.attempt = Attempt();
    m_line.begin = RecordedNow();
    const auto files = RunFilesIn(m_folder);
    m_line.number = files && !files->empty() ? files->back() : 0;
    auto largest = files ? LargestVisitNumber(m_folder) : std::nullopt;
    for (int tried = 0; tried < kMostNumbers && largest && !m_isOpen; ++tried) {
        m_line.number = std::max(m_line.number, *largest) + 1;
        m_isOpen = TryNumber(largest);
    }
    m_isOpen = m_isOpen && WriteLine(BeginAsJson(m_line));
    FlushFolder(m_folder);
}

/// A run that has ended meanwhile may have used the number and removed its file: then its line is there.
bool CVisitRecord::TryNumber(std::optional<std::uint64_t>& largest) {
    const std::string path = RunFilePath(m_folder, m_line.number);
    if (!m_file
             .Open(path, {.read = true, .write = true, .create = true, .exclusive = true, .removable = true})
             .Good() ||
        m_file.TryLock() == EFileLock::HeldByAnother || !m_file.IsAt(path)) {
        return false;
    }
    largest = LargestVisitNumber(m_folder);
    if (largest && *largest < m_line.number) {
        return true;
    }
    RemoveFile(path);
    return false;
}

void CVisitRecord::AddRecovered(const std::string& key, std::uint64_t events,
                                std::optional<SStoredBytes> where) noexcept {
    try {
        SVisitEntry entry;
        entry.key = key;
        entry.recovered = events;
        entry.recoveredIn = std::move(where);
        Write(entry);
    } catch (const std::exception&) { // NOLINT(bugprone-empty-catch): no memory; the log has the number
    }
}

void CVisitRecord::Add(SVisitEntry entry) noexcept {
    try {
        if (m_isOpen) {
            entry.lastReached = entry.isReached ? entry.end : LastReached(entry.key, entry.address);
        }
        Write(entry);
    } catch (const std::exception&) { // no memory
        m_isOpen = false;
        Fail();
    }
}

void CVisitRecord::Write(const SVisitEntry& entry) {
    if (m_isOpen && !WriteLine(AsJson(entry))) {
        m_isOpen = false;
        Fail();
    }
}

void CVisitRecord::End(SVisitLine end) noexcept {
    if (!m_isOpen) {
        return;
    }
    m_isOpen = false;
    try {
        end.end = RecordedNow();
        // In its own file first: the run that writes the line then knows how this one ended.
        if (WriteLine(EndAsJson(end)) &&
            EndRun(m_folder, RunFilePath(m_folder, m_line.number), m_file, m_bounds)) {
            static_cast<void>(m_file.Close());
            return;
        }
    } catch (const std::exception&) { // NOLINT(bugprone-empty-catch): no memory; reported below
    }
    Fail();
}

/// Without a flush: an end of the process loses nothing of it, and one of the machine only what is known of
/// its own last minutes.
bool CVisitRecord::WriteLine(const std::string& json) {
    const std::string line = json + "\n";
    std::uint64_t position = 0;
    std::size_t count = 0;
    return m_file.Seek(0, ESeekOrigin::End, position).Good() &&
           m_file.Write({reinterpret_cast<const std::uint8_t*>(line.data()), line.size()}, count).Good();
}

std::string CVisitRecord::LastReached(const std::string& key, const std::string& address) {
    if (!m_isHistoryRead) {
        m_isHistoryRead = true;
        static_cast<void>(ForEachVisit(m_folder, [this](std::string_view json) {
            const auto head = ReadVisitLine(json, false);
            const auto line = head && head->iniPath == m_line.iniPath ? ReadVisitLine(json) : std::nullopt;
            for (const SVisitEntry& entry : line ? line->entries : std::vector<SVisitEntry>()) {
                m_lastReached[{entry.key, entry.address}] = entry.lastReached;
            }
        }));
    }
    const auto found = m_lastReached.find({key, address});
    return found == m_lastReached.end() ? std::string() : found->second;
}

void CVisitRecord::Fail() noexcept {
    try {
        WriteStandardError("ruvo: no record of this visit can be kept in " + DisplayPath(m_folder) +
                           "; ruvoctl status will not know of it");
    } catch (const std::exception&) { // NOLINT(bugprone-empty-catch): no memory for more
    }
}

} // namespace ruvo
