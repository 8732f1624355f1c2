// How login flows end: what the application and the trace are told, and the questions that they ask
// beforehand.
#include "login_fixture.h"

namespace ruvo::test {
namespace {

TEST_F(LoginFlows, WhatTheApplicationIsToldOfEachAnswer) {
    struct SRow {
        int version;
        std::int64_t answer;
        std::string attempts, blocking; ///< values of 9C.11 and 9C.12, empty for none
        std::string told, trace; ///< the second call; what follows each "Password dialog : Password : "
    };
    const SRow rows[] = {
        {1, 0x0411, "240102", "", "4,2;", "incorrect|Attempts remaining : 2|"},
        {1, 0x0411, "", "", "4,-1;", "incorrect|"},
        {1, 0x0411, "240100", "", "4,0;", "incorrect|Attempts remaining : 0|"},
        {1, 0x0B11, "", "24022C01", "5,300;", "blocked|Blocked timer left : 300|"},
        {1, 0x0B11, "", "5800", "5,-1;", "blocked|"},
        {1, 0x0B11, "", "", "9,-1;", "blocked|"},
        {1, 0x0511, "", "", "6,-1;", "error|"},
        {2, 0x0411, "240101", "", "4,1;", "incorrect|Attempts remaining : 1|"},
        {2, 0x0411, "240100", "28013C", "5,60;", "incorrect|blocked|Blocked timer left : 60|"},
        {2, 0x0411, "240100", "", "9,-1;", "incorrect|blocked|"},
        {2, 0x0411, "5800", "", "4,-1;", "incorrect|"},
        {2, 0x0511, "", "", "8,-1;", "Target cell is not settable|"},
        {2, 0x0B11, "", "", "6,-1;", "error|"},
        {2, 0x0E11, "", "", "6,-1;", "error|"},
        {3, 0x0411, "240101", "", "4,1;", "incorrect|Attempts remaining : 1|"},
        {3, 0x0411, "240100", "", "9,-1;", "incorrect|blocked|"},
        {3, 0x0511, "", "", "8,-1;", "Target cell is not settable|"},
        {4, 0x0E11, "", "", "7,-1;", "invalid username|"},
        {4, CScriptedServer::kComFailure, "", "", "6,-1;", "error|"},
    };
    const std::string flows[] = {"", "EnterCyberSecurityPassword", kUserFlow, kUserFlow + "CSEd3",
                                 kUserFlow + "CSEd3"};
    for (const SRow& row : rows) {
        SetRelay(row.version);
        server.statuses["ChangeSetting 00.E1"] = row.answer;
        server.values[0x9C11] = row.attempts;
        server.values[0x9C12] = row.blocking;
        std::erase_if(server.values, [](const auto& cell) { return cell.second.empty(); });
        EXPECT_EQ(Enter(), kLinkAborted);
        EXPECT_EQ(g_told, "0,-1;" + row.told) << row.version << row.trace;
        const std::string mark = "|E " + flows[row.version] + " : Password dialog : Password : ";
        std::string trace;
        for (std::size_t at = flow.find(mark); at != std::string::npos; at = flow.find(mark, at + 1))
            trace += flow.substr(at + mark.size(), flow.find('|', at + 1) + 1 - at - mark.size());
        EXPECT_EQ(trace, row.trace) << row.version;
        EXPECT_TRUE(flow.ends_with("|cancelled|"));
    }
}

TEST_F(LoginFlows, WhatEndsAUserLogin) {
    struct SRow {
        std::string trace;
        CellAddress cell;
        std::string value, refused; ///< of the cell, empty for none; a call answered with 0x0611
        std::size_t writes;
    };
    const char* kCount = "The number of users obtained from the device is equal or smaller than 0";
    const char* kList = "Error during obtaining list of users from the device";
    const SRow rows[] = {
        {"Error during obtaining number of users from the device", 0x00F2, "", "", 0},
        {kCount, 0x00F2, "240100", "", 0},
        {kCount, 0x00F2, "2804FFFFFFFF", "", 0},
        {kList, 0x00F2, "2401E0", "", 0}, // one more than the column has rows
        {kList, 0x00F2, "2404FFFFFFFF", "", 0},
        {kList, 0x9C22, "", "", 0},
        {kList, 0x9C22, "240101", "", 0},
        {"Error during sending username", 0x9C01, "", "SetValue 00.F1", 1},
        {"Error during sending salt", 0x9C01, "", "SetValue 00.E5", 2},
        {"Exception occured during method execution", 0x9C01, "", "", 0},
    };
    for (const int version : {2, 3}) {
        for (const SRow& row : rows) {
            SetRelay(version);
            server.values[row.cell] = row.value;
            std::erase_if(server.values, [](const auto& cell) { return cell.second.empty(); });
            server.statuses[row.refused] = 0x0611;
            g_fail = row.trace.starts_with("Exception");
            EXPECT_EQ(Enter(), kLinkAborted);
            EXPECT_TRUE(
                flow.ends_with("E " + kUserFlow + (version == 2 ? "" : "CSEd3") + " : " + row.trace + "|"))
                << flow;
            EXPECT_EQ(written.size(), row.writes) << version << row.trace << row.value;
        }
    }
    g_fail = false;
    SetRelay(2);
    g_selected = 2; // of users 0 and 1
    EXPECT_EQ(Enter(), kLinkAborted);
    EXPECT_TRUE(flow.ends_with("E " + kUserFlow + " : Error during sending username|"));
    g_selected = 1;
    CryptoLibrary::Uninitialize();
    g_modules.present = false;
    EXPECT_EQ(Enter(), kLinkAborted);
    EXPECT_EQ(written.size(), 1U) << "without a provider neither a salt nor an empty digest is sent";
    EXPECT_EQ(g_told, "0,-1;6,-1;");
}

TEST_F(LoginFlows, WithoutACallbackOrWithOneThatFails) {
    for (const int version : {0, 1, 2, 3}) {
        SetRelay(version);
        g_fail = true;
        EXPECT_EQ(Enter(), kLinkAborted) << "and Enter sees the guard restored";
        g_fail = false;
        SetCallbacks(false);
        EXPECT_EQ(Enter(), kLinkAborted);
        EXPECT_TRUE(written.empty() && flow.ends_with("cancelled|")) << flow;
        SetCallbacks(true);
    }
}

TEST_F(LoginFlows, Determinations) {
    const std::tuple<const char*, const char*, LinkStatus, unsigned, bool> rows[] = {
        {"240100", "", 0, 4, false},        {"240101", "", 0, 8, false}, {"240102", "", 0, 16, false},
        {"240103", "240100", 0, 16, false}, {"240103", "", 0, 32, true}, {"", "", 18, 4, false}};
    CP32Wrap& link = *CP32Wrap::GetInstance();
    const std::string error = "Error during obtaining ";
    for (const auto& [version, probe, status, wantLength, wantSupported] : rows) {
        server.values = {{0x00DF, version}, {0x00F4, probe}};
        std::erase_if(server.values, [](const auto& cell) { return cell.second.empty(); });
        g_events.clear();
        std::uint32_t length = 0;
        std::uint32_t userLength = 0;
        bool supported = true;
        EXPECT_EQ(link.DetermineCSPasswordMaxLength(length), status);
        EXPECT_EQ(link.DetermineCSUsernameMaxLength(userLength), status);
        EXPECT_EQ(link.DetermineCSSATSupported(supported), status);
        EXPECT_EQ(std::tuple(length, userLength, supported), std::tuple(wantLength, 16U, wantSupported));
        FlushTrace();
        const std::string number = version[0] == 0 ? "" : version + 5;
        const std::string read =
            number.empty() ? "GetValue 00.DF|E ExtractCSVersion : " + error + "Cyber Security version.|"
                           : "GetValue 00.DF|I ExtractCSVersion : Cyber Security version: " + number + "|";
        const std::string probed = number != "3"
                                       ? ""
                                       : "GetValue 00.F4|I ExtractCSEd3SATSupported : CP32Wrap::GetValue: " +
                                             std::string(wantSupported ? "273|" : "0|");
        const std::string known =
            read + probed +
            "I DetermineCSPasswordMaxLength : Password length: " + std::to_string(wantLength) + "|" + read +
            (number == "2" ? "" : "I DetermineCSUsernameMaxLength : Username length: 16|") + read + probed +
            "E DetermineCSSATSupported(): Is Cyber Security SAT supported: " + (wantSupported ? "1|" : "0|");
        const std::string unknown =
            read + "I DetermineCSPasswordMaxLength : Enable to extract CS version.|" + read +
            "E DetermineCSUsernameMaxLength : " + error + "length of username from the device|" + read +
            "I DetermineCSSATSupported : " + error + "whether is Cyber Security SAT supported.|";
        EXPECT_EQ(g_events, number.empty() ? unknown : known);
    }
    SetRelay(3);
    server.values.erase(0x00F2);
    g_events.clear();
    std::vector<SUserName> names;
    EXPECT_EQ(link.ExtractCSAvailableUsernames(names), kLinkAborted);
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
    const auto change = [](int flag) {
        CP32Wrap& link = *CP32Wrap::GetInstance();
        return link.ChangeHashedPasswordSettingForCSEd3(nullptr, 0x9C31, "ADMIN", "abc", flag);
    };
    const std::string digest = "BA7816BF8F01CFEA414140DE5DAE2223B00361A396177A9CB410FF61F20015AD"; // of "abc"
    EXPECT_EQ(change(1) + change(0), kLinkGood);
    EXPECT_EQ(server.calls[0] + server.calls[1], "SetValue 00.F1ChangeSetting 9C.31");
    EXPECT_EQ(written[0] + written[1], TextHex("ADMIN") + "1C40" + TextHex(digest).substr(4));
    EXPECT_TRUE(written[3].size() == written[1].size() && written[3] != written[1]) << "keyed by the name";
    server.statuses["SetValue 00.F1"] = 0x0511;
    EXPECT_EQ(change(0), kReplyNotSettable);
    CryptoLibrary::Uninitialize();
    g_modules.present = false;
    EXPECT_EQ(change(1), kLinkBadReply);
    EXPECT_EQ(written.size(), 5U) << "only the refused user name was sent";
}

} // namespace
} // namespace ruvo::test
