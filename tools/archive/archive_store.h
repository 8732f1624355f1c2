// Adds records to the archive: file by file, some files in one transaction.
#pragma once

#include "dayfile/day_file_reader.h"
#include "tools/archive/archive_schema.h"
#include "tools/archive/database.h"
#include "tools/archive/record_writer.h"

#include <cstdint>
#include <optional>
#include <set>
#include <string>

namespace ruvo {

/// State of a day file before it is read.
struct SDayFileState {
    std::string name;  ///< without its folder, UTF-8
    std::string relay; ///< UTF-8
    std::string day;   ///< of the file's name; may be empty
    std::uint64_t size = 0;
    std::int64_t changed = 0; ///< time of the last change, in the units of the file system
};

/// What adding a file did.
struct SFileTally {
    std::uint64_t added = 0;
    std::uint64_t known = 0; ///< already in the archive
    std::uint64_t gone = 0;  ///< archived earlier and no longer in the file; they stay
};

/// Records are only ever added. Every operation may throw CDatabaseError; the open transaction is then rolled
/// back when the store is destroyed, as it is without a call of Finish.
class CArchiveStore {
public:
    /// Opens the archive and creates it if missing.
    explicit CArchiveStore(const std::string& path);
    CArchiveStore(const CArchiveStore&) = delete;
    CArchiveStore& operator=(const CArchiveStore&) = delete;
    ~CArchiveStore();

    /// All files that follow are of this site, which has these relays; UTF-8. Relays of no known site, of an
    /// archive of an earlier version, become relays of this one.
    void BeginSite(const std::string& site, const std::set<std::string>& relays);
    /// True when the file is as it was when it was last archived.
    [[nodiscard]] bool IsUnchanged(const SDayFileState& file);

    /// All that follows, up to EndFile, belongs to this file. Its recorded damage is replaced.
    void BeginFile(const SDayFileState& file);
    void AddRecord(const SDayFileItem& item);
    void AddDamage(const SDayFileDamage& damage);
    /// A file that was not read to the end, or whose records were not all added, is read again by the next
    /// run, even if unchanged.
    SFileTally EndFile(bool isComplete);
    /// Stores what is not stored yet.
    void Finish();

private:
    void BeginTransaction();
    [[nodiscard]] bool HasRecord(const SDayFileItem& item);
    /// Of the file.
    [[nodiscard]] std::uint64_t CountRecords();

    CDatabase m_database; // before the statements, which must end earlier
    EArchiveAge m_age;
    CRecordWriter m_writer;
    CStatement m_putSite;
    CStatement m_claimRelay;
    CStatement m_putRelay;
    CStatement m_findFile;
    CStatement m_putFile;
    CStatement m_spoilFile;
    CStatement m_clearDamage;
    CStatement m_putDamage;
    CStatement m_countRecords;
    CStatement m_findRecord;
    std::string m_site;
    std::optional<std::string> m_relay; ///< whose number m_relayId is
    std::int64_t m_relayId = 0;
    std::int64_t m_fileId = 0;
    bool m_isOpen = false;      ///< the transaction
    bool m_isFirst = true;      ///< of this run
    std::uint64_t m_bytes = 0;  ///< of the records in it
    std::uint64_t m_before = 0; ///< records of the file, when it was begun
    SFileTally m_tally;
};

} // namespace ruvo
