// A run that is asked to end: where it stops, what becomes of the events, and what the log says.
#include "run/run_end_fixture.h"

#include "link/channel/channel.h"

namespace ruvo::test {

TEST_F(RunEnd, EndsBehindTheEventUnderWay) {
    const std::string rest = "; the rest waits in the relay for the next run.";
    const struct {
        const char* name;
        const char* call;
        int nth;
        std::string note;
        int notVisited;
        std::size_t stored;
    } cases[] = {
        {"while the port is opened", "OpenPort", 1, "", 2, 0},
        {"at the first login", "GetValue 00.DF", 1, "", 2, 0},
        {"before the first event", "GetDeviceStatus", 1, "", 2, 0},
        {"at the first event", "GetEvent", 1, "This visit has taken 1 event" + rest + kNext, 1, 1},
        {"behind the second", "GetDeviceStatus", 3, "This visit has taken 2 events" + rest + kNext, 1, 2},
        {"at the last event", "GetEvent", 3, "", 1, 3},
        {"at the second login", "GetValue 00.DF", 2, "", 1, 3},
        {"behind the last relay", "ClosePort", 1, "", 0, 3},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.name);
        std::filesystem::remove_all(folder.Native("ev"));
        SetEvents(3);
        AskAt(row.call, row.nth);
        EXPECT_EQ(RunAll(), row.note + "Run ended by SIGHUP; " + std::to_string(row.notVisited) + " relay" +
                                (row.notVisited == 1 ? "" : "s") + " not visited.|");
        EXPECT_EQ(server.calls.back(), "ClosePort");
        EXPECT_EQ(Stored(), row.stored);
        server.onCall = nullptr;
        EXPECT_EQ(RunAll(), "");
        EXPECT_EQ(Stored(), 3U);
    }
    EXPECT_EQ(RunAll("SIGINT"), "Run ended by SIGINT; 2 relays not visited.|");
    EXPECT_EQ(Calls(), "") << "no port is opened for it";
    fields.useModem = 1;
    AskAt("ModemConnect", 1);
    EXPECT_EQ(RunAll(), "Run ended by SIGHUP; 2 relays not visited.|");
    EXPECT_EQ(server.calls.back(), "ModemHangUp");
    fields.useEthernet = 1;
    fields.ethernetEntries = {{"RV001", "10.0.0.5,5"}, {"RV002", "10.0.0.6,6"}, {"RV003", "10.0.0.7,7"}};
    AskAt("OpenPort", 2);
    EXPECT_EQ(RunAll(), "Run ended by SIGHUP; 2 relays not visited.|");
    EXPECT_EQ(server.calls.back(), "ClosePort");
    server.statuses = {{"OpenPort", 11}};
    AskAt("OpenPort", 2);
    EXPECT_TRUE(RunAll().ends_with("|Run ended by SIGHUP; 1 relay not visited.|")) << "two had their turn";
}

TEST_F(RunEnd, WhatItAbortsIsNotTheUsersAbort) {
    std::thread cutting;
    server.completeInside = false;
    server.onCall = [&](SCall& call) -> std::optional<std::int64_t> {
        if (call.name == "GetColumnTextAndValues" || call.name == "ModemConnect") {
            end->Ask("SIGTERM");
            cutting = std::thread([] {
                while (!HoldChannel()->CutShort())
                    std::this_thread::yield();
            });
        } else if (call.name == "Abort") {
            cutting.join();
            server.sink->OnCommandComplete(Variant::FromI4(18));
        }
        return std::nullopt;
    };
    const SScriptedEvent hasRecord = Event(3, {"240107", "44020030", "240109"});
    const std::string ended = "1 event taken from the relay, but not stored." + kNext +
                              "Run ended by SIGTERM; 1 relay not visited.|";
    server.events = {kTrip, hasRecord, kTrip};
    const std::string why = "Extracting event records  P32LS Error - Function Aborted by User." + kNext;
    EXPECT_EQ(RunRecorded(), why + "1 event waits in the journal for the next run." + kNext + ended);
    EXPECT_EQ(Stored(), 0U);
    EXPECT_EQ(std::tuple(entries.at(0).taken, entries[0].lost, entries[0].waiting), std::tuple(2U, 1U, 1U));
    const std::string next = RunRecorded();
    EXPECT_TRUE(next.starts_with("1 event of a visit that was ended is in day file ")) << next;
    EXPECT_EQ(Stored(), 2U);
    const SStoredBytes in = entries.at(0).recoveredIn.value_or(SStoredBytes()); // in front of the visit
    EXPECT_EQ(std::tuple(entries[0].recovered, entries.at(1).stored), std::tuple(1U, 1U));
    EXPECT_EQ(std::tuple(in.dayFile, in.to), std::tuple(entries[1].dayFile, entries[1].from));

    SetUsableState(false);
    server.events = {kTrip, hasRecord, kTrip};
    EXPECT_EQ(RunAll(), why + ended) << "without a journal the day file has at once what was taken";
    EXPECT_EQ(Stored(), 3U);
    SetUsableState(true);

    fields.useModem = 1;
    EXPECT_EQ(RunAll(), "Run ended by SIGTERM; 2 relays not visited.|");
}

TEST_F(RunEnd, OnlyWhatIsStuckIsEnded) {
    using enum IEndRequests::EWake;
    using enum CRunEnd::EStage;
    const std::string early = "ruvo: ended by SIGTERM; no relay was visited", asked = "ever +1000 10000 ";
    const std::string line = "2021/03/02 14:03:07 Run ended by SIGTERM; 3 relays not visited.\r\n";
    const struct {
        const char* name;
        CRunEnd::EStage stage;
        std::deque<IEndRequests::EWake> wakes;
        int ends;
        std::string told;
        std::string waits; ///< in milliseconds
        bool comesBack = false;
    } cases[] = {
        {"nobody asks", Visiting, {}, 0, "", "ever "},
        {"the start may take its time", NotBegun, {Request}, 0, "", asked},
        {"but not for ever", NotBegun, {Request, Timeout}, 1, early, asked + "10000 "},
        {"unless something comes back", NotBegun, {Request, Timeout}, 0, "", asked + "10000 ", true},
        {"a second request shortens that", NotBegun, {Request, Request}, 0, "", asked + "1000 "},
        {"a third one looks at once", NotBegun, {Request, Request, Request}, 1, early, asked + "1000 1000 "},
        {"busy with its files", Visiting, {Request, Timeout, Timeout}, 0, "", asked + "10000 10000 "},
        {"the server is not let go", Over, {Request, Timeout}, 1, line, asked + "10000 "},
    };
    RunAll(); // names the log
    for (const auto& row : cases) {
        SCOPED_TRACE(row.name);
        std::filesystem::remove(folder.Native("run.log"));
        g_standardError.clear();
        end.emplace();
        if (row.stage != NotBegun)
            end->Begin(3);
        if (row.stage == Over)
            end->Finish();
        int ends = 0;
        CScriptedRequests requests;
        if (row.comesBack)
            requests.onWait = [this] { link->ResetCell(nullptr, 0x0002); };
        for (const IEndRequests::EWake wake : row.wakes)
            requests.Add(wake);
        {
            const CEndWatch watch(*end, requests, CEndWatch::kTimes, [&] { ++ends; });
        }
        EXPECT_EQ(ends, row.ends);
        EXPECT_EQ(requests.waits, row.waits);
        EXPECT_EQ(end->IsAsked(), !row.wakes.empty());
        EXPECT_EQ(g_standardError + folder.Read("run.log"), row.told);
    }
    end->WriteEndLine();
    EXPECT_EQ(folder.Read("run.log"), line) << "once";
}

} // namespace ruvo::test
