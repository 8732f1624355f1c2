#include "tools/archive/archive_store.h"

#include "tools/archive/archive_schema.h"

namespace ruvo {

namespace {

CDatabase OpenArchive(const std::string& path) {
    CDatabase database(path, EDatabaseAccess::Write);
    BringUpToDate(database);
    database.TrustSchema(); // its trigger feeds the index of texts
    // With full sync every commit would wait for the disk. A power failure may undo the transactions of the
    // last files; the next run repeats them.
    database.Run("PRAGMA journal_mode = WAL; PRAGMA synchronous = NORMAL");
    return database;
}

/// Builds "INSERT INTO records" from the columns that it visits.
class CInsertText {
public:
    template <class TValue>
    void Add(std::string_view name, const TValue& /*value*/) {
        m_names += ", ";
        m_names += name;
        m_marks += ", ?";
    }
    void Number(std::string_view name, std::uint64_t value) { Add(name, value); }
    void Flag(std::string_view name, bool value) { Add(name, value); }
    void Text(std::string_view name, std::string_view value) { Add(name, value); }
    void OptionalText(std::string_view name, const std::optional<std::string>& value) { Add(name, value); }
    void Json(std::string_view name, const std::optional<std::string>& value) { Add(name, value); }
    void Bytes(std::string_view name, std::span<const std::uint8_t> value) { Add(name, value); }

    static std::string Make() {
        CInsertText text;
        VisitColumns(SArchiveRow(), text);
        return "INSERT INTO records (file_id" + text.m_names + ") VALUES (?" + text.m_marks + ")";
    }

private:
    std::string m_names;
    std::string m_marks;
};

/// Binds the columns that it is shown.
class CBinder {
public:
    explicit CBinder(CStatement& statement) : m_statement(statement) {}
    void Number(std::string_view /*name*/, std::uint64_t number) {
        m_statement.Bind(static_cast<std::int64_t>(number));
    }
    void Flag(std::string_view /*name*/, bool flag) { m_statement.Bind(std::int64_t{flag}); }
    void Text(std::string_view /*name*/, std::string_view text) { m_statement.Bind(text); }
    void OptionalText(std::string_view /*name*/, const std::optional<std::string>& text) {
        text ? m_statement.Bind(*text) : m_statement.BindNull();
    }
    void Json(std::string_view name, const std::optional<std::string>& json) { OptionalText(name, json); }
    void Bytes(std::string_view /*name*/, std::span<const std::uint8_t> bytes) { m_statement.Bind(bytes); }

private:
    CStatement& m_statement;
};

void RunOnce(CStatement& statement) {
    statement.Step();
    statement.Rewind();
}

} // namespace

CArchiveStore::CArchiveStore(const std::string& path)
    : m_database(OpenArchive(path)),
      m_findFile(m_database, "SELECT 1 FROM files WHERE day_file = ? AND size = ? AND changed = ?"),
      m_putFile(m_database, "INSERT INTO files (day_file, relay, day, size, changed) VALUES (?, ?, ?, ?, ?) "
                            "ON CONFLICT (day_file) DO UPDATE SET relay = excluded.relay, "
                            "size = excluded.size, changed = excluded.changed RETURNING id"),
      m_spoilFile(m_database, "UPDATE files SET size = -1 WHERE id = ?"),
      m_clearDamage(m_database, "DELETE FROM damage WHERE file_id = ?"),
      m_putDamage(m_database, "INSERT OR REPLACE INTO damage (file_id, byte_offset, length, reason) "
                              "VALUES (?, ?, ?, ?)"),
      m_countRecords(m_database, "SELECT count(*) FROM records WHERE file_id = ?"),
      m_findRecord(m_database, "SELECT 1 FROM records WHERE file_id = ? AND byte_offset = ? AND bytes = ?"),
      m_putRecord(m_database, CInsertText::Make()) {}

CArchiveStore::~CArchiveStore() {
    try {
        // So that users who may read the file, but not write to its folder, can search it.
        m_database.Run("PRAGMA journal_mode = DELETE");
    } catch (const CDatabaseError&) {
        static_cast<void>(0); // a search is running: the next run retries
    }
}

bool CArchiveStore::IsUnchanged(const SDayFileState& file) {
    m_findFile.Bind(file.name).Bind(static_cast<std::int64_t>(file.size)).Bind(file.changed);
    const bool found = m_findFile.Step();
    m_findFile.Rewind();
    return found;
}

void CArchiveStore::BeginFile(const SDayFileState& file) {
    m_database.Run("BEGIN IMMEDIATE");
    m_putFile.Bind(file.name).Bind(file.relay);
    file.day.empty() ? m_putFile.BindNull() : m_putFile.Bind(file.day);
    m_putFile.Bind(static_cast<std::int64_t>(file.size)).Bind(file.changed);
    m_putFile.Step();
    m_fileId = m_putFile.NumberAt(0);
    m_putFile.Step(); // to the end, or the row would stay locked
    m_putFile.Rewind();
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
    if (HasRecord(item)) {
        ++m_tally.known;
        return;
    }
    const SArchiveRow row = MakeArchiveRow(item);
    m_putRecord.Bind(m_fileId);
    CBinder binder(m_putRecord);
    VisitColumns(row, binder);
    RunOnce(m_putRecord);
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
    m_database.Run("COMMIT");
    // The summary must match what is stored. A second run on the same archive may have added records
    // meanwhile, so only too few are an error.
    if (CountRecords() < m_before + m_tally.added) {
        throw CDatabaseError("added records are missing from it; "
                             "move the file away and create the archive again from the day files");
    }
    m_tally.gone = m_before - m_tally.known;
    return m_tally;
}

} // namespace ruvo
