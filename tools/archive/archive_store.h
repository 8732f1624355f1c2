// The archive as a place to put records: file by file, each file in a transaction of its own.
#pragma once

#include "tools/archive/archive_row.h"
#include "tools/archive/database.h"

#include <cstdint>
#include <span>
#include <string>

namespace ruvo {

/// A day file as it was found.
struct SDayFileState {
    std::string name;  ///< without its folder, UTF-8
    std::string relay; ///< UTF-8
    std::string day;   ///< of the file's name; may be empty
    std::uint64_t size = 0;
    std::int64_t changed = 0; ///< a number that another change to the file makes another one
};

/// What a file's transaction did.
struct SFileTally {
    std::uint64_t added = 0;
    std::uint64_t known = 0; ///< seen again
    std::uint64_t gone = 0;  ///< archived earlier and no longer in the file; they stay
};

/// Records are only ever added. Every operation may throw CDatabaseError, and then what was begun is undone
/// when the store ends.
class CArchiveStore {
public:
    /// Opens the archive and makes it where it is missing.
    explicit CArchiveStore(const std::string& path);
    CArchiveStore(const CArchiveStore&) = delete;
    CArchiveStore& operator=(const CArchiveStore&) = delete;
    ~CArchiveStore();

    /// True when the file is as it was when it was last archived.
    [[nodiscard]] bool IsUnchanged(const SDayFileState& file);

    /// What follows, up to EndFile, belongs to that file. Its damage is told anew.
    void BeginFile(const SDayFileState& file);
    void TakeRecord(const SDayFileItem& item);
    void TakeDamage(const SDayFileDamage& damage);
    /// A file that was not read to its end is looked at again in the next run, even if it stays the same.
    SFileTally EndFile(bool isComplete);

private:
    [[nodiscard]] bool HasRecord(const SDayFileItem& item);
    /// Of the file.
    [[nodiscard]] std::uint64_t CountRecords();

    CDatabase m_database; // before the statements, which must end earlier
    CStatement m_findFile;
    CStatement m_putFile;
    CStatement m_spoilFile;
    CStatement m_clearDamage;
    CStatement m_putDamage;
    CStatement m_countRecords;
    CStatement m_findRecord;
    CStatement m_putRecord;
    std::int64_t m_fileId = 0;
    std::uint64_t m_before = 0; ///< records of the file, when it was begun
    SFileTally m_tally;
};

} // namespace ruvo
