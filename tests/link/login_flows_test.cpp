// The login flows of the enciphered and the user-name generations: what goes over the link, in which order,
// and what the application and the trace are told.
#include "fake_modules.h"
#include "support/scripted_server.h"

#include "link/crypto_library.h"
#include "link/p32_wrap.h"

#include <gtest/gtest.h>

#include <cstring>
#include <sstream>
#include <stdexcept>
#include <thread>

namespace ruvo {

inline std::string g_debugOutput; // as support/fake_system.h has it

namespace test {
namespace {

std::string g_events;         ///< server calls, callbacks and trace lines in their order, "|" behind each
std::string g_told;           ///< code and extra of every callback call
int g_declineAt = 1;          ///< the call of a callback that gives up
bool g_fail = false;          ///< callbacks throw
bool g_own = false;           ///< callbacks answer with buffers of their own
std::uint32_t g_selected = 1; ///< the user that is chosen

void FlushTrace() {
    std::istringstream lines(std::exchange(g_debugOutput, ""));
    for (std::string line; std::getline(lines, line);) {
        EXPECT_EQ(line.find("Secret"), std::string::npos) << "no trace has a password";
        if (const std::size_t at = line.find("] CP32Wrap::"); at != std::string::npos)
            g_events += (line.starts_with(" ***") ? "E " : "I ") + line.substr(at + 12) + "|";
    }
}

int Note(const std::string& event, const char* more = "") {
    FlushTrace();
    g_events += event + more + "|";
    return 0;
}

int Answer(char*& password, std::uint32_t length, int code, std::int32_t extra, const std::string& seen) {
    const auto call = [byte = std::uint8_t{0}]() mutable {
        EXPECT_EQ(CP32Wrap::GetInstance()->GetDeviceStatus(nullptr, byte), kLinkGood);
    };
    std::thread(call).join(); // the command lock is free while a callback runs
    EXPECT_EQ(std::string(password), std::string(length, ' '));
    const std::string told = std::to_string(code) + "," + std::to_string(extra) + ";";
    Note("ask " + std::to_string(length) + " " + seen + " " + told);
    g_told += told;
    static char own[] = "Secret78";
    if (g_own)
        password = own;
    else
        std::memcpy(password, own, std::min<std::size_t>(8, length));
    if (g_fail)
        throw std::runtime_error("application");
    return g_declineAt-- > 0 ? 0 : 1;
}

class LoginFlows : public testing::Test {
protected:
    LoginFlows() {
        CryptoLibrary::Uninitialize();
        g_modules = {};
        SetCallbacks(true);
        CP32Wrap::SetPasswordAcceptedCallback([](const char* model) { return Note("accepted ", model); });
        CP32Wrap::SetLoginAcceptedCallback([](const char* model) { Note("login ", model); });
        CP32Wrap::SetLoginCancelledCallback([] { Note("cancelled"); });
        EXPECT_EQ(CP32Wrap::CreateInstance(), kLinkGood);
        CP32Wrap::GetInstance()->SetDeviceAddress(200);
        server.onCall = [this](SCall& call) { return OnCall(call); };
    }
    ~LoginFlows() override {
        CP32Wrap::DestroyInstance();
        SetCallbacks(false);
        CP32Wrap::SetPasswordAcceptedCallback(nullptr);
        CP32Wrap::SetLoginAcceptedCallback(nullptr);
        CP32Wrap::SetLoginCancelledCallback(nullptr);
    }

    static void SetCallbacks(bool set) {
        const GetPasswordFunction plain = [](const SPasswordRequest& request, char** buffer, auto length,
                                             auto*, int code, auto extra) {
            return Answer(*buffer, length, code, extra, request.displayText);
        };
        const UsernamePasswordFunction first = [](const auto&, char** buffer, auto length,
                                                  const SUserName* names, auto* selected, auto count,
                                                  int code, auto extra) {
            *selected += g_selected;
            return Answer(*buffer, length, code, extra, names[count - 1].text);
        };
        const SecondEditionLoginFunction second = [](const auto&, char** buffer, auto length,
                                                     const SUserName* names, auto count, char** userName,
                                                     auto, int code, auto extra) {
            const std::string seen = std::string(*userName) + "," + names[count - 1].text;
            static char own[] = "ME";
            if (g_own)
                *userName = own;
            else
                std::strcpy(*userName, own);
            return Answer(*buffer, length, code, extra, seen);
        };
        CP32Wrap::SetGetPasswordCallback(set ? plain : nullptr);
        CP32Wrap::SetUsernamePasswordCallback(set ? first : nullptr);
        CP32Wrap::SetSecondEditionLoginCallback(set ? second : nullptr);
    }

    std::optional<std::int64_t> OnCall(const SCall& call) {
        if (call.name == "GetDeviceStatus")
            return std::nullopt;
        Note(server.calls.back());
        EXPECT_TRUE(server.lines.back().starts_with(call.name + " UI1(200) I2(")) << server.lines.back();
        if (call.inputs.size() > 2)
            written.push_back(Describe(call.inputs[2]));
        return std::nullopt;
    }

    /// A relay of that version with two users; its cyber-security column is 9C.
    void SetRelay(int version) {
        server.statuses.clear();
        server.limits = {{0x0002, {"1C0420202020"}}, {0x00E1, {"1C082020202020202020"}}};
        const std::string one = "2401";
        server.values = {
            {0x00DF, one + "0" + std::to_string(version)}, {0xBF12, "24029C01"}, {0x00F2, one + "02"}};
        server.values[0xBF03] = one + "07";
        const std::pair<CellAddress, const char*> texts[] = {{0x0006, "M1"},
                                                             {0x9C01, "Notice"},
                                                             {0x9C21, "VIEWER"},
                                                             {0x9C22, "ENGINEER OF MORE THAN 16"},
                                                             {0xBF10, "00112233445566778899aabbccddeeff"}};
        for (const auto& [cell, text] : texts)
            server.values[cell] = TextHex(text);
    }

    /// Enters a password. `flow` becomes the events between the common beginning and the guard's restoration.
    LinkStatus Enter(bool again = false) {
        g_told.clear();
        g_events.clear();
        g_debugOutput.clear();
        written.clear();
        g_declineAt = 1;
        const LinkStatus status = CP32Wrap::GetInstance()->EnterPassword(nullptr, again);
        FlushTrace();
        const std::string end = "ChangeSetting BF.03|", mark = "Cyber Security version: ";
        EXPECT_TRUE(g_events.ends_with(end) && written.size() >= 2 && written.back() == "240107") << g_events;
        const std::size_t start = g_events.find(mark) + mark.size() + 2;
        flow = g_events.substr(start, g_events.size() - end.size() - start);
        written.erase(written.begin());
        written.pop_back();
        return status;
    }

    /// The last two writes of a login with the password Secret78: a salt, and the digest that belongs to it.
    void ExpectDigestFor(const std::string& user) const {
        const auto keyed = [](const std::string& text, const std::string& key) {
            DigestText digest{};
            const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
            EXPECT_TRUE(CryptoLibrary::MakeKeyedDigest({bytes, text.size()}, key.c_str(), digest));
            return std::string(digest.data());
        };
        const auto salt = Hex(written.at(1).substr(4));
        EXPECT_EQ(written[1].substr(0, 4), "1810");
        const std::string digest = keyed(keyed("Secret78", user) + '\0', {salt.begin(), salt.end()});
        EXPECT_EQ(written.at(2), "1C40" + TextHex(digest).substr(4));
    }

    CScriptedServer server;
    std::string flow;
    std::vector<std::string> written; ///< tagged values in hex, without those of the guard cell
};

const std::string kUserFlow = "EnterCyberSecurityBrickIntegratedLoginAndPassword";

TEST_F(LoginFlows, EncipheredPassword) {
    SetRelay(1);
    EXPECT_EQ(Enter(), kLinkGood);
    EXPECT_EQ(flow,
              "GetSettingLimits 00.E1|ask 8 Notice 0,-1;|GetValue BF.10|ChangeSetting 00.E1|accepted M1|");
    EXPECT_EQ(written, std::vector<std::string>{"6C0804CBE7959F0474B9"});
    server.limits[0x00E1] = {"1C0720202020202020"}; // shorter than the cipher's block: nothing can be sent
    EXPECT_EQ(Enter(true), kLinkAborted);
    EXPECT_TRUE(written.empty());
    EXPECT_EQ(g_told, "2,-1;6,-1;");
    server.limits.erase(0x00E1);
    EXPECT_EQ(Enter(), kLinkAborted);
    EXPECT_EQ(flow,
              "GetSettingLimits 00.E1|E EnterCyberSecurityPassword : Check if P32LS supports cyber-security "
              "enhancements|");
}

TEST_F(LoginFlows, WithoutItsKeyAPasswordIsNotEnciphered) {
    const std::tuple<std::optional<std::int64_t>, const char*, LinkStatus> rows[] = {
        {0x0111, "", 0x0111},
        {0x0611, "", 0x0611},
        {CScriptedServer::kComFailure, "", 255},
        {8, "", 8},
        {1, "", kLinkAborted},
        {{}, "580100", kLinkAborted},
        {{}, "FF00", kLinkAborted},
        {{}, "240107", kLinkAborted},
        {0, "", 254}};
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
              "GetValue 00.F2|GetValue 9C.21|GetValue 9C.22|ask 16 ENGINEER OF MORE 0,-1;|SetValue 00.F1|"
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
                              "GetValue 00.F2|GetValue 9C.21|" + name + "VIEWER          |GetValue 9C.22|" +
                              name + "ENGINEER OF MORE|";
    EXPECT_EQ(Enter(true), kLinkAborted);
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
    SetRelay(2);
    server.values[0x00F2] = "2401DF"; // as many users as the column has rows
    for (CellAddress cell = 0x9C21; cell <= 0x9CFF; ++cell)
        server.values[cell] = TextHex("USER" + std::to_string(cell - 0x9C20));
    EXPECT_EQ(Enter(), kLinkGood);
    EXPECT_NE(flow.find("GetValue 9C.FF|ask 16 USER223          0,-1;"), std::string::npos) << flow;
    server.values[0x00F2] = "2401E0";
    server.values[0x9C00] = TextHex("USER224");
    EXPECT_EQ(Enter(), kLinkAborted);
}

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
} // namespace test
} // namespace ruvo
