#include "platform/file_trust.h"

#include "platform/posix/native_path.h"
#include "platform/posix/place.h"

#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace ruvo {

namespace {

namespace fs = std::filesystem;

constexpr mode_t kOthersWrite = S_IWGRP | S_IWOTH;

/// Whether a file, a folder or a link is in the hands of root and the user alone. In a folder with the sticky
/// mark others can make files, but not replace those that are there.
bool IsGuardedEntry(const struct stat& status, std::uint32_t user, bool isWayThrough) {
    const bool isSticky = S_ISDIR(status.st_mode) && (status.st_mode & S_ISVTX) != 0;
    return (status.st_uid == 0 || status.st_uid == user) &&
           (S_ISLNK(status.st_mode) || (status.st_mode & kOthersWrite) == 0 || (isWayThrough && isSticky));
}

bool IsGuardedPlace(fs::path place, std::uint32_t user, int linksLeft) {
    std::error_code error;
    while (!fs::exists(fs::symlink_status(place, error)) && place.has_relative_path()) {
        place = place.parent_path();
    }
    for (bool isWayThrough = false;; isWayThrough = true, place = place.parent_path()) {
        struct stat status = {};
        if (lstat(place.c_str(), &status) != 0 || !IsGuardedEntry(status, user, isWayThrough)) {
            return false;
        }
        if (S_ISLNK(status.st_mode)) {
            const fs::path target = place.parent_path() / fs::read_symlink(place, error);
            if (error || linksLeft == 0 || !IsGuardedPlace(target, user, linksLeft - 1)) {
                return false;
            }
        }
        if (!place.has_relative_path()) {
            return true;
        }
    }
}

} // namespace

std::optional<bool> IsReadableByEveryone(const std::string& path) {
    const auto native = ToNativePath(path);
    std::error_code error;
    fs::path place = native ? fs::canonical(*native, error) : fs::path();
    const auto lets = [&error](const fs::path& file, fs::perms others) {
        return (fs::status(file, error).permissions() & others) == others;
    };
    bool isReadable = lets(place, fs::perms::others_read);
    for (; !error && place.has_relative_path(); place = place.parent_path()) {
        isReadable = isReadable && lets(place.parent_path(), fs::perms::others_exec);
    }
    return !native || error ? std::nullopt : std::optional(isReadable);
}

const char* HowToRestrict() {
    return "\"chmod 600\" restricts it to its owner, \"chmod 640\" to its owner and group";
}

const char* TrustedUsers() {
    return "root";
}

ETrustedRead ReadTrustedFile(const std::string& path, std::string& bytes) {
    constexpr std::size_t kLargest = std::size_t{64} * 1024;
    const auto native = ToNativePath(path);
    SPlace place;
    struct stat status = {};
    errno = ENOENT;
    if (!native || !FindPlace(*native, ELinks::Trusted, place) || !place.Examine(status)) {
        return errno == ENOENT  ? ETrustedRead::Missing
               : errno == ELOOP ? ETrustedRead::Untrusted
                                : ETrustedRead::Unreadable;
    }
    const CDescriptor file = S_ISREG(status.st_mode) ? place.Open(O_RDONLY) : CDescriptor();
    if (!file.IsOpen() || fstat(file.Get(), &status) != 0) {
        return ETrustedRead::Unreadable;
    }
    if (!IsTrustedOwner(status) || (status.st_mode & kOthersWrite) != 0) {
        return ETrustedRead::Untrusted;
    }
    bytes.resize(kLargest + 1);
    const ssize_t size = pread(file.Get(), bytes.data(), bytes.size(), 0);
    bytes.resize(size < 0 ? 0 : static_cast<std::size_t>(size));
    return size < 0 || bytes.size() > kLargest ? ETrustedRead::Unreadable : ETrustedRead::Read;
}

bool IsGuarded(const std::string& path, std::uint32_t user) {
    constexpr int kMostLinks = 40; // as many as the system follows
    const auto native = ToNativePath(path);
    return native && native->starts_with('/') && IsGuardedPlace(*native, user, kMostLinks);
}

} // namespace ruvo
