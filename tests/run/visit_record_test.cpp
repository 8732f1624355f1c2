// What a run leaves in the record of its visits.
#include "extraction/extraction_fixture.h"
#include "run/run_fixture.h"

#include "platform/environment.h"

namespace ruvo::test {

class RunRecord : public Run {
protected:
    RunRecord() { SetEnvironmentValue("RUVO_STATE_DIR", folder.Native("state")); }

    /// The entries of a run: "KEY ADDRESS LINK NAME reached TAKEN/STORED/LOST/ASIDE STATUS FILE FROM-TO|".
    std::string Entries() {
        std::filesystem::remove_all(folder.Native("state"));
        RunRecorded();
        std::string all;
        for (const SVisitEntry& entry : entries) {
            EXPECT_EQ(entry.end, "2026-11-16T23:30:00Z");
            std::ostringstream text;
            text << entry.key << " " << entry.address << " " << entry.link << " " << entry.name << " "
                 << (entry.isReached ? "reached" : "not reached") << " " << entry.taken << "/" << entry.stored
                 << "/" << entry.lost << "/" << entry.setAside << " " << entry.status;
            if (!entry.dayFile.empty())
                text << " " << entry.dayFile << " " << entry.from << "-" << entry.to;
            all += text.str() + "|";
            plant = entry.plant;
            logLines += std::to_string(entry.logLines) + " ";
        }
        return all;
    }
    void MakeRelay() {
        server.values = {{0x0004, TextHex("Desc")},
                         {0x0005, TextHex("Pl\"ant  ")},
                         {0x0006, TextHex("AB12-X")},
                         {0x0008, TextHex("00001234 ")}};
    }

    const SScriptedEvent kTrip = Event(1, {"240107", TextHex("%d"), "280105"});
    std::string plant;
    std::string logLines; ///< of all entries
};

TEST_F(RunRecord, SaysWhatBecameOfEachRelay) {
    MakeRelay();
    fields.serialEntries = {{"RV001", 5}, {"RV002", 6}};
    server.events = {kTrip, kTrip, {77, List({})}};
    const std::string name = "AB12-00001234";
    const std::string begin =
        "RV001 5 serial " + name + " reached 3/2/1/0 251 " + name + "/" + name + "-2026-11-16-DEV.evt ";
    const std::string quiet = "RV002 6 serial " + name + " reached 0/0/0/0 0|";
    std::string found = Entries();
    const auto size =
        std::filesystem::file_size(folder.Native("ev/" + name + "/" + name + "-2026-11-16-DEV.evt"));
    EXPECT_EQ(found, begin + "0-" + std::to_string(size) + "|" + quiet);
    EXPECT_EQ(plant, "Pl\"ant");
    server.events = {kTrip, kTrip, {77, List({})}};
    found = Entries();
    EXPECT_TRUE(found.starts_with(begin + std::to_string(size) + "-")) << found;
    server.events = {kTrip, Event(77, {"240107"}), kTrip};
    found = Entries();
    EXPECT_NE(found.find(" 3/2/1/0 0 "), std::string::npos) << "one of unknown kind: " << found;
    server.events = {kTrip, Event(3, {"240107", "44020030", "240109"}), kTrip};
    server.statuses = {{"GetColumnTextAndValues", 18}};
    found = Entries();
    EXPECT_TRUE(found.starts_with("RV001 5 serial " + name + " reached 2/0/1/1 18|")) << found;
}

TEST_F(RunRecord, SaysWhyARelayWasNotReached) {
    fields.serialEntries = {{"RV001", 5}};
    server.statuses = {{"GetValue 00.DF", 8}};
    EXPECT_EQ(Entries(), "RV001 5 serial  not reached 0/0/0/0 8|");
    server.statuses = {{"OpenPort", 11}};
    EXPECT_EQ(Entries(), "RV001 5 serial  not reached 0/0/0/0 11|");
    server.statuses = {{"GetDeviceStatus", 15}};
    MakeRelay();
    EXPECT_EQ(Entries(), "RV001 5 serial AB12-00001234 reached 0/0/0/0 15|");
    server.statuses = {{"ResetCell 00.02", 0x0911}};
    server.values[0x00DF] = "240100";
    EXPECT_EQ(Entries(), "RV001 5 serial  reached 0/0/0/0 2321|") << "it has answered";
    server.statuses = {{"SetTransactionValues", 12}};
    fields.useEthernet = 1;
    fields.ethernetEntries = {{"RV001", "10.0.0.5,2,1"}};
    EXPECT_EQ(Entries(), "RV001 10.0.0.5,2,1 ethernet  not reached 0/0/0/0 12|");
    fields.useEthernet = 0;
    fields.serialEntries = {{"RV001", 5}, {"RV002", 6}};
    EXPECT_EQ(Entries(), "RV001 5 serial  not reached 0/0/0/0 12|RV002 6 serial  not reached 0/0/0/0 12|");
    EXPECT_EQ(logLines, "1 1 1 1 2 2 0 ") << "the first relay has those of a link";
}

TEST_F(RunRecord, LeavesOutWhatAnEndHasLeftOut) {
    MakeRelay();
    fields.serialEntries = {{"RV001", 5}, {"RV002", 6}, {"RV003", 7}};
    server.onCall = [this, n = 0](SCall& call) mutable -> std::optional<std::int64_t> {
        if (call.name == "GetDeviceStatus" && ++n == 1)
            end->Ask("SIGTERM");
        return std::nullopt;
    };
    EXPECT_EQ(Entries(), "RV001 5 serial AB12-00001234 reached 0/0/0/0 0|");
    EXPECT_EQ(end->NotVisited(), 2U);
    server.statuses = {{"OpenPort", 11}};
    server.onCall = [this](SCall& call) -> std::optional<std::int64_t> {
        if (call.name == "OpenPort")
            end->Ask("SIGTERM");
        return std::nullopt;
    };
    EXPECT_EQ(Entries(), "") << "a port that then cannot be opened leaves out no more";
}

} // namespace ruvo::test
