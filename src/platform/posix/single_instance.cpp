#include "platform/single_instance.h"

#include "base/digest.h"
#include "base/text.h"
#include "platform/environment.h"
#include "platform/full_path.h"
#include "platform/posix/native_path.h"
#include "platform/posix/users_folders.h"

#include <cerrno>
#include <fcntl.h>
#include <string_view>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace ruvo {

namespace {

constexpr const char* kPackageFolder = "/run/ruvo"; // made at boot, for the user of the services

struct SLockFolder {
    std::string path;
    CDescriptor folder; ///< closed when there is none
};

// The one place of all of a user's runs, whatever starts them, where no other user can take the lock.
SLockFolder OpenUsersFolder() {
    if (CDescriptor folder = OpenFolder(kPackageFolder); IsPrivateFolder(folder)) {
        return {kPackageFolder, std::move(folder)};
    }
    const std::string path = UsersStateFolder();
    MakeFolders(path); // what comes of it is seen below
    CDescriptor folder = OpenFolder(path);
    return IsPrivateFolder(folder) ? SLockFolder{path, std::move(folder)} : SLockFolder();
}

SLockFolder OpenLockFolder() {
    if (const auto named = EnvironmentValue("RUVO_LOCK_DIR")) {
        const auto native = ToNativePath(*named);
        return native ? SLockFolder{*native, OpenFolder(*native)} : SLockFolder();
    }
    return OpenUsersFolder();
}

// Different names give different texts. Two of them make a file's name: file systems take 255 bytes,
// enciphered ones fewer.
std::string FileName(std::string_view name) {
    std::string text;
    for (const char c : name) {
        if (IsLetter(c) || IsDigit(c) || c == '-' || c == '_') {
            text += c;
        } else {
            text += '%';
            AppendHexByte(text, static_cast<unsigned char>(c));
        }
    }
    constexpr std::size_t kLongest = 64;
    if (text.size() > kLongest) {
        const std::string end = '~' + DigestOf(text); // which no short text has
        text.replace(kLongest - end.size(), std::string::npos, end);
    }
    return text;
}

// Opens a lock file, closed when that fails or something else has its name. A link is not followed: it
// could make us create a file anywhere.
CDescriptor OpenLockFile(const CDescriptor& folder, const std::string& name) {
    constexpr mode_t kOwnerOnly = 0600;
    constexpr int kFlags = O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK | O_NOCTTY;
    CDescriptor file(openat(folder.Get(), (name + ".lock").c_str(), kFlags, kOwnerOnly));
    struct stat status = {};
    const bool isFile = file.IsOpen() && fstat(file.Get(), &status) == 0 && S_ISREG(status.st_mode);
    return isFile ? std::move(file) : CDescriptor();
}

} // namespace

std::string InstanceFolder() {
    const SLockFolder lock = OpenLockFolder();
    return lock.folder.IsOpen() ? FullPath(FromNativePath(lock.path)) : std::string();
}

struct CInstanceMarker::SHandle {
    // Closing releases the locks, as the end of the process does. The files stay: removing one could take it
    // from a process that has just opened it.
    std::vector<CDescriptor> locks;
};

CInstanceMarker::CInstanceMarker() : m_handle(std::make_unique<SHandle>()) {}

CInstanceMarker::~CInstanceMarker() = default;

// A run that is of no site is the only one. Runs of sites share that lock with each other, and each has its
// site's for itself: two sites may be visited at once, but none of them beside a run of another kind, which
// could be that of the same site.
EInstanceClaim CInstanceMarker::Claim(const std::string& name) {
    m_handle->locks.clear();
    const CDescriptor folder = OpenLockFolder().folder;
    const auto take = [&](const std::string& file, int kind) {
        CDescriptor lock = OpenLockFile(folder, file);
        if (!lock.IsOpen()) {
            return EInstanceClaim::MarkerFailed;
        }
        if (flock(lock.Get(), kind | LOCK_NB) != 0) {
            return errno == EWOULDBLOCK ? EInstanceClaim::AlreadyRunning : EInstanceClaim::MarkerFailed;
        }
        m_handle->locks.push_back(std::move(lock));
        return EInstanceClaim::Claimed;
    };
    const auto site = EnvironmentValue("RUVO_SITE");
    EInstanceClaim claim = take(FileName(name), site ? LOCK_SH : LOCK_EX);
    if (site && claim == EInstanceClaim::Claimed) {
        claim = take(FileName(name) + "@" + FileName(*site), LOCK_EX);
    }
    if (claim != EInstanceClaim::Claimed) {
        m_handle->locks.clear();
    }
    return claim;
}

} // namespace ruvo
