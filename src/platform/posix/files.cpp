#include "platform/files.h"

#include "platform/environment.h"
#include "platform/full_path.h"
#include "platform/posix/file_failures.h"
#include "platform/posix/free_space.h"
#include "platform/posix/native_path.h"
#include "platform/posix/place.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <dirent.h>
#include <fcntl.h>
#include <filesystem>
#include <memory>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>
#include <vector>

namespace ruvo {

namespace {

constexpr mode_t kNewFileMode = 0666;   // what the user's mask leaves of it
constexpr mode_t kNewFolderMode = 0777; // likewise
constexpr std::size_t kCopyBlock = std::size_t{64} * 1024;

// Runs a system call on the system's form of a path; false also when there is no such form.
template <typename TCall>
bool OnNativePath(const std::string& path, TCall call) {
    const auto native = ToNativePath(path);
    return native && call(native->c_str()) == 0;
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

EPathKind GetPathKind(const std::string& path) {
    struct stat status = {};
    if (!OnNativePath(path, [&](const char* native) { return stat(native, &status); })) {
        return EPathKind::Missing;
    }
    return S_ISDIR(status.st_mode) ? EPathKind::Folder : EPathKind::File;
}

bool IsAbsent(const std::string& path) {
    struct stat status = {};
    const auto native = ToNativePath(path);
    return native && stat(native->c_str(), &status) != 0 && (errno == ENOENT || errno == ENOTDIR);
}

bool IsMarkedReadOnly(const std::string& /*path*/) {
    return false;
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
    struct statvfs status = {};
    const auto isTold = [&] { return Retry([&] { return statvfs(folder.c_str(), &status); }) == 0; };
    bool isKnown = isTold();
    std::error_code ignored;
    while (!isKnown && !std::filesystem::exists(folder, ignored) && folder.has_relative_path()) {
        folder = folder.parent_path();
        isKnown = isTold();
    }
    return isKnown ? FreeSpaceFrom(status) : SFreeSpace();
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

bool RenameFile(const std::string& from, const std::string& to) {
    const auto oldName = ToNativePath(from);
    const auto newName = ToNativePath(to);
    return oldName && newName && rename(oldName->c_str(), newName->c_str()) == 0;
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

bool FlushFolder(const std::string& folder) {
    constexpr std::array kNotFlushed{EIO, ENOSPC, EDQUOT, EMFILE, ENFILE, ENOMEM};
    const auto native = ToNativePath(folder);
    if (!native) {
        return true;
    }
    const int opened = open(native->c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    const bool isDone = opened != -1 && fsync(opened) == 0;
    const int error = isDone ? 0 : errno;
    if (opened != -1) {
        close(opened);
    }
    return std::ranges::find(kNotFlushed, error) == kNotFlushed.end();
}

// Not by std::filesystem: its iterator ends the process when there is no memory for it.
bool ListFolder(const std::string& folder, std::vector<SFolderEntry>& entries) {
    entries.clear();
    const auto native = ToNativePath(folder);
    const std::unique_ptr<DIR, decltype([](DIR* open) { closedir(open); })> opened(
        native ? opendir(native->c_str()) : nullptr);
    if (opened == nullptr) {
        return false;
    }
    for (errno = 0; const dirent* entry = readdir(opened.get()); errno = 0) {
        std::string name = entry->d_name;
        // Above the seam a name with a backslash would be a path, which leads out of the folder.
        if (name == "." || name == ".." || name.find('\\') != std::string::npos) {
            continue;
        }
        if (entry->d_type != DT_UNKNOWN) {
            entries.push_back({std::move(name), entry->d_type == DT_DIR, entry->d_type == DT_REG});
            continue;
        }
        struct stat status = {}; // of a link: the link's own
        if (fstatat(dirfd(opened.get()), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0) {
            entries.push_back({std::move(name), S_ISDIR(status.st_mode), S_ISREG(status.st_mode)});
        } else if (errno != ENOENT) { // it has not just gone
            return false;
        }
    }
    return errno == 0;
}

std::vector<std::string> FilesOfPattern(const std::string& typed) {
    return {typed};
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
