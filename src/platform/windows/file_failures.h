// What the system's error codes mean to callers of the file operations.
#pragma once

#include "platform/file.h"
#include "platform/windows/system.h"

#include <algorithm>
#include <array>

namespace ruvo {

inline constexpr DWORD kDiskQuotaExceeded = 1295; // the compiler's header has no name for it

struct SFailureRow {
    DWORD code;
    EFileFailure failure;
};
inline constexpr std::array kFailures{SFailureRow{ERROR_FILE_NOT_FOUND, EFileFailure::NotFound},
                                      SFailureRow{ERROR_FILE_EXISTS, EFileFailure::Exists},
                                      SFailureRow{ERROR_ALREADY_EXISTS, EFileFailure::Exists},
                                      SFailureRow{ERROR_PATH_NOT_FOUND, EFileFailure::BadPath},
                                      SFailureRow{ERROR_INVALID_DRIVE, EFileFailure::BadPath},
                                      SFailureRow{ERROR_BAD_NETPATH, EFileFailure::BadPath},
                                      SFailureRow{ERROR_BAD_NET_NAME, EFileFailure::BadPath},
                                      SFailureRow{ERROR_INVALID_NAME, EFileFailure::BadPath},
                                      SFailureRow{ERROR_BAD_PATHNAME, EFileFailure::BadPath},
                                      SFailureRow{ERROR_FILENAME_EXCED_RANGE, EFileFailure::BadPath},
                                      SFailureRow{ERROR_DIRECTORY, EFileFailure::BadPath},
                                      SFailureRow{ERROR_TOO_MANY_OPEN_FILES, EFileFailure::TooManyOpenFiles},
                                      SFailureRow{ERROR_NO_SYSTEM_RESOURCES, EFileFailure::TooManyOpenFiles},
                                      SFailureRow{ERROR_ACCESS_DENIED, EFileFailure::AccessDenied},
                                      SFailureRow{ERROR_WRITE_PROTECT, EFileFailure::AccessDenied},
                                      SFailureRow{ERROR_NETWORK_ACCESS_DENIED, EFileFailure::AccessDenied},
                                      SFailureRow{ERROR_CANNOT_MAKE, EFileFailure::AccessDenied},
                                      SFailureRow{ERROR_INVALID_HANDLE, EFileFailure::BadDescriptor},
                                      SFailureRow{ERROR_SHARING_VIOLATION, EFileFailure::SharingViolation},
                                      SFailureRow{ERROR_LOCK_VIOLATION, EFileFailure::SharingViolation},
                                      SFailureRow{ERROR_USER_MAPPED_FILE, EFileFailure::SharingViolation},
                                      SFailureRow{ERROR_DISK_FULL, EFileFailure::DiskFull},
                                      SFailureRow{ERROR_HANDLE_DISK_FULL, EFileFailure::DiskFull},
                                      SFailureRow{kDiskQuotaExceeded, EFileFailure::DiskFull},
                                      SFailureRow{ERROR_FILE_TOO_LARGE, EFileFailure::DiskFull}};

inline SFileResult Failed(DWORD code) {
    const auto* const row = std::ranges::find(kFailures, code, &SFailureRow::code);
    return {row == kFailures.end() ? EFileFailure::Other : row->failure, static_cast<long>(code)};
}

inline SFileResult Outcome(BOOL good) {
    return good != FALSE ? SFileResult{} : Failed(GetLastError());
}

} // namespace ruvo
