// The connection test: every result, and what it leaves behind.
#include "support/case_table.h"
#include "support/scratch_folder.h"
#include "support/scripted_server.h"

#include "app/connection_test.h"
#include "app/worker_thread.h"
#include "config/scramble.h"
#include "extraction/password_state.h"
#include "link/client.h"
#include "log/error_log.h"
#include "platform/com_runtime.h"

#include <gtest/gtest.h>

#include <thread>

namespace ruvo {

// What only a broken machine would refuse.
int g_runtimeStarts = 2; // start-up's tests use it too
int g_runtimeUsers = 0;
static bool g_hasThreads = true;

std::function<void()> g_onRuntimeStart; ///< may throw
bool StartComRuntime() {
    if (g_onRuntimeStart)
        g_onRuntimeStart();
    g_runtimeUsers += g_runtimeStarts > 0 ? 1 : 0;
    return g_runtimeStarts-- > 0;
}

void StopComRuntime() {
    --g_runtimeUsers;
}

bool RunOnWorkerThread(const std::function<void()>& work) {
    if (g_hasThreads)
        std::thread(work).join();
    return g_hasThreads;
}

namespace test {
namespace {

void Script(CScriptedServer& server, int generation, int requests, std::int64_t passwordStatus,
            const std::string& call, std::int64_t status) {
    if (generation >= 0)
        server.values[0x00DF] = "24010" + std::to_string(generation);
    server.values[0xBF10] = TextHex("00112233445566778899aabbccddeeff");
    server.limits = {{0x0002, {"1C082020202020202020"}}, {0x00E1, {"1C082020202020202020"}}};
    server.statuses = {
        {call, status}, {"ChangeSetting 00.02", passwordStatus}, {"ChangeSetting 00.E1", passwordStatus}};
    server.onCall = [left = requests](SCall& made) mutable -> std::optional<std::int64_t> {
        return made.name == "ChangeSetting" && made.Cell() == 0xBF15 && left-- > 0 ? std::optional(0x0611)
                                                                                   : std::nullopt;
    };
}

/// A login with the plain password: opened and closed by a reset, with a probe before and behind it.
void ExpectLogin(std::vector<std::string> lines) {
    std::erase_if(lines, [](const std::string& line) { return line.starts_with("Get"); });
    lines.erase(lines.begin(), lines.begin() + 2); // opening
    const std::string reset = "ResetCell UI1(200) I2(0002)";
    const std::string probe = "ChangeSetting UI1(200) I2(BF15) 28020100";
    const std::string password = "ChangeSetting UI1(200) I2(0002) 1C0850415353574F5244";
    EXPECT_EQ(lines, (std::vector<std::string>{reset, probe, password, probe, reset, "ClosePort"}));
}

TEST(ConnectionTest, EveryResult) {
    const CScratchFolder folder;
    setenv("RUVO_REGISTRY_USER", folder.Native("user.ini").c_str(), 1);
    setenv("RUVO_REGISTRY_MACHINE", folder.Native("machine.ini").c_str(), 1);
    const std::string ethernet = "UseEthernet=1\n[RUVO_ETHERNET]\nRV003=10.0.0.5,200,7\n";
    const std::string modem = "UseModem=1\nTAPI_ModemName=M\nTAPI_NumberToDial=5\n[RUVO_MODEM]\nRV004=4\n";
    char scrambled[kScrambledLength + 1];
    ScramblePassword("PASSWORD", scrambled);
    ForEachCase<8>("app/connection_results.txt", [&](auto& result, auto& key, auto& generation,
                                                     auto& requests, auto& answer, auto& call, auto& status,
                                                     auto ini) {
        if (const std::size_t at = ini.find('@'); at != std::string::npos)
            ini.replace(at, 1, folder.Path());
        const bool isEthernet = ini == "ethernet", isModem = ini == "modem";
        const std::string more = isEthernet ? ethernet : isModem ? modem : ini;
        CScriptedServer server;
        Script(server, std::stoi(generation), std::stoi(requests), std::stoi(answer, nullptr, 0), call,
               std::stoi(status, nullptr, 0));
        server.refuseConnection = call == "no server";
        g_runtimeStarts = call == "no runtime" ? 0 : call == "no second runtime" ? 1 : 2;
        g_hasThreads = call != "no thread";
        const std::string path = folder.Write(
            "site.ini", "[RUVO_GENERAL]\nEventRootDir=" + folder.Path("ev") + "\n" + more +
                            "\n[RUVO_SERIAL]\nRV001=200\nRV002=2\n[RUVO_PASSWORDS]\nRV003=" + scrambled +
                            "\nRV001=" + scrambled + "\n");
        EXPECT_EQ(static_cast<int>(TestConnection(path.c_str(), key == "-" ? nullptr : key.c_str())),
                  std::stoi(result));
        const std::string end = isModem ? "ModemHangUp" : "ClosePort";
        const bool opened = !server.calls.empty() && call != "OpenPort";
        EXPECT_EQ(std::ranges::count(server.calls, end), opened ? 1 : 0);
        EXPECT_TRUE(!opened || server.calls.back() == end);
        EXPECT_TRUE(CP32Wrap::GetInstance() == nullptr && server.sink == nullptr);
        EXPECT_TRUE(g_runtimeUsers == 0 && PasswordState().currentPassword.empty());
        EXPECT_FALSE(folder.Has("RUVO_Errors.log") || folder.Has("ev"));
        if (result == "0" && generation == "0" && requests == "1" && call.empty())
            ExpectLogin(server.lines);
        if (isEthernet) {
            EXPECT_NE(server.lines.front().find(R"("10.0.0.5","7","200","0")"), std::string::npos);
        }
    });
    g_hasThreads = true;
    ResetErrorLog();
}

// People and scripts of sites know the texts.
TEST(ConnectionTest, Meanings) {
    constexpr std::array kTexts{
        "The relay answered, and the password, if one was asked for, was accepted.",
        "The comms server could not be started.",
        "The INI file was refused.",
        "The key is not an entry of the section of the configured link type.",
        "The link could not be opened, or its transaction values could not be set.",
        "A password is configured, but the relay did not ask for one.",
        "The relay refused the password.",
        "Resetting cell 00.02 failed.",
        "The relay is not connected or does not respond (reading cell 00.DF, status 8).",
        "Reading cell 00.DF failed.",
        "The relay asked for a password, and none is configured.",
        "The relay has blocked its password.",
        "The COM library could not be initialised.",
        "The password was accepted, but its level is insufficient.",
        "The test could not be run: no result was delivered."};
    for (std::size_t number = 0; number < kTexts.size(); ++number)
        EXPECT_EQ(ConnectionTestMeaning(static_cast<EConnectionTestResult>(number)), kTexts[number]);
}

} // namespace
} // namespace test
} // namespace ruvo
