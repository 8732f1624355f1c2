#include "platform/file_access.h"

#include "platform/posix/native_path.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <grp.h>
#include <memory>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>
#include <vector>

namespace ruvo {

namespace {

constexpr mode_t kPermissions = 07777;
constexpr mode_t kOwnerAlone = S_IRUSR | S_IWUSR;
constexpr const char* kAccessList = "system.posix_acl_access";

SAccessResult Failed(EAccessFailure failure) {
    return {failure, errno};
}

// An open file or folder.
class CDescriptor {
public:
    CDescriptor(const std::string& native, int flags, mode_t mode = 0)
        : m_descriptor(open(native.c_str(), flags | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, mode)) {}
    CDescriptor(const CDescriptor&) = delete;
    CDescriptor& operator=(const CDescriptor&) = delete;
    ~CDescriptor() {
        if (IsOpen()) {
            close(m_descriptor);
        }
    }

    bool IsOpen() const { return m_descriptor != -1; }
    int Get() const { return m_descriptor; }

private:
    int m_descriptor;
};

std::string FolderOf(const std::string& native) {
    const std::size_t separator = native.rfind('/');
    return separator == std::string::npos ? "." : native.substr(0, separator + 1);
}

bool IsGroupNamed(gid_t id, std::string_view name) {
    group entry = {};
    group* found = nullptr;
    std::vector<char> buffer(std::size_t{16} * 1024);
    return getgrgid_r(id, &entry, buffer.data(), buffer.size(), &found) == 0 && found != nullptr &&
           name == found->gr_name;
}

// A folder that gives its files another group would need the system's leave; without it the file stays its
// owner's alone.
void LetReadersIn(const std::string& native, int file, std::string_view readers) {
    struct stat folder = {};
    if (stat(FolderOf(native).c_str(), &folder) == 0 && IsGroupNamed(folder.st_gid, readers) &&
        fchown(file, static_cast<uid_t>(-1), folder.st_gid) == 0) {
        static_cast<void>(fchmod(file, kOwnerAlone | S_IRGRP));
    }
}

bool HasNoAccessList(int code) {
    return code == ENODATA || code == ENOTSUP;
}

// The list of further users and groups, or that there is none: a folder may have given its new file one.
bool CopyAccessList(int from, int to) {
    std::vector<char> list(std::size_t{64} * 1024); // the longest value there is
    const ssize_t size = fgetxattr(from, kAccessList, list.data(), list.size());
    if (size >= 0) {
        return fsetxattr(to, kAccessList, list.data(), static_cast<std::size_t>(size), 0) == 0;
    }
    return HasNoAccessList(errno) && (fremovexattr(to, kAccessList) == 0 || HasNoAccessList(errno));
}

} // namespace

std::optional<bool> IsReadableByEveryone(const std::string& path) {
    struct stat status = {};
    const auto native = ToNativePath(path);
    if (!native || stat(native->c_str(), &status) != 0) {
        return std::nullopt;
    }
    return (status.st_mode & S_IROTH) != 0;
}

namespace file_access {

SAccessResult FindExchangeable(const std::string& path, std::string& found) {
    const auto native = ToNativePath(path);
    errno = ENOENT;
    const std::unique_ptr<char, decltype(&std::free)> real(
        native ? realpath(native->c_str(), nullptr) : nullptr, &std::free);
    struct stat status = {};
    if (!real || stat(real.get(), &status) != 0) {
        return Failed(EAccessFailure::NotFound);
    }
    if (!S_ISREG(status.st_mode)) {
        return {EAccessFailure::NotFound, 0};
    }
    // The folder's permissions decide about the exchange; the file's own would not be asked.
    if (faccessat(AT_FDCWD, real.get(), W_OK, AT_EACCESS) != 0) {
        return Failed(EAccessFailure::NotWritable);
    }
    if (status.st_nlink > 1) {
        return {EAccessFailure::OtherNames, 0};
    }
    found = FromNativePath(real.get());
    return {};
}

SAccessResult MakeNew(const std::string& path, std::string_view readers) {
    const auto native = ToNativePath(path);
    errno = ENOENT;
    if (!native) {
        return Failed(EAccessFailure::NotMade);
    }
    const CDescriptor made(*native, O_WRONLY | O_CREAT | O_EXCL, kOwnerAlone);
    if (!made.IsOpen()) {
        return Failed(errno == EEXIST ? EAccessFailure::Exists : EAccessFailure::NotMade);
    }
    LetReadersIn(*native, made.Get(), readers);
    return {};
}

SAccessResult MakeAlike(const std::string& pattern, const std::string& path) {
    const CDescriptor from(ToNativePath(pattern).value_or(""), O_RDONLY);
    const CDescriptor to(ToNativePath(path).value_or(""), O_WRONLY | O_NOFOLLOW);
    struct stat wanted = {};
    struct stat given = {};
    if (!from.IsOpen() || !to.IsOpen() || fstat(from.Get(), &wanted) != 0 || fstat(to.Get(), &given) != 0) {
        return Failed(EAccessFailure::NotLikeOld);
    }
    const bool isSameOwner = wanted.st_uid == given.st_uid && wanted.st_gid == given.st_gid;
    // The mode last: a change of the owner takes bits of it away, and a list of users brings its own.
    const bool isAlike = (isSameOwner || fchown(to.Get(), wanted.st_uid, wanted.st_gid) == 0) &&
                         CopyAccessList(from.Get(), to.Get()) &&
                         fchmod(to.Get(), wanted.st_mode & kPermissions) == 0;
    return isAlike ? SAccessResult{} : Failed(EAccessFailure::NotLikeOld);
}

SAccessResult MoveOver(const std::string& newPath, const std::string& path) {
    const auto from = ToNativePath(newPath);
    const auto to = ToNativePath(path);
    errno = ENOENT;
    return from && to && rename(from->c_str(), to->c_str()) == 0 ? SAccessResult{}
                                                                 : Failed(EAccessFailure::NotExchanged);
}

} // namespace file_access

} // namespace ruvo
