// What programs that work on one file at the same time need: its lock, and the question whether the path
// still leads to it.
#include "platform/windows/file_handle.h"
#include "platform/windows/wide_text.h"

namespace ruvo {

namespace {

bool IsSameFile(HANDLE one, HANDLE other) {
    BY_HANDLE_FILE_INFORMATION first = {};
    BY_HANDLE_FILE_INFORMATION second = {};
    return GetFileInformationByHandle(one, &first) != FALSE &&
           GetFileInformationByHandle(other, &second) != FALSE &&
           first.dwVolumeSerialNumber == second.dwVolumeSerialNumber &&
           first.nFileIndexHigh == second.nFileIndexHigh && first.nFileIndexLow == second.nFileIndexLow;
}

// Far beyond any end: a lock would shut others out of the bytes themselves.
OVERLAPPED LockPlace() {
    OVERLAPPED place = {};
    place.OffsetHigh = DWORD{1} << 30;
    return place;
}

EFileLock AskForLock(HANDLE file, DWORD how) {
    OVERLAPPED place = LockPlace();
    if (LockFileEx(file, how | LOCKFILE_FAIL_IMMEDIATELY, 0, 1, 0, &place) != FALSE) {
        return EFileLock::Taken;
    }
    const DWORD code = GetLastError();
    return code == ERROR_LOCK_VIOLATION || code == ERROR_IO_PENDING ? EFileLock::HeldByAnother
                                                                    : EFileLock::Unknown;
}

} // namespace

// One that only asks whether there is a lock has it for a moment.
EFileLock CFile::TryLock() {
    constexpr int kAttempts = 10;
    constexpr DWORD kMoment = 2; // milliseconds
    EFileLock lock = AskForLock(m_handle->file, LOCKFILE_EXCLUSIVE_LOCK);
    for (int attempt = 1; attempt < kAttempts && lock == EFileLock::HeldByAnother; ++attempt) {
        Sleep(kMoment);
        lock = AskForLock(m_handle->file, LOCKFILE_EXCLUSIVE_LOCK);
    }
    return lock;
}

// There is no mere question: for a moment it is taken, beside others that ask the same.
std::optional<bool> CFile::IsLocked() {
    const EFileLock lock = AskForLock(m_handle->file, 0);
    if (lock == EFileLock::Taken) {
        OVERLAPPED place = LockPlace();
        UnlockFileEx(m_handle->file, 0, 1, 0, &place);
    }
    return lock == EFileLock::Unknown ? std::nullopt : std::optional(lock == EFileLock::HeldByAnother);
}

bool CFile::IsAt(const std::string& path) const {
    constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    const HANDLE found = CreateFileW(Wide(path).c_str(), FILE_READ_ATTRIBUTES, kShareAll, nullptr,
                                     OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (found == INVALID_HANDLE_VALUE) {
        return false;
    }
    const bool isSame = IsSameFile(m_handle->file, found);
    CloseHandle(found);
    return isSame;
}

// The handle removes what it has opened, so no path is needed. Only an exclusive opening has the right to.
bool CFile::RemoveIfEmpty() {
    std::uint64_t length = 0;
    FILE_DISPOSITION_INFO removal = {};
    removal.DeleteFile = TRUE;
    return GetLength(length).Good() && length == 0 &&
           SetFileInformationByHandle(m_handle->file, FileDispositionInfo, &removal, sizeof removal) != FALSE;
}

} // namespace ruvo
