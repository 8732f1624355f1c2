// The commands about one relay: what pipes and people get, and what is never shown.
#include "support/case_table.h"
#include "support/scratch_folder.h"
#include "support/scripted_server.h"
#include "tools/run_tool.h"

#include "app/connection_test.h"
#include "log/error_log.h"

#include <gtest/gtest.h>

#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

namespace ruvo::test {

TEST(PasswordCommand, PipedLines) {
    ForEachCase<3>("tools/password_mistakes.txt", [](auto& words, auto& input, auto& error) {
        const SOutcome outcome = RunWords("password " + words, "@", "", input);
        EXPECT_EQ(outcome.status, error == "never an argument" ? 2 : 1);
        EXPECT_TRUE(Contains(outcome.error, error));
        EXPECT_FALSE(Contains(outcome.out + outcome.error, "SECR"));
    });
    for (const std::string password : {"", "A", "PASSWORD", " a=b\xFC "}) {
        const SOutcome made = RunTool({"password", "encrypt", "--key", "rv003"}, 9, password + "\r\nx\n");
        EXPECT_TRUE(made.out.starts_with("RV003=") && made.out.size() == 29) << made.out;
        for (const std::string& text : {made.out, made.out.substr(6), " rv003 = " + made.out.substr(6)})
            EXPECT_EQ(RunTool({"password", "decrypt", "--key", "RV003"}, 100, text).out, password + "\n");
    }
}

TEST(PasswordCommand, WhatIsTypedIsNotShown) {
    const std::pair<const char*, int> rows[] = {{"SECRET\n", 0}, {"SECRIT\n", 1 << 8}, {"\x03", SIGINT}};
    for (const auto& [second, want] : rows) {
        int terminal = -1, status = -1;
        const pid_t child = forkpty(&terminal, nullptr, nullptr, nullptr);
        if (child == -1) {
            GTEST_SKIP() << "this machine gives no pseudo-terminals";
        }
        if (child == 0) {
            signal(SIGINT, SIG_DFL); // a shell ignores it for what it starts in the background
            _exit(RunOn(std::cout, {"password", "encrypt"}, true));
        }
        std::string seen;
        for (char c = 0; read(terminal, &c, 1) == 1;)
            if (seen += c; seen.ends_with("word: ") || seen.ends_with("again: "))
                dprintf(terminal, "%s", seen.ends_with("word: ") ? "SECRET\n" : second);
        termios mode{};
        EXPECT_TRUE(waitpid(child, &status, 0) == child && status == want) << seen;
        EXPECT_TRUE(tcgetattr(terminal, &mode) == 0 && (mode.c_lflag & ECHO) != 0);
        EXPECT_FALSE(Contains(seen, "SECR"));
        close(terminal);
    }
}

TEST(TestCommand, StatusIsTheCode) {
    const CScratchFolder folder;
    folder.Write("a.ini", "[RUVO_GENERAL]\nEventRootDir=" + folder.Path("e") + "\n[RUVO_SERIAL]\nRV001=5\n");
    for (const auto& [code, probe] : {std::pair(0, 0x111), std::pair(2, 0), std::pair(8, 8)}) {
        CScriptedServer server;
        server.statuses["GetValue 00.DF"] = probe;
        const SOutcome outcome = RunTool({"test", folder.Native(code == 2 ? "b.ini" : "a.ini"), "rv001"});
        EXPECT_EQ(outcome.status, code);
        EXPECT_EQ(outcome.out, std::string(kConnectionTestMeanings[static_cast<std::size_t>(code)]) + "\n");
    }
    CScriptedServer server; // a relay with users: it wants a name too
    server.values = {{0x00DF, "240102"}, {0xBF12, "24029C01"}, {0x00F2, "240101"}, {0xBF03, "240107"}};
    for (const auto& [cell, text] : {std::pair(0x0006, "M1"), {0x9C01, "Notice"}, {0x9C21, "VIEWER"}})
        server.values[static_cast<CellAddress>(cell)] = TextHex(text);
    server.limits = {{0x0002, {"1C0420202020"}}, {0x00E1, {"1C082020202020202020"}}};
    server.onCall = [left = 1](SCall& call) mutable -> std::optional<std::int64_t> {
        return call.name == "ChangeSetting" && left-- > 0 ? std::optional(0x0611) : std::nullopt;
    };
    const SOutcome outcome = RunTool({"test", folder.Native("a.ini"), "rv001"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_TRUE(Contains(outcome.error, "asked for a user name"));
    ResetErrorLog();
}

} // namespace ruvo::test
