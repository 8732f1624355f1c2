// Which records a user of the archive's lines has not had yet: marks of a name, one for each day file.
#pragma once

#include "base/digest.h"
#include "dayfile/day_file_reader.h"

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

namespace ruvo {

/// A mark says up to where a day file's records were written, and what they were: a file that no longer
/// begins with them is written from its start again. So is what follows a damaged place, which may be mended.
/// The state folder of the user who calls the command keeps the marks.
class CNewRecords {
public:
    /// Reads the marks of that name; Failure says why it could not.
    explicit CNewRecords(std::string_view name);

    [[nodiscard]] const std::string& Failure() const { return m_failure; }
    /// Starts with a day file, whose path is in the system's own form. False when it is as it was.
    [[nodiscard]] bool Begin(const std::string& path, std::uint64_t size, std::int64_t changed);
    /// Takes every item of the file, in order. True for a record that is new.
    [[nodiscard]] bool IsNew(const SDayFileItem& item);
    void End();
    /// Moves the marks to the ends of the files. A readable reason on failure; empty on success.
    [[nodiscard]] std::string Save() const;

private:
    struct SMark {
        std::uint64_t end = 0;               ///< of the last record before any damage
        std::uint64_t digest = kEmptyDigest; ///< of all bytes of the records up to there
        std::uint64_t size = 0;
        std::int64_t changed = 0;
    };
    void ReadMarks();
    [[nodiscard]] static bool StillBegins(const std::string& path, const SMark& mark);

    std::string m_folder; ///< empty without a state folder
    std::string m_path;
    std::string m_failure;
    std::map<std::string, SMark> m_marks; ///< by the day file's full path, UTF-8
    std::string m_file;
    SMark m_mark;             ///< of the file that is being read
    std::uint64_t m_from = 0; ///< where its new records begin
    bool m_isSound = true;
};

} // namespace ruvo
