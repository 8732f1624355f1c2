// The profile (INI) functions of the system: how the program reads its configuration file.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace ruvo {

class CIniText;

/// Reads one INI file, named by its full path. The answers are those of the system's profile functions; on
/// POSIX the file is read once, at construction, on Windows each question goes to the system.
class CProfileReader {
public:
    explicit CProfileReader(const std::string& path);
    CProfileReader(const CProfileReader&) = delete;
    CProfileReader& operator=(const CProfileReader&) = delete;
    ~CProfileReader();

    /// Names of the sections in file order. `capacity` is the size in bytes of the buffer that would take
    /// them (each name and a NUL, one more NUL at the end); what does not fit is cut. Empty when the file is
    /// missing, unreadable or without a section header.
    std::vector<std::string> SectionNames(std::size_t capacity) const;

    /// Names of the keys of the section that reading looks at, in file order, repeated ones included. Every
    /// key with a value is among them, so that a caller need not ask for each that could be there.
    [[nodiscard]] std::vector<std::string> KeyNames(std::string_view section) const;

    /// The value of a key, at most capacity - 1 bytes of it; the default when file, section or key is
    /// missing.
    std::string ReadString(std::string_view section, std::string_view key, std::string_view defaultValue,
                           std::size_t capacity) const;

    /// The file's text, parsed; null when it cannot be read. On POSIX it is what every answer comes
    /// from, on Windows the file is read for it when it is first asked for.
    const CIniText* Text() const;

private:
    struct SState;
    std::unique_ptr<SState> m_state;
};

} // namespace ruvo
