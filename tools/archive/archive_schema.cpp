#include "tools/archive/archive_schema.h"

#include <array>
#include <string>
#include <vector>

namespace ruvo {

namespace {

constexpr std::int64_t kApplicationId = 0x5255564F; // "RUVO"

constexpr const char* kVersion1 = R"sql(
CREATE TABLE files (
    id       INTEGER PRIMARY KEY,
    day_file TEXT NOT NULL UNIQUE,
    relay    TEXT NOT NULL,
    day      TEXT,
    size     INTEGER NOT NULL,
    changed  INTEGER NOT NULL
);
CREATE INDEX files_relay ON files (relay);

CREATE TABLE records (
    id           INTEGER PRIMARY KEY,
    file_id      INTEGER NOT NULL REFERENCES files (id),
    byte_offset  INTEGER NOT NULL,
    kind         TEXT NOT NULL,
    unique_id    INTEGER NOT NULL,
    event_code   INTEGER NOT NULL,
    time         TEXT,
    time_invalid INTEGER NOT NULL,
    summer_time  INTEGER NOT NULL,
    location     TEXT NOT NULL,
    event        TEXT NOT NULL,
    text         TEXT NOT NULL,
    value        TEXT NOT NULL,
    plant        TEXT NOT NULL,
    description  TEXT NOT NULL,
    model        TEXT NOT NULL,
    cells        TEXT,
    bytes        BLOB NOT NULL,
    UNIQUE (file_id, byte_offset, bytes)
);
CREATE INDEX records_time ON records (time);

CREATE TABLE damage (
    file_id     INTEGER NOT NULL REFERENCES files (id),
    byte_offset INTEGER NOT NULL,
    length      INTEGER NOT NULL,
    reason      TEXT NOT NULL,
    PRIMARY KEY (file_id, byte_offset)
) WITHOUT ROWID;

CREATE VIRTUAL TABLE records_text USING fts5 (
    event, text, value, plant,
    content = 'records', content_rowid = 'id', tokenize = 'unicode61 remove_diacritics 2'
);
CREATE TRIGGER records_text_insert AFTER INSERT ON records BEGIN
    INSERT INTO records_text (rowid, event, text, value, plant)
    VALUES (new.id, new.event, new.text, new.value, new.plant);
END;

CREATE VIEW events AS
SELECT r.id, f.relay, f.day_file, r.byte_offset, r.kind, r.unique_id, r.event_code, r.time, r.time_invalid,
       r.summer_time, r.location, r.event, r.text, r.value, r.plant, r.description, r.model, r.cells
FROM records r JOIN files f ON f.id = r.file_id;

CREATE VIEW damaged_places AS
SELECT f.relay, f.day_file, d.byte_offset, d.length, d.reason
FROM damage d JOIN files f ON f.id = d.file_id;
)sql";

/// Scripts from version N to N + 1. A published script is never changed: a new version is a new row.
constexpr std::array kSteps{kVersion1};
constexpr auto kCurrentVersion = static_cast<std::int64_t>(kSteps.size());

struct SState {
    std::int64_t version;
    bool isEmpty;
};

void ApplyStep(CDatabase& database, std::int64_t version) {
    database.Run(kSteps.at(static_cast<std::size_t>(version)));
}

/// The whole schema, without the statistics tables of SQLite's ANALYZE.
std::vector<std::string> SchemaTexts(CDatabase& database) {
    CStatement rows(database, "SELECT type || ' ' || name || ' ' || tbl_name || ' ' || ifnull(sql, '') "
                              "FROM sqlite_schema WHERE ifnull(sql, '') NOT IN "
                              "('CREATE TABLE sqlite_stat1(tbl,idx,stat)', "
                              "'CREATE TABLE sqlite_stat4(tbl,idx,neq,nlt,ndlt,sample)') ORDER BY 1");
    std::vector<std::string> texts;
    while (rows.Step()) {
        texts.push_back(rows.TextAt(0));
    }
    return texts;
}

/// A view in place of a table may never end, and a trigger may undo what is added: only a schema that this
/// program created is accepted.
void RequireOwnSchema(CDatabase& database, std::int64_t version) {
    CDatabase own;
    for (std::int64_t step = 0; step < version; ++step) {
        ApplyStep(own, step);
    }
    if (SchemaTexts(database) != SchemaTexts(own)) {
        throw CDatabaseError("not an archive of ruvoctl: its tables, views or triggers were modified; "
                             "move the file away and create the archive again from the day files");
    }
}

SState RequireArchive(CDatabase& database) {
    const bool isEmpty = database.Number("SELECT count(*) FROM sqlite_schema") == 0;
    if (!isEmpty && database.Number("PRAGMA application_id") != kApplicationId) {
        throw CDatabaseError("a database of another program, not an archive; use another file");
    }
    const std::int64_t version = database.Number("PRAGMA user_version");
    if (version < 0 || (version == 0 && !isEmpty)) {
        throw CDatabaseError(
            "an archive of version " + std::to_string(version) +
            ", which does not exist; move the file away and create the archive again from the day files");
    }
    if (version > kCurrentVersion) {
        throw CDatabaseError("written by a newer ruvoctl (archive version " + std::to_string(version) +
                             "); use that version of ruvoctl");
    }
    RequireOwnSchema(database, version);
    return {version, isEmpty};
}

} // namespace

void BringUpToDate(CDatabase& database) {
    const auto set = [&database](const char* name, std::int64_t value) {
        database.Run(("PRAGMA " + std::string(name) + " = " + std::to_string(value)).c_str());
    };
    database.Run("BEGIN IMMEDIATE");
    for (std::int64_t version = RequireArchive(database).version; version < kCurrentVersion; ++version) {
        ApplyStep(database, version);
        set("application_id", kApplicationId);
        set("user_version", version + 1);
    }
    database.Run("COMMIT");
}

void RequireCurrent(CDatabase& database) {
    const SState state = RequireArchive(database);
    if (state.isEmpty) {
        throw CDatabaseError("an empty database; fill it with ruvoctl archive");
    }
    if (state.version < kCurrentVersion) {
        throw CDatabaseError("written by an older ruvoctl; run ruvoctl archive once to update it");
    }
}

} // namespace ruvo
