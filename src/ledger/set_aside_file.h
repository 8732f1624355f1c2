// A set-aside file: records that do not go into their day file, because a rule or a week of waiting says so.
// It has the form of a day file, lies beside the journals, and its header says where the records belong.
#pragma once

#include "ledger/journal_file.h"
#include "platform/files.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace ruvo {

inline constexpr std::string_view kSetAsideEnding = ".setaside";
/// Follows the name of one whose records are in their day file.
inline constexpr std::string_view kAppendedEnding = ".done";
/// Why records stay in a journal.
inline constexpr std::string_view kUnreadJournal = "the journal cannot be read";
inline constexpr std::string_view kUnwrittenJournal = "the journal cannot be written";

/// One name that leads nowhere else.
[[nodiscard]] bool IsSafeName(const std::string& name);
/// FOLDER\FILE, both of them safe.
[[nodiscard]] bool IsSafePlace(const std::string& file);
[[nodiscard]] bool IsSetAsideName(const std::string& name);

/// What the free text of the header says.
struct SSetAsideHeader {
    std::string file; ///< FOLDER\FILE below the event root: where the records belong
    std::string key;  ///< of the INI file
    std::string begun;
    std::string reason;
};
/// None when the file cannot be read, or is no set-aside file.
[[nodiscard]] std::optional<SSetAsideHeader> ReadSetAsideHeader(const std::string& path);

/// The path of a new one, named after the day file; empty when all names are taken.
[[nodiscard]] std::string FreeSetAsidePath(const std::string& folder, const std::string& name);

/// Writes one. Locked as long as it is open. After a failure nothing more is written.
class CSetAsideFile {
public:
    /// Makes one with a new name for the records of a day file.
    [[nodiscard]] bool Make(const std::string& folder, const std::string& dayFile);
    /// Opens, or makes, the one of that name, to be written from its beginning.
    [[nodiscard]] bool Open(const std::string& folder, const std::string& name);

    void Start(std::uint32_t lastExtended, const SSetAsideHeader& header);
    void Add(std::span<const std::uint8_t> image);
    /// Nothing more is written: not all that belongs into it can be had.
    void GiveUp(std::string_view why);
    /// True when all of it is on the disk.
    [[nodiscard]] bool Finish();
    /// True when the file's name is on the disk. To be asked before a journal names the file, else another
    /// one could take the name, and before a journal that has its records goes.
    [[nodiscard]] bool FlushName();
    /// Takes it away. Only while nothing is in it and no journal names it.
    void Remove() { RemoveFile(m_path); }

    [[nodiscard]] const std::string& Path() const { return m_path; }
    [[nodiscard]] std::string Name() const { return m_path.substr(m_folder.size() + 1); }
    /// What has failed, for people.
    [[nodiscard]] const std::string& Why() const { return m_why; }

private:
    [[nodiscard]] bool Check(SFileResult result);
    [[nodiscard]] bool TryOpen(bool isNew);
    void WritePiece();

    CFile m_file;
    std::string m_folder;
    std::string m_path;
    std::vector<std::uint8_t> m_piece;
    std::string m_why;
    bool m_isNamed = false; ///< on the disk
};

/// Marks one as appended. False when one that is not marked is left, or may be after an end of the machine.
[[nodiscard]] bool MarkAppended(const std::string& folder, const std::string& name);
[[nodiscard]] bool IsMarkedAppended(const std::string& folder, const std::string& name);

/// Those in an event root's folder that are not marked, by name.
[[nodiscard]] SListedFiles SetAsideFilesIn(const std::string& folder);
/// Removes those that an end has left before their first byte, unless a journal may still name them.
void RemoveEmptySetAsideFiles(const std::string& folder);

/// The reason of one that has been written; if its name cannot be flushed, followed by that.
[[nodiscard]] std::string WithUnflushedName(const std::string& reason, CSetAsideFile& file);
/// Why there is none, without a full stop.
[[nodiscard]] std::string NotSetAsideText(const CSetAsideFile& file);

} // namespace ruvo
