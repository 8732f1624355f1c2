// ruvoctl archive and find: what is kept of a site, through all that can happen to its files.
#include "support/case_table.h"
#include "support/scratch_folder.h"
#include "tools/day_files.h"
#include "tools/run_tool.h"

#include "tools/archive/database.h"

#include <cstdlib>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <iterator>
#include <nlohmann/json.hpp>

namespace ruvo::test {
namespace {

constexpr const char* kDayFile = "events/AB12-1-2026-11-16-DEV.evt";

class CArchive : public testing::Test {
protected:
    CArchive() { std::filesystem::create_directories(m_folder.Native("events")); }

    SOutcome Archive() { return RunIn(m_folder, "archive @/events --sqlite @/a.db"); }
    SOutcome Find(const std::vector<std::string>& options) {
        std::vector<std::string> arguments{"find", m_folder.Native("a.db")};
        arguments.insert(arguments.end(), options.begin(), options.end());
        return RunTool(arguments);
    }
    std::int64_t Ask(const std::string& query) {
        CDatabase database(m_folder.Native("a.db"), EDatabaseAccess::Read);
        return database.Number(query);
    }
    /// Bytes that it has not had last are of a later time.
    void WriteDay(const std::string& bytes) {
        m_time += std::chrono::seconds(bytes == m_folder.Read(kDayFile) ? 0 : 1);
        m_folder.Write(kDayFile, bytes);
        std::filesystem::last_write_time(m_folder.Native(kDayFile), m_time);
    }
    CScratchFolder m_folder;
    std::filesystem::file_time_type m_time = std::filesystem::file_time_type::clock::now();
};

TEST_F(CArchive, FollowsAFileThroughItsLife) {
    const std::string first = Extended(At(16, 3), "Gesch\xE4lt"), twin = Simple(At(16, 4), "Trip");
    // What it is, its bytes, what is said of it, and the records and damaged places that are archived then.
    const std::tuple<const char*, std::string, const char*, std::int64_t, std::int64_t> kSteps[] = {
        {"new", kHeader + first + twin, "1 day file read, 0 unchanged; 2 records added, 0 already", 2, 0},
        {"as it was", kHeader + first + twin, "0 day files read, 1 unchanged; 0 records added", 2, 0},
        {"appended, with a twin", kHeader + first + twin + twin, "1 record added, 2 already archived", 3, 0},
        {"torn at the end", kHeader + first + twin + twin + first.substr(0, 20),
         "0 records added, 3 already archived; 1 damaged place\n", 3, 1},
        {"whole again", kHeader + first + twin + twin + first, "1 record added, 3 already", 4, 0},
        {"shrunk", kHeader + first, "changed: 3 archived records no longer in the file; kept", 4, 0},
        {"another one in its place", kHeader + twin + first, "2 records added, 0 already", 6, 0},
        {"spoilt", "x", "0 records added, 0 already archived; 1 damaged place\n", 6, 1},
    };
    for (const auto& [name, bytes, said, records, damaged] : kSteps) {
        WriteDay(bytes);
        const SOutcome outcome = Archive();
        EXPECT_EQ(outcome.status, 0) << name;
        EXPECT_TRUE(Contains(outcome.out + outcome.error, said)) << name;
        EXPECT_EQ(Ask("SELECT count(*) FROM events"), records) << name;
        EXPECT_EQ(Ask("SELECT count(*) FROM damaged_places"), damaged) << name;
    }
    EXPECT_EQ(Ask("SELECT count(*) FROM records_text WHERE records_text MATCH 'trip'"), 3);
    std::filesystem::remove(m_folder.Native(kDayFile));
    Archive();
    EXPECT_EQ(Ask("SELECT count(*) FROM events"), 6) << "of a file that is gone";
    EXPECT_FALSE(m_folder.Has("a.db-wal")) << "people who may only read it can search it";
}

TEST_F(CArchive, FindsWhatIsAskedFor) {
    m_folder.Write(kDayFile,
                   kHeader + Extended(At(17, 3), "Gesch\xE4lt I>>1") + Simple(At(16, 4), "Trip \"A\" low"));
    m_folder.Write("events/CD34-2-2026-11-16-DEV.evt",
                   kHeader + Simple(At(31, 2), "When") + Simple(At(16, 5), "Tripped"));
    ASSERT_EQ(Archive().status, 0);
    ForEachCase<4>("tools/find_cases.txt", [this](auto& text, auto& option, auto& want, auto& status) {
        std::vector<std::string> words{text, "--format=json"};
        words.insert(words.end(), option.empty() ? 0 : 1, option);
        const SOutcome outcome = Find(words);
        std::string got;
        for (const std::string& line : Lines(outcome.out))
            got += nlohmann::json::parse(line).at("event").template get<std::string>()[0];
        EXPECT_EQ(got, want);
        EXPECT_EQ(outcome.status, std::stoi(status)) << outcome.error;
    });
    SOutcome events = RunTool(
        {"events", m_folder.Native("events"), "--relay", "AB12", "--format", "csv", "--sort", "time"});
    events.out.replace(events.out.find(m_folder.Native()), m_folder.Native().size() + 1 + 7, ""); // "events/"
    EXPECT_EQ(Lines(Find({"trip", "--format", "csv"}).out)[1], Lines(events.out)[1]);
}

TEST_F(CArchive, GrowsWhileASearchIsLeftOpen) {
    std::string bytes = kHeader;
    for (int at = 0; at < 1000; ++at)
        bytes += Simple(At(16, 4), "Trip");
    m_folder.Write(kDayFile, bytes);
    ASSERT_EQ(Archive().status, 0);
    m_folder.Write(kDayFile, bytes + bytes.substr(kHeader.size()));
    struct CPager : std::stringbuf {
        std::function<int()> look; ///< while the search waits
        int seen = 0;
        std::streamsize xsputn(const char* /*text*/, std::streamsize size) override {
            seen = std::max(seen, look());
            return size;
        }
    } pager;
    pager.look = [this] { return Archive().status + 1; };
    std::ostream stream(&pager);
    RunOn(stream, {"find", m_folder.Native("a.db"), "", "--format", "json"});
    EXPECT_EQ(pager.seen, 1) << "every run was good";
}

TEST_F(CArchive, LinesOfJsonHoldTheSameColumns) {
    m_folder.Write(kDayFile,
                   kHeader + Extended(At(16, 3), "a", std::string("\\u0000\0", 7)) + Simple(At(31, 2), "b"));
    ASSERT_EQ(RunIn(m_folder, "archive @/events --sqlite @/a.db --ndjson @/lines").status, 0);
    const std::vector<std::string> lines = Lines(m_folder.Read("lines"));
    ASSERT_EQ(lines.size(), 2U);
    CDatabase database(m_folder.Native("a.db"), EDatabaseAccess::Read);
    CStatement columns(database, "SELECT name FROM pragma_table_info('events') WHERE name <> 'id'");
    const auto row = nlohmann::ordered_json::parse(lines[0]);
    for (auto item = row.begin(); item != row.end(); ++item) {
        if (item.key() != "bytes") {
            EXPECT_EQ(columns.Step() ? columns.TextAt(0) : "", item.key());
        }
    }
    EXPECT_FALSE(columns.Step());
    CStatement cells(database, "SELECT cells FROM events");
    EXPECT_TRUE(Contains(lines[0], cells.Step() ? ",\"cells\":" + cells.TextAt(0) + "," : "none"));
    EXPECT_EQ(row["cells"][0]["bits"][2], "Gesperrt ü");
    EXPECT_EQ(row["cells"][1]["template"], "\\u0000\xEF\xBF\xBD") << "no NUL";
    EXPECT_EQ(nlohmann::json::parse(lines[1])["time"], nullptr) << "31 November";
    EXPECT_FALSE(m_folder.Has("lines.tmp"));
    EXPECT_EQ(RunIn(m_folder, "archive @/events --ndjson @/no/lines").status, 1);
}

/// The columns that all versions have; cells as JSON, which may be written in more than one way.
std::vector<std::string> EventsOf(const std::string& path) {
    CDatabase database(path, EDatabaseAccess::Read);
    CStatement rows(
        database, "SELECT id || '|' || relay || '|' || day_file || '|' || byte_offset || '|' || kind || '|' "
                  "|| unique_id || '|' || event_code || '|' || time || time_invalid || summer_time || '|' "
                  "|| location || '|' || event || '|' || text || '|' || value || '|' || plant || '|' || "
                  "description || '|' || model, ifnull(cells, 'null') FROM events ORDER BY id");
    std::vector<std::string> events;
    while (rows.Step())
        events.push_back(rows.TextAt(0) + nlohmann::json::parse(rows.TextAt(1)).dump());
    return events;
}

TEST_F(CArchive, BringsOneOfAnEarlierVersionUpToDate) {
    const std::string path = m_folder.Native("a.db");
    std::ifstream script(RUVO_TEST_DATA "/tools/archive_version_1.sql");
    const std::string text((std::istreambuf_iterator<char>(script)), {});
    const auto make = [&] {
        CDatabase database(path, EDatabaseAccess::Write);
        database.TrustSchema(); // its trigger fills the index of texts
        database.Run(text.c_str());
    };
    make();
    const std::vector<std::string> events = EventsOf(path);
    ASSERT_EQ(events.size(), 4U);
    EXPECT_TRUE(Contains(Find({""}).error, "run ruvoctl archive once"));
    CDatabase(path, EDatabaseAccess::Write).Run("UPDATE records SET bytes = x'00' WHERE id = 4");
    EXPECT_EQ(Archive().status, 1);
    EXPECT_EQ(Ask("PRAGMA user_version"), 1) << "all of it or nothing";
    EXPECT_EQ(EventsOf(path), events);
    std::filesystem::remove(path);
    make();
    std::string day = kHeader + std::string(81 - kHeader.size(), ' ');
    {
        CDatabase database(path, EDatabaseAccess::Read);
        CStatement row(database, "SELECT bytes FROM records WHERE id = 4");
        ASSERT_TRUE(row.Step());
        const auto bytes = row.BytesAt(0);
        day.back() = '\x1A';
        day.append(bytes.begin(), bytes.end());
    }
    m_folder.Write("events/\xC3\x89L04-D\xC3\xA9part 7-2026-11-25-DEV.evt", day);
    const SOutcome outcome = Archive();
    EXPECT_TRUE(Contains(outcome.out, "0 records added, 1 already archived"));
    EXPECT_EQ(EventsOf(path), events);
    EXPECT_EQ(Ask("SELECT count(*) FROM events WHERE site = 'events'"), 1) << "of the relay that is there";
    EXPECT_EQ(Ask("SELECT count(*) FROM events WHERE site = ''"), 3);
    EXPECT_EQ(Lines(Find({"trip", "--format", "json"}).out).size(), 2U);
    CDatabase(path, EDatabaseAccess::Write)
        .Run("INSERT INTO records_text (records_text) VALUES ('integrity-check')");
}

TEST_F(CArchive, KeepsSitesApart) {
    const std::string north = m_folder.Native("north"), south = m_folder.Native("south");
    const std::string image = kHeader + Simple(At(16, 4), "Trip") + Extended(At(16, 5), "Fault");
    m_folder.Write("north/AB12-1-2026-11-16-DEV.evt", image);
    m_folder.Write("south/AB12-1-2026-11-16-DEV.evt", image);
    m_folder.Write("south.ini", "[RUVO_GENERAL]\nEventRootDir=" + m_folder.Path("south") + "\n");
    const auto archive = [this](std::vector<std::string> roots) {
        roots.insert(roots.begin(), "archive");
        roots.insert(roots.end(), {"--sqlite", m_folder.Native("a.db")});
        return RunTool(roots).out;
    };
    EXPECT_EQ(archive({north, m_folder.Native("south.ini")}).substr(0, 44),
              "2 day files read, 0 unchanged; 4 records add");
    EXPECT_EQ(archive({south}).substr(0, 30), "0 day files read, 1 unchanged;") << "its INI file's name";
    EXPECT_EQ(archive({north, "--site", "Nord"}).substr(0, 44),
              "1 day file read, 0 unchanged; 2 records adde");
    EXPECT_EQ(Ask("SELECT count(DISTINCT site) FROM events"), 3);
    const std::string found = Find({"", "--site", "Nord", "--format", "json"}).out;
    EXPECT_EQ(nlohmann::json::parse(Lines(found).at(1)).at("site"), "Nord") << found;
    EXPECT_EQ(Lines(found).size(), 2U);
    EXPECT_EQ(RunTool({"archive", north + "/AB12-1-2026-11-16-DEV.evt", "--sqlite", "x"}).status, 2);
}

TEST_F(CArchive, WritesNewRecordsOnce) {
    setenv("RUVO_STATE_DIR", m_folder.Native("state").c_str(), 1);
    const std::string first = Extended(At(16, 3), "a"), other = Simple(At(16, 4), "b");
    struct SStep {
        const char* name;
        std::string bytes;
        std::size_t lines;
        const char* target = "lines";
        int status = 0;
    };
    const SStep kSteps[] = {
        {"a first time", kHeader + first, 1},
        {"as it was", kHeader + first, 0},
        {"the output cannot be written", kHeader + first + other, 0, "no/lines", 1},
        {"so it comes again", kHeader + first + other, 1},
        {"with half a record", kHeader + first + other + first.substr(0, 20), 0},
        {"mended", kHeader + first + other + first, 1},
        {"damage, and a record after it", kHeader + first + other + first + "xyz" + first + other, 2},
        {"what followed damage again", kHeader + first + other + first + "xyz" + first + other + other, 3},
        {"other bytes before it", kHeader + other + first + first + first + first + first + first, 7},
        {"shorter", kHeader + other, 1},
    };
    for (const SStep& step : kSteps) {
        WriteDay(step.bytes);
        m_folder.Write("lines", "");
        const SOutcome outcome =
            RunIn(m_folder, "archive @/events --new pg --ndjson @/" + std::string(step.target));
        EXPECT_EQ(outcome.status, step.status) << step.name << ": " << outcome.error;
        EXPECT_EQ(Lines(m_folder.Read("lines")).size(), step.lines) << step.name;
    }
    EXPECT_EQ(Lines(RunIn(m_folder, "archive @/events --new x --ndjson -").out).size(), 1U) << "another name";
    EXPECT_EQ(RunIn(m_folder, "archive @/events --new ../x --ndjson -").status, 2);
    EXPECT_EQ(RunIn(m_folder, "archive @/events --new x --sqlite y").status, 2);
}

TEST_F(CArchive, LeavesOtherDatabasesAlone) {
    m_folder.Write(kDayFile, kHeader);
    EXPECT_EQ(RunIn(m_folder, "archive @/events").status, 2) << "no output";
    EXPECT_EQ(Find({"x"}).status, 2) << "no archive";
    ASSERT_EQ(Archive().status, 0);
    const auto refuses = [this](const char* change, const char* why) {
        CDatabase(m_folder.Native("a.db"), EDatabaseAccess::Write).Run(change);
        for (const SOutcome& outcome : {Archive(), Find({"x"})}) {
            EXPECT_GT(outcome.status, 0) << change;
            EXPECT_TRUE(Contains(outcome.error, why));
        }
    };
    const std::string archive = m_folder.Read("a.db");
    for (const char* change :
         {"CREATE VIEW extra AS SELECT 1", "CREATE INDEX extra ON records (text)", "DROP INDEX records_time",
          "CREATE TRIGGER extra AFTER INSERT ON records BEGIN DELETE FROM records; END",
          "DROP VIEW events; CREATE TABLE events (id)",
          "DROP VIEW events; DROP VIEW damaged_places; DROP TABLE records; CREATE VIEW records AS "
          "WITH RECURSIVE n(id) AS (SELECT 1 UNION ALL SELECT id + 1 FROM n) SELECT id FROM n"}) {
        refuses(change, "not an archive of ruvoctl");
        m_folder.Write("a.db", archive);
    }
    CDatabase(m_folder.Native("a.db"), EDatabaseAccess::Write).Run("ANALYZE; VACUUM");
    EXPECT_EQ(Archive().status + Find({"x"}).status, 1) << "nothing is found";
    EXPECT_ANY_THROW(CDatabase(m_folder.Native("a.db"), EDatabaseAccess::Write)
                         .Run("PRAGMA writable_schema = 1; DELETE FROM sqlite_schema"));
    refuses("PRAGMA user_version = 99", "a newer ruvoctl (archive version 99)");
    refuses("PRAGMA user_version = -1", "of version -1, which does not exist");
    refuses("PRAGMA application_id = 7", "a database of another program");
    m_folder.Write("a.db", archive);
    std::filesystem::rename(m_folder.Native("a.db"), m_folder.Native("b.db"));
    std::filesystem::create_symlink("b.db", m_folder.Native("a.db"));
    EXPECT_EQ(Archive().status, 0) << "a link of one's own";
    std::filesystem::create_symlink("other", m_folder.Native("b.db-journal"));
    EXPECT_EQ(Archive().status, 1) << "but not beside it";
    std::filesystem::rename(m_folder.Native("b.db"), m_folder.Native("a.db"));
    m_folder.Write("other", "of somebody else"); // named by a journal of what no archive takes part in
    std::filesystem::copy_file(RUVO_TEST_DATA "/tools/foreign.journal", m_folder.Native("a.db-journal"));
    const std::filesystem::path home = std::filesystem::current_path();
    std::filesystem::current_path(m_folder.Native());
    EXPECT_EQ(Archive().status, 1);
    std::filesystem::current_path(home);
    EXPECT_EQ(m_folder.Read("other"), "of somebody else");
    m_folder.Write("a.db", std::string(5000, 'x'));
    EXPECT_EQ(Archive().status, 1);
    EXPECT_EQ(m_folder.Read("a.db"), std::string(5000, 'x'));
}

} // namespace
} // namespace ruvo::test
