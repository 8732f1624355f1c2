// The run over all relays: what is asked of the comms server, and what the error log says when it goes wrong.
#include "run/run_fixture.h"
#include "support/case_table.h"

#include "run/login_probe.h"
#include "run/password_callbacks.h"

namespace ruvo::test {

TEST_F(Run, EachLinkTypeOpensAndClosesAsItShould) {
    const auto visit = [](const std::string& address) {
        return "GetValue 00.DF;" // a relay without that cell knows no login
               "GetValue 00.08;GetValue 00.06;GetValue 00.08;GetValue 00.06;GetValue 00.05;"
               "GetValue 00.04;GetValue 00.06;GetDeviceStatus UI1(" +
               address + ");";
    };
    const std::string timing =
        "SetTransactionValues I2(0001) I2(0002) I2(0003) I2(0004) I2(0005) I2(0006) I2(0007);";
    const auto open = [&](const std::string& port, const std::string& parameters) {
        return "OpenPort BSTR(\"" + port + "\") BSTR(\"" + parameters + "\");" + timing;
    };
    int value = 0;
    for (std::int32_t* field :
         {&fields.busyHoldoff, &fields.busyCount, &fields.resetResponse, &fields.response, &fields.tryCount,
          &fields.transmitDelay, &fields.globalTransmit, &fields.tapiLineAddress})
        *field = ++value;
    fields.tapiCountryCode = "44";
    fields.tapiAreaCode = "1785";
    fields.tapiUseCountryAndAreaCodes = 1;
    fields.serialEntries = {{"RV002", 6}, {"RV001", 200}};
    EXPECT_EQ(RunAll(), "");
    EXPECT_EQ(Calls(), open("COM3", "19200,N,8,1") + visit("200") + visit("6") + "ClosePort;");
    fields.useModem = 1;
    fields.modemEntries = {{"RV001", 254}};
    EXPECT_EQ(RunAll(), "");
    EXPECT_EQ(Calls(),
              "ModemConnect BSTR(\"Acme 56k\") I4(8) BSTR(\"44\") BSTR(\"1785\") BSTR(\"555\") UI1(1);" +
                  timing + visit("254") + "ModemHangUp;");
    fields.useModem = 0;
    fields.useEthernet = 1;
    fields.ethernetEntries = {{"RV001", "10.0.0.5,2,1"}, {"RV002", "10.0.0.6,212"}};
    EXPECT_EQ(RunAll(), "");
    EXPECT_EQ(Calls(), open("TNLC=\"RPCDll.Dll\",\"10.0.0.5\",\"1\",\"2\",\"0\"", "") + visit("2") +
                           "ClosePort;" + open("TNLC=\"RPCDll.Dll\",\"10.0.0.6\",\"0\",\"212\",\"0\"", "") +
                           visit("212") + "ClosePort;");
}

TEST_F(Run, TheLogNamesTheRelayWhoseLoginOrVisitFails) {
    const std::string details = "Connection details - ";
    const std::string failed =
        "Test connection failed. Unable to connect to the device or password is invalid. ";
    const auto failEverySecondTime = [] {
        g_onTime = [calls = 0]() mutable {
            if (calls++ % 2 == 0)
                throw std::runtime_error("no clock");
        };
    };
    fields.serialEntries = fields.modemEntries = {{"RV001", 5}, {"RV002", 200}};
    fields.ethernetEntries = {{"RV001", "10.0.0.5,5,1"}, {"RV002", "10.0.0.6,200"}};
    server.limits[0x0002] = {"1C0420202020"};
    // How the log names each relay while it is being handled, and afterwards.
    ForEachCase<6>("run/connection_details.txt", [&](auto& useModem, auto& useEthernet, auto& noted,
                                                     auto& notedNext, auto& told, auto& toldNext) {
        fields.useModem = std::stoi(useModem);
        fields.useEthernet = std::stoi(useEthernet);
        const auto expect = [&](const auto& lines) {
            EXPECT_EQ(RunAll(), lines(noted, told) + lines(notedNext, toldNext));
            g_onTime = nullptr;
        };
        server.values[0x00DF] = "240100";
        server.statuses = {{"ChangeSetting BF.15", 0x0611}, {"ChangeSetting 00.02", 0x0411}};
        expect([&](const auto& during, const auto& after) {
            return "Invalid password. " + details + during + "|" + failed + details + after + "|";
        });
        server.statuses = {{"GetValue 00.DF", 8}};
        failEverySecondTime();
        expect([&](const auto&, const auto& after) { return failed + details + after + "|"; });
        server.values.clear();
        server.statuses.clear();
        PasswordState() = SPasswordState{};
        failEverySecondTime();
        expect([&](const auto& during, const auto&) {
            return "Unhandled exception occured:no clock " + details + during + "|";
        });
        for (const auto& [status, text] :
             {std::pair{15, "no port open|"}, {18, "Function Aborted by User|"}}) {
            server.statuses = {{"GetDeviceStatus", status}};
            expect([&, end = text](const auto&, const auto& after) {
                return "A problem occured during events extraction. " + details + after +
                       " P32LS status: P32LS Error - " + end;
            });
        }
    });
}

TEST_F(Run, LinksThatFailSayWhy) {
    const std::string status = " P32LS status: P32LS Error - ";
    fields.serialEntries = {{"RV001", 5}};
    server.statuses = {{"OpenPort", 11}};
    EXPECT_EQ(RunAll(), "Failed to open COM port. Port: COM3, connection parameters: 19200,N,8,1." + status +
                            "cannot open port|");
    EXPECT_EQ(server.calls.size(), 1U) << "a port that is not open is not closed";
    server.statuses = {{"SetTransactionValues", 12}, {"ClosePort", 13}};
    EXPECT_EQ(RunAll(), "Setting transaction values failed." + status +
                            "communication parameters cannot be set|" + "Failed to close COM port." + status +
                            "there is no opened port to close|" +
                            "There were problems with setting transaction values. Port: COM3.|");
    EXPECT_FALSE(OpenEthernetLink(context, "10.0.0.5", 2, 1)) << "another link is configured";
    fields.useModem = 1;
    fields.modemEntries = {{"RV001", 5}, {"RV002", 6}};
    server.statuses = {{"ModemConnect", 51}};
    EXPECT_EQ(
        RunAll(),
        "Modem connect failed. Modem name: Acme 56k, number to dial: 555. P32LS status: The call cannot "
        "be established because the line is busy.|");
    EXPECT_EQ(server.calls.size(), 1U) << "no relay is called over a line that is busy";
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
    const std::string refused = "Setting transaction values failed." + status +
                                "communication parameters cannot be set|There were problems with setting "
                                "transaction values. Device IP: ";
    EXPECT_EQ(RunAll(), refused + "10.0.0.5, device address: 2, bus address: 1.|" + refused +
                            "10.0.0.6, device address: 12, bus address: 0.|");
}

TEST_F(Run, TheLoginProbe) {
    const std::string failed =
        "Test connection failed. Unable to connect to the device or password is invalid. "
        "Connection details - COM Port: COM3, device address: 5.|";
    fields.serialEntries = {{"RV001", 5}};
    fields.passwords = {{"RV001", "AAAA"}, {"RV002", "BBBB"}};
    server.limits[0x0002] = {"1C0420202020"};
    server.values[0x00DF] = "240100";
    const std::string refused = "Invalid password. Connection details - COM Port: COM3, device address: 5.|";
    ForEachCase<6>("run/login_probe.txt", [&](auto& call, auto& status, auto& asksFirst, auto& isRefused,
                                              auto& hasFailed, auto& last) {
        server.statuses = {{call, std::stoll(status, nullptr, 0)}};
        bool asks = asksFirst == "1";
        std::vector<std::uint8_t> sent;
        server.onCall = [&](SCall& made) -> std::optional<std::int64_t> {
            if (made.name == "ChangeSetting" && made.Cell() == 0x0002)
                sent = *made.inputs[2].AsBytes();
            return made.name == "ChangeSetting" && made.Cell() == 0xBF15 && std::exchange(asks, false)
                       ? std::optional<std::int64_t>(0x0611)
                       : std::nullopt;
        };
        EXPECT_EQ(RunAll(), (isRefused.empty() ? "" : refused) + (hasFailed.empty() ? "" : failed));
        server.calls.pop_back(); // ClosePort
        EXPECT_EQ(server.calls.back(), last);
        EXPECT_EQ(sent, asksFirst == "1" ? Hex("1C0441414141") : Hex(""));
    });
}

TEST_F(Run, ANameThatNoFileCanHaveIsLogged) {
    fields.serialEntries = {{"RV001", 5}};
    server.values[0x0008] = TextHex("a\\b");
    EXPECT_EQ(RunAll().find(
                  "Failed to save event file The relay's model or serial number is unfit for a file name: "
                  "-a\\b; no event was taken from the relay. Connection details - COM Port: COM3, device "
                  "address: 5.|"),
              0U);
}

TEST_F(Run, PasswordCallbackReasons) {
    RunAll();
    const std::string details = " Connection details - COM Port: , device address: -1.\r\n";
    ConnectionDetails().serialLink = true;
    ConnectionDetails().comPort.clear();
    const SPasswordRequest request{};
    char text[] = "########";
    char* buffer = text;
    std::uint32_t noNotify = 9;
    ForEachCase<5>("run/password_callback.txt", [&](auto& codeText, auto& result, auto& message,
                                                    auto& blocked, auto& level) {
        const int code = std::stoi(codeText);
        std::filesystem::remove(folder.Native("run.log"));
        PasswordState() = SPasswordState{};
        PasswordState().accepted = PasswordState().blocked = PasswordState().insufficientLevel = true;
        EXPECT_EQ(PasswordCallback(request, &buffer, 8, &noNotify, code, -1), std::stoi(result));
        EXPECT_TRUE(PasswordState().callbackCalled);
        EXPECT_TRUE(PasswordState().accepted == (code == 1) && !PasswordState().unanswered);
        EXPECT_EQ(PasswordState().blocked, blocked == "1");
        EXPECT_EQ(PasswordState().insufficientLevel, level == "1");
        EXPECT_EQ(folder.Read("run.log"), code == 1 ? "" : "2021/03/02 14:03:07 " + (message + details));
    });
    PasswordState().currentPassword = "PASS";
    EXPECT_EQ(PasswordCallback(request, &buffer, 6, &noNotify, 0, -1), 0);
    EXPECT_EQ(std::string(text), "PASS  ##");
    EXPECT_EQ(noNotify, 0U);
    PasswordState().currentPassword = "LONGPASS";
    EXPECT_EQ(PasswordCallback(request, &buffer, 6, &noNotify, 0, -1), 0);
    EXPECT_EQ(std::string(text), "PASS  ##") << "a password longer than the relay takes is not cut";
    EXPECT_TRUE(PasswordState().unanswered);
    EXPECT_EQ(PasswordAcceptedCallback("m"), 1);
    EXPECT_TRUE(PasswordState().accepted && !PasswordState().unanswered);
    PrepareLogin(CRuvoConfig(fields), "RV001");
    EXPECT_EQ(PasswordState().currentPassword, "") << "that of another relay";
}

} // namespace ruvo::test
