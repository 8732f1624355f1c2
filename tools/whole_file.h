// Writes a file so that whoever reads it sees the old one or the new one, never half of it.
#pragma once

#include <string>
#include <string_view>
#include <system_error>

namespace ruvo {

/// Where the bytes go that are to become the file at a path (in the system's own form): beside it, until they
/// are all there. A link stays one, and the file that it leads to is replaced. What is no file, such as a
/// device or a pipe, takes the bytes as they come and stays.
class CFilePlace {
public:
    explicit CFilePlace(const std::string& path);

    /// The path to write to.
    [[nodiscard]] const std::string& WritePath() const { return m_writePath; }
    [[nodiscard]] bool IsDirect() const { return m_isDirect; }
    /// Gives what was just made at the path to write to the access rights of the file that it will replace.
    void TakeAccessRights() const;
    /// Puts what was written in its place.
    [[nodiscard]] std::error_code Settle() const;
    /// Takes away what was written.
    void Discard() const;

private:
    std::string m_path;
    std::string m_writePath;
    bool m_isDirect = false;
};

/// Puts the text there as CFilePlace says. What went wrong, for people; empty when it is done.
[[nodiscard]] std::string ReplaceWholeFile(const std::string& path, std::string_view text);

} // namespace ruvo
