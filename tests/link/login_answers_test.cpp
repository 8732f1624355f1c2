// How login flows end: what the application and the trace are told, and the questions that they ask
// beforehand.
#include "login_fixture.h"
#include "support/case_table.h"

#include <algorithm>
#include <functional>

namespace ruvo::test {
namespace {

TEST_F(LoginFlows, WhatTheApplicationIsToldOfEachAnswer) {
    const std::string flows[] = {"", "EnterCyberSecurityPassword", kUserFlow, kUserFlow + "CSEd3",
                                 kUserFlow + "CSEd3"};
    ForEachCase<6>("link/login_answers.txt", [&](auto& version, auto& answer, auto& attempts, auto& blocking,
                                                 auto& told, auto& want) {
        SetRelay(std::stoi(version));
        server.statuses["ChangeSetting 00.E1"] = std::stoll(answer, nullptr, 0);
        SetValues({{0x9D11, attempts}, {0x9D12, blocking}});
        EXPECT_EQ(Enter(), 18U);
        EXPECT_EQ(g_told, "0,-1;" + told);
        const std::string mark = "|E " + flows[std::stoul(version)] + " : Password dialog : Password : ";
        std::string trace;
        for (std::size_t at = flow.find(mark); at != std::string::npos; at = flow.find(mark, at + 1))
            trace += flow.substr(at + mark.size(), flow.find('|', at + 1) + 1 - at - mark.size());
        EXPECT_EQ(trace, want);
        EXPECT_TRUE(flow.ends_with("|cancelled|"));
    });
}

TEST_F(LoginFlows, WhatEndsAUserLogin) {
    for (const int version : {2, 3}) {
        const std::string start = "E " + kUserFlow + (version == 2 ? "" : "CSEd3") + " : ";
        ForEachCase<5>("link/user_login_ends.txt",
                       [&](auto& trace, auto& cell, auto& value, auto& refused, auto& writes) {
                           SetRelay(version);
                           SetValues({{static_cast<CellAddress>(std::stoul(cell, nullptr, 0)), value}});
                           server.statuses[refused] = 0x0611;
                           g_fail = trace.starts_with("Exception");
                           EXPECT_EQ(Enter(), 18U) << version;
                           EXPECT_TRUE(flow.ends_with(start + trace + "|")) << flow;
                           EXPECT_EQ(written.size(), std::stoul(writes)) << version;
                       });
    }
    g_fail = false;
    SetRelay(2);
    g_selected = 2; // of users 0 and 1
    EXPECT_EQ(Enter(), 18U);
    EXPECT_TRUE(flow.ends_with("E " + kUserFlow + " : Error during sending username|"));
    g_selected = 1;
    CryptoLibrary::Uninitialize();
    g_modules.present = false;
    EXPECT_EQ(Enter(), 18U);
    EXPECT_EQ(written.size(), 1U) << "without a provider neither a salt nor an empty digest is sent";
    EXPECT_EQ(g_told, "0,-1;6,-1;");
}

TEST_F(LoginFlows, WithoutACallbackOrWithOneThatFails) {
    for (const int version : {0, 1, 2, 3}) {
        SetRelay(version);
        g_fail = true;
        EXPECT_EQ(Enter(), 18U) << "and Enter sees the guard restored";
        const bool isOuter = flow.ends_with("|E EnterPassword : Exception occured during method execution|");
        EXPECT_EQ(isOuter, version < 2) << flow; // the logins of users catch it themselves
        g_fail = false;
        SetCallbacks(false);
        EXPECT_EQ(Enter(), 18U);
        EXPECT_TRUE(written.empty() && flow.ends_with("cancelled|")) << flow;
        SetCallbacks(true);
    }
}

TEST_F(LoginFlows, ALoginByItselfIsAnEntryWithoutTheGuard) {
    const SPasswordRequest request{};
    const std::function<LinkStatus()> logins[] = {
        [&] { return link->EnterNonCyberSecurityPassword(request, false); },
        [&] { return link->EnterCyberSecurityPassword(request, false, 0x9D); },
        [&] { return link->EnterCyberSecurityBrickIntegratedLoginAndPassword(request, false, 0x9D); },
        [&] { return link->EnterCyberSecurityBrickIntegratedLoginAndPasswordCSEd3(request, false, 0x9D); }};
    for (int version = 0; version < 4; ++version) {
        SetRelay(version);
        server.calls.clear();
        g_declineAt = 2;
        link->RequestAbort();
        EXPECT_EQ(logins[version](), 18U) << version;
        EXPECT_TRUE(server.calls.empty());
        g_told.clear();
        EXPECT_EQ(logins[version](), kLinkGood) << version;
        EXPECT_EQ(g_told, "0,-1;") << version;
        g_fail = true;
        EXPECT_EQ(logins[version](), 18U) << version;
        g_fail = false;
        EXPECT_EQ(std::ranges::count(server.calls, "ChangeSetting BF.03"), 0);
    }
}

TEST_F(LoginFlows, Determinations) {
    ForEachCase<6>("link/determinations.txt",
                   [this](auto& version, auto& probe, auto& asked, auto& status, auto& want, auto& events) {
                       server.values.clear();
                       SetValues({{0x00DF, version}, {0x00F4, probe}});
                       g_events.clear();
                       std::uint32_t number = 0;
                       bool supported = true;
                       EXPECT_EQ(asked == "password" ? link->DetermineCSPasswordMaxLength(number)
                                 : asked == "user"   ? link->DetermineCSUsernameMaxLength(number)
                                                     : link->DetermineCSSATSupported(supported),
                                 std::stoul(status));
                       EXPECT_EQ(asked == "long" ? supported : number, std::stoul(want));
                       FlushTrace();
                       EXPECT_EQ(g_events, events);
                   });
    const std::string error = "Error during obtaining ";
    SetRelay(3);
    server.values.erase(0x00F2);
    g_events.clear();
    std::vector<SUserName> names;
    EXPECT_EQ(link->ExtractCSAvailableUsernames(names), 18U);
    FlushTrace();
    EXPECT_EQ(g_events, "GetValue BF.12|GetValue 00.DF|I ExtractCSVersion : Cyber Security version: 3|"
                        "I DetermineCSUsernameMaxLength : Username length: 16|GetValue 00.F2|"
                        "E ExtractCSUsernamesCount : " +
                            error +
                            "number of users from the device|"
                            "E ExtractCSAvailableUsernames : " +
                            error + "list of usernames from the device.|");
}

TEST_F(LoginFlows, ANewHashedPassword) {
    const auto change = [this](int flag) {
        return link->ChangeHashedPasswordSettingForCSEd3(nullptr, 0x9D31, "ADMIN", "abc", flag);
    };
    const std::string digest = "BA7816BF8F01CFEA414140DE5DAE2223B00361A396177A9CB410FF61F20015AD"; // of "abc"
    EXPECT_EQ(change(1) + change(0), kLinkGood);
    EXPECT_EQ(server.calls[0] + server.calls[1], "SetValue 00.F1ChangeSetting 9D.31");
    EXPECT_EQ(written[0] + written[1], TextHex("ADMIN") + "1C40" + TextHex(digest).substr(4));
    EXPECT_TRUE(written[3].size() == written[1].size() && written[3] != written[1]) << "keyed by the name";
    server.statuses["SetValue 00.F1"] = 0x0511;
    EXPECT_EQ(change(0), 0x0511U);
    CryptoLibrary::Uninitialize();
    g_modules.present = false;
    EXPECT_EQ(change(1), 254U);
    EXPECT_EQ(written.size(), 5U) << "only the refused user name was sent";
    g_modules.present = true;
    server.statuses["SetValue 00.F1"] = 0x0611;
    EXPECT_EQ(change(1), 18U);
    EXPECT_TRUE(Contains(g_events, "I ChangeHashedPasswordSettingForCSEd3 calls EnterPassword()|"));
}

} // namespace
} // namespace ruvo::test
