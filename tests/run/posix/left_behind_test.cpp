// A call that does not come back, in a process that is a copy of the test's.
#include "run/run_end_fixture.h"

#include <sys/resource.h>

namespace ruvo::test {

class LeftBehind : public RunEnd {
protected:
    /// Does `first` in the so manieth of those calls, and leaves it behind.
    void VisitUntil(const std::string& name, int nth, const std::function<void()>& first = nullptr) {
        CScriptedRequests requests;
        server.onCall = [&, calls = 0, logins = 0](SCall&) mutable -> std::optional<std::int64_t> {
            if (server.calls.back() == "GetValue 00.DF" && ++logins == 2) { // that relay has events, too
                server.values[0x0008] = TextHex("5678");
                SetEvents(2);
            }
            if (server.calls.back().starts_with(name) && ++calls == nth) {
                if (first)
                    first();
                requests.Add(IEndRequests::EWake::Request);
                requests.Add(IEndRequests::EWake::Timeout);
                std::this_thread::sleep_for(std::chrono::minutes(1));
            }
            return std::nullopt;
        };
        end.emplace();
        const CEndWatch watch(*end, requests);
        VisitAll();
    }
};

TEST_F(LeftBehind, WhatWasTakenIsStoredOrWaits) {
    SetEvents(3);
    SetUsableState(false);
    EXPECT_EXIT(VisitUntil("GetEvent", 2), testing::ExitedWithCode(0), "");
    EXPECT_EQ(Stored(), 1U) << "without a journal nothing waits";
    std::filesystem::remove_all(folder.Native("ev"));
    SetUsableState(true);
    EXPECT_EXIT(VisitUntil("GetEvent", 2), testing::ExitedWithCode(0), "");
    EXPECT_EQ(Stored(), 0U);
    EXPECT_NE(folder.Read("run.log").find("Run ended by SIGTERM; 2 relays not visited.\r\n"),
              std::string::npos);
    server.events.pop_front();
    server.statuses = {{"OpenPort", 11}}; // no relay is reached, and none is needed for it
    EXPECT_TRUE(RunAll().starts_with("1 event of a visit that was ended is in day file "));
    EXPECT_EQ(Stored(), 1U);
    server.statuses.clear();
    EXPECT_EQ(RunAll(), "");
    EXPECT_EQ(Stored(), 3U);
}

TEST_F(LeftBehind, TheVisitBeforeIsClosed) {
    for (const auto& [call, nth, next] :
         {std::tuple("GetValue 00.DF", 2, "Failed to open COM port. "),
          {"GetEvent", 5, "1 event of a visit that was ended is in day file "},
          {"ClosePort", 1, "Failed to open COM port. "}}) {
        std::filesystem::remove_all(folder.Native("ev"));
        SetEvents(3);
        server.statuses.clear();
        EXPECT_EXIT(VisitUntil(call, nth), testing::ExitedWithCode(0), "");
        server.statuses = {{"OpenPort", 11}};
        const std::string log = RunAll();
        EXPECT_TRUE(log.starts_with(next) && log.find("3 events") == std::string::npos) << call << log;
        EXPECT_EQ(Stored(), 3U) << call;
    }
}

TEST_F(LeftBehind, WhatThenHasNoPlaceIsLostAndTold) {
    SetUsableState(false);
    SetEvents(30);
    EXPECT_EQ(RunAll(), "");
    SetEvents(3);
    const std::size_t size = folder.Read("ev/AB12-00001234/AB12-00001234-2026-11-16-DEV.evt").size();
    const auto fill = [size] { // the day file has room for one of the two
        rlimit limit{};
        ::getrlimit(RLIMIT_FSIZE, &limit);
        limit.rlim_cur = size + size / 30 + 20;
        ::setrlimit(RLIMIT_FSIZE, &limit);
    };
    EXPECT_EXIT(VisitUntil("GetEvent", 3, fill), testing::ExitedWithCode(0), "");
    EXPECT_NE(folder.Read("run.log").find(" 1 event taken from the relay, but not stored."),
              std::string::npos);
    EXPECT_EQ(Stored(), 31U);
}

} // namespace ruvo::test
