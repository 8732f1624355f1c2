// What the system's error codes mean to callers of the file operations.
#pragma once

#include "platform/file.h"

#include <array>
#include <cerrno>
#include <cstddef>
#include <unistd.h>

namespace ruvo {

struct SFailureRow {
    int code;
    EFileFailure failure;
};
inline constexpr std::array kFailures{SFailureRow{ENOENT, EFileFailure::NotFound},
                                      SFailureRow{ENOTDIR, EFileFailure::BadPath},
                                      SFailureRow{EEXIST, EFileFailure::Exists},
                                      SFailureRow{ENAMETOOLONG, EFileFailure::BadPath},
                                      SFailureRow{ELOOP, EFileFailure::BadPath},
                                      SFailureRow{EACCES, EFileFailure::AccessDenied},
                                      SFailureRow{EPERM, EFileFailure::AccessDenied},
                                      SFailureRow{EROFS, EFileFailure::AccessDenied},
                                      SFailureRow{EISDIR, EFileFailure::AccessDenied},
                                      SFailureRow{EBADF, EFileFailure::BadDescriptor},
                                      SFailureRow{ETXTBSY, EFileFailure::SharingViolation},
                                      SFailureRow{ENOSPC, EFileFailure::DiskFull},
                                      SFailureRow{EDQUOT, EFileFailure::DiskFull},
                                      SFailureRow{EFBIG, EFileFailure::DiskFull},
                                      SFailureRow{EMFILE, EFileFailure::TooManyOpenFiles},
                                      SFailureRow{ENFILE, EFileFailure::TooManyOpenFiles}};

inline SFileResult Failed(int code) {
    for (const SFailureRow& row : kFailures) {
        if (row.code == code) {
            return {row.failure, code};
        }
    }
    return {EFileFailure::Other, code};
}

inline SFileResult Outcome(bool good) {
    return good ? SFileResult{} : Failed(errno);
}

// Repeats a system call that a signal interrupted.
template <typename TCall>
auto Retry(TCall call) {
    auto result = call();
    while (result == -1 && errno == EINTR) {
        result = call();
    }
    return result;
}

// Writes all bytes; false with errno. `count` becomes the number of those written.
inline bool WriteAll(int descriptor, const void* bytes, std::size_t size, std::size_t& count) {
    for (count = 0; count < size;) {
        const auto* const rest = static_cast<const char*>(bytes) + count;
        const ssize_t put = Retry([&] { return write(descriptor, rest, size - count); });
        if (put <= 0) {
            errno = put == 0 ? EIO : errno;
            return false;
        }
        count += static_cast<std::size_t>(put);
    }
    return true;
}

// Of fsync or its like. Some file systems know no such thing, and have nothing that it could bring to a disk.
inline SFileResult FlushOutcome(bool isFlushed) {
    return Outcome(isFlushed || errno == EINVAL || errno == ENOSYS || errno == ENOTSUP);
}

} // namespace ruvo
