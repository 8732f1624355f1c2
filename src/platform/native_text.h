// In which encoding the process has its texts: paths, arguments, what it reads from the environment, from INI
// files and from the registry.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ruvo {

/// Text of this process is UTF-8 from here on, so that it can name every file. To be called first of all. (On
/// POSIX it is UTF-8 anyway. A Windows process begins with the system's code page, in which the extractor has
/// always written its files and its log.)
void UseUtf8Texts() noexcept;

/// The arguments of the program, without its name, given those of its entry point.
std::vector<std::string> ProgramArguments(int count, char** texts);

/// The text of bytes in a file that the extractor reads or writes, and the bytes of a text, which are none
/// where the file cannot hold it. The same bytes, except on Windows after UseUtf8Texts.
std::string TextOfStored(std::string_view bytes);
std::optional<std::string> StoredText(std::string_view text);

/// A text of this process in UTF-8, whatever its encoding is. (Bytes that are no text stay as they are on
/// POSIX.)
std::string NativeTextToUtf8(std::string_view text);

/// A relay's text, which is code page 1252, as it may stand in a path or a log line: control characters
/// become blanks. (The extractor on Windows leaves the other bytes as they are.)
std::string NativeRelayText(std::string_view cp1252);

} // namespace ruvo
