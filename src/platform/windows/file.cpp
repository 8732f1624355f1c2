#include "platform/file.h"

#include "base/text.h"
#include "platform/windows/file_failures.h"
#include "platform/windows/file_handle.h"
#include "platform/windows/held_entry.h"
#include "platform/windows/wide_text.h"

#include <algorithm>
#include <array>
#include <limits>
#include <utility>

namespace ruvo {

namespace {

DWORD Disposition(SOpenMode mode) {
    if (mode.exclusive) {
        return CREATE_NEW;
    }
    if (mode.create) {
        return mode.truncate ? CREATE_ALWAYS : OPEN_ALWAYS;
    }
    return mode.truncate ? TRUNCATE_EXISTING : OPEN_EXISTING;
}

// One call of the system moves 32 bits' worth at most.
DWORD CallSize(std::size_t size) {
    return static_cast<DWORD>(std::min<std::size_t>(size, std::numeric_limits<DWORD>::max()));
}

// Shared, so that others can look at the log and the day files during a run, as on other systems.
HANDLE OpenAny(const std::string& path, SOpenMode mode, DWORD disposition, DWORD flags) {
    const DWORD access = (mode.read ? GENERIC_READ : 0) | (mode.write ? GENERIC_WRITE : 0) |
                         (mode.exclusive ? DELETE : 0); // for RemoveIfEmpty
    const DWORD sharing = FILE_SHARE_READ | FILE_SHARE_WRITE | (mode.removable ? FILE_SHARE_DELETE : 0);
    return CreateFileW(Wide(path).c_str(), access, sharing, nullptr, disposition,
                       FILE_ATTRIBUTE_NORMAL | flags, nullptr);
}

// A file that is there is held while it is opened, so that what is opened is what was looked at; one that is
// missing is made where nothing is, not even a link that leads nowhere.
SFileResult OpenPlain(const std::string& path, SOpenMode mode, HANDLE& opened) {
    const CHeldEntry folder(FolderOf(path));
    if (folder.Code() == ERROR_FILE_NOT_FOUND) {
        return {EFileFailure::BadPath, ERROR_FILE_NOT_FOUND};
    }
    if (!folder.IsPlain(true)) {
        return folder.Code() == ERROR_SUCCESS ? SFileResult{EFileFailure::NotPlain, ERROR_CANT_ACCESS_FILE}
                                              : Failed(folder.Code());
    }
    const CHeldEntry file(path);
    if (mode.exclusive && file.Code() == ERROR_SUCCESS) {
        return Failed(ERROR_FILE_EXISTS);
    }
    if (file.Code() == ERROR_FILE_NOT_FOUND && mode.create) {
        opened = OpenAny(path, mode, CREATE_NEW, FILE_FLAG_OPEN_REPARSE_POINT);
    } else if (file.IsPlain(false)) {
        opened = OpenAny(path, mode, mode.truncate ? TRUNCATE_EXISTING : OPEN_EXISTING, 0);
    } else {
        return file.Code() == ERROR_SUCCESS ? SFileResult{EFileFailure::NotPlain, ERROR_CANT_ACCESS_FILE}
                                            : Failed(file.Code());
    }
    return Outcome(opened != INVALID_HANDLE_VALUE);
}

} // namespace

std::string SystemErrorText(long systemCode) {
    constexpr DWORD kFlags = FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS;
    std::array<wchar_t, 1024> buffer{};
    const DWORD length = FormatMessageW(kFlags, nullptr, static_cast<DWORD>(systemCode), 0, buffer.data(),
                                        static_cast<DWORD>(buffer.size()), nullptr);
    const std::string message = Narrow({buffer.data(), length});
    const std::string_view text = TrimEnd(message, "\r\n ");
    return text.empty() ? "System error " + std::to_string(systemCode) : std::string(text);
}

CFile::CFile() : m_handle(std::make_unique<SHandle>()) {}

CFile::~CFile() {
    static_cast<void>(Close());
}

SFileResult CFile::Open(const std::string& path, SOpenMode mode) {
    static_cast<void>(Close());
    HANDLE opened = INVALID_HANDLE_VALUE;
    const SFileResult result =
        mode.plain ? OpenPlain(path, mode, opened)
                   : Outcome((opened = OpenAny(path, mode, Disposition(mode), 0)) != INVALID_HANDLE_VALUE);
    if (!result.Good()) {
        return result;
    }
    m_handle->file = opened;
    // Only a file on a disk will do: a pipe or a device has no end, no length and no position.
    if (GetFileType(opened) != FILE_TYPE_DISK) {
        static_cast<void>(Close());
        return {EFileFailure::Other, ERROR_BAD_DEV_TYPE};
    }
    return {};
}

bool CFile::IsOpen() const {
    return m_handle->file != nullptr;
}

SFileResult CFile::GetLength(std::uint64_t& length) {
    LARGE_INTEGER size = {};
    const BOOL good = GetFileSizeEx(m_handle->file, &size);
    length = good != FALSE ? static_cast<std::uint64_t>(size.QuadPart) : 0;
    return Outcome(good);
}

SFileResult CFile::Seek(std::int64_t offset, ESeekOrigin origin, std::uint64_t& position) {
    constexpr std::array<DWORD, 3> kOrigins{FILE_BEGIN, FILE_CURRENT, FILE_END};
    LARGE_INTEGER distance = {};
    LARGE_INTEGER reached = {};
    distance.QuadPart = offset;
    const BOOL good =
        SetFilePointerEx(m_handle->file, distance, &reached, kOrigins[static_cast<std::size_t>(origin)]);
    position = good != FALSE ? static_cast<std::uint64_t>(reached.QuadPart) : 0;
    return Outcome(good);
}

SFileResult CFile::Read(std::span<std::uint8_t> buffer, std::size_t& count) {
    DWORD got = 0;
    const BOOL good = ReadFile(m_handle->file, buffer.data(), CallSize(buffer.size()), &got, nullptr);
    count = good != FALSE ? got : 0;
    return Outcome(good);
}

SFileResult CFile::Write(std::span<const std::uint8_t> bytes, std::size_t& count) {
    count = 0;
    if (!IsOpen()) {
        return Failed(ERROR_INVALID_HANDLE);
    }
    while (count < bytes.size()) {
        const auto rest = bytes.subspan(count);
        DWORD put = 0;
        const BOOL good = WriteFile(m_handle->file, rest.data(), CallSize(rest.size()), &put, nullptr);
        count += put; // a disk that fills up takes a part
        if (good == FALSE || put == 0) {
            return Failed(good == FALSE ? GetLastError() : DWORD{ERROR_WRITE_FAULT});
        }
    }
    return {};
}

// The position stays, which SetEndOfFile would need to have moved first.
SFileResult CFile::SetLength(std::uint64_t length) {
    FILE_END_OF_FILE_INFO end = {};
    end.EndOfFile.QuadPart = static_cast<LONGLONG>(length);
    return Outcome(SetFileInformationByHandle(m_handle->file, FileEndOfFileInfo, &end, sizeof end));
}

SFileResult CFile::FlushToDisk() {
    const BOOL flushed = FlushFileBuffers(m_handle->file);
    const DWORD code = flushed != FALSE ? DWORD{ERROR_SUCCESS} : GetLastError();
    const bool unknownHere = code == ERROR_INVALID_FUNCTION || code == ERROR_NOT_SUPPORTED;
    return code == ERROR_SUCCESS || unknownHere ? SFileResult{} : Failed(code);
}

SFileResult CFile::FlushWritten() {
    return FlushToDisk();
}

SFileResult CFile::Close() {
    const HANDLE file = std::exchange(m_handle->file, nullptr);
    return file == nullptr ? Failed(ERROR_INVALID_HANDLE) : Outcome(CloseHandle(file));
}

} // namespace ruvo
