-- An archive of version 1, as its program made it from two day files of the bundled substation.
PRAGMA application_id = 1381324367; PRAGMA user_version = 1;
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
INSERT INTO files VALUES(1,'TR42-00002002-2026-11-25-DEV.evt','TR42-00002002','2026-11-25',719,-4642014175735252265);
INSERT INTO files VALUES(2,'ÉL04-Départ 7-2026-11-25-DEV.evt','ÉL04-Départ 7','2026-11-25',198,-4642014175732918182);
INSERT INTO records VALUES(1,1,81,'simple',0,2,'2026-11-16T03:59:58.000',0,0,'08.10','Tap changed','Tap changer at 7 of 17','1','Transformer 1','Differential relay','TR42B1-E',NULL,X'006d0000000000003c0790e23b03100b1a000001020d5472616e73666f726d6572203112446966666572656e7469616c2072656c6179085452343242312d4510080b546170206368616e67656424010117546170206368616e676572206174202564206f662025642802070028021100');
INSERT INTO records VALUES(2,1,193,'extended',1,2,'2026-11-16T04:00:01.500',0,0,'00.31','Fault recorded',replace('Event Value \nFaulted phase Phase A\nIA diff  8.410 A\nElements\n  ON   32  Start A\n  ON   33  Trip A\n  OFF  34  Trip B\nBias\nFrequency 49.87000\nFault time 16 November 2026 04:00:01.500 GMT\n','\n',char(10)),'1','Transformer 1','Differential relay','TR42B1-E','[{"template":"Event Value ","text":"Event Value ","value":{"code":36,"bytes":"01"},"bits":[]},{"template":"Faulted phase %s","text":"Faulted phase Phase A","value":{"code":24,"bytes":"50686173652041"},"bits":[]},{"template":"IA diff %k","text":"IA diff 8.410 A","value":{"code":44,"bytes":"DA207B00"},"bits":[]},{"template":"Elements","text":"Elements","value":{"code":32,"bytes":"03"},"bits":["Start A","Trip A","Trip B"]},{"template":"Bias","text":"Bias","value":{"code":24,"bytes":"48696768"},"bits":[]},{"template":"Frequency %f","text":"Frequency 49.87000","value":{"code":52,"bytes":"E17A4742"},"bits":[]},{"template":"Fault time %lt","text":"Fault time 16 November 2026 04:00:01.500 GMT","value":{"code":60,"bytes":"DC050004100B1A"},"bits":[]}]',X'00510001010000003c07dc050004100b1a000001020d5472616e73666f726d6572203112446966666572656e7469616c2072656c6179085452343242312d4531000e4661756c74207265636f7264656424010100019e00010000000c4576656e742056616c75652024010100104661756c746564207068617365202573180750686173652041000a4941206469666620256b2c04da207b000008456c656d656e747320010303075374617274204106547269702041065472697020420442696173180448696768000c4672657175656e63792025663404e17a4742000e4661756c742074696d6520256c743c07dc050004100b1a00');
INSERT INTO records VALUES(3,1,438,'extended',2,2,'2026-11-16T04:00:02.000',0,0,'00.31','Fault recorded again',replace('Event Value 2\nFaulted phase Phase A\nIA diff  8.410 A\nElements\n  ON   32  Start A\n  ON   33  Trip A\n  OFF  34  Trip B\nBias\nFrequency 49.87000\nFault time 16 November 2026 04:00:01.500 GMT\nEvt Unique Id    4712\n','\n',char(10)),'2','Transformer 1','Differential relay','TR42B1-E','[{"template":"Event Value %u","text":"Event Value 2","value":{"code":36,"bytes":"02"},"bits":[]},{"template":"Faulted phase %s","text":"Faulted phase Phase A","value":{"code":24,"bytes":"50686173652041"},"bits":[]},{"template":"IA diff %k","text":"IA diff 8.410 A","value":{"code":44,"bytes":"DA207B00"},"bits":[]},{"template":"Elements","text":"Elements","value":{"code":32,"bytes":"03"},"bits":["Start A","Trip A","Trip B"]},{"template":"Bias","text":"Bias","value":{"code":24,"bytes":"48696768"},"bits":[]},{"template":"Frequency %f","text":"Frequency 49.87000","value":{"code":52,"bytes":"E17A4742"},"bits":[]},{"template":"Fault time %lt","text":"Fault time 16 November 2026 04:00:01.500 GMT","value":{"code":60,"bytes":"DC050004100B1A"},"bits":[]},{"template":"Evt Unique Id    %lu","text":"Evt Unique Id 4712","value":{"code":36,"bytes":"68120000"},"bits":[]}]',X'00570001020000003c07d0070004100b1a000001020d5472616e73666f726d6572203112446966666572656e7469616c2072656c6179085452343242312d453100144661756c74207265636f7264656420616761696e2401020001bc00020000000e4576656e742056616c756520257524010200104661756c746564207068617365202573180750686173652041000a4941206469666620256b2c04da207b000008456c656d656e747320010303075374617274204106547269702041065472697020420442696173180448696768000c4672657175656e63792025663404e17a4742000e4661756c742074696d6520256c743c07dc050004100b1a001445767420556e6971756520496420202020256c7524046812000000');
INSERT INTO records VALUES(4,2,81,'extended',1,11,'2026-11-16T02:00:00.000',0,0,'04.01','Défaut à la terre',replace('Event Value  .8200 A\n','\n',char(10)),'.8200 A','Départ 7 été','Relais ampèremétrique','ÉL04','[{"template":"Event Value %k","text":"Event Value .8200 A","value":{"code":44,"bytes":"08207A00"},"bits":[]}]',X'00550001010000003c0700000002100b1a0000010b0c44e970617274203720e974e91552656c61697320616d70e872656de974726971756504c94c303401041144e96661757420e0206c612074657272652c0408207a0000011a00010000000e4576656e742056616c756520256b2c0408207a0000');
