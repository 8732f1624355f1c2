// What programs that work on one file at the same time need: its lock, and the question whether the path
// still leads to it.
#include "platform/posix/file_failures.h"
#include "platform/posix/file_handle.h"
#include "platform/posix/native_path.h"

#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace ruvo {

namespace {

constexpr int kMostLinks = 8; // a longer chain of links is a circle

// Links are followed, as the opening did.
bool LeadsTo(const std::string& native, dev_t device, ino_t number, struct stat& found) {
    return stat(native.c_str(), &found) == 0 && found.st_dev == device && found.st_ino == number;
}

// A lock of this opening's own: it outlasts the closing of others of the same file, and it works over NFS. It
// is far beyond any end, where no program asks for the bytes.
struct flock LockPlace() {
    struct flock place = {};
    place.l_type = F_WRLCK;
    place.l_whence = SEEK_SET;
    place.l_start = off_t{1} << 62;
    place.l_len = 1;
    return place;
}

} // namespace

int MakeNewFile(std::string& native, int flags, unsigned int mode) {
    for (int links = 0; links < kMostLinks; ++links) {
        const int descriptor = open(native.c_str(), flags, mode);
        if (descriptor != -1 || errno != EEXIST) {
            return descriptor;
        }
        std::error_code noLink;
        const std::filesystem::path target = std::filesystem::read_symlink(native, noLink);
        if (noLink) {
            errno = EEXIST;
            return -1;
        }
        native = (std::filesystem::path(native).parent_path() / target).string();
    }
    errno = ELOOP;
    return -1;
}

EFileLock CFile::TryLock() {
    struct flock place = LockPlace();
    if (Retry([&] { return fcntl(m_handle->descriptor, F_OFD_SETLK, &place); }) == 0) {
        return EFileLock::Taken;
    }
    return errno == EAGAIN || errno == EACCES ? EFileLock::HeldByAnother : EFileLock::Unknown;
}

std::optional<bool> CFile::IsLocked() {
    struct flock place = LockPlace();
    const bool isTold = fcntl(m_handle->descriptor, F_OFD_GETLK, &place) == 0;
    return isTold ? std::optional(place.l_type != F_UNLCK) : std::nullopt;
}

bool CFile::IsAt(const std::string& path) const {
    const auto native = ToNativePath(path);
    struct stat found = {};
    return native && IsOpen() && LeadsTo(*native, m_handle->device, m_handle->number, found);
}

bool CFile::RemoveIfEmpty() {
    struct stat found = {};
    return LeadsTo(m_handle->madePath, m_handle->device, m_handle->number, found) && found.st_size == 0 &&
           unlink(m_handle->madePath.c_str()) == 0;
}

} // namespace ruvo
