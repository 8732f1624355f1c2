// Marks by which a command goes on where it ended the time before: per name, up to which run of each site an
// output has gone. They are kept in the state folder of the user who calls the command.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace ruvo {

/// A run of a site. The time tells whether the records are still those that the number is of.
struct SMark {
    std::uint64_t number = 0;
    std::string begin; ///< UTC, as in the record
};

/// Letters, digits, "-", "_" and ".", at most 64, the first one no point.
[[nodiscard]] bool IsMarkName(std::string_view name);

/// Replaces the file of a name's marks, in the folder for marks, which it makes. A readable reason on
/// failure; empty on success.
[[nodiscard]] std::string ReplaceMarks(const std::string& folder, const std::string& path,
                                       const std::string& text);

/// The marks of one name.
class CMarks {
public:
    /// The command says whose names they are. Reads the marks; Failure says why it could not.
    CMarks(std::string_view command, std::string_view name);

    [[nodiscard]] const std::string& Failure() const { return m_failure; }
    /// The site is the full path of its INI file. None for one that has none yet.
    [[nodiscard]] std::optional<SMark> Of(const std::string& site) const;
    void Move(const std::string& site, SMark mark) { m_marks[site] = std::move(mark); }
    /// Writes them as a whole. A readable reason on failure; empty on success.
    [[nodiscard]] std::string Save() const;

private:
    std::string m_folder; ///< empty without a state folder
    std::string m_path;
    std::string m_failure;
    std::map<std::string, SMark> m_marks;
};

} // namespace ruvo
