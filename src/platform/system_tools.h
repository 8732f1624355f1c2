// What people have on this system to look after programs: for the commands that a text names.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace ruvo {

/// Of which kind this system's own tools are.
enum class ESystemTools : std::uint8_t { Posix, Windows };
ESystemTools SystemTools() noexcept;

/// The word of a command as the system's command prompt takes it: in quotes if it needs them.
std::string ShellWord(std::string_view word);

} // namespace ruvo
