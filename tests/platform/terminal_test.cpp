// A line that is typed at a terminal, and not shown.
#include "platform/terminal.h"

#include <gtest/gtest.h>

#include <array>
#include <csignal>
#include <pty.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

namespace ruvo {

/// What can be read from there; up to an end of it, or until it holds the text.
std::string ReadUntil(int descriptor, const std::string& text) {
    std::string all;
    std::array<char, 256> part{};
    while (text.empty() || all.find(text) == std::string::npos) {
        const ssize_t count = read(descriptor, part.data(), part.size());
        if (count <= 0)
            break;
        all.append(part.data(), static_cast<std::size_t>(count));
    }
    return all;
}

TEST(ReadHiddenLine, ShowsNothingAndLeavesTheTerminalAsItWas) {
    const std::string longest(kLongestHiddenLine, 'x');
    // What is typed and what is read, the signal that comes of it, and whether the reader has blocked that.
    const std::tuple<std::string, std::string, int, bool> rows[] = {
        {"secret\n", "=secret", 0, false},          {"\n", "=", 0, false},
        {"secretx\x7F\n", "=secret", 0, false}, // with its last character taken back
        {longest + "y\n", "=" + longest, 0, false}, {"\x04", "none", 0, false}, // the end of the input
        {"secret\x04\x04", "none", 0, false},       {"secret\x03", "", SIGINT, false},
        {"x\x03secret\n", "=secret", 0, true}, // what was typed before is gone
    };
    for (const auto& [typed, want, caught, isBlocked] : rows) {
        std::array<int, 2> answer{};
        ASSERT_EQ(pipe(answer.data()), 0);
        int terminal = -1;
        const pid_t child = forkpty(&terminal, nullptr, nullptr, nullptr);
        if (child == 0) {
            sigset_t blocked;
            sigemptyset(&blocked);
            sigaddset(&blocked, isBlocked ? SIGINT : SIGUSR1);
            sigprocmask(SIG_SETMASK, &blocked, nullptr);
            const int free = dup(STDIN_FILENO);
            close(free);
            const auto line = ReadHiddenLine("Password: ");
            const std::string text = dup(STDIN_FILENO) != free ? "left open" : line ? "=" + *line : "none";
            _exit(write(answer[1], text.data(), text.size()) == -1 ? 1 : 0);
        }
        ASSERT_GT(child, 0);
        close(answer[1]);
        std::string shown = ReadUntil(terminal, "Password: ");
        EXPECT_NE(write(terminal, typed.data(), typed.size()), -1);
        EXPECT_EQ(ReadUntil(answer[0], ""), want) << typed;
        shown += ReadUntil(terminal, "\n");
        EXPECT_TRUE(shown.find("secret") == std::string::npos && shown.ends_with("\n")) << shown;
        int status = 0;
        waitpid(child, &status, 0);
        EXPECT_EQ(WIFSIGNALED(status) ? WTERMSIG(status) : 0, caught) << typed;
        termios after{};
        EXPECT_EQ(tcgetattr(terminal, &after), 0);
        EXPECT_NE(after.c_lflag & ECHO, 0U) << typed;
        close(terminal);
        close(answer[0]);
    }
}

} // namespace ruvo
