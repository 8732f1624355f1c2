// A relay of any generation behind the scripted server, and an application whose callbacks answer as a test
// wants. What goes over the link, the callbacks and the trace lines are noted in their order.
#pragma once

#include "fake_modules.h"
#include "support/linked_test.h"

#include <cstring>
#include <sstream>
#include <stdexcept>
#include <thread>

namespace ruvo::test {

inline std::string g_events; ///< server calls, callbacks and trace lines in their order, "|" behind each
inline std::string g_told;   ///< code and extra of every callback call
inline int g_declineAt = 1;  ///< the call of a callback that gives up
inline bool g_fail = false;  ///< callbacks throw
inline bool g_own = false;   ///< callbacks answer with buffers of their own
inline std::uint32_t g_selected = 1; ///< the user that is chosen

inline void FlushTrace() {
    std::istringstream lines(std::exchange(g_debugOutput, ""));
    for (std::string line; std::getline(lines, line);) {
        EXPECT_EQ(line.find("Secret"), std::string::npos) << "no trace has a password";
        if (const std::size_t at = line.find("] CP32Wrap::"); at != std::string::npos)
            g_events += (line.starts_with(" ***") ? "E " : "I ") + line.substr(at + 12) + "|";
    }
}

inline int Note(const std::string& event, const char* more = "") {
    FlushTrace();
    g_events += event + more + "|";
    return 0;
}

inline int Answer(char*& password, std::uint32_t length, int code, std::int32_t extra,
                  const std::string& seen) {
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

class LoginFlows : public LinkedTest {
protected:
    LoginFlows() {
        CryptoLibrary::Uninitialize();
        g_modules = {};
        SetCallbacks(true);
        CP32Wrap::SetPasswordAcceptedCallback([](const char* model) { return Note("accepted ", model); });
        CP32Wrap::SetLoginAcceptedCallback([](const char* model) { Note("login ", model); });
        CP32Wrap::SetLoginCancelledCallback([] { Note("cancelled"); });
        server.onCall = [this](SCall& call) { return OnCall(call); };
    }
    ~LoginFlows() override {
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
            EXPECT_LE(count, 2U) << "each user once, however often they are read";
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

    /// A relay of that version with two users; its cyber-security column is 9D, all of whose bits count.
    void SetRelay(int version) {
        server.statuses.clear();
        server.limits = {{0x0002, {"1C0420202020"}}, {0x00E1, {"1C082020202020202020"}}};
        const std::string one = "2401";
        server.values = {
            {0x00DF, one + "0" + std::to_string(version)}, {0xBF12, "24029D01"}, {0x00F2, one + "02"}};
        server.values[0xBF03] = one + "07";
        const std::pair<CellAddress, const char*> texts[] = {{0x0006, "M1"},
                                                             {0x9D01, "Notice"},
                                                             {0x9D21, "VIEWER"},
                                                             {0x9D22, "ENGINEER OF MORE THAN 16"},
                                                             {0xBF10, "00112233445566778899aabbccddeeff"}};
        for (const auto& [cell, text] : texts)
            server.values[cell] = TextHex(text);
    }

    /// Tagged values in hex; a cell of none is taken away.
    void SetValues(const std::map<CellAddress, std::string>& values) {
        for (const auto& [cell, value] : values)
            value.empty() ? void(server.values.erase(cell)) : void(server.values[cell] = value);
    }

    /// Enters a password. `flow` becomes the events between the common beginning and the guard's restoration.
    LinkStatus Enter(bool again = false) {
        g_told.clear();
        g_events.clear();
        g_debugOutput.clear();
        written.clear();
        g_declineAt = 1;
        const LinkStatus status = link->EnterPassword(nullptr, again);
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
        const auto salt = Hex(written.at(1).substr(4));
        EXPECT_EQ(written[1].substr(0, 4), "1810");
        const std::string digest = Keyed(Keyed("Secret78", user) + '\0', {salt.begin(), salt.end()});
        EXPECT_EQ(written.at(2), "1C40" + TextHex(digest).substr(4));
    }

    std::string flow;
    std::vector<std::string> written; ///< tagged values in hex, without those of the guard cell
};

inline const std::string kUserFlow = "EnterCyberSecurityBrickIntegratedLoginAndPassword";

} // namespace ruvo::test
