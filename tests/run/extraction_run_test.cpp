// The run over all relays: what is asked of the comms server, and what the error log says when it goes wrong.
#include "support/fake_system.h"
#include "support/scratch_folder.h"
#include "support/scripted_server.h"

#include "link/p32_wrap.h"
#include "link/password_state.h"
#include "log/connection_details.h"
#include "log/error_log.h"
#include "run/extraction_run.h"
#include "run/link_control.h"
#include "run/password_callbacks.h"

#include <gtest/gtest.h>

namespace ruvo::test {

class Run : public testing::Test {
protected:
    Run() {
        ResetErrorLog();
        ResetConnectionDetails();
        PasswordState() = SPasswordState{};
        EXPECT_EQ(CP32Wrap::CreateInstance(), kLinkGood);
        fields.errorLogPath = folder.Path("run.log");
        fields.errorLogPathGiven = true;
        fields.commPort = "COM3";
        fields.baudRate = 19200;
        fields.tapiModemName = "Acme 56k";
        fields.tapiNumberToDial = "555";
    }
    ~Run() override { CP32Wrap::DestroyInstance(); }

    /// The log's lines without their time stamps, each ended by "|".
    std::string RunAll() {
        std::filesystem::remove(folder.Native("run.log"));
        context = CRunContext();
        context.Config() = CRuvoConfig(fields);
        context.SetDestinationRoot(folder.Path("ev"));
        ResolveErrorLogPath(context, true);
        server.calls.clear();
        RunExtraction(context);
        CloseLink(context);
        std::string lines;
        const std::string log = folder.Read("run.log");
        for (std::size_t at = 0; at < log.size(); at = log.find("\r\n", at) + 2)
            lines += log.substr(at + 20, log.find("\r\n", at) - at - 20) + "|";
        return lines;
    }
    std::string Calls() const {
        std::string all;
        for (const std::string& call : server.calls)
            all += call + ";";
        return all;
    }

    CScriptedServer server;
    CScratchFolder folder;
    SRuvoConfigFields fields;
    CRunContext context;
};

TEST_F(Run, EachLinkTypeOpensAndClosesAsItShould) {
    const std::string visit = "GetValue 00.DF;" // a relay without that cell knows no login
                              "GetValue 00.08;GetValue 00.06;GetValue 00.08;GetValue 00.06;GetValue 00.05;"
                              "GetValue 00.04;GetValue 00.06;GetDeviceStatus;";
    std::vector<std::string> arguments;
    server.onCall = [&](SCall& call) -> std::optional<std::int64_t> {
        if (call.name == "OpenPort")
            arguments.insert(arguments.end(), {*call.inputs[0].AsText(), *call.inputs[1].AsText()});
        return std::nullopt;
    };
    fields.serialEntries = {{"RV002", 6}, {"RV001", 5}};
    EXPECT_EQ(RunAll(), "");
    EXPECT_EQ(Calls(), "OpenPort 00.00;SetTransactionValues 00.00;" + visit + visit + "ClosePort;");
    fields.elevenBits = 1;
    fields.useModem = 1;
    fields.modemEntries = {{"RV001", 5}};
    EXPECT_EQ(RunAll(), "");
    EXPECT_EQ(Calls(), "ModemConnect 00.00;SetTransactionValues 00.00;" + visit + "ModemHangUp;");
    fields.useModem = 0;
    EXPECT_EQ(RunAll(), "");
    fields.useEthernet = 1;
    fields.ethernetEntries = {{"RV001", "10.0.0.5,2,1"}, {"RV002", "10.0.0.6,12"}};
    EXPECT_EQ(RunAll(), "");
    const std::string tunnel = "OpenPort 00.00;SetTransactionValues 00.00;" + visit + "ClosePort;";
    EXPECT_EQ(Calls(), tunnel + tunnel);
    EXPECT_EQ(arguments,
              (std::vector<std::string>{"COM3", "19200,N,8,1", "COM3", "19200,E,8,1",
                                        "TNLC=\"RPCDll.Dll\",\"10.0.0.5\",\"1\",\"2\",\"0\"", "",
                                        "TNLC=\"RPCDll.Dll\",\"10.0.0.6\",\"0\",\"12\",\"0\"", ""}));
}

TEST_F(Run, LinksThatFailSayWhy) {
    const std::string status = " P32LS status: P32LS Error - ";
    fields.serialEntries = {{"RV001", 5}};
    server.statuses = {{"OpenPort", 11}};
    EXPECT_EQ(RunAll(), "Failed to open COM port. Port: COM3, connection parameters: 19200,N,8,1." + status +
                            "cannot open port|");
    EXPECT_EQ(Calls(), "OpenPort 00.00;") << "a port that is not open is not closed";
    server.statuses = {{"SetTransactionValues", 12}, {"ClosePort", 13}};
    EXPECT_EQ(RunAll(), "Setting transaction values failed." + status +
                            "communication parameters cannot be set|" + "Failed to close COM port." + status +
                            "there is no opened port to close|" +
                            "There were problems with setting transaction values. Port: COM3.|");
    fields.useModem = 1;
    fields.modemEntries = {{"RV001", 5}, {"RV002", 6}};
    server.statuses = {{"ModemConnect", 51}};
    EXPECT_EQ(
        RunAll(),
        "Modem connect failed. Modem name: Acme 56k, number to dial: 555. P32LS status: The call cannot "
        "be established because the line is busy.|");
    server.statuses = {{"ModemHangUp", 46}};
    EXPECT_EQ(RunAll(), "Modem hang-up failed. P32LS status: The modem is hanging up already. Please wait.|");
    fields.useEthernet = 1;
    fields.ethernetEntries = {{"RV001", "10.0.0.5,2,1"}, {"RV002", "10.0.0.6,12"}};
    int opened = 0;
    server.onCall = [&](SCall& call) -> std::optional<std::int64_t> {
        return call.name == "OpenPort" && ++opened == 1 ? std::optional<std::int64_t>(255) : std::nullopt;
    };
    server.statuses.clear();
    EXPECT_EQ(RunAll(),
              "Failed to open ethernet connection. Connection string: "
              "TNLC=\"RPCDll.Dll\",\"10.0.0.5\",\"1\",\"2\",\"0\". P32LS status: Undefined P32LS Error|");
    EXPECT_EQ(opened, 2) << "the next relay is still visited";
    server.statuses = {{"SetTransactionValues", 12}};
    EXPECT_NE(RunAll().find("values. Device IP: 10.0.0.6, device address: 12, bus address: 0.|"),
              std::string::npos);
}

TEST_F(Run, TheLoginProbe) {
    const std::string failed =
        "Test connection failed. Unable to connect to the device or password is invalid. "
        "Connection details - COM Port: COM3, device address: 5.|";
    fields.serialEntries = {{"RV001", 5}};
    fields.passwords = {{"RV001", "AAAA"}, {"RV002", "BBBB"}};
    server.limits[0x0002] = {"1C0420202020"};
    struct SRow {
        const char* name;
        std::map<std::string, std::int64_t> statuses;
        std::string version; ///< value of cell 00.DF
        bool asks;           ///< the probe's write is answered with a password request first
        std::string log;
        std::string lastProbeCall;
    };
    const SRow rows[] = {
        {"no answer", {{"GetValue 00.DF", 8}}, "240100", false, failed, "GetValue 00.DF"},
        {"no password asked", {}, "240100", false, "", "GetDeviceStatus"},
        {"reset answers 1", {{"ResetCell", 1}}, "240100", false, "", "GetDeviceStatus"},
        {"reset refused", {{"ResetCell", 0x0411}}, "240100", false, failed, "ResetCell 00.02"},
        {"probe's write refused for another reason",
         {{"ChangeSetting BF.15", 0x0511}},
         "240100",
         false,
         "",
         "GetDeviceStatus"},
        {"password accepted", {}, "240100", true, "", "GetDeviceStatus"},
        {"password refused",
         {{"ChangeSetting 00.02", 0x0411}},
         "240100",
         true,
         "Invalid password. Connection details - COM Port: COM3, device address: 5.|" + failed,
         "GetSettingLimits 00.02"},
    };
    for (const SRow& row : rows) {
        server.statuses = row.statuses;
        server.values[0x00DF] = row.version;
        bool asks = row.asks;
        std::vector<std::uint8_t> sent;
        server.onCall = [&](SCall& call) -> std::optional<std::int64_t> {
            if (call.name == "ChangeSetting" && call.Cell() == 0x0002)
                sent = *call.inputs[2].AsBytes();
            return call.name == "ChangeSetting" && call.Cell() == 0xBF15 && std::exchange(asks, false)
                       ? std::optional<std::int64_t>(0x0611)
                       : std::nullopt;
        };
        EXPECT_EQ(RunAll(), row.log) << row.name;
        server.calls.pop_back(); // ClosePort
        EXPECT_EQ(server.calls.back(), row.lastProbeCall) << row.name;
        EXPECT_EQ(sent, row.asks ? Hex("1C0441414141") : Hex("")) << row.name;
    }
}

TEST_F(Run, ARelaysTroubleIsLoggedAndTheNextOneHandled) {
    fields.serialEntries = {{"RV001", 5}, {"RV002", 6}};
    const std::string details = " Connection details - COM Port: COM3, device address: 5.";
    int statusCalls = 0;
    std::int64_t answer = 8;
    server.onCall = [&](SCall& call) -> std::optional<std::int64_t> {
        if (call.name == "GetDeviceStatus" && ++statusCalls == 1)
            return answer;
        return std::nullopt;
    };
    EXPECT_EQ(RunAll(), "A problem occured during events extraction." + details +
                            " P32LS status: P32LS Error - device is either not connected or not responding|");
    EXPECT_EQ(statusCalls, 2);
    statusCalls = 0;
    answer = 18;
    EXPECT_EQ(RunAll(), "A problem occured during events extraction." + details +
                            " P32LS status: P32LS Error - Function Aborted by User|");
    EXPECT_EQ(statusCalls, 2);
    server.onCall = nullptr;
    server.values[0x0008] = TextHex("a\\b");
    EXPECT_EQ(RunAll().find(
                  "Failed to save event file The relay's model or serial number is unfit for a file name: "
                  "-a\\b; no event was taken from the relay. Connection details - COM Port: COM3, device "
                  "address: 5.|"),
              0U);
    fields.useModem = 1;
    fields.modemEntries = {{"RV001", 5}};
    server.statuses = {{"GetDeviceStatus", 15}};
    server.values.clear();
    EXPECT_EQ(RunAll(),
              "A problem occured during events extraction. Connection details - modem name: Acme 56k, number "
              "to dial: 555, device address: 5. P32LS status: P32LS Error - no port open|");
}

TEST_F(Run, PasswordCallbackReasons) {
    RunAll();
    const std::string details = " Connection details - COM Port: , device address: -1.|";
    ConnectionDetails().serialLink = true;
    ConnectionDetails().comPort.clear();
    struct SRow {
        int code;
        int result;
        const char* message;
        bool blocked;
        bool level;
    };
    const SRow rows[] = {
        {1, 0, "", false, false},
        {2, 1, "Insufficient password level.", false, true},
        {3, 1, "Invalid password.", false, false},
        {4, 1, "Password to a Cyber Security device is invalid.", false, false},
        {5, 1, "Password is blocked temporarily.", true, false},
        {6, 1, "Unknown error occured (GETPASSWORD_PASS_UNKNOWN_ERR passed to password callback).", false,
         false},
        {7, 1, "Unrecognized error code passed to password callback. Error code: 7.", false, false},
        {8, 1, "Unrecognized error code passed to password callback. Error code: 8.", false, false},
        {9, 1, "Password is blocked permanently.", true, false},
        {-3, 1, "Unrecognized error code passed to password callback. Error code: -3.", false, false},
    };
    const SPasswordRequest request{};
    char text[] = "        ";
    char* buffer = text;
    std::uint32_t noNotify = 9;
    for (const SRow& row : rows) {
        std::filesystem::remove(folder.Native("run.log"));
        PasswordState() = SPasswordState{};
        PasswordState().accepted = true;
        EXPECT_EQ(PasswordCallback(request, &buffer, 8, &noNotify, row.code, -1), row.result) << row.code;
        EXPECT_TRUE(PasswordState().callbackCalled);
        EXPECT_EQ(PasswordState().accepted, row.code == 1) << row.code;
        EXPECT_EQ(PasswordState().blocked, row.blocked) << row.code;
        EXPECT_EQ(PasswordState().insufficientLevel, row.level) << row.code;
        EXPECT_EQ(folder.Read("run.log").find(row.message), row.code == 1 ? 0U : 20U) << row.code;
    }
    PasswordState().currentPassword = "PASS";
    EXPECT_EQ(PasswordCallback(request, &buffer, 6, &noNotify, 0, -1), 0);
    EXPECT_EQ(std::string(text), "PASS    ");
    EXPECT_EQ(noNotify, 0U);
    PasswordState().currentPassword = "LONGPASS";
    EXPECT_EQ(PasswordCallback(request, &buffer, 6, &noNotify, 0, -1), 0);
    EXPECT_EQ(std::string(text), "PASS    ") << "a password longer than the relay takes is not cut";
    EXPECT_EQ(PasswordAcceptedCallback("m"), 1);
    EXPECT_TRUE(PasswordState().accepted);
}

} // namespace ruvo::test
