// A call that does not come back, in a process that is a copy of the test's.
#include "run/run_end_fixture.h"

namespace ruvo::test {

TEST_F(RunEnd, ACallThatDoesNotComeBackIsLeftBehind) {
    SetEvents(3);
    CScriptedRequests requests;
    const auto runAndAsk = [&] {
        server.onCall = [&, calls = 0](SCall& call) mutable -> std::optional<std::int64_t> {
            if (call.name == "GetEvent" && ++calls == 2) {
                requests.Add(IEndRequests::EWake::Request);
                requests.Add(IEndRequests::EWake::Timeout);
                std::this_thread::sleep_for(std::chrono::minutes(1));
            }
            return std::nullopt;
        };
        end.emplace();
        const CEndWatch watch(*end, requests);
        VisitAll();
    };
    SetUsableState(false);
    EXPECT_EXIT(runAndAsk(), testing::ExitedWithCode(0), "");
    EXPECT_EQ(Stored(), 1U) << "without a journal nothing waits";
    std::filesystem::remove_all(folder.Native("ev"));
    SetUsableState(true);
    EXPECT_EXIT(runAndAsk(), testing::ExitedWithCode(0), "");
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

} // namespace ruvo::test
