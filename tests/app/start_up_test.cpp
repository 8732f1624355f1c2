// The command line, the outcome's text, load and check, and start-up from its first step to its last.
#include "support/failing_memory.h"
#include "support/fake_system.h"
#include "support/scratch_folder.h"
#include "support/scripted_server.h"

#include "app/command_line.h"
#include "app/load_and_check.h"
#include "app/ruvo_app.h"
#include "dayfile/off_file.h"
#include "ledger/visit_history.h"
#include "log/error_log.h"
#include "log/log_reserve.h"

#include <csignal>
#include <gtest/gtest.h>
#include <new>
#include <unistd.h>

namespace ruvo {

extern int g_runtimeStarts; // the connection test's tests stand in for the runtime
extern int g_runtimeUsers;
extern std::function<void()> g_onRuntimeStart;

// The marker of each system gives only some of these answers.
static EInstanceClaim g_claim = EInstanceClaim::Claimed;
struct CInstanceMarker::SHandle {};
CInstanceMarker::CInstanceMarker() = default;
CInstanceMarker::~CInstanceMarker() = default;
EInstanceClaim CInstanceMarker::Claim(const std::string& name) {
    EXPECT_EQ(name, "test_app:3B38A5F0-71B0-11d3-9C2B-00600816C2BEHX");
    return g_claim;
}

TEST(CommandLine, IniFileAndSwitch) {
    const struct {
        std::vector<std::string> arguments;
        const char* iniPath;
        bool checkOnly;
        std::vector<std::string> withoutEffect{};
    } rows[] = {
        {{}, "RUVO.ini", false},
        {{"/t", "C:\\cfg\\site.INI"}, "C:\\cfg\\site.INI", true},
        {{"/T", "site.ini"}, "site.ini", false, {"/T"}},
        {{"-test", " a.ini ", "b.initial", ""}, "b.initial", true},
        {{"a.ini", "b.ini"}, "b.ini", false},
        {{"/tmp/x.ini"}, "/tmp/x.ini", false}, // an INI file first, whatever it begins with
        {{"/tmp/x.conf"}, "RUVO.ini", true},   // begins with "/t"
        {{"x.ini.bak", "in", ".in", " --help ", ""}, "RUVO.ini", false, {"x.ini.bak", "in", ".in", "--help"}},
        {{"\t\"x\".ini\r\n"}, "\"x\".ini", false},
        {{"a.b/c.ini"}, "a.b/c.ini", false},
        {{"c.ini/t"}, "c.ini/t", false}, // three characters after the last dot
    };
    for (const auto& row : rows) {
        const SCommandLine commandLine = ParseCommandLine(row.arguments);
        EXPECT_EQ(commandLine.iniPath, row.iniPath);
        EXPECT_EQ(commandLine.checkOnly, row.checkOnly) << row.iniPath;
        EXPECT_EQ(commandLine.withoutEffect, row.withoutEffect) << row.iniPath;
    }
}

TEST(LoadAndCheck, TheOrderOfItsSteps) {
    const CScratchFolder folder;
    setenv("RUVO_REGISTRY_USER", folder.Native("user.ini").c_str(), 1);
    setenv("RUVO_REGISTRY_MACHINE", folder.Native("machine.ini").c_str(), 1);
    const std::string good = "EventRootDir=" + folder.Path("ev") + "\n[RUVO_SERIAL]\nRV001=5\n";
    const std::string badRoot = "EventRootDir=" + folder.Write("file", "x") + "\nBaudRate=7\n";
    const std::string badLog = "ErrorLogPathname=" + folder.Path() + "\\\n";
    const struct {
        const char* name;
        std::string general;
        bool checkOnly;
        EResultCode code;
    } rows[] = {
        {"good", good, true, EResultCode::Success},
        {"an event root that is a file, before the values", badRoot, true, EResultCode::EventRootInvalid},
        {"the log if checked", badLog + "BaudRate=7\n" + good, true, EResultCode::LogFileNotWritable},
        {"and only there", badLog + "BaudRate=7\n" + good, false, EResultCode::BaudRateInvalid},
        {"values last", "BaudRate=7\n" + good, true, EResultCode::BaudRateInvalid},
        {"a path that is too long", "EventRootDir=" + std::string(280, 'x') + "\n", true,
         EResultCode::EventRootInvalid},
    };
    for (const auto& row : rows) {
        CRunContext context;
        const std::string path = folder.Write("site.ini", "[RUVO_GENERAL]\n" + row.general);
        EXPECT_EQ(LoadAndCheck(context, path, row.checkOnly), row.code) << row.name;
        EXPECT_FALSE(folder.Has("ev")) << "the write test leaves nothing behind: " << row.name;
    }
    CRunContext context;
    EXPECT_EQ(LoadAndCheck(context, "", true), EResultCode::IniFileNotOpened);
    EXPECT_EQ(LoadAndCheck(context, folder.Path("missing.ini"), true), EResultCode::IniFileNotOpened);
    EXPECT_EQ(ErrorLogPath(), "");
    folder.Write("machine.ini",
                 "[SOFTWARE\\Halvex\\Norvo Q7 Studio]\nQ7SecurityLogs=" + folder.Path("file") + "\n");
    EXPECT_EQ(LoadAndCheck(context, folder.Write("site.ini", "[RUVO_GENERAL]\n" + good), true),
              EResultCode::RegistryDestinationInvalid);
}

/// Runs of the whole program over one site, whose events and log lie in `ev`.
struct StartUp : testing::Test {
    StartUp() {
        for (const char* name : {"RUVO_STATE_DIR", "RUVO_REGISTRY_USER", "RUVO_REGISTRY_MACHINE"})
            setenv(name, folder.Native(name).c_str(), 1);
    }
    ~StartUp() override {
        ResetErrorLog();
        EXPECT_EQ(g_runtimeUsers, 0);
    }
    /// What it shows, and what it logs.
    std::string Run(const std::vector<std::string>& arguments, std::size_t failingAllocation = 0) {
        g_runtimeStarts = 1;
        server.lines.clear();
        std::filesystem::remove_all(folder.Native("ev"));
        CRuvoApp application;
        std::optional<test::CFailingMemory> memory(failingAllocation);
        application.Run(arguments);
        memory.reset();
        EXPECT_TRUE(failingAllocation != 0 ||
                    (std::filesystem::current_path() == home && server.sink == nullptr));
        std::filesystem::current_path(home);
        return std::exchange(g_messageBoxes, "") + "|" + folder.Read("ev/RUVO_Errors.log");
    }

    const CScratchFolder folder{access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp"}; // disks take their time
    const std::string ini = folder.Write("site.ini", "[RUVO_GENERAL]\nEventRootDir=" + folder.Path("ev") +
                                                         "\n[RUVO_SERIAL]\nRV001=200\n");
    const std::filesystem::path home = std::filesystem::current_path();
    test::CScriptedServer server;
};

TEST_F(StartUp, FromItsFirstStepToItsLast) {
    EXPECT_EQ(Run({ini}), "|");
    EXPECT_TRUE(std::signal(SIGTERM, SIG_DFL) == SIG_DFL) << "a host hears its requests itself";
    ASSERT_GT(server.lines.size(), 2U);
    EXPECT_EQ(server.lines.front(), "OpenPort BSTR(\"COM1\") BSTR(\"9600,E,8,1\")");
    EXPECT_TRUE(server.lines.back() == "ClosePort" && server.sink == nullptr);
    const std::string head = "Ruvo\nVersion Number: " RUVO_VERSION "\n\nINI file: " + ini + "\n\n";
    EXPECT_EQ(Run({"-t", ini}), "test_app|" + head + "Success - No input errors found.\n||");
    server.refuseConnection = true;
    EXPECT_EQ(Run({"-t", ini}), "warning test_app|" + head + "P32LS failed to open.\n||");
    EXPECT_TRUE(server.lines.empty());
    const std::string stamp = "|2021/03/02 14:03:07 ";
    EXPECT_EQ(Run({ini}), stamp + "P32LS failed to open.\r\n");
    const CFileException full(EFileCause::None, 0, "C:\\x");
    for (const bool ofFile : {false, true}) {
        g_onRuntimeStart = [&] { ofFile ? throw full : throw std::runtime_error("no runtime"); };
        EXPECT_EQ(Run({ini}), stamp +
                                  (ofFile ? "Fatal exception occured:" + std::string(full.what())
                                          : "Unhandled exception occured:no runtime") +
                                  "\r\n");
    }
    g_onRuntimeStart = [] { throw 5; };
    EXPECT_EQ(Run({ini}), stamp + "Unhandled exception occured:of an unknown type\r\n");
    g_onRuntimeStart = nullptr;
    for (const auto& [claim, box] :
         {std::pair(EInstanceClaim::MarkerFailed, "error test_app|Failed to create Mutex!|"),
          {EInstanceClaim::WindowClassFailed, "error test_app|Failed to register window class!|"},
          {static_cast<EInstanceClaim>(9), ""}}) {
        g_claim = claim;
        EXPECT_EQ(Run({ini}), box + stamp + "Only one instance can be running at one time.\r\n");
    }
    g_claim = EInstanceClaim::Claimed;
}

TEST_F(StartUp, OnlyAVisitLeavesARecord) {
    g_standardError.clear();
    Run({"-t", ini});
    EXPECT_FALSE(folder.Has("RUVO_STATE_DIR")) << "a check is none";
    const std::string none = folder.Native("none.ini");
    Run({none});
    EXPECT_TRUE(g_standardError.starts_with("ruvo: " + none + ": the INI file cannot be read; no relay is "));
    EXPECT_EQ(g_standardError.find("no record"), std::string::npos) << g_standardError;
    EXPECT_FALSE(folder.Has("RUVO_STATE_DIR")) << "nor is one of which no event root is known";
    Run({ini});
    EXPECT_TRUE(folder.Has("RUVO_STATE_DIR"));
    g_standardError.clear();
}

TEST_F(StartUp, TheRecordSaysHowItEnded) {
    setenv("RUVO_INI_NAME", folder.Native("none.ini").c_str(), 1); // the name of no file
    server.statuses["GetDeviceStatus"] = 255;                      // for the log
    const auto record = [this](const std::string& path) {
        ResetErrorLog();
        const std::string log = Run({path});
        const SVisitLine last = SummariseVisits(folder.Path("ev"), path).last.value_or(SVisitLine());
        EXPECT_EQ(last.logLines, static_cast<std::size_t>(std::ranges::count(log, '\n'))) << log;
        return std::string(RunEndName(last.ended)) + " " + std::to_string(last.result);
    };
    EXPECT_EQ(record(ini), "whole 0");
    folder.Write("bad.ini", "[RUVO_GENERAL]\nBaudRate=7\nEventRootDir=" + folder.Path("ev") + "\n");
    EXPECT_EQ(record(folder.Path("bad.ini")), "not begun 12");
}

TEST_F(StartUp, NoMissingMemoryEndsItWithoutAWord) {
    server.statuses["GetDeviceStatus"] = 255;                    // for the log
    for (std::string* told : {&g_debugOutput, &g_standardError}) // what is told there needs no memory
        told->reserve(std::size_t{1} << 20);
    bool isVisited = false; // although earlier events could not be brought in
    for (const std::string mode : {"", "-t"}) {
        std::size_t total = 0; // known from the first run, in which nothing fails
        for (std::size_t n = 0; n <= total; total = std::max(total, test::CFailingMemory::Count()), ++n) {
            g_debugOutput.clear();
            g_standardError.clear();
            const std::string said = Run({mode, ini}, n);
            EXPECT_NE(said + g_debugOutput, "|") << n;
            isVisited |= said.find("std::bad_alloc\r\n2021/03/02 14:03:07 A problem ") != std::string::npos;
        }
        EXPECT_GT(total, 150U);
    }
    EXPECT_TRUE(isVisited);
}

/// Whether it was kept; it is from here on.
static bool WasReserveKept() {
    const test::CFailingMemory counted(0);
    KeepLogReserve();
    return test::CFailingMemory::Count() == 0;
}

TEST(LogReserve, IsKeptButForTheLineThatNeedsIt) {
    {
        const test::CFailingMemory counted(0);
        ::operator delete[](::operator new[](1, std::nothrow));
    }
    if (test::CFailingMemory::Count() == 0)
        GTEST_SKIP() << "a checker of memory makes such memory itself";
    ReleaseLogReserve();
    EXPECT_FALSE(WasReserveKept());
    ReleaseLogReserve();
    ResolveErrorLogPath(CRunContext(), false);
    EXPECT_TRUE(WasReserveKept());
    int tries = 0;
    WithLogReserve([&tries] {
        if (++tries == 1)
            throw std::bad_alloc();
        EXPECT_FALSE(WasReserveKept());
        ReleaseLogReserve();
    });
    EXPECT_TRUE(tries == 2 && WasReserveKept());
    ResetErrorLog();
}

} // namespace ruvo
