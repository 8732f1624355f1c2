#include "log/log_fixture.h"
#include "log/log_reserve.h"
#include "log/status_to_string_id.h"

#include "model/status/string_table.h"
#include "platform/full_path.h"

namespace ruvo {

TEST_F(CErrorLog, PathRules) {
    EXPECT_EQ(UseLog("C:\\ev\\x.log", false), "C:\\ev\\x.log");
    EXPECT_EQ(UseLog("", false, "", false), "");
    EXPECT_EQ(UseLog("C:\\ev\\x.log", true, "C:\\q7\\RUVO\\"), "C:\\ev\\x.log");
    EXPECT_EQ(UseLog("C:\\ev\\x.log", false, "C:\\q7\\RUVO\\"), "C:\\q7\\RUVO\\RUVO_Errors.log");
    EXPECT_EQ(UseLog("", true, "C:\\q7\\RUVO\\", false), "C:\\q7\\RUVO\\RUVO_Errors.log");
    EXPECT_EQ(UseLog("", false, "C:\\a\\..\\b\\"), "C:\\b\\RUVO_Errors.log");
}

TEST_F(CErrorLog, LinesByteForByte) {
    UseLog(m_folder.Write("run.log", "kept\n"));
    LogMessage("fresh.", true);
    ConnectionDetails().ethernetLink = true;
    LogMessage("new.", true);
    SConnectionDetails& now = ConnectionDetails() = {true, true, "COM2", "Acme 56k", "10.0.0.5", 7, 0};
    LogMessage("e", true);
    now.ethernetLink = false;
    LogMessage("s.", true);
    now.serialLink = false;
    LogMessage("m.", true);
    LogMessage("plain", false);
    LogStatusMessage("Failed to close COM port.", 15);
    LogStatusMessage("Failed.", 0x0211);
    g_localTime.reset();
    WriteLogLine("\r\na\r\n\r\nb\tc\x01\x01 d\n\xC3\xA4%s");
    const std::string want =
        "kept\n"
        "2024/03/05 14:07:09 fresh. Connection details - modem name: , device address: -1.\r\n"
        "2024/03/05 14:07:09 new. Connection details - IP address: , device address: -1, bus address: -1.\r\n"
        "2024/03/05 14:07:09 e Connection details - IP address: 10.0.0.5, device address: 7, bus address: "
        "0.\r\n"
        "2024/03/05 14:07:09 s. Connection details - COM Port: COM2, device address: 7.\r\n"
        "2024/03/05 14:07:09 m. Connection details - modem name: Acme 56k, device address: 7.\r\n"
        "2024/03/05 14:07:09 plain\r\n"
        "2024/03/05 14:07:09 Failed to close COM port. P32LS status: P32LS Error - no port open\r\n"
        "2024/03/05 14:07:09 Failed. P32LS status: Cell data not available\r\n"
        "Invalid DateTime  a b c   d \xC3\xA4%s\r\n";
    EXPECT_EQ(m_folder.Read("run.log"), want);
    EXPECT_EQ(g_debugOutput, "");
    UseLog(m_folder.Path("logs\\deep\\run.log"));
    WriteLogLine("folder is made");
    EXPECT_EQ(m_folder.Read("logs/deep/run.log"), "Invalid DateTime folder is made\r\n");
}

TEST_F(CErrorLog, DisabledOrWithoutPathWritesNothing) {
    for (const bool disabled : {false, true}) {
        UseLog(disabled ? m_folder.Path("logs\\run.log") : "");
        SetErrorLogDisabled(disabled);
        LogStatusMessage("lost", 2);
        WriteLogLine("lost");
        EXPECT_EQ(std::exchange(g_standardError, "").empty(), disabled) << "a connection test says nothing";
    }
    EXPECT_FALSE(m_folder.Has("logs"));
    EXPECT_EQ(g_debugOutput.find("Error log: no path is known. Line lost: "), 0U)
        << "a line without a home is told";
}

TEST_F(CErrorLog, UnwritableLogTellsTheDebugOutputAndStandardError) {
    m_folder.Write("file", "");
    for (const char* name : {"file\\run.log", "", "missing\\", "wrong?\\run.log"}) {
        g_debugOutput.clear();
        g_standardError.clear();
        const std::string start = "Error log " + DisplayPath(UseLog(m_folder.Path(name))) + ": ";
        WriteLogLine("lost");
        EXPECT_TRUE(g_debugOutput.starts_with(start)) << name;
        EXPECT_TRUE(g_debugOutput.ends_with(" Line lost: 2024/03/05 14:07:09 lost\n")) << name;
        EXPECT_EQ(g_standardError, "ruvo: " + g_debugOutput) << name;
    }
    EXPECT_FALSE(m_folder.Has("missing"));
}

TEST_F(CErrorLog, ALineWithoutMemoryIsToldWithoutAny) {
    const std::string told = "ine of the error log is lost: no memory for it";
    ReportNoMemoryForLine();
    EXPECT_EQ(g_standardError, "ruvo: a l" + told);
    EXPECT_EQ(g_debugOutput, " *** [ PARLANE QTV ERR  ] A l" + told + "\n");
}

TEST(StatusText, TheTextsThatUsersAndScriptsKnow) {
    std::ifstream rows(RUVO_TEST_DATA "/log/status_texts.txt");
    int count = 0;
    for (std::string status, text;
         std::getline(rows >> std::ws, status, '|') && std::getline(rows, text, '|'); ++count) {
        const auto number = static_cast<std::uint32_t>(std::stoul(status));
        EXPECT_STREQ(LoadStringText(StatusToStringId(number)), text.c_str()) << number;
    }
    EXPECT_GT(count, 90);
}

} // namespace ruvo
