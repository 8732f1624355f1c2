#include "platform/standard_error.h"

#include "platform/windows/system.h"

namespace ruvo {

// Only to a program that reads it, or a file: the extractor has no console of its own, and one that it was
// started from is somebody else's.
void WriteStandardError(std::string_view line) noexcept {
    const HANDLE stream = GetStdHandle(STD_ERROR_HANDLE);
    const DWORD type =
        stream != nullptr && stream != INVALID_HANDLE_VALUE ? GetFileType(stream) : FILE_TYPE_UNKNOWN;
    DWORD count = 0;
    if (type == FILE_TYPE_PIPE || type == FILE_TYPE_DISK) {
        WriteFile(stream, line.data(), static_cast<DWORD>(line.size()), &count, nullptr);
        if (!line.ends_with('\n')) {
            WriteFile(stream, "\n", 1, &count, nullptr);
        }
    }
}

} // namespace ruvo
