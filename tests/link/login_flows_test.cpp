// The login flows of the enciphered and the user-name generations: what goes over the link, and in which
// order.
#include "login_fixture.h"

namespace ruvo::test {
namespace {

TEST_F(LoginFlows, EncipheredPassword) {
    SetRelay(1);
    EXPECT_EQ(Enter(), kLinkGood);
    EXPECT_EQ(flow,
              "GetSettingLimits 00.E1|ask 8 Notice 0,-1;|GetValue BF.10|ChangeSetting 00.E1|accepted M1|");
    EXPECT_EQ(written, std::vector<std::string>{"6C0804CBE7959F0474B9"});
    server.limits[0x00E1] = {"1C0720202020202020"}; // shorter than the cipher's block: nothing can be sent
    EXPECT_EQ(Enter(true), 18U);
    EXPECT_TRUE(written.empty());
    EXPECT_EQ(g_told, "2,-1;6,-1;");
    server.limits.erase(0x00E1);
    EXPECT_EQ(Enter(), 18U);
    EXPECT_EQ(flow,
              "GetSettingLimits 00.E1|E EnterCyberSecurityPassword : Check if P32LS supports cyber-security "
              "enhancements|");
    SetRelay(1);
    server.values[0x9D01] = TextHex(std::string(40, 'n'));
    EXPECT_EQ(Enter(), kLinkGood);
    EXPECT_TRUE(Contains(flow, "|ask 8 " + std::string(32, 'n') + " 0,-1;|"));
}

TEST_F(LoginFlows, WithoutItsKeyAPasswordIsNotEnciphered) {
    const std::tuple<std::optional<std::int64_t>, const char*, LinkStatus> rows[] = {
        {0x0111, "", 0x0111}, {0x0611, "", 0x0611}, {CScriptedServer::kComFailure, "", 255},
        {8, "", 8},           {1, "", 18U},         {{}, "580100", 18U},
        {{}, "FF00", 18U},    {{}, "240107", 18U},  {0, "", 254}};
    for (const auto& [answer, value, status] : rows) {
        SetRelay(1);
        if (answer)
            server.statuses["GetValue BF.10"] = *answer;
        server.values[0xBF10] = value;
        EXPECT_EQ(Enter(), status);
        EXPECT_EQ(flow, "GetSettingLimits 00.E1|ask 8 Notice 0,-1;|GetValue BF.10|"
                        "E EnterCyberSecurityPassword : Encryption key cannot be read|");
        EXPECT_TRUE(written.empty());
    }
}

TEST_F(LoginFlows, FirstEditionOfTheUserLogin) {
    SetRelay(2);
    EXPECT_EQ(Enter(), kLinkGood);
    EXPECT_EQ(flow,
              "GetValue 00.F2|GetValue 9D.21|GetValue 9D.22|ask 16 ENGINEER OF MORE 0,-1;|SetValue 00.F1|"
              "SetValue 00.E5|ChangeSetting 00.E1|login M1|");
    EXPECT_EQ(written.at(0), TextHex("ENGINEER OF MORE"));
    ExpectDigestFor("ENGINEER OF MORE");
}

TEST_F(LoginFlows, SecondEditionOfTheUserLogin) {
    SetRelay(3);
    server.statuses["ChangeSetting 00.E1"] = 0x0E11;
    const std::string version = "GetValue 00.DF|I ExtractCSVersion : Cyber Security version: 3|";
    const std::string userLength = version + "I DetermineCSUsernameMaxLength : Username length: 16|";
    const std::string name = "I ExtractCSAvailableUsernames : Username: ";
    const std::string names = "GetValue 00.F2|GetValue BF.12|" + userLength +
                              "GetValue 00.F2|GetValue 9D.21|" + name + "VIEWER          |GetValue 9D.22|" +
                              name + "ENGINEER OF MORE|";
    EXPECT_EQ(Enter(true), 18U);
    EXPECT_EQ(flow, version + "GetValue 00.F4|I ExtractCSEd3SATSupported : CP32Wrap::GetValue: 273|" +
                        "I DetermineCSPasswordMaxLength : Password length: 32|" + userLength + names +
                        "ask 32 VIEWER          ,ENGINEER OF MORE 2,-1;|SetValue 00.F1|SetValue "
                        "00.E5|ChangeSetting 00.E1|E " +
                        kUserFlow + "CSEd3 : Password dialog : Password : invalid username|" + names +
                        "ask 32 ME              ,ENGINEER OF MORE 7,-1;|cancelled|");
    EXPECT_EQ(written[0], "18024D45") << "the name as typed";
    SetRelay(3);
    server.values[0x00F4] = "240101"; // no long passwords
    EXPECT_EQ(Enter(), kLinkGood);
    EXPECT_TRUE(flow.find("|ask 16 ") != std::string::npos && flow.ends_with("|login M1|")) << flow;
}

TEST_F(LoginFlows, BuffersOfTheApplicationsOwnAndStatus1AreTakenToo) {
    g_own = true;
    for (const int version : {0, 1, 2, 3}) {
        SetRelay(version);
        server.limits[0x0002] = server.limits[0x00E1];
        server.statuses = {{"SetValue 00.F1", 1}, {"SetValue 00.E5", 1}, {"ChangeSetting 00.E1", 1}};
        EXPECT_EQ(Enter(), version == 0 ? 0U : 1U);
        EXPECT_TRUE(flow.ends_with(version < 2 ? "|accepted M1|" : "|login M1|")) << flow;
        if (version < 2)
            EXPECT_EQ(written.at(0), version == 0 ? "1C085365637265743738" : "6C0804CBE7959F0474B9");
        else
            ExpectDigestFor(version == 2 ? "ENGINEER OF MORE" : "ME");
    }
    g_own = false;
    SetRelay(3);
    server.values[0x00F2] = "240101"; // one user alone
    EXPECT_EQ(Enter(), kLinkGood);
    EXPECT_TRUE(Contains(flow, "ask 32 VIEWER          ,VIEWER           0,-1;"));
    SetRelay(2);
    server.values[0x00F2] = "2401DF"; // as many users as the column has rows
    for (CellAddress cell = 0x9D21; cell <= 0x9DFF; ++cell)
        server.values[cell] = TextHex("USER" + std::to_string(cell - 0x9D20));
    EXPECT_EQ(Enter(), kLinkGood);
    EXPECT_TRUE(Contains(flow, "GetValue 9D.FF|ask 16 USER223          0,-1;"));
    server.values[0x00F2] = "2401E0";
    server.values[0x9D00] = TextHex("USER224");
    EXPECT_EQ(Enter(), 18U);
}

} // namespace
} // namespace ruvo::test
