#include "platform/file_trust.h"

#include "platform/posix/native_path.h"
#include "platform/posix/place.h"

#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace ruvo {

std::optional<bool> IsReadableByEveryone(const std::string& path) {
    namespace fs = std::filesystem;
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

ETrustedRead ReadTrustedFile(const std::string& path, std::string& bytes) {
    constexpr mode_t kOthersWrite = S_IWGRP | S_IWOTH;
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

} // namespace ruvo
