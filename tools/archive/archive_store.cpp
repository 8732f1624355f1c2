#include "tools/archive/archive_store.h"

#include "tools/archive/archive_schema.h"

namespace ruvo {

namespace {

/// Of the records in one transaction. Less would cost more writes; after an end of the program, as much is to
/// be read again.
constexpr std::uint64_t kTransactionBytes = std::uint64_t{16} * 1024 * 1024;

/// With full sync every commit would wait for the disk. A power failure may undo the last transactions; the
/// next run repeats them.
constexpr const char* kSettings = "PRAGMA synchronous = NORMAL; PRAGMA cache_size = -32768";

CDatabase OpenArchive(const std::string& path) {
    CDatabase database(path, EDatabaseAccess::Write);
    database.Run(kSettings);
    return database;
}

/// The tables of the earlier version leave a large hole, which is no failure.
void GiveRoomBack(CDatabase& database) {
    try {
        database.Run("VACUUM");
    } catch (const CDatabaseError&) {
        static_cast<void>(0); // there is no room for a copy of the archive, or a search is running
    }
}

void RunOnce(CStatement& statement) {
    statement.Step();
    statement.Rewind();
}

/// Of the row that the statement returns.
std::int64_t IdOf(CStatement& statement) {
    statement.Step();
    const std::int64_t id = statement.NumberAt(0);
    statement.Step(); // to the end, or the row would stay locked
    statement.Rewind();
    return id;
}

} // namespace

CArchiveStore::CArchiveStore(const std::string& path)
    : m_database(OpenArchive(path)), m_age(BringUpToDate(m_database)), m_writer(m_database),
      m_putSite(m_database, "INSERT INTO sites (name) VALUES (?) "
                            "ON CONFLICT (name) DO UPDATE SET name = excluded.name RETURNING id"),
      m_claimRelay(m_database, "UPDATE OR IGNORE relays SET site_id = ? WHERE name = ? AND site_id IN "
                               "(SELECT id FROM sites WHERE name = '')"),
      m_putRelay(m_database, "INSERT INTO relays (site_id, name) VALUES (?, ?) "
                             "ON CONFLICT (site_id, name) DO UPDATE SET name = excluded.name RETURNING id"),
      m_findFile(m_database, "SELECT 1 FROM files f JOIN relays l ON l.id = f.relay_id "
                             "JOIN sites s ON s.id = l.site_id "
                             "WHERE s.name = ? AND l.name = ? AND f.day_file = ? AND f.size = ? AND "
                             "f.changed = ?"),
      m_putFile(m_database, "INSERT INTO files (relay_id, day_file, day, size, changed) "
                            "VALUES (?, ?, ?, ?, ?) ON CONFLICT (relay_id, day_file) DO UPDATE SET "
                            "size = excluded.size, changed = excluded.changed RETURNING id"),
      m_spoilFile(m_database, "UPDATE files SET size = -1 WHERE id = ?"),
      m_clearDamage(m_database, "DELETE FROM damage WHERE file_id = ?"),
      m_putDamage(m_database, "INSERT OR REPLACE INTO damage (file_id, byte_offset, length, reason) "
                              "VALUES (?, ?, ?, ?)"),
      m_countRecords(m_database, "SELECT count(*) FROM records WHERE file_id = ?"),
      m_findRecord(m_database, "SELECT 1 FROM records WHERE file_id = ? AND byte_offset = ? AND bytes = ?") {
    if (m_age == EArchiveAge::Updated) {
        GiveRoomBack(m_database);
    }
}

CArchiveStore::~CArchiveStore() {
    try {
        if (m_isOpen) {
            m_database.Run("ROLLBACK");
        }
        // So that users who may read the file, but not write to its folder, can search it.
        m_database.Run("PRAGMA journal_mode = DELETE");
    } catch (const CDatabaseError&) {
        static_cast<void>(0); // a search is running: the next run retries
    }
}

// Nobody searches an archive that is being made, and its pages are then written once instead of twice.
void CArchiveStore::BeginTransaction() {
    if (m_isOpen) {
        return;
    }
    if (m_age != EArchiveAge::New || !m_isFirst) {
        m_database.Run("PRAGMA journal_mode = WAL");
    }
    m_database.Run("BEGIN IMMEDIATE");
    m_isOpen = true;
}

void CArchiveStore::Finish() {
    if (m_isOpen) {
        m_database.Run("COMMIT");
        m_isOpen = false;
        m_isFirst = false;
        m_bytes = 0;
    }
}

void CArchiveStore::BeginSite(const std::string& site, const std::set<std::string>& relays) {
    m_site = site;
    m_relay.reset();
    if (m_database.Number("SELECT count(*) FROM relays l JOIN sites s ON s.id = l.site_id "
                          "WHERE s.name = ''") > 0) {
        BeginTransaction();
        const std::int64_t id = IdOf(m_putSite.Bind(site));
        for (const std::string& relay : relays) {
            RunOnce(m_claimRelay.Bind(id).Bind(relay));
        }
    }
}

bool CArchiveStore::IsUnchanged(const SDayFileState& file) {
    m_findFile.Bind(m_site).Bind(file.relay).Bind(file.name);
    m_findFile.Bind(static_cast<std::int64_t>(file.size)).Bind(file.changed);
    const bool found = m_findFile.Step();
    m_findFile.Rewind();
    return found;
}

void CArchiveStore::BeginFile(const SDayFileState& file) {
    BeginTransaction();
    if (m_relay != file.relay) {
        const std::int64_t siteId = IdOf(m_putSite.Bind(m_site));
        m_relayId = IdOf(m_putRelay.Bind(siteId).Bind(file.relay));
        m_relay = file.relay;
    }
    m_putFile.Bind(m_relayId).Bind(file.name);
    file.day.empty() ? m_putFile.BindNull() : m_putFile.Bind(file.day);
    m_fileId = IdOf(m_putFile.Bind(static_cast<std::int64_t>(file.size)).Bind(file.changed));
    RunOnce(m_clearDamage.Bind(m_fileId));
    m_tally = {};
    m_before = CountRecords();
}

std::uint64_t CArchiveStore::CountRecords() {
    m_countRecords.Bind(m_fileId).Step();
    const auto count = static_cast<std::uint64_t>(m_countRecords.NumberAt(0));
    m_countRecords.Rewind();
    return count;
}

bool CArchiveStore::HasRecord(const SDayFileItem& item) {
    m_findRecord.Bind(m_fileId).Bind(static_cast<std::int64_t>(item.offset)).Bind(item.bytes);
    const bool found = m_findRecord.Step();
    m_findRecord.Rewind();
    return found;
}

void CArchiveStore::AddRecord(const SDayFileItem& item) {
    m_bytes += item.bytes.size();
    if (m_before > 0 && HasRecord(item)) {
        ++m_tally.known;
        return;
    }
    m_writer.Add(m_fileId, item);
    ++m_tally.added;
}

void CArchiveStore::AddDamage(const SDayFileDamage& damage) {
    m_putDamage.Bind(m_fileId)
        .Bind(static_cast<std::int64_t>(damage.offset))
        .Bind(static_cast<std::int64_t>(damage.length))
        .Bind(DayFileFaultText(damage.fault));
    RunOnce(m_putDamage);
}

SFileTally CArchiveStore::EndFile(bool isComplete) {
    if (!isComplete) { // no file has that size, so the next run reads it again
        RunOnce(m_spoilFile.Bind(m_fileId));
    }
    if (CountRecords() != m_before + m_tally.added) { // the summary must match what is stored
        throw CDatabaseError("added records are missing from it; "
                             "move the file away and create the archive again from the day files");
    }
    m_tally.gone = m_before - m_tally.known;
    if (m_bytes >= kTransactionBytes) {
        Finish();
    }
    return m_tally;
}

} // namespace ruvo
