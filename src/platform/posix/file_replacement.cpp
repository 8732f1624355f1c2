#include "platform/file_replacement.h"

#include "platform/posix/file_failures.h"
#include "platform/posix/file_size_signal.h"
#include "platform/posix/native_path.h"
#include "platform/posix/place.h"

#include <array>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <dirent.h>
#include <fcntl.h>
#include <grp.h>
#include <memory>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

namespace ruvo {

namespace {

constexpr mode_t kPermissions = 07777;
constexpr mode_t kReadAndWrite = 0666; // nothing that is written here is a program
constexpr mode_t kOwnerAlone = S_IRUSR | S_IWUSR;
constexpr const char* kAccessList = "system.posix_acl_access";

SAccessResult Failed(EAccessFailure failure) {
    return {failure, errno};
}

bool IsGroupNamed(gid_t id, std::string_view name) {
    group entry = {};
    group* found = nullptr;
    std::vector<char> buffer(std::size_t{16} * 1024);
    return getgrgid_r(id, &entry, buffer.data(), buffer.size(), &found) == 0 && found != nullptr &&
           name == found->gr_name;
}

// The user may not belong to the folder's group; the system then refuses, and the file stays private.
void GrantGroupRead(const SPlace& place, int file, std::string_view readers) {
    struct stat folder = {};
    if (fstat(place.folder.Get(), &folder) == 0 && IsGroupNamed(folder.st_gid, readers) &&
        fchown(file, static_cast<uid_t>(-1), folder.st_gid) == 0) {
        static_cast<void>(fchmod(file, kOwnerAlone | S_IRGRP));
    }
}

bool HasNoAccessList(int code) {
    return code == ENODATA || code == ENOTSUP;
}

// Copies the access list. Where the old file has none, the new one must not keep what its folder gave it.
bool CopyAccessList(int from, int to) {
    std::vector<char> list(std::size_t{64} * 1024); // the longest value there is
    const ssize_t size = fgetxattr(from, kAccessList, list.data(), list.size());
    if (size >= 0) {
        return fsetxattr(to, kAccessList, list.data(), static_cast<std::size_t>(size), 0) == 0;
    }
    return HasNoAccessList(errno) && (fremovexattr(to, kAccessList) == 0 || HasNoAccessList(errno));
}

// Some file systems have one fixed mode for all files: a mode that already is as wanted is good enough,
// unless it would run with its owner's rights.
bool SetPermissions(mode_t wanted, int to) {
    constexpr mode_t kOwnersPower = S_ISUID | S_ISGID;
    struct stat given = {};
    return fchmod(to, wanted & kReadAndWrite) == 0 ||
           (fstat(to, &given) == 0 && ((given.st_mode ^ wanted) & kPermissions) == 0 &&
            (wanted & kOwnersPower) == 0);
}

bool CopyOwnerAndPermissions(int from, int to) {
    struct stat wanted = {};
    struct stat given = {};
    if (fstat(from, &wanted) != 0 || fstat(to, &given) != 0) {
        return false;
    }
    const bool isSameOwner = wanted.st_uid == given.st_uid && wanted.st_gid == given.st_gid;
    // The mode last: changing the owner clears bits of it, and an access list overwrites others.
    return (isSameOwner || fchown(to, wanted.st_uid, wanted.st_gid) == 0) && CopyAccessList(from, to) &&
           SetPermissions(wanted.st_mode, to);
}

// A program that is still writing its new file keeps it locked. Without locks a file counts as unlocked.
bool IsLocked(const SPlace& old, const char* name) {
    const CDescriptor file(openat(old.folder.Get(), name, O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    return file.IsOpen() && flock(file.Get(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
}

// Only what a replacement of this file can have left: its owner's files that have such a name. Unlike other
// files of that name, a locked one is still being written.
void RemoveLeftovers(const SPlace& old, uid_t owner) {
    const std::unique_ptr<DIR, int (*)(DIR*)> folder(fdopendir(old.OpenFolder().Release()), &closedir);
    while (const dirent* const entry = folder ? readdir(folder.get()) : nullptr) {
        struct stat status = {};
        if (file_replacement::IsTemporaryName(entry->d_name, old.name) &&
            fstatat(old.folder.Get(), entry->d_name, &status, AT_SYMLINK_NOFOLLOW) == 0 &&
            S_ISREG(status.st_mode) && status.st_uid == owner && !IsLocked(old, entry->d_name)) {
            static_cast<void>(unlinkat(old.folder.Get(), entry->d_name, 0));
        }
    }
}

} // namespace

SAccessResult ResolveOutputPath(const std::string& systemPath, std::string& resolved) {
    SPlace place;
    if (!FindPlace(systemPath, ELinks::Trusted, place)) {
        return errno == ELOOP ? SAccessResult{EAccessFailure::UntrustedLink, 0}
                              : Failed(EAccessFailure::NotFound);
    }
    resolved = place.folderPath + place.name;
    return {};
}

namespace file_replacement {

struct COldFile::SHandle {
    SPlace place;
    CDescriptor file;
    bool isStream = false;

    SAccessResult OpenFile(bool isOutput);
};

// Opens the file at the place, and checks that a new one can replace it.
SAccessResult COldFile::SHandle::OpenFile(bool isOutput) {
    struct stat status = {};
    // Replacing needs permission for the folder only. Opening for writing makes the file's own count, too.
    file = place.Open(O_RDWR);
    if (!file.IsOpen() || fstat(file.Get(), &status) != 0) {
        return Failed(errno == ENOENT ? EAccessFailure::NotFound : EAccessFailure::NotWritable);
    }
    if (!S_ISREG(status.st_mode)) {
        return {EAccessFailure::NotFound, 0};
    }
    if (status.st_nlink > 1 && !isOutput) {
        return {EAccessFailure::HardLinked, 0};
    }
    return faccessat(place.folder.Get(), ".", W_OK | X_OK, AT_EACCESS) == 0
               ? SAccessResult{}
               : Failed(EAccessFailure::NotCreated);
}

COldFile::COldFile() : m_handle(std::make_unique<SHandle>()) {}
COldFile::~COldFile() = default;

SAccessResult COldFile::Open(const std::string& path, EFileKind kind) {
    m_path = path;
    m_kind = kind;
    m_handle->file =
        CDescriptor(); // closed first, so that the wait of Lock holds no lock on an outdated file
    m_handle->isStream = false;
    SPlace& place = m_handle->place;
    const auto native = ToNativePath(path);
    const bool isOutput = kind == EFileKind::Output;
    errno = ENOENT;
    if (!native || !FindPlace(*native, isOutput ? ELinks::Trusted : ELinks::All, place)) {
        return native && errno == ELOOP ? SAccessResult{EAccessFailure::UntrustedLink, 0}
                                        : Failed(EAccessFailure::NotFound);
    }
    struct stat status = {};
    if (!place.Examine(status)) {
        return isOutput && errno == ENOENT ? SAccessResult{} : Failed(EAccessFailure::NotFound);
    }
    if (!S_ISREG(status.st_mode)) { // checked before opening, which alone has effects on some devices
        return isOutput ? OpenStream() : SAccessResult{EAccessFailure::NotFound, 0};
    }
    return m_handle->OpenFile(isOutput);
}

// Opening a named pipe waits for its reader. Another user's pipe might never get one.
SAccessResult COldFile::OpenStream() {
    const SPlace& place = m_handle->place;
    struct stat status = {};
    const bool isPipe = place.Examine(status) && S_ISFIFO(status.st_mode);
    if (isPipe && !IsTrustedOwner(status)) {
        return {EAccessFailure::UntrustedLink, 0};
    }
    const int flags = (place.IsDescriptorLink() ? 0 : O_NOFOLLOW) | (isPipe ? 0 : O_NONBLOCK);
    m_handle->file =
        CDescriptor(openat(place.folder.Get(), place.name.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY | flags));
    if (!m_handle->file.IsOpen() || fcntl(m_handle->file.Get(), F_SETFL, 0) != 0 ||
        fstat(m_handle->file.Get(), &status) != 0) {
        return Failed(EAccessFailure::NotWritable);
    }
    m_handle->isStream = !S_ISREG(status.st_mode); // which it may have become meanwhile
    return m_handle->isStream ? SAccessResult{} : SAccessResult{EAccessFailure::NotFound, 0};
}

bool COldFile::Exists() const {
    return m_handle->file.IsOpen();
}

bool COldFile::IsStream() const {
    return m_handle->isStream;
}

SAccessResult COldFile::Lock() {
    constexpr int kTries = 100;
    constexpr std::chrono::milliseconds kPause(20);
    for (int tries = 0; tries < kTries; ++tries) {
        if (!Exists() || IsStream()) {
            return {};
        }
        if (flock(m_handle->file.Get(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) {
            std::this_thread::sleep_for(kPause);
            continue;
        } // any other failure: the file system has no locks, and the replacement goes on without
        struct stat status = {};
        if (m_handle->place.IsSameFile(m_handle->file) && fstat(m_handle->file.Get(), &status) == 0) {
            RemoveLeftovers(m_handle->place, status.st_uid);
            return {};
        }
        if (const SAccessResult result = Open(m_path, m_kind); !result.Good()) {
            return result;
        }
    }
    return {EAccessFailure::InUse, 0};
}

bool COldFile::Contains(std::string_view bytes) {
    std::array<char, 16384> block{};
    off_t at = 0;
    for (;;) {
        const ssize_t count = pread(m_handle->file.Get(), block.data(), block.size(), at);
        if (count <= 0) {
            return count == 0 && bytes.empty() && m_handle->place.IsSameFile(m_handle->file);
        }
        const std::string_view read(block.data(), static_cast<std::size_t>(count));
        if (!bytes.starts_with(read)) {
            return false;
        }
        bytes.remove_prefix(read.size());
        at += count;
    }
}

struct CNewFile::SHandle {
    SPlace place;
    CDescriptor file; // open as long as the destructor is to remove the file
};

CNewFile::CNewFile() : m_handle(std::make_unique<SHandle>()) {}

CNewFile::~CNewFile() {
    if (m_handle->file.IsOpen() && m_handle->place.IsSameFile(m_handle->file)) {
        m_handle->place.Remove();
    }
}

SAccessResult CNewFile::Create(const std::string& path, std::string_view readers) {
    const auto native = ToNativePath(path);
    errno = ENOENT;
    if (!native) {
        return Failed(EAccessFailure::NotCreated);
    }
    m_path = path;
    m_handle->place = SPlace(*native);
    m_handle->file = m_handle->place.Open(O_WRONLY | O_CREAT | O_EXCL, kOwnerAlone);
    if (!m_handle->file.IsOpen()) {
        return Failed(errno == EEXIST ? EAccessFailure::Exists : EAccessFailure::NotCreated);
    }
    GrantGroupRead(m_handle->place, m_handle->file.Get(), readers);
    return {};
}

SAccessResult CNewFile::CreateBeside(COldFile& old) {
    constexpr int kTries = 100;
    COldFile::SHandle& oldFile = old.Handle();
    if (old.IsStream()) {
        m_handle->file = std::move(oldFile.file); // without a place: the destructor removes nothing
        return {};
    }
    SPlace& place = m_handle->place;
    place.folderPath = oldFile.place.folderPath;
    place.folder = CDescriptor(fcntl(oldFile.place.folder.Get(), F_DUPFD_CLOEXEC, 0));
    for (int tries = 0; tries < kTries && !m_handle->file.IsOpen(); ++tries) {
        place.name = TemporaryName(oldFile.place.name);
        m_handle->file = place.Open(O_WRONLY | O_CREAT | O_EXCL, old.Exists() ? kOwnerAlone : kReadAndWrite);
        if (!m_handle->file.IsOpen() && errno != EEXIST) {
            break;
        }
    }
    if (!m_handle->file.IsOpen()) {
        return Failed(EAccessFailure::NotCreated);
    }
    static_cast<void>(flock(m_handle->file.Get(), LOCK_EX | LOCK_NB)); // so that RemoveLeftovers spares it
    m_path = FromNativePath(place.folderPath + place.name);
    // Before the first byte is written: until then there is nothing that the wrong user could read.
    return !old.Exists() || CopyOwnerAndPermissions(oldFile.file.Get(), m_handle->file.Get())
               ? SAccessResult{}
               : Failed(EAccessFailure::PermissionsNotKept);
}

SAccessResult CNewFile::Write(std::string_view bytes) {
    std::size_t count = 0;
    IgnoreFileSizeSignal();
    return WriteAll(m_handle->file.Get(), bytes.data(), bytes.size(), count)
               ? SAccessResult{}
               : Failed(EAccessFailure::NotWritten);
}

SAccessResult CNewFile::Flush() {
    return FlushOutcome(Retry([&] { return fsync(m_handle->file.Get()); }) == 0).Good()
               ? SAccessResult{}
               : Failed(EAccessFailure::NotWritten);
}

SAccessResult CNewFile::Replace(COldFile& old) {
    const SPlace& from = m_handle->place;
    const SPlace& to = old.Handle().place;
    if (!from.IsSameFile(m_handle->file)) {
        return {EAccessFailure::NotReplaced, 0};
    }
    if (renameat(from.folder.Get(), from.name.c_str(), to.folder.Get(), to.name.c_str()) != 0) {
        return Failed(EAccessFailure::NotReplaced);
    }
    Keep();
    return {};
}

void CNewFile::Keep() {
    m_handle->file = CDescriptor();
    m_handle->place.Flush();
}

} // namespace file_replacement

} // namespace ruvo
