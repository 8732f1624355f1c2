// The connection test: every result, and what it leaves behind.
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
static int g_runtimeUsers = 0;
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

struct SRow {
    int result;
    const char* name;
    const char* key;                 ///< RV001 and RV003 have a password
    int generation = 0;              ///< access control; -1 for a relay without cell 00.DF
    int requests = 1;                ///< how often the probe is answered with a password request
    std::int64_t passwordStatus = 0; ///< answer to the password
    std::string call = {};           ///< a call that is answered with `status`
    std::int64_t status = 0;
    std::string ini = {};
};

void Script(CScriptedServer& server, const SRow& row) {
    if (row.generation >= 0)
        server.values[0x00DF] = "24010" + std::to_string(row.generation);
    server.values[0xBF10] = TextHex("00112233445566778899aabbccddeeff");
    server.limits = {{0x0002, {"1C082020202020202020"}}, {0x00E1, {"1C082020202020202020"}}};
    server.statuses = {{row.call, row.status},
                       {"ChangeSetting 00.02", row.passwordStatus},
                       {"ChangeSetting 00.E1", row.passwordStatus}};
    server.onCall = [left = row.requests](SCall& call) mutable -> std::optional<std::int64_t> {
        return call.name == "ChangeSetting" && call.Cell() == 0xBF15 && left-- > 0 ? std::optional(0x0611)
                                                                                   : std::nullopt;
    };
}

TEST(ConnectionTest, EveryResult) {
    const CScratchFolder folder;
    setenv("RUVO_REGISTRY_USER", folder.Native("user.ini").c_str(), 1);
    setenv("RUVO_REGISTRY_MACHINE", folder.Native("machine.ini").c_str(), 1);
    const std::string ethernet = "UseEthernet=1\n[RUVO_ETHERNET]\nRV003=10.0.0.5,200,7\n";
    const std::string modem = "UseModem=1\nTAPI_ModemName=M\nTAPI_NumberToDial=5\n[RUVO_MODEM]\nRV004=4\n";
    const SRow rows[] = {
        {0, "the password is accepted, the key in lower case", "rv001"},
        {0, "no password asked for, none configured", "RV002", -1, 0},
        {0, "open access, none configured", "RV002", 0, 0},
        {0, "a reset answered with 1 is good", "RV001", 0, 1, 0, "ResetCell 00.02", 1},
        {0, "a relay behind Ethernet", "RV003", 0, 1, 0, "", 0, ethernet},
        {0, "a relay behind the modem", "RV004", 0, 0, 0, "", 0, modem},
        {1, "no comms server", "RV001", 0, 1, 0, "no server"},
        {1, "no runtime for the comms server", "RV001", 0, 1, 0, "no second runtime"},
        {2, "a value breaks its rule", "RV001", 0, 1, 0, "", 0, "BaudRate=7\n"},
        {2, "a log that cannot be written", "RV001", 0, 1, 0, "", 0,
         "ErrorLogPathname=" + folder.Path() + "\\\n"},
        {3, "an unknown key", "RV009"},
        {3, "no key", nullptr},
        {3, "a key of another link type", "RV004", 0, 0, 0, "", 0, "[RUVO_MODEM]\nRV004=4\n"},
        {4, "the port does not open", "RV001", 0, 1, 0, "OpenPort", 3},
        {4, "the transaction values are refused", "RV001", 0, 1, 0, "SetTransactionValues", 3},
        {5, "a password for a relay without login", "RV001", -1, 0},
        {5, "a password for a relay that does not ask", "RV001", 0, 0},
        {5, "a relay with users never asks for a plain password", "RV001", 2},
        {6, "a wrong password", "RV001", 0, 1, 0x0411},
        {7, "the reset is refused", "RV001", 0, 1, 0, "ResetCell 00.02", 0x0511},
        {8, "the relay is silent", "RV001", 0, 1, 0, "GetValue 00.DF", 8},
        {9, "the cell cannot be read", "RV001", 0, 1, 0, "GetValue 00.DF", 0x0211},
        {10, "no password configured", "RV002", 0, 1, 0x0411},
        {10, "no password configured explains a block, too", "RV002", 1, 1, 0x0B11},
        {11, "blocked", "RV001", 1, 1, 0x0B11},
        {12, "no COM library", "RV001", 0, 1, 0, "no runtime"},
        {13, "the level does not suffice", "RV001", 0, 2},
        {14, "no thread", "RV001", 0, 1, 0, "no thread"},
    };
    char scrambled[kScrambledLength + 1];
    ScramblePassword("PASSWORD", scrambled);
    for (const SRow& row : rows) {
        CScriptedServer server;
        Script(server, row);
        server.refuseConnection = row.call == "no server";
        g_runtimeStarts = row.call == "no runtime" ? 0 : row.call == "no second runtime" ? 1 : 2;
        g_hasThreads = row.call != "no thread";
        const std::string path = folder.Write(
            "site.ini", "[RUVO_GENERAL]\nEventRootDir=" + folder.Path("ev") + "\n" + row.ini +
                            "\n[RUVO_SERIAL]\nRV001=200\nRV002=2\n[RUVO_PASSWORDS]\nRV003=" + scrambled +
                            "\nRV001=" + scrambled + "\n");
        EXPECT_EQ(static_cast<int>(TestConnection(path.c_str(), row.key)), row.result) << row.name;
        const std::string end = row.ini == modem ? "ModemHangUp" : "ClosePort";
        const bool opened = !server.calls.empty() && row.call != "OpenPort";
        EXPECT_EQ(std::ranges::count(server.calls, end), opened ? 1 : 0) << row.name;
        EXPECT_TRUE(!opened || server.calls.back() == end) << row.name;
        EXPECT_TRUE(CP32Wrap::GetInstance() == nullptr && server.sink == nullptr) << row.name;
        EXPECT_TRUE(g_runtimeUsers == 0 && PasswordState().currentPassword.empty()) << row.name;
        EXPECT_FALSE(folder.Has("RUVO_Errors.log") || folder.Has("ev")) << row.name;
        if (row.result == 0 && row.generation == 0 && row.requests == 1 && row.call.empty()) {
            std::erase_if(server.lines, [](const std::string& line) { return line.starts_with("Get"); });
            server.lines.erase(server.lines.begin(), server.lines.begin() + 2); // opening
            const std::string reset = "ResetCell UI1(200) I2(0002)";
            const std::string probe = "ChangeSetting UI1(200) I2(BF15) 28020100";
            const std::string password = "ChangeSetting UI1(200) I2(0002) 1C0850415353574F5244";
            EXPECT_EQ(server.lines,
                      (std::vector<std::string>{reset, probe, password, probe, reset, "ClosePort"}));
        }
    }
    ResetErrorLog();
    unsetenv("RUVO_REGISTRY_USER");
    unsetenv("RUVO_REGISTRY_MACHINE");
}

} // namespace
} // namespace test
} // namespace ruvo
