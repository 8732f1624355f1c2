#include "tools/archive/archive_scripts.h"

namespace ruvo {

const char* const kArchiveSchema1 = R"sql(
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

// In records, a text is stored as it is or as a number of `texts`: a column that holds either has no type, so
// that no text of digits becomes a number. `cells` and `cell_bytes` are described in archive_cells.h.
const char* const kArchiveSchema2 = R"sql(
CREATE TABLE sites (
    id   INTEGER PRIMARY KEY,
    name TEXT NOT NULL UNIQUE
);
CREATE TABLE relays (
    id      INTEGER PRIMARY KEY,
    site_id INTEGER NOT NULL REFERENCES sites (id),
    name    TEXT NOT NULL,
    UNIQUE (site_id, name)
);
CREATE TABLE files (
    id       INTEGER PRIMARY KEY,
    relay_id INTEGER NOT NULL REFERENCES relays (id),
    day_file TEXT NOT NULL,
    day      TEXT,
    size     INTEGER NOT NULL,
    changed  INTEGER NOT NULL,
    UNIQUE (relay_id, day_file)
);

CREATE TABLE texts (
    id   INTEGER PRIMARY KEY,
    text TEXT NOT NULL
);
CREATE TABLE records (
    id           INTEGER PRIMARY KEY,
    file_id      INTEGER NOT NULL REFERENCES files (id),
    byte_offset  INTEGER NOT NULL,
    unique_id    INTEGER NOT NULL,
    event_code   INTEGER NOT NULL,
    time         TEXT,
    time_invalid INTEGER NOT NULL,
    summer_time  INTEGER NOT NULL,
    location     INTEGER NOT NULL,
    event        NOT NULL,
    text         NOT NULL,
    value        NOT NULL,
    plant        NOT NULL,
    description  NOT NULL,
    model        NOT NULL,
    cells,
    cell_bytes   BLOB,
    bytes        BLOB NOT NULL
);
CREATE INDEX records_place ON records (file_id, byte_offset);
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
    content = 'events', content_rowid = 'id', columnsize = 0, tokenize = 'unicode61 remove_diacritics 2'
);

CREATE VIEW readable_records AS
SELECT r.id, r.file_id, r.byte_offset, CASE WHEN r.cells IS NULL THEN 'simple' ELSE 'extended' END AS kind,
       r.unique_id, r.event_code, r.time, r.time_invalid, r.summer_time,
       printf('%02X.%02X', r.location >> 8, r.location & 255) AS location,
       CASE typeof(r.event) WHEN 'integer' THEN (SELECT t.text FROM texts t WHERE t.id = r.event)
       ELSE r.event END AS event,
       CASE typeof(r.text) WHEN 'integer' THEN (SELECT t.text FROM texts t WHERE t.id = r.text)
       ELSE r.text END AS text,
       CASE typeof(r.value) WHEN 'integer' THEN (SELECT t.text FROM texts t WHERE t.id = r.value)
       ELSE r.value END AS value,
       CASE typeof(r.plant) WHEN 'integer' THEN (SELECT t.text FROM texts t WHERE t.id = r.plant)
       ELSE r.plant END AS plant,
       CASE typeof(r.description) WHEN 'integer' THEN (SELECT t.text FROM texts t WHERE t.id = r.description)
       ELSE r.description END AS description,
       CASE typeof(r.model) WHEN 'integer' THEN (SELECT t.text FROM texts t WHERE t.id = r.model)
       ELSE r.model END AS model,
       CASE typeof(r.cells) WHEN 'integer' THEN (SELECT t.text FROM texts t WHERE t.id = r.cells)
       ELSE r.cells END AS cells,
       r.cell_bytes
FROM records r;

CREATE VIEW events AS
SELECT r.id, l.name AS relay, f.day_file, r.byte_offset, r.kind, r.unique_id, r.event_code, r.time,
       r.time_invalid, r.summer_time, r.location, r.event, r.text, r.value, r.plant, r.description, r.model,
       CASE WHEN r.cells IS NOT NULL THEN (
           SELECT group_concat(
               CASE WHEN c.type = 'text' THEN c.value
               WHEN c.value < 0 THEN hex(substr(r.cell_bytes, 1 + (-c.value >> 16), -c.value & 65535))
               ELSE cast(substr(r.cell_bytes, 1 + (c.value >> 16), c.value & 65535) AS TEXT) END, '')
           FROM json_each(r.cells) c) END AS cells,
       s.name AS site
FROM readable_records r JOIN files f ON f.id = r.file_id JOIN relays l ON l.id = f.relay_id
     JOIN sites s ON s.id = l.site_id;

CREATE VIEW damaged_places AS
SELECT l.name AS relay, f.day_file, d.byte_offset, d.length, d.reason, s.name AS site
FROM damage d JOIN files f ON f.id = d.file_id JOIN relays l ON l.id = f.relay_id JOIN sites s ON s.id = l.site_id;
)sql";

} // namespace ruvo
