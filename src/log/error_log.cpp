#include "log/error_log.h"

#include "base/text.h"
#include "config/configuration.h"
#include "config/run_context.h"
#include "log/connection_details.h"
#include "log/log_reserve.h"
#include "log/status_to_string_id.h"
#include "model/status/string_table.h"
#include "paths/path_utilities.h"
#include "platform/clock.h"
#include "platform/debug_output.h"
#include "platform/files.h"
#include "platform/full_path.h"
#include "platform/native_text.h"
#include "platform/standard_error.h"

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdio>
#include <new>
#include <optional>
#include <span>
#include <thread>

namespace ruvo {

namespace {

struct SErrorLogState {
    std::string path;
    bool disabled = false;
    std::uint64_t lines = 0; ///< written
};

SErrorLogState& State() {
    static SErrorLogState state;
    return state;
}

// The log of a destination that the registry names; empty when that folder could not be formed.
std::string LogPathInDestination(std::string root) {
    StripTrailingSeparators(root);
    if (root.empty()) {
        return root;
    }
    const std::string path = root + '\\' + std::string(kErrorLogName);
    const std::string full = FullPath(path);
    return full.empty() ? path : full;
}

std::string RelayDetails(const SConnectionDetails& details) {
    const std::string device = ", device address: " + std::to_string(details.deviceAddress);
    if (details.ethernetLink) {
        return "IP address: " + details.ipAddress + device +
               ", bus address: " + std::to_string(details.busAddress) + ".";
    }
    if (details.serialLink) {
        return "COM Port: " + details.comPort + device + ".";
    }
    return "modem name: " + details.modemName + device + ".";
}

std::string TimeStamp() {
    const std::optional<SCalendarTime> now = LocalTime();
    if (!now) {
        return "Invalid DateTime";
    }
    std::array<char, 80> text{}; // room for six ints of any value
    std::snprintf(text.data(), text.size(), "%04d/%02d/%02d %02d:%02d:%02d", now->year, now->month, now->day,
                  now->hour, now->minute, now->second);
    return text.data();
}

bool IsLineBreak(char character) {
    return character == '\r' || character == '\n';
}

// Texts from outside (paths, modem names) must not be able to forge a second line.
std::string OneLine(std::string_view text) {
    std::string line;
    line.reserve(text.size());
    bool afterBreak = false;
    for (const char character : text) {
        const bool lineBreak = IsLineBreak(character);
        if (!lineBreak || !afterBreak) {
            line += IsControlCharacter(character) ? ' ' : character;
        }
        afterBreak = lineBreak;
    }
    return line;
}

// Others hold the lock for the length of one line. A longer wait means that a process holds it for another
// reason, perhaps to block the log: then the line is written without it.
void WaitForLock(CFile& file) {
    constexpr std::chrono::milliseconds kPause{1};
    constexpr int kMostPauses = 2000;
    for (int pause = 0; pause < kMostPauses && file.TryLock() == EFileLock::HeldByAnother; ++pause) {
        std::this_thread::sleep_for(kPause);
    }
}

// Opens the log and locks it. Between the two, another program may remove it or put another in its place (a
// test whether it can be written, a clean-up), or its folder, and it is opened anew. Where the system cannot
// distinguish such files, the last one will do.
SFileResult OpenLocked(CFile& file, const std::string& path) {
    constexpr int kAttempts = 4;
    SFileResult result;
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        const bool isFolderThere = EnsureFolderOfFile(path); // else the next wait for it would be as long
        result = file.Open(path, SOpenMode{.write = true, .create = true, .removable = true});
        if (result.Good()) {
            WaitForLock(file);
        }
        if (result.Good() ? file.IsAt(path) : !isFolderThere) {
            break;
        }
    }
    return result;
}

// A line of which only a part fits (full disk) is taken back: half a line would run into the beginning of the
// next one. A program that writes without the lock may have appended meanwhile; its line stays.
void RemovePartialLine(CFile& file, std::uint64_t end, std::size_t written) {
    std::uint64_t length = 0;
    if (file.GetLength(length).Good() && length == end + written) {
        static_cast<void>(file.SetLength(end)); // the write's failure is the one to report
    }
}

// Appends in one write.
SFileResult AppendToFile(const std::string& path, const std::string& line, ELineWorth worth) {
    CFile file;
    SFileResult result = OpenLocked(file, path);
    std::uint64_t end = 0;
    if (result.Good()) {
        result = file.Seek(0, ESeekOrigin::End, end);
    }
    if (!result.Good()) {
        return result;
    }
    const std::span bytes(reinterpret_cast<const std::uint8_t*>(line.data()), line.size());
    std::size_t written = 0;
    result = file.Write(bytes, written);
    if (!result.Good()) {
        RemovePartialLine(file, end, written);
        return result;
    }
    if (worth == ELineWorth::TellsOfLoss) {
        bool isNameSafe = true;
        try {
            isNameSafe = FlushFolder(SplitPath(path).drive + SplitPath(path).folder);
        } catch (
            const std::bad_alloc&) { // NOLINT(bugprone-empty-catch): else the line would be written twice
        }
        result = file.FlushToDisk();
        if (result.Good() && !isNameSafe) {
            result.failure = EFileFailure::Other; // the line stands there, but may go with the file
        }
    }
    return result.Good() ? file.Close() : result;
}

void ReportLineLost(const std::string& line, const std::string& reason) {
    const std::string path = DisplayPath(State().path);
    const std::string text =
        "Error log" + (path.empty() ? "" : " " + path) + ": " + reason + ". Line lost: " + line + "\n";
    const std::string told = "ruvo: " + text; // both are made before the one is written
    WriteDebugOutput(text);
    WriteStandardError(told);
}

void AppendLine(std::string_view text, ELineWorth worth) {
    if (State().disabled) {
        return;
    }
    const std::string line = TimeStamp() + ' ' + OneLine(StoredText(text).value_or(std::string(text)));
    if (State().path.empty()) {
        ReportLineLost(line, "no path is known");
        ++State().lines;
        return;
    }
    const SFileResult result = AppendToFile(State().path, line + "\r\n", worth);
    ++State().lines;
    if (!result.Good()) {
        ReportLineLost(line, result.systemCode != 0 ? SystemErrorText(result.systemCode)
                                                    : "the log's folder cannot be flushed to disk");
    }
}

} // namespace

void ResolveErrorLogPath(const CRunContext& context, bool configurationLoaded) {
    const bool givenInFile = configurationLoaded && context.Config().IsErrorLogPathGiven();
    State().path = context.IsDestinationFromRegistry() && !givenInFile
                       ? LogPathInDestination(context.DestinationRoot())
                       : context.Config().ErrorLogPath();
    KeepLogReserve();
}

const std::string& ErrorLogPath() {
    return State().path;
}

std::uint64_t ErrorLogLines() {
    return State().lines;
}

void SetErrorLogDisabled(bool disabled) {
    State().disabled = disabled;
}

void LogMessage(std::string_view message, bool withDetails, ELineWorth worth) noexcept {
    if (State().disabled) {
        return;
    }
    WithLogReserve([&] {
        std::string text(message);
        if (withDetails) {
            text += " Connection details - " + RelayDetails(ConnectionDetails());
        }
        AppendLine(text, worth);
    });
}

void LogStatusMessage(std::string_view message, std::uint32_t status) noexcept {
    if (State().disabled) {
        return;
    }
    WithLogReserve([&] {
        const unsigned id = StatusToStringId(status);
        const char* const text = LoadStringText(id);
        AppendLine(text != nullptr ? std::string(message) + " P32LS status: " + text
                                   : "Internal Error - Load String ID " + std::to_string(id) + " failed.",
                   ELineWorth::Usual);
    });
}

void WriteLogLine(std::string_view text, ELineWorth worth) noexcept {
    WithLogReserve([&] { AppendLine(text, worth); });
}

void ResetErrorLog() {
    State() = SErrorLogState();
}

} // namespace ruvo
