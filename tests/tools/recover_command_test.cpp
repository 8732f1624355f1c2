// ruvoctl recover: what is left of ended runs is listed, and stored once when a person says so.
#include "support/fake_system.h"
#include "support/scratch_folder.h"
#include "tools/day_files.h"
#include "tools/run_tool.h"

#include "dayfile/day_file_writer.h"
#include "dayfile/off_file.h"
#include "ledger/journal_file.h"
#include "ledger/root_folder.h"
#include "ledger/set_aside_append.h"
#include "ledger/set_aside_file.h"
#include "ledger/visit_custody.h"
#include "ledger/visit_history.h"
#include "ledger/visit_record.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <span>
#include <sys/stat.h>
#include <unistd.h>

namespace ruvo::test {

class RecoverCommand : public testing::Test {
protected:
    RecoverCommand() {
        setenv("RUVO_STATE_DIR", folder.Native("state").c_str(), 1);
        setenv("RUVO_REGISTRY_USER", folder.Native("none").c_str(), 1);
        setenv("RUVO_REGISTRY_MACHINE", folder.Native("none").c_str(), 1);
        g_utcTime = {2026, 11, 16, 23, 30, 0};
        UseRoot("ev");
    }

    void UseRoot(const std::string& root) const {
        std::filesystem::create_directories(folder.Native(root));
        folder.Write("site.ini", "[RUVO_GENERAL]\nEventRootDir=" + folder.Native(root) +
                                     "\nErrorLogPathname=" + folder.Native("log") + "\n");
    }
    static std::span<const std::uint8_t> Bytes(const std::string& text) {
        return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
    }
    /// A visit that takes two events and ends in one of three ways.
    enum class EEnd : std::uint8_t { SetAside, Killed, Stored };
    void Visit(EEnd end, const std::string& root = "ev", const std::string& day = kDay) const {
        CRunLedger ledger(folder.Path(root), [](const SLedgerReport&) {});
        CVisitCustody custody(&ledger, "RV001");
        ASSERT_FALSE(custody.Begin(folder.Path(root) + day));
        for (const std::string& record : records)
            EXPECT_TRUE(custody.Keep(Bytes(record), 0));
        if (end == EEnd::SetAside)
            custody.SetAside("a password was refused");
        if (end == EEnd::Stored)
            custody.Store();
        if (end != EEnd::Killed)
            custody.End();
    }
    SOutcome Recover(const std::vector<std::string>& more = {}) const {
        std::vector<std::string> words{"recover", folder.Native("site.ini")};
        words.insert(words.end(), more.begin(), more.end());
        SOutcome outcome = RunTool(words);
        for (std::string* text : {&outcome.out, &outcome.error}) // the scratch folder is @, a root's folder #
            for (const auto& [from, to] : {std::pair{folder.Native(), "@"}, {Digest(), "#"}})
                for (std::size_t at; (at = text->find(from)) != std::string::npos;)
                    text->replace(at, from.size(), to);
        return outcome;
    }
    /// What the record says; a reader that looks for the last visit does not see it.
    std::string Record() const {
        std::string said;
        EXPECT_TRUE(CVisitHistory(folder.Path("ev")).ForEach([&said](const SVisitLine& line, ERunState) {
            EXPECT_EQ(line.kind, ERunKind::Recover);
            for (const SVisitEntry& entry : line.entries) {
                const SStoredBytes in = entry.recoveredIn.value_or(SStoredBytes());
                said += entry.key + " " + std::to_string(entry.recovered) + " " + in.dayFile + " " +
                        std::to_string(in.from) + "-" + std::to_string(in.to) + "|";
            }
        }));
        const SVisitSummary summary = SummariseVisits(folder.Path("ev"), folder.Path("site.ini"));
        EXPECT_FALSE(summary.last || !summary.since.empty());
        EXPECT_TRUE(summary.hasEvents);
        return said;
    }
    std::string Digest() const { return Name("ev"); }
    std::string Name(const std::string& root) const { // of its folder
        const std::string path = FolderOfJournals(folder.Path(root));
        return path.empty() ? "-" : path.substr(path.rfind('\\') + 1);
    }
    std::string Day(const std::string& root = "ev") const {
        std::string name = root + kDay;
        std::ranges::replace(name, '\\', '/');
        return folder.Read(name);
    }

    static constexpr const char* kDay = "\\AB12-1\\AB12-1-2026-11-16-DEV.evt";
    const std::vector<std::string> records{Simple(At(16, 1), "One"), Simple(At(16, 2), "Two")};
    const std::string both = records[0] + records[1];
    CScratchFolder folder;
};

TEST_F(RecoverCommand, ListsWhatIsLeftAndWhereItLooked) {
    EXPECT_EQ(Recover().out,
              "State folder: @/state\nEvent root: @/ev\n  looked in @/state/#\n  nothing is left\n");
    Visit(EEnd::SetAside);
    Visit(EEnd::Killed, "ev", "\\AB12-2\\AB12-2-2026-11-16-DEV.evt");
    folder.Write("state/" + Digest() + "/old.journal.damaged", "x");
    const SOutcome listed = Recover();
    EXPECT_EQ(listed.status, 0);
    EXPECT_EQ(listed.out, "State folder: @/state\nEvent root: @/ev\n  looked in @/state/#\n"
                          "  set aside: 2 events of RV001, visit begun 2026-11-16 23:30:00 UTC\n"
                          "    a password was refused\n    day file AB12-1/AB12-1-2026-11-16-DEV.evt\n"
                          "    @/state/#/AB12-1-2026-11-16-DEV-1.setaside\n"
                          "  waiting: 2 events of RV001, visit begun 2026-11-16 23:30:00 UTC\n"
                          "    day file AB12-2/AB12-2-2026-11-16-DEV.evt\n"
                          "    journal @/state/#/2026-11-16T233000Z-1.journal\n"
                          "  damaged, or written by another version\n"
                          "    journal @/state/#/old.journal.damaged\n");
    EXPECT_EQ(
        Recover({"--format", "json"}).out,
        "{\"kind\":\"event_root\",\"event_root\":\"@/ev\",\"folder\":\"@/state/#\",\"exists\":true,"
        "\"readable\":true}\n"
        "{\"kind\":\"set_aside\",\"event_root\":\"@/ev\",\"folder\":\"@/state/#\",\"file\":\"@/state/#/"
        "AB12-1-2026-11-16-DEV-1.setaside\",\"events\":2,\"damaged\":false,\"key\":\"RV001\",\"begun\":"
        "\"2026-11-16 23:30:00 UTC\",\"day_file\":\"AB12-1/AB12-1-2026-11-16-DEV.evt\",\"reason\":\"a "
        "password was refused\"}\n"
        "{\"kind\":\"waiting\",\"event_root\":\"@/ev\",\"folder\":\"@/state/#\",\"journal\":\"@/state/#/"
        "2026-11-16T233000Z-1.journal\",\"events\":2,\"key\":\"RV001\",\"begun\":\"2026-11-16 23:30:00 "
        "UTC\",\"day_file\":\"AB12-2/AB12-2-2026-11-16-DEV.evt\"}\n"
        "{\"kind\":\"damaged_journal\",\"event_root\":\"@/ev\",\"folder\":\"@/state/#\",\"journal\":\"@/state/#/"
        "old.journal.damaged\"}\n");
    const SOutcome status =
        RunTool({"status", folder.Native("ev"), folder.Native("log"), "--format", "json"});
    EXPECT_NE(status.out.find("\"events_waiting\":2,\"events_set_aside\":2}"), std::string::npos)
        << status.out;
    EXPECT_EQ(status.status, 1);
    const SOutcome check = RunTool({"check", folder.Native("site.ini")});
    EXPECT_NE(check.out.find("warning: 2 events are set aside in "), std::string::npos) << check.out;
    EXPECT_NE(check.out.find("warning: 2 events wait in journal "), std::string::npos) << check.out;
    const std::string file = folder.Native("state/" + Digest() + "/AB12-1-2026-11-16-DEV-1.setaside");
    const SOutcome events = RunTool({"events", "--format", "csv", file});
    EXPECT_EQ(std::ranges::count(events.out, '\n'), 3) << events.out << events.error;
}

TEST_F(RecoverCommand, ListsTheEventsThatWaitAndNoOthers) {
    {
        CRunLedger ledger(folder.Path("ev"), [](const SLedgerReport&) {});
        CVisitCustody none(&ledger, "RV001"), appended(&ledger, "RV002"), one(&ledger, "RV003");
        appended.NameSource("day-1.setaside");
        ASSERT_FALSE(none.Begin(folder.Path("ev\\AB12-1\\day.evt")));
        ASSERT_FALSE(appended.Begin(folder.Path("ev\\AB12-2\\day.evt")));
        ASSERT_FALSE(one.Begin(folder.Path("ev\\AB12-3\\day.evt")));
        EXPECT_TRUE(appended.Keep(Bytes(records[0]), 0) && one.Keep(Bytes(records[1]), 0));
    }
    folder.Write("state/" + Digest() + "/day-2.setaside", "");
    const std::string journal = "state/" + Digest() + "/2026-11-16T233000Z-1.journal";
    const std::string all = "State folder: @/state\nEvent root: @/ev\n  looked in @/state/#\n"
                            "  waiting: 1 event of RV003, visit begun 2026-11-16 23:30:00 UTC\n"
                            "    day file AB12-3/day.evt\n"
                            "    journal @/state/#/2026-11-16T233000Z-1.journal\n";
    EXPECT_EQ(Recover().out, all);
    folder.Write(journal, folder.Read(journal) + "more");
    EXPECT_EQ(Recover().out, all + "  damaged, or written by another version\n"
                                   "    journal @/state/#/2026-11-16T233000Z-1.journal\n");
    std::filesystem::remove_all(folder.Native("state"));
    folder.Write("state", ""); // what is no folder cannot be looked into
    const SOutcome hidden = Recover();
    EXPECT_TRUE(hidden.status == 1 && hidden.out.ends_with("\n  this user cannot read it\n")) << hidden.out;
}

TEST_F(RecoverCommand, SaysWhatItCannotRead) {
    Visit(EEnd::Killed, "old");
    Visit(EEnd::Stored);
    const bool isRoot = geteuid() == 0;
    const std::string old = "state/" + Name("old");
    const std::pair<std::string, mode_t> modes[] = {{"", 0755}, {"state/" + Digest(), 0755}, {old, 0}};
    for (const auto& [path, mode] : modes)
        chmod(folder.Native(path).c_str(), mode);
    for (const bool isListed : {true, false}) {
        const std::string unread = isListed ? old : "state";
        chmod(folder.Native("state").c_str(), isListed ? 0755 : 0311);
        ASSERT_TRUE(!isRoot || seteuid(65534) == 0);
        const SOutcome listed = Recover(), from = Recover({"--from", old.substr(6)}),
                       none = Recover({"--from", "none"}),
                       status = RunTool({"status", folder.Native("ev"), folder.Native("log")});
        EXPECT_TRUE(!isRoot || seteuid(0) == 0);
        const std::string why = "  looked in @/" + unread + "\n  this user cannot read it\n";
        EXPECT_TRUE(listed.status == 1 &&
                    listed.out.ends_with("left\nEvent root: an unknown event root\n" + why));
        EXPECT_TRUE(Contains(status.out, "unknown (looked in " + folder.Native(unread) + ", which"));
        EXPECT_EQ(none.error, "ruvoctl: the state folder @/state cannot be read in whole\n");
        EXPECT_EQ(from.error, isListed ? "ruvoctl: @/" + old + ": the note of its event root cannot be read\n"
                                       : none.error);
    }
    for (const std::string& path : {std::string("state"), old})
        chmod(folder.Native(path).c_str(), 0700);
}

TEST_F(RecoverCommand, StoresOnceWhatWaitsForADayFileThatHasChanged) {
    const std::string other = Simple(At(16, 3), "Other");
    const struct {
        const char* name;
        std::string there, added; ///< behind what the day file had before the visit
        bool isChanged;
    } cases[] = {{"as it was", "", both, false},
                 {"another's record", other, both, true},
                 {"one of ours and another's", records[0] + other, records[1], true},
                 {"ours behind another's", other + both, "", false}};
    for (const auto& row : cases) {
        std::filesystem::remove_all(folder.Native("state"));
        std::filesystem::remove_all(folder.Native("ev"));
        UseRoot("ev");
        Visit(EEnd::Stored);
        const std::string before = Day();
        Visit(EEnd::Killed); // its events look like earlier ones
        const std::string there = before + row.there;
        folder.Write("ev/AB12-1/AB12-1-2026-11-16-DEV.evt", there);
        EXPECT_EQ(
            Recover({"--from", folder.Native("ev")}).out,
            "2 events of a visit that was ended are in day file @/ev/AB12-1/AB12-1-2026-11-16-DEV.evt "
            "now. Visit of RV001, begun 2026-11-16 23:30:00 UTC." +
                std::string(row.isChanged
                                ? " The file had changed since then; the missing events are at its end.\n"
                                : "\n"))
            << row.name;
        EXPECT_EQ(Day(), there + row.added) << row.name;
        EXPECT_EQ(Record(), row.added.empty()
                                ? "RV001 2  0-0|"
                                : "RV001 2 AB12-1/AB12-1-2026-11-16-DEV.evt " + std::to_string(there.size()) +
                                      "-" + std::to_string(Day().size()) + "|")
            << row.name;
    }
}

TEST_F(RecoverCommand, TellsWhatAKilledVisitHasLost) {
    {
        CRunLedger ledger(folder.Path("ev"), [](const SLedgerReport&) {});
        CVisitCustody custody(&ledger, "RV001");
        ASSERT_FALSE(custody.Begin(folder.Path("ev") + kDay));
        EXPECT_TRUE(custody.Keep(Bytes(records[0]), 0x03050709));
        using enum ELostCause;
        for (const ELostCause cause : {NotStated, UnknownKind, Malformed, RecordNotRead, NoMemory})
            custody.Lose(cause);
    }
    const std::string out = Recover({"--from", folder.Native("ev")}).out;
    for (const char* told :
         {"1 event of unknown kind passed over.", "Cause: not known.", "Cause: no memory.",
          "Cause: a reply that makes no sense.", "Cause: a record that could not be read."})
        EXPECT_NE(out.find(told), std::string::npos) << out;
    EXPECT_NE(Day().find("NEXTEXTENDED: 50661130\r\n"), std::string::npos) << "as the visit would have it";
}

TEST_F(RecoverCommand, LeavesARunThatIsUnderWayAlone) {
    CRunLedger ledger(folder.Path("ev"), [](const SLedgerReport&) {});
    CVisitCustody custody(&ledger, "RV001");
    ASSERT_FALSE(custody.Begin(folder.Path("ev") + kDay));
    EXPECT_TRUE(custody.Keep(Bytes(records[0]), 0));
    EXPECT_NE(Recover().out.find("nothing is left"), std::string::npos) << "it answers for its events itself";
    CRunLedger next(folder.Path("ev"), [](const SLedgerReport&) {});
    next.BringIn();
    EXPECT_FALSE(CVisitCustody(&next, "RV002").Begin(folder.Path("ev\\AB12-2\\day.evt")));
    custody.Store();
    custody.End();
    EXPECT_TRUE(Day().ends_with(records[0]));
}

TEST_F(RecoverCommand, AppendsOnce) {
    Visit(EEnd::Stored);
    Visit(EEnd::SetAside);
    const std::string before = Day();
    const std::string name = "AB12-1-2026-11-16-DEV-1.setaside";
    const SOutcome appended = Recover({name});
    EXPECT_EQ(std::tuple(appended.status, appended.out, appended.error),
              std::tuple(0, "2 events are in day file @/ev/AB12-1/AB12-1-2026-11-16-DEV.evt now.\n", ""));
    EXPECT_EQ(Day(), before + both);
    EXPECT_EQ(Recover().out,
              "State folder: @/state\nEvent root: @/ev\n  looked in @/state/#\n  nothing is left\n");
    EXPECT_EQ(Record(), "RV001 2 AB12-1/AB12-1-2026-11-16-DEV.evt " + std::to_string(before.size()) + "-" +
                            std::to_string(Day().size()) + "|");
    const SOutcome again = Recover({folder.Native("state/" + Digest() + "/" + name)});
    EXPECT_EQ(again.status, 1);
    EXPECT_EQ(again.error,
              "ruvoctl: @/state/#/" + name +
                  ": is no set-aside file of this event root; run ruvoctl recover INI to list them\n");
    EXPECT_EQ(Day(), before + both);
    EXPECT_TRUE(folder.Has("state/" + Digest() + "/" + name + ".done"));
}

TEST_F(RecoverCommand, KeepsWhatCannotBeReadOfASetAsideFile) {
    Visit(EEnd::SetAside);
    const std::string name = "AB12-1-2026-11-16-DEV-1.setaside", path = "state/" + Digest() + "/" + name;
    const std::string whole = folder.Read(path);
    folder.Write(path, whole.substr(0, whole.size() - both.size()) + "xx");
    EXPECT_NE(Recover({name}).error.find("it holds no record"), std::string::npos);
    EXPECT_TRUE(JournalsIn(FolderOfJournals(folder.Path("ev"))).AreNone());
    folder.Write(path, whole + "xx");
    EXPECT_TRUE(Recover().out.ends_with("/" + name + " (damaged)\n"));
    const SOutcome appended = Recover({name});
    EXPECT_EQ(std::tuple(appended.status, appended.error),
              std::tuple(1, "ruvoctl: @/state/#/" + name + ".done: damage at byte " +
                                std::to_string(whole.size()) + "; what could not be read is still there\n"));
    EXPECT_TRUE(Day().ends_with(both));
    EXPECT_EQ(folder.Read(path + ".done"), whole + "xx");
}

TEST_F(RecoverCommand, LeavesTheFileWhereTheDayFileCannotBeHad) {
    Visit(EEnd::SetAside);
    const std::string name = "AB12-1-2026-11-16-DEV-1.setaside";
    CHeldDayFile other;
    ASSERT_FALSE(other.Hold(folder.Path("ev") + kDay));
    const SOutcome held = Recover({name});
    EXPECT_EQ(held.status, 1);
    EXPECT_NE(held.error.find(" is held by another run"), std::string::npos) << held.error;
    other.Release();
    std::filesystem::create_directory(folder.Native("ev/AB12-1"));
    folder.Write("ev/AB12-1/AB12-1-2026-11-16-DEV.evt", "torn");
    EXPECT_NE(Recover({name}).error.find(" does not end with a whole record: damage at byte 0"),
              std::string::npos);
    EXPECT_EQ(Day(), "torn");
    EXPECT_NE(Recover().out.find("set aside: 2 events"), std::string::npos) << "and nothing waits twice";
    EXPECT_EQ(Recover().out.find("waiting"), std::string::npos);
}

TEST_F(RecoverCommand, AnEventRootThatTheFileNamedEarlierIsNotForgotten) {
    const auto isListed = [&](const std::vector<std::string>& words) {
        return RunTool(words).out.find("2 events of " + folder.Native("old") + " are set aside in ") !=
               std::string::npos;
    };
    const std::vector<std::string> check{"check", folder.Native("site.ini")};
    const std::vector<std::string> status{"status", folder.Native("site.ini")};
    UseRoot("old");
    Visit(EEnd::SetAside, "old");
    UseRoot("ev");
    EXPECT_FALSE(isListed(check) || isListed(status)) << "it may be another site's";
    CVisitRecord record(folder.Path("old"), folder.Path("site.ini"));
    record.Begin();
    record.End({});
    EXPECT_TRUE(isListed(check));
    EXPECT_TRUE(isListed(status)) << RunTool(status).out;
}

TEST_F(RecoverCommand, AnotherSitesEventRootIsItsOwnMatterThoughItDoesNotExist) {
    const auto isListed = [&] {
        return RunTool({"status", folder.Native("site.ini")})
                   .out.find("/other (does not exist) are set aside in ") != std::string::npos;
    };
    Visit(EEnd::SetAside, "other"); // the first visit, before any day file
    CVisitRecord record(folder.Path("other"), folder.Path("other.ini"));
    record.Begin();
    record.End({});
    EXPECT_TRUE(isListed()) << "no other site is left that could say so";
    folder.Write("other.ini", "");
    EXPECT_FALSE(isListed());
}

TEST_F(RecoverCommand, TakesOverAFileBesideAJournalThatDoesNotNameIt) {
    Visit(EEnd::SetAside);
    Visit(EEnd::Killed);
    const std::string from = FolderOfJournals(folder.Path("ev"));
    const std::vector<std::string> files = SetAsideFilesIn(from).paths;
    ASSERT_TRUE(files.size() == 1 && JournalsIn(from).paths.size() == 1);
    std::filesystem::create_directory(folder.Native("taken"));
    EXPECT_EQ(AdoptSetAsideFile(files.front(), folder.Path("nowhere")), "");
    const std::string moved = AdoptSetAsideFile(files.front(), folder.Path("taken"));
    EXPECT_TRUE(moved.starts_with(folder.Path("taken\\")) && moved.ends_with(kSetAsideEnding)) << moved;
    EXPECT_TRUE(SetAsideFilesIn(from).AreNone());
    Visit(EEnd::SetAside, "ev", "\\AB12-3\\day.evt");
    {
        CRunLedger ledger(folder.Path("ev"), [](const SLedgerReport&) {});
        CVisitCustody appending(&ledger, "RV001"), ending(&ledger, "RV001");
        appending.NameSource("day-1.setaside");
        ASSERT_FALSE(appending.Begin(folder.Path("ev\\AB12-3\\day.evt")));
        ASSERT_FALSE(ending.Begin(folder.Path("ev\\AB12-4\\other.evt")));
        EXPECT_TRUE(ending.Keep(Bytes(records[0]), 0));
        ending.SetAside("a password was refused");
    }
    for (const char* named : {"\\day-1.setaside", "\\other-1.setaside"})
        EXPECT_EQ(AdoptSetAsideFile(from + named, folder.Path("taken")), "") << named;
}

TEST_F(RecoverCommand, TakesOverAnEventRootThatIsGone) {
    std::filesystem::create_directory(folder.Native("old"));
    Visit(EEnd::SetAside, "old");
    Visit(EEnd::Killed, "old");
    Visit(EEnd::SetAside); // of the same name
    std::filesystem::rename(folder.Native("old"), folder.Native("moved"));
    const std::string listed = Recover().out;
    EXPECT_NE(listed.find("Event root: @/old (does not exist)\n"), std::string::npos) << listed;
    EXPECT_EQ(RunTool({"status", folder.Native("ev"), folder.Native("log")}).status, 1);
    const SOutcome taken = Recover({"--from", folder.Native("old")});
    EXPECT_EQ(taken.status, 0) << taken.error;
    EXPECT_TRUE(Day().ends_with(both)) << "what waited";
    EXPECT_NE(folder.Read("log").find("2 events of a visit that was ended are in"), std::string::npos);
    EXPECT_EQ(Recover().out.find("/old"), std::string::npos);
    EXPECT_EQ(Recover({"AB12-1-2026-11-16-DEV-1.setaside", "AB12-1-2026-11-16-DEV-2.setaside"}).status, 0);
    EXPECT_TRUE(Day().ends_with(both + both + both));
    EXPECT_EQ(Recover({"--from", folder.Native("nothing")}).status, 1);
}

} // namespace ruvo::test
