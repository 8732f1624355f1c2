#include "platform/files.h"

#include "platform/environment.h"
#include "platform/full_path.h"
#include "platform/posix/file_handle.h"
#include "platform/posix/file_size_signal.h"
#include "platform/posix/free_space.h"
#include "platform/posix/native_path.h"
#include "platform/posix/place.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace ruvo {

namespace {

constexpr mode_t kNewFileMode = 0666;   // what the user's mask leaves of it
constexpr mode_t kNewFolderMode = 0777; // likewise
constexpr std::size_t kCopyBlock = std::size_t{64} * 1024;

struct SFailureRow {
    int code;
    EFileFailure failure;
};
constexpr std::array kFailures{SFailureRow{ENOENT, EFileFailure::NotFound},
                               SFailureRow{ENOTDIR, EFileFailure::BadPath},
                               SFailureRow{EEXIST, EFileFailure::Exists},
                               SFailureRow{ENAMETOOLONG, EFileFailure::BadPath},
                               SFailureRow{ELOOP, EFileFailure::BadPath},
                               SFailureRow{EACCES, EFileFailure::AccessDenied},
                               SFailureRow{EPERM, EFileFailure::AccessDenied},
                               SFailureRow{EROFS, EFileFailure::AccessDenied},
                               SFailureRow{EISDIR, EFileFailure::AccessDenied},
                               SFailureRow{EBADF, EFileFailure::BadDescriptor},
                               SFailureRow{ETXTBSY, EFileFailure::SharingViolation},
                               SFailureRow{ENOSPC, EFileFailure::DiskFull},
                               SFailureRow{EDQUOT, EFileFailure::DiskFull},
                               SFailureRow{EFBIG, EFileFailure::DiskFull},
                               SFailureRow{EMFILE, EFileFailure::TooManyOpenFiles},
                               SFailureRow{ENFILE, EFileFailure::TooManyOpenFiles}};

SFileResult Failed(int code) {
    for (const SFailureRow& row : kFailures) {
        if (row.code == code) {
            return {row.failure, code};
        }
    }
    return {EFileFailure::Other, code};
}

SFileResult Outcome(bool good) {
    return good ? SFileResult{} : Failed(errno);
}

// Repeats a system call that a signal interrupted.
template <typename TCall>
auto Retry(TCall call) {
    auto result = call();
    while (result == -1 && errno == EINTR) {
        result = call();
    }
    return result;
}

// Runs a system call on the system's form of a path; false also when there is no such form.
template <typename TCall>
bool OnNativePath(const std::string& path, TCall call) {
    const auto native = ToNativePath(path);
    return native && call(native->c_str()) == 0;
}

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
SFileResult CheckRegular(int descriptor) {
    struct stat status = {};
    if (fstat(descriptor, &status) != 0) {
        return Failed(errno);
    }
    if (S_ISDIR(status.st_mode)) {
        return Failed(EISDIR);
    }
    return S_ISREG(status.st_mode) ? SFileResult{} : Failed(ENXIO);
}

SFileResult OpenPlain(const std::string& native, SOpenMode mode, int& descriptor) {
    const SPlace place = SPlace::InPlainFolder(native);
    if (!place.folder.IsOpen()) {
        return errno == ENOENT ? SFileResult{EFileFailure::BadPath, ENOENT} : Failed(errno);
    }
    const mode_t permissions = mode.ownerOnly ? S_IRUSR | S_IWUSR : kNewFileMode;
    descriptor = Retry([&] { return place.Open(OpenFlags(mode), permissions).Release(); });
    return descriptor == -1 ? Failed(errno) : CheckRegular(descriptor);
}

// With an exclusive opening `native` becomes the path of the file made.
SFileResult OpenAny(std::string& native, SOpenMode mode, int& descriptor) {
    const int flags = OpenFlags(mode);
    descriptor = Retry([&] {
        return mode.exclusive ? MakeNewFile(native, flags, kNewFileMode)
                              : open(native.c_str(), flags, kNewFileMode);
    });
    if (descriptor == -1) {
        return errno == ENOENT ? MissingResult(native) : Failed(errno);
    }
    return CheckRegular(descriptor);
}

bool CopyAll(CFile& source, CFile& destination) {
    std::vector<std::uint8_t> block(kCopyBlock);
    for (;;) {
        std::size_t count = 0;
        std::size_t written = 0;
        if (!source.Read(block, count).Good()) {
            return false;
        }
        if (count == 0) {
            return destination.Close().Good();
        }
        if (!destination.Write(std::span(block).first(count), written).Good()) {
            return false;
        }
    }
}

// Makes the file that a copy goes to, which must not exist. It is no more open to others than its source is:
// a copied configuration holds passwords.
bool MakeCopyTarget(const char* source, const char* destination) {
    struct stat status = {};
    if (stat(source, &status) != 0) {
        return false;
    }
    const mode_t mode = (status.st_mode & kNewFileMode) | S_IRUSR | S_IWUSR;
    const int made = open(destination, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
    return made != -1 && close(made) == 0;
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
    SFileResult result =
        mode.plain ? OpenPlain(*native, mode, descriptor) : OpenAny(*native, mode, descriptor);
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
    while (count < bytes.size()) {
        const auto rest = bytes.subspan(count);
        const ssize_t put = Retry([&] { return write(m_handle->descriptor, rest.data(), rest.size()); });
        if (put <= 0) {
            return Failed(put == 0 ? EIO : errno);
        }
        count += static_cast<std::size_t>(put);
    }
    return {};
}

SFileResult CFile::SetLength(std::uint64_t length) {
    return Outcome(Retry([&] { return ftruncate(m_handle->descriptor, static_cast<off_t>(length)); }) == 0);
}

SFileResult CFile::FlushToDisk() {
    const bool flushed = Retry([&] { return fsync(m_handle->descriptor); }) == 0;
    const bool unknownHere = !flushed && (errno == EINVAL || errno == ENOSYS || errno == ENOTSUP);
    return Outcome(flushed || unknownHere);
}

SFileResult CFile::Close() {
    const int descriptor = std::exchange(m_handle->descriptor, -1);
    // Interrupted or not, the descriptor is gone: to close it again could close another thread's file.
    return Outcome(close(descriptor) == 0 || errno == EINTR);
}

EPathKind GetPathKind(const std::string& path) {
    struct stat status = {};
    if (!OnNativePath(path, [&](const char* native) { return stat(native, &status); })) {
        return EPathKind::Missing;
    }
    return S_ISDIR(status.st_mode) ? EPathKind::Folder : EPathKind::File;
}

bool IsLink(const std::string& path) {
    struct stat status = {};
    return OnNativePath(path, [&](const char* native) { return lstat(native, &status); }) &&
           S_ISLNK(status.st_mode);
}

SFreeSpace FreeSpace(const std::string& path) {
    const auto native = ToNativePath(path);
    if (!native) {
        return {};
    }
    std::filesystem::path folder(*native);
    std::error_code ignored;
    while (!std::filesystem::exists(folder, ignored) && folder.has_relative_path()) {
        folder = folder.parent_path();
    }
    struct statvfs status = {};
    return Retry([&] { return statvfs(folder.c_str(), &status); }) == 0 ? FreeSpaceFrom(status)
                                                                        : SFreeSpace();
}

bool IsDriveRoot(const std::string& path) {
    const bool isDrive = path.starts_with("C:") || path.starts_with("c:");
    return isDrive && (path.size() == 2 || (path.size() == 3 && path[2] == '\\'));
}

// One permission is for both kinds. The system is asked, since it knows of access lists and of disks that are
// mounted read-only; the separator makes it refuse what is no folder.
SFileResult CanMakeEntryIn(const std::string& folder, EPathKind /*entry*/) {
    const auto native = ToNativePath(folder + "\\");
    return native ? Outcome(faccessat(AT_FDCWD, native->c_str(), W_OK | X_OK, AT_EACCESS) == 0)
                  : SFileResult{EFileFailure::BadPath, ENOENT};
}

SFileResult MakeFolder(const std::string& path) {
    const auto native = ToNativePath(path);
    return native ? Outcome(mkdir(native->c_str(), kNewFolderMode) == 0)
                  : SFileResult{EFileFailure::BadPath, ENOENT};
}

bool RemoveEmptyFolder(const std::string& path) {
    return OnNativePath(path, rmdir);
}

bool RemoveFile(const std::string& path) {
    return OnNativePath(path, unlink);
}

bool RemovePlainFile(const std::string& path) {
    const auto native = ToNativePath(path);
    const SPlace place = native ? SPlace::InPlainFolder(*native) : SPlace();
    return place.folder.IsOpen() && unlinkat(place.folder.Get(), place.name.c_str(), 0) == 0;
}

bool CopyToNewFile(const std::string& source, const std::string& destination) {
    const auto from = ToNativePath(source);
    const auto to = ToNativePath(destination);
    CFile reader;
    if (!from || !to || !reader.Open(source, {.read = true}).Good() ||
        !MakeCopyTarget(from->c_str(), to->c_str())) {
        return false;
    }
    CFile writer;
    if (writer.Open(destination, {.write = true}).Good() && CopyAll(reader, writer)) {
        return true;
    }
    RemoveFile(destination); // half a copy is none
    return false;
}

std::string MakeUniqueFile(const std::string& folder, const std::string& prefix) {
    constexpr std::string_view kEnding = ".tmp";
    const bool separated = folder.ends_with('\\') || folder.ends_with('/');
    std::string path = folder + (separated ? "" : "\\") + prefix + "XXXXXX" + std::string(kEnding);
    auto native = ToNativePath(path);
    const int made = native ? mkostemps(native->data(), static_cast<int>(kEnding.size()), O_CLOEXEC) : -1;
    if (made == -1) {
        return {};
    }
    close(made);
    const std::size_t name = native->rfind('/') + 1;
    return path.replace(path.size() - (native->size() - name), std::string::npos, *native, name);
}

void FlushFolder(const std::string& folder) {
    const auto native = ToNativePath(folder);
    const int opened = native ? open(native->c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC) : -1;
    if (opened != -1) {
        fsync(opened);
        close(opened);
    }
}

bool ListFolder(const std::string& folder, std::vector<SFolderEntry>& entries) {
    entries.clear();
    const auto native = ToNativePath(folder);
    std::error_code error;
    if (!native) {
        return false;
    }
    for (std::filesystem::directory_iterator it(*native, error), end; !error && it != end;
         it.increment(error)) {
        std::string name = it->path().filename().string();
        std::error_code unknown;
        // Above the seam a name with a backslash would be a path, which leads out of the folder.
        if (name.find('\\') == std::string::npos) {
            const std::filesystem::file_status status = it->symlink_status(unknown);
            entries.push_back({std::move(name), std::filesystem::is_directory(status),
                               std::filesystem::is_regular_file(status)});
        }
    }
    return !error;
}

std::string TemporaryFolder() {
    const std::string native = EnvironmentValue("TMPDIR").value_or("/tmp");
    std::string folder = FromNativePath(native.starts_with('/') ? native : "/tmp");
    if (!folder.ends_with('\\')) {
        folder += '\\';
    }
    return folder.size() < kMaxPath ? folder : std::string();
}

std::string CurrentFolder() {
    std::error_code error;
    const std::string native = std::filesystem::current_path(error).string();
    return !error && native.starts_with('/') ? FromNativePath(native) : std::string();
}

bool SetCurrentFolder(const std::string& folder) {
    return OnNativePath(folder, chdir);
}

} // namespace ruvo
