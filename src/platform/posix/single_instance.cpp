#include "platform/single_instance.h"

#include "platform/environment.h"
#include "platform/posix/native_path.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace ruvo {

namespace {

// Where the lock file is. In a folder that all users share it must be our own: anybody can make a file there.
struct SLockFile {
    std::string path;
    bool mustBeOurs = false;
};

std::string FileName(std::string name) {
    const auto isOdd = [](char c) {
        const bool letterOrDigit = (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
        return !letterOrDigit && c != '-' && c != '_';
    };
    std::ranges::replace_if(name, isOdd, '_');
    return name;
}

SLockFile LockFile(const std::string& name) {
    const auto named = EnvironmentValue("RUVO_LOCK_DIR");
    const auto folder = named ? named : EnvironmentValue("XDG_RUNTIME_DIR");
    if (folder) {
        return {*folder + "/" + FileName(name) + ".lock", false};
    }
    return {"/tmp/" + FileName(name) + "-" + std::to_string(geteuid()) + ".lock", true};
}

// Opens the lock file, -1 when that fails or something else stands in its place. A link is not followed: it
// could make us create a file anywhere.
int OpenLockFile(const SLockFile& lock) {
    constexpr mode_t kOwnerOnly = 0600;
    const auto native = ToNativePath(lock.path);
    constexpr int kFlags = O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK | O_NOCTTY;
    const int descriptor = native ? open(native->c_str(), kFlags, kOwnerOnly) : -1;
    struct stat status = {};
    if (descriptor != -1 && (fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode) ||
                             (lock.mustBeOurs && status.st_uid != geteuid()))) {
        close(descriptor);
        return -1;
    }
    return descriptor;
}

} // namespace

struct CInstanceMarker::SHandle {
    SHandle() = default;
    SHandle(const SHandle&) = delete;
    SHandle& operator=(const SHandle&) = delete;
    ~SHandle() { Release(); }

    // Closing gives the lock up, as the end of the process does. The file stays: to remove it could take it
    // away from a process that has just opened it.
    void Release() {
        if (descriptor != -1) {
            close(std::exchange(descriptor, -1));
        }
    }

    int descriptor = -1;
};

CInstanceMarker::CInstanceMarker() : m_handle(std::make_unique<SHandle>()) {}

CInstanceMarker::~CInstanceMarker() = default;

EInstanceClaim CInstanceMarker::Claim(const std::string& name) {
    m_handle->Release();
    m_handle->descriptor = OpenLockFile(LockFile(name));
    if (m_handle->descriptor == -1) {
        return EInstanceClaim::MarkerFailed;
    }
    if (flock(m_handle->descriptor, LOCK_EX | LOCK_NB) == 0) {
        return EInstanceClaim::Claimed;
    }
    const bool heldElsewhere = errno == EWOULDBLOCK;
    m_handle->Release();
    return heldElsewhere ? EInstanceClaim::AlreadyRunning : EInstanceClaim::MarkerFailed;
}

} // namespace ruvo
