#include "ledger/visit_files.h"

#include "ledger/visit_entry.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <thread>

namespace ruvo {

namespace {

constexpr std::size_t kBlock = std::size_t{64} * 1024;

std::span<const std::uint8_t> BytesOf(std::string_view text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

/// Others hold it for the length of one line.
void WaitForLock(CFile& file) {
    constexpr std::chrono::milliseconds kPause{1};
    constexpr int kMostPauses = 2000;
    for (int pause = 0; pause < kMostPauses && file.TryLock() == EFileLock::HeldByAnother; ++pause) {
        std::this_thread::sleep_for(kPause);
    }
}

/// Until the path still leads to what was locked: it may have become the earlier file meanwhile.
bool OpenLocked(CFile& file, const std::string& path) {
    constexpr int kAttempts = 4;
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        if (!file.Open(path, {.read = true, .write = true, .create = true, .removable = true}).Good()) {
            return false;
        }
        WaitForLock(file);
        if (file.IsAt(path)) {
            return true;
        }
    }
    return false;
}

/// What a file of visits contains.
struct SVisitsTail {
    std::uint64_t length = 0;
    std::size_t runs = 0;
    bool holdsNumber = false;
};

bool Examine(CFile& file, std::uint64_t number, SVisitsTail& tail) {
    CLineFile lines(file);
    for (std::string_view line; lines.Next(line); ++tail.runs) {
        tail.holdsNumber = tail.holdsNumber || NumberOf(line) == number;
    }
    return !lines.HasFailed() && file.GetLength(tail.length).Good();
}

/// A line that an end has torn, or for which there was no room, must not run into the next one.
bool EndsWithLine(CFile& file, std::uint64_t length) {
    std::array<std::uint8_t, 1> last{};
    std::uint64_t position = 0;
    std::size_t count = 0;
    return length == 0 ||
           (file.Seek(static_cast<std::int64_t>(length - 1), ESeekOrigin::Start, position).Good() &&
            file.Read(last, count).Good() && count == 1 && last[0] == '\n');
}

bool AppendTo(CFile& file, std::uint64_t length, const std::string& line) {
    const std::string text = (EndsWithLine(file, length) ? "" : "\n") + line + "\n";
    std::uint64_t position = 0;
    std::size_t count = 0;
    if (file.Seek(0, ESeekOrigin::End, position).Good() && file.Write(BytesOf(text), count).Good()) {
        return file.FlushToDisk().Good();
    }
    static_cast<void>(file.SetLength(length)); // half a line is of no use
    return false;
}

/// False when the file exists and cannot be read to its end.
bool ForEachLine(const std::string& folder, std::string_view name,
                 const std::function<void(std::string_view line)>& take) {
    CFile file;
    const SFileResult opened =
        file.Open(folder + "\\" + std::string(name), {.read = true, .removable = true});
    if (!opened.Good()) {
        return opened.failure == EFileFailure::NotFound || opened.failure == EFileFailure::BadPath;
    }
    CLineFile lines(file);
    for (std::string_view line; lines.Next(line);) {
        take(line);
    }
    return !lines.HasFailed();
}

std::optional<std::uint64_t> LargestNumberIn(const std::string& folder, std::string_view name) {
    std::uint64_t largest = 0;
    const bool isRead = ForEachLine(folder, name, [&largest](std::string_view line) {
        largest = std::max(largest, NumberOf(line).value_or(0));
    });
    return isRead ? std::optional(largest) : std::nullopt;
}

} // namespace

CLineFile::CLineFile(CFile& file) : m_file(file) {
    std::uint64_t position = 0;
    m_hasFailed = !file.Seek(0, ESeekOrigin::Start, position).Good();
    m_isAtEnd = m_hasFailed;
}

bool CLineFile::Next(std::string_view& line) {
    std::size_t searched = m_begin;
    for (;;) {
        const std::size_t end = m_bytes.find('\n', searched);
        if (end != std::string::npos) {
            line = std::string_view(m_bytes).substr(m_begin, end - m_begin);
            m_begin = end + 1;
            return true;
        }
        if (m_isAtEnd) {
            return false;
        }
        m_bytes.erase(0, m_begin);
        m_begin = 0;
        searched = m_bytes.size();
        std::array<std::uint8_t, kBlock> block; // most files are much smaller: its pages are not touched
        std::size_t count = 0;
        m_hasFailed = !m_file.Read(block, count).Good();
        m_bytes.append(reinterpret_cast<const char*>(block.data()), count);
        m_isAtEnd = m_hasFailed || count == 0;
    }
}

bool ReadRunFile(CFile& file, SRunFile& run) {
    CLineFile lines(file);
    for (std::string_view line; lines.Next(line);) {
        run.text.append(line).append("\n");
    }
    for (std::size_t at = 0; at < run.text.size();) {
        const std::size_t end = run.text.find('\n', at);
        const std::string_view line = std::string_view(run.text).substr(at, end - at);
        if (at == 0) {
            run.begin = line;
        } else if (IsRunEnd(line)) {
            run.end = line;
        } else {
            run.entries.push_back(line);
        }
        at = end + 1;
    }
    return !lines.HasFailed();
}

std::optional<std::vector<std::uint64_t>> RunFilesIn(const std::string& folder) {
    std::vector<SFolderEntry> entries;
    std::vector<std::uint64_t> numbers;
    if (folder.empty() || !ListFolder(folder, entries)) {
        return folder.empty() || IsAbsent(folder) ? std::optional(numbers) : std::nullopt;
    }
    for (const SFolderEntry& entry : entries) {
        std::uint64_t number = 0;
        const char* const end = entry.name.data() + entry.name.size();
        const auto [at, error] = std::from_chars(entry.name.data(), end, number);
        if (entry.isFile && error == std::errc() && std::string_view(at, end) == kRunEnding) {
            numbers.push_back(number);
        }
    }
    std::ranges::sort(numbers);
    return numbers;
}

std::string RunFilePath(const std::string& folder, std::uint64_t number) {
    return folder + "\\" + std::to_string(number) + std::string(kRunEnding);
}

std::optional<std::uint64_t> LargestVisitNumber(const std::string& folder) {
    constexpr std::chrono::milliseconds kWait{10};
    constexpr int kMostReadings = 5; // another program may keep a file to itself for a moment
    for (int reading = 0; reading < kMostReadings; ++reading) {
        const auto earlier = LargestNumberIn(folder, kEarlierVisitsName);
        const auto latest = LargestNumberIn(folder, kVisitsName);
        if (latest && (earlier || *latest > 0)) {
            return std::max(earlier.value_or(0), *latest);
        }
        std::this_thread::sleep_for(kWait);
    }
    return std::nullopt;
}

bool AppendVisit(const std::string& folder, const std::string& line, SVisitBounds bounds) {
    const std::string path = folder + "\\" + std::string(kVisitsName);
    CFile file;
    SVisitsTail tail;
    const std::uint64_t number = NumberOf(line).value_or(0);
    if (!OpenLocked(file, path) || !Examine(file, number, tail)) {
        return false;
    }
    if (tail.holdsNumber) {
        return true;
    }
    const bool isFull = tail.runs >= bounds.runs || tail.length + line.size() > bounds.bytes;
    if (tail.runs > 0 && isFull && RenameFile(path, folder + "\\" + std::string(kEarlierVisitsName))) {
        tail = {};
        CFile next; // the lock on the earlier one is kept meanwhile
        const bool isAppended =
            OpenLocked(next, path) && Examine(next, number, tail) && AppendTo(next, tail.length, line);
        FlushFolder(folder);
        return isAppended;
    }
    const bool isAppended = AppendTo(file, tail.length, line);
    FlushFolder(folder);
    return isAppended;
}

bool ForEachVisit(const std::string& folder, const std::function<void(std::string_view line)>& take) {
    const bool isEarlierRead = ForEachLine(folder, kEarlierVisitsName, take);
    return ForEachLine(folder, kVisitsName, take) && isEarlierRead;
}

} // namespace ruvo
