#include "platform/file.h"

#include "platform/posix/file_failures.h"
#include "platform/posix/file_handle.h"
#include "platform/posix/file_size_signal.h"
#include "platform/posix/native_path.h"
#include "platform/posix/place.h"

#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace ruvo {

namespace {

constexpr mode_t kNewFileMode = 0666; // what the user's mask leaves of it

// A missing file in a missing folder is another failure than a missing file: the caller may make the folder.
SFileResult MissingResult(const std::string& native) {
    std::error_code ignored;
    const std::filesystem::path parent = std::filesystem::path(native).parent_path();
    const bool folderThere = parent.empty() || std::filesystem::is_directory(parent, ignored);
    return {folderThere ? EFileFailure::NotFound : EFileFailure::BadPath, ENOENT};
}

// What the system says of a link, or of something else than a file in a folder, where only those will do.
bool IsNotPlain(int code) {
    return code == ELOOP || code == ENOTDIR || code == EISDIR || code == ENXIO;
}

int OpenFlags(SOpenMode mode) {
    const int access = !mode.write ? O_RDONLY : mode.read ? O_RDWR : O_WRONLY;
    // Without O_NONBLOCK the opening of a pipe would wait for its other end; it means nothing to a regular
    // file.
    return access | O_CLOEXEC | O_NONBLOCK | O_NOCTTY | (mode.create ? O_CREAT : 0) |
           (mode.truncate ? O_TRUNC : 0) | (mode.exclusive ? O_EXCL : 0);
}

// Only a regular file will do: a pipe or a device has no end, no length and no position.
SFileResult CheckRegular(int descriptor, struct stat& status) {
    if (fstat(descriptor, &status) != 0) {
        return Failed(errno);
    }
    if (S_ISDIR(status.st_mode)) {
        return Failed(EISDIR);
    }
    return S_ISREG(status.st_mode) ? SFileResult{} : Failed(ENXIO);
}

SFileResult OpenPlain(const std::string& native, SOpenMode mode, int& descriptor, struct stat& status) {
    const SPlace place = SPlace::InPlainFolder(native);
    if (!place.folder.IsOpen()) {
        return errno == ENOENT ? SFileResult{EFileFailure::BadPath, ENOENT} : Failed(errno);
    }
    const mode_t permissions = mode.ownerOnly ? S_IRUSR | S_IWUSR : kNewFileMode;
    descriptor = Retry([&] { return place.Open(OpenFlags(mode), permissions).Release(); });
    return descriptor == -1 ? Failed(errno) : CheckRegular(descriptor, status);
}

// With an exclusive opening `native` becomes the path of the file made.
SFileResult OpenAny(std::string& native, SOpenMode mode, int& descriptor, struct stat& status) {
    const int flags = OpenFlags(mode);
    descriptor = Retry([&] {
        return mode.exclusive ? MakeNewFile(native, flags, kNewFileMode)
                              : open(native.c_str(), flags, kNewFileMode);
    });
    if (descriptor == -1) {
        return errno == ENOENT ? MissingResult(native) : Failed(errno);
    }
    return CheckRegular(descriptor, status);
}

} // namespace

std::string SystemErrorText(long systemCode) {
    return std::system_category().message(static_cast<int>(systemCode));
}

CFile::CFile() : m_handle(std::make_unique<SHandle>()) {}

CFile::~CFile() {
    if (IsOpen()) {
        static_cast<void>(Close());
    }
}

SFileResult CFile::Open(const std::string& path, SOpenMode mode) {
    if (IsOpen()) {
        static_cast<void>(Close());
    }
    auto native = ToNativePath(path);
    if (!native) {
        return {EFileFailure::BadPath, ENOENT};
    }
    if (mode.write) {
        IgnoreFileSizeSignal();
    }
    int& descriptor = m_handle->descriptor;
    struct stat status = {};
    SFileResult result = mode.plain ? OpenPlain(*native, mode, descriptor, status)
                                    : OpenAny(*native, mode, descriptor, status);
    m_handle->device = status.st_dev;
    m_handle->number = status.st_ino;
    m_handle->madePath = mode.exclusive && IsOpen() ? *native : std::string();
    if (!result.Good() && IsOpen()) {
        static_cast<void>(Close());
    }
    if (mode.plain && IsNotPlain(static_cast<int>(result.systemCode))) {
        result.failure = EFileFailure::NotPlain;
    }
    return result;
}

bool CFile::IsOpen() const {
    return m_handle->descriptor != -1;
}

SFileResult CFile::GetLength(std::uint64_t& length) {
    struct stat status = {};
    const bool good = fstat(m_handle->descriptor, &status) == 0;
    length = good ? static_cast<std::uint64_t>(status.st_size) : 0;
    return Outcome(good);
}

SFileResult CFile::Seek(std::int64_t offset, ESeekOrigin origin, std::uint64_t& position) {
    constexpr std::array kOrigins{SEEK_SET, SEEK_CUR, SEEK_END};
    const off_t reached = lseek(m_handle->descriptor, offset, kOrigins[static_cast<std::size_t>(origin)]);
    position = reached == -1 ? 0 : static_cast<std::uint64_t>(reached);
    return Outcome(reached != -1);
}

SFileResult CFile::Read(std::span<std::uint8_t> buffer, std::size_t& count) {
    const ssize_t got = Retry([&] { return read(m_handle->descriptor, buffer.data(), buffer.size()); });
    count = got == -1 ? 0 : static_cast<std::size_t>(got);
    return Outcome(got != -1);
}

SFileResult CFile::Write(std::span<const std::uint8_t> bytes, std::size_t& count) {
    count = 0;
    if (!IsOpen()) {
        return Failed(EBADF);
    }
    return Outcome(WriteAll(m_handle->descriptor, bytes.data(), bytes.size(), count));
}

SFileResult CFile::SetLength(std::uint64_t length) {
    return Outcome(Retry([&] { return ftruncate(m_handle->descriptor, static_cast<off_t>(length)); }) == 0);
}

SFileResult CFile::FlushToDisk() {
    return FlushOutcome(Retry([&] { return fsync(m_handle->descriptor); }) == 0);
}

SFileResult CFile::FlushWritten() {
    return FlushOutcome(Retry([&] { return fdatasync(m_handle->descriptor); }) == 0);
}

SFileResult CFile::Close() {
    const int descriptor = std::exchange(m_handle->descriptor, -1);
    // Interrupted or not, the descriptor is gone: to close it again could close another thread's file.
    return Outcome(close(descriptor) == 0 || errno == EINTR);
}

} // namespace ruvo
