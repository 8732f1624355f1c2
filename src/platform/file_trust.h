// Who can read a file, and who can have written it. Path texts are Windows-form, as in files.h.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace ruvo {

/// Whether every user of the machine can read the file, by its permissions and those of the folders above it;
/// none when there is no such file, or they cannot be looked at.
std::optional<bool> IsReadableByEveryone(const std::string& path);

/// What restricts a file to its owner, and who counts as trusted, for people.
const char* HowToRestrict();
const char* TrustedUsers();

enum class ETrustedRead : std::uint8_t {
    Read,
    Missing,
    Unreadable,
    Untrusted, ///< another user can have written the file, or owns a link in its path
};
/// Reads a small file that only this user and root (on Windows, the administrators) can have written: its
/// contents may decide what a program does.
ETrustedRead ReadTrustedFile(const std::string& path, std::string& bytes);

/// Whether root and that user alone can decide, now or later, where the path leads and what is there, which
/// may be nothing. (On Windows: administrators and the user of this process, and something must be there.)
bool IsGuarded(const std::string& path, std::uint32_t user);

} // namespace ruvo
