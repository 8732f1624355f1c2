// ruvoctl digest and --fetched, over a history of visits that is a table; whole outputs are compared with
// files.
#include "support/case_table.h"
#include "support/fake_system.h"
#include "support/scratch_folder.h"
#include "tools/day_files.h"
#include "tools/run_tool.h"
#include "tools/visit_entries.h"

#include "platform/environment.h"
#include "tools/sites/fetched_bytes.h"

#include <filesystem>
#include <regex>

namespace ruvo::test {
namespace {

class DigestCommand : public testing::Test {
protected:
    DigestCommand() {
        SetEnvironmentValue("RUVO_STATE_DIR", folder.Native("state"));
        SetEnvironmentValue("TZ", "Europe/Berlin");
        for (const std::string name : {"north", "south"}) {
            std::filesystem::create_directories(folder.Native("ev/" + name));
            const std::string link = name == "north"
                                         ? "RV001=10.0.0.5,1\nRV002=10.0.0.6,2\nRV003=10.0.0.7,3\n"
                                         : "RV001=10.1.0.5,1\n";
            folder.Write(
                "sites/" + name + ".ini",
                "[RUVO_GENERAL]\nUseEthernet=1\nUseModem=0\nEventRootDir=" + folder.Native("ev/" + name) +
                    "\nErrorLogPathname=" + folder.Native(name + ".log") + "\n[RUVO_ETHERNET]\n" + link);
        }
        ForEachCase<7>("tools/digest_history.txt",
                       [this](auto& what, auto& a, auto& b, auto& c, auto& d, auto& e, auto& f) {
                           Happen(what, {a, b, c, d, e, f});
                       });
        EndRun();
        g_utcTime = {2026, 11, 25, 6, 0, 0};
    }

    void Happen(const std::string& what, const std::vector<std::string>& fields) {
        if (what == "run") {
            EndRun();
            site = fields[0];
            Begin(fields[1]);
            how = fields[2];
        } else if (what == "log") {
            folder.Write(site + ".log", folder.Read(site + ".log") + fields[0] + "\r\n");
        } else if (what == "recovered") {
            record->AddRecovered(fields[0], 1, Store(fields[2], fields[5]));
        } else {
            AddRelay(fields);
        }
    }
    void Begin(const std::string& when) {
        g_utcTime = CalendarTime("2026-11-" + when);
        record = std::make_unique<CVisitRecord>(folder.Path("ev\\" + site),
                                                folder.Path("sites\\" + site + ".ini"));
        record->Begin();
    }
    void EndRun() {
        g_utcTime.minute += 3;
        if (record && how == "whole")
            record->End([] {
                SVisitLine line;
                line.ended = ERunEnd::Whole;
                return line;
            }());
        record.reset();
    }
    void AddRelay(const std::vector<std::string>& fields) {
        SVisitEntry entry = EntryNow(fields[0], fields[1], fields[4] == "reached", fields[2], fields[3]);
        entry.statusText = entry.isReached ? "" : fields[4];
        if (!fields[5].empty()) {
            const SStoredBytes bytes = Store(entry.name, fields[5]);
            entry.stored = entry.taken = 1;
            entry.dayFile = bytes.dayFile;
            entry.from = bytes.from;
            entry.to = bytes.to;
        }
        record->Add(entry);
    }
    /// "21 05 TEXT; 21 06 TEXT" into the day file of that day.
    SStoredBytes Store(const std::string& name, const std::string& events) {
        const std::string file = name + "/" + name + "-2026-11-" + std::to_string(g_utcTime.day) + "-DEV.evt";
        const std::string path = "ev/" + site + "/" + file;
        const std::string there = folder.Read(path);
        std::string bytes = there.empty() ? kHeader : there;
        std::istringstream list(events);
        for (std::string event; std::getline(list >> std::ws, event, ';');) {
            const CParlaneIEC870 at = At(static_cast<std::uint8_t>(std::stoi(event)),
                                         static_cast<std::uint8_t>(std::stoi(event.substr(event.find(' ')))));
            const std::string text = event.substr(event.find(' ', event.find(' ') + 1) + 1);
            bytes += text.starts_with("Fault") ? Extended(at, text) : Simple(at, text);
        }
        folder.Write(path, bytes);
        return {file, there.size(), bytes.size()};
    }

    SOutcome Run(const std::string& line) {
        SOutcome outcome = RunIn(folder, line);
        for (std::string* text : {&outcome.out, &outcome.error})
            *text = Replaced(*text, folder.Native(), "@");
        return outcome;
    }
    /// With RUVO_WRITE_EXPECTED set, the file is made anew, for a person to read.
    void ExpectFile(const std::string& name, const std::string& text) {
        const std::string path = std::string(RUVO_TEST_DATA "/tools/") + name;
        if (EnvironmentValue("RUVO_WRITE_EXPECTED"))
            std::ofstream(path, std::ios::binary) << text;
        std::ifstream file(path, std::ios::binary);
        EXPECT_EQ(text, std::string(std::istreambuf_iterator<char>(file), {})) << path;
    }

    CScratchFolder folder;
    std::string site;
    std::string how;
    std::unique_ptr<CVisitRecord> record;
};

TEST(FetchedBytes, WhatAVisitHasStoredIsNotNewWhenItIsRecovered) {
    const std::string file = "AB12-1/AB12-1-2026-11-24-DEV.evt";
    SVisitLine killed, next;
    SVisitEntry& visit = killed.entries.emplace_back();
    visit.dayFile = file;
    visit.from = 100;
    visit.to = 200;
    SVisitEntry& recovery = next.entries.emplace_back();
    for (const std::uint64_t end : {200U, 260U}) {
        recovery.recoveredIn = SStoredBytes{file, 100, end};
        CFetchedBytes fetched;
        fetched.AddOther(killed);
        fetched.Add(next);
        EXPECT_EQ(fetched.OfName("AB12-1-2026-11-24-DEV.evt").IsEmpty(), end == 200) << end;
    }
}

TEST_F(DigestCommand, AMutedRelayAlarmsNobody) {
    EXPECT_EQ(Run("mute @/sites/north.ini RV002 --until 2026-12-31 --why CT").status, 0);
    const std::string text = Run("digest @/sites/north.ini --fetched 24h").out;
    EXPECT_TRUE(Contains(text, "2 nights; muted until the end of"));
    for (const char* alarm : {"1 relay not reached", "! Bus", "The link to", "\"ping\""})
        EXPECT_FALSE(Contains(text, alarm));
}

/// Its runs began at 03:00 and at 03:30 local time; what was written at other times may be anybody's.
TEST_F(DigestCommand, ASharedLogIsToldApartByItsRuns) {
    std::string ini = folder.Read("sites/south.ini");
    folder.Write("sites/south.ini", ini.replace(ini.rfind("south.log"), 5, "north"));
    folder.Write("north.log",
                 "2026/11/25 03:01:00 In a run of north\r\n2026/11/25 03:20:00 Between\r\n"
                 "2026/11/25 03:20:00 Of south. Connection details - device IP: 10.1.0.5, device "
                 "address: 1, bus address: 0.\r\n"
                 "2026/11/25 03:31:00 In a run of south\r\nand its second line\r\n");
    for (const std::string command : {"digest @/sites/", "status @/sites/"}) {
        const std::string north = Run(command + "north.ini").out, south = Run(command + "south.ini").out;
        EXPECT_TRUE(Contains(north, "run of north") && Contains(north, "Between")) << north;
        EXPECT_FALSE(Contains(north, "f south") || Contains(north, "second line")) << north;
        for (const char* words : {"run of south", "Of south", "Between", "second line"})
            EXPECT_TRUE(Contains(south, words));
        EXPECT_FALSE(Contains(south, "run of north"));
    }
}

TEST_F(DigestCommand, SaysWhatCameInAndWhatWentWrong) {
    for (const std::string format : {"text", "html", "json"})
        ExpectFile("digest_expected." + format, Run("digest --all @/sites --format " + format).out);
}

TEST_F(DigestCommand, CountsWhatIsAskedFor) {
    for (const std::string day : {"2026-11-24", "2026-11-22"})
        folder.Write("ev/copy/XY-9/XY-9-" + day + "-DEV.evt", kHeader + Simple(At(1, 1), "Copied"));
    folder.Write("east.ini", folder.Read("sites/north.ini"));
    ForEachCase<3>("tools/digest_cases.txt", [this](auto& line, auto& status, auto& said) {
        const SOutcome outcome = Run(line);
        EXPECT_EQ(outcome.status, std::stoi(status)) << outcome.error;
        // The folder's name may be long, and so decide where a line ends.
        const std::string out = std::regex_replace(outcome.out, std::regex("\n +(?=read)"), " ");
        EXPECT_TRUE(Contains(outcome.error + out, said)) << outcome.out;
    });
    g_utcTime = {2026, 12, 20, 6, 0, 0};
    const std::string late = Run("digest @/sites/south.ini").out;
    EXPECT_TRUE(Contains(late, "Spare (RV001) answers, but has had no event for 25 days"));
    EXPECT_TRUE(Contains(late, "1 site not visited\n"));
}

/// Each run is in one digest of a name, also one that lasts while a digest is made, or whose digest nobody
/// got.
TEST_F(DigestCommand, AMarkLeavesNoRunOut) {
    const auto digest = [this](const std::string& said) {
        const std::string out = Run("digest @/sites/north.ini --since-last mail").out;
        EXPECT_TRUE(Contains(out, said));
    };
    digest("this is the first digest \"mail\"");
    digest("north: no events\n");
    Happen("run", {"north", "25 06:00", "whole"});
    Happen("relay", {"RV001", "10.0.0.5,1", "AB12-1", "Feeder 1", "reached", "25 06 New trip"});
    digest("north: no events\n");
    EndRun();
    std::ostringstream full;
    full.setstate(std::ios::badbit);
    RunOn(full, {"digest", folder.Native("sites/north.ini"), "--since-last", "mail"});
    digest("north: 1 trip\n");
    digest("north: no events\n");
    std::filesystem::rename(folder.Native("state/marks"), folder.Native("marks"));
    std::filesystem::remove_all(folder.Native("state"));
    std::filesystem::create_directory(folder.Native("state"));
    std::filesystem::rename(folder.Native("marks"), folder.Native("state/marks"));
    Happen("run", {"north", "25 07:00", "whole"});
    Happen("relay", {"RV001", "10.0.0.5,1", "AB12-1", "Feeder 1", "reached", "25 07 Another trip"});
    EndRun();
    digest("have begun anew");
    digest("north: no events\n");
}

} // namespace
} // namespace ruvo::test
