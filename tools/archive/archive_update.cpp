#include "tools/archive/archive_update.h"

#include "dayfile/block_parser.h"
#include "tools/archive/record_writer.h"

#include <utility>

namespace ruvo {

namespace {

constexpr const char* kPutAside = R"sql(
DROP VIEW events;
DROP VIEW damaged_places;
DROP TRIGGER records_text_insert;
DROP TABLE records_text;
DROP INDEX files_relay;
DROP INDEX records_time;
ALTER TABLE files RENAME TO old_files;
ALTER TABLE records RENAME TO old_records;
ALTER TABLE damage RENAME TO old_damage;
)sql";

constexpr const char* kCopyAllButRecords = R"sql(
INSERT INTO sites (name) VALUES ('');
INSERT INTO relays (site_id, name) SELECT DISTINCT (SELECT id FROM sites), relay FROM old_files ORDER BY relay;
INSERT INTO files (id, relay_id, day_file, day, size, changed)
SELECT f.id, l.id, f.day_file, f.day, f.size, f.changed FROM old_files f JOIN relays l ON l.name = f.relay;
INSERT INTO damage (file_id, byte_offset, length, reason)
SELECT file_id, byte_offset, length, reason FROM old_damage;
)sql";

constexpr const char* kDropOld = R"sql(
DROP TABLE old_damage;
DROP TABLE old_records;
DROP TABLE old_files;
)sql";

/// All columns are made anew from the records' bytes.
void CopyRecords(CDatabase& database) {
    CRecordWriter writer(database);
    CStatement rows(database, "SELECT id, file_id, byte_offset, bytes FROM old_records ORDER BY id");
    SDayFileItem item;
    while (rows.Step()) {
        SParsedRecord parsed = ParseDayFileRecord(rows.BytesAt(3));
        if (parsed.record == nullptr) {
            throw CDatabaseError("a record in it was modified; move the file away and create the archive "
                                 "again from the day files");
        }
        item.offset = static_cast<std::uint64_t>(rows.NumberAt(2));
        item.record = std::move(parsed.record);
        item.isExtended = parsed.isExtended;
        item.bytes = rows.BytesAt(3);
        writer.Add(rows.NumberAt(1), item, rows.NumberAt(0));
    }
}

} // namespace

void UpdateArchive1(CDatabase& database, const char* schema) {
    database.Run(kPutAside);
    database.Run(schema);
    database.Run(kCopyAllButRecords);
    CopyRecords(database);
    database.Run(kDropOld);
}

} // namespace ruvo
