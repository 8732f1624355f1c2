// Programs that this one starts and awaits.
#include "platform/child_program.h"
#include "platform/environment.h"

#include <algorithm>
#include <csignal>
#include <fstream>
#include <gtest/gtest.h>
#include <regex>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace ruvo {
namespace {

using std::chrono::milliseconds;

SChildProgram Shell(const std::string& script) {
    return {.path = "C:\\bin\\sh", .arguments = {"-c", script}, .environment = {"A=b c"}, .input = {}};
}

/// What it wrote, and how it ended.
std::string Outcome(const SChildProgram& program, CChildProgram::SWatch watch = {}) {
    CChildProgram child;
    std::string output = child.Start(program);
    if (!output.empty())
        return output;
    watch.take = [&output](std::string_view piece) {
        EXPECT_FALSE(piece.empty());
        output += piece;
    };
    const SChildEnd end = child.Await(watch);
    return output + "|" + std::to_string(end.status) + end.signal + (end.hasTimedOut ? " timeout" : "");
}

TEST(ChildProgram, RunsWithWhatItIsGiven) {
    SChildProgram reader = Shell("cat; echo $A $# $1; echo err >&2; env | grep -c =; exit 3");
    reader.arguments.insert(reader.arguments.end(), {"sh", "x y"});
    reader.input = std::string(200000, 'i');
    EXPECT_EQ(Outcome(reader), reader.input + "b c 1 x y\nerr\n2\n|3"); // the shell adds PWD
    EXPECT_EQ(Outcome(Shell("cat; kill -9 $$")), "|137SIGKILL");
    EXPECT_EQ(Outcome(Shell("printf x; kill -40 $$")), "x|168signal 40");
    EXPECT_EQ(Outcome(Shell("cut -d' ' -f5 /proc/$$/stat")), std::to_string(getpgrp()) + "\n|0");
    reader = Shell("set -- /proc/$$/fd/*; echo $#");
    const std::string open = Outcome(reader);
    reader.input = "x";
    EXPECT_EQ(Outcome(reader), open) << "nothing else is open there, whatever its input";
    const auto before = signal(SIGPIPE, SIG_IGN);
    EXPECT_EQ(Outcome(Shell("kill -PIPE $$")), "|141SIGPIPE") << "what is ignored here is not ignored there";
    signal(SIGPIPE, before);
    EXPECT_EQ(Outcome(Shell("dd if=/dev/zero bs=300000 count=1 2>/dev/null | tr '\\0' x")),
              std::string(300000, 'x') + "|0")
        << "more than a pipe holds";
    SChildProgram missing = Shell("");
    missing.path = "C:\\none\\such";
    EXPECT_EQ(Outcome(missing), "No such file or directory");
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "nobody took note of its end";
    EXPECT_TRUE(IsProgram("C:\\bin\\sh"));
    EXPECT_FALSE(IsProgram("C:\\bin") || IsProgram("C:\\etc\\passwd") || IsProgram(missing.path));
    const auto variables = WholeEnvironment();
    EXPECT_EQ(std::ranges::count(variables, "PATH=" + EnvironmentValue("PATH").value_or("")), 1);
}

TEST(ChildProgram, IsAwaitedButNotWhatItLeavesBehind) {
    const std::string left = Outcome(Shell("sleep 600 & echo $!")); // which has its output open
    EXPECT_TRUE(std::regex_match(left, std::regex("\\d+\n\\|0"))) << left;
    kill(std::stoi(left), SIGKILL);
    SChildProgram group = Shell("sleep 20 & echo $!; wait");
    group.isGroup = true;
    int looks = 0;
    CChildProgram::SWatch watch;
    watch.every = milliseconds(20);
    watch.look = [&looks] { ++looks; };
    watch.most = milliseconds(200);
    const auto begin = std::chrono::steady_clock::now();
    const std::string outcome = Outcome(group, watch);
    EXPECT_LE(looks * watch.every, std::chrono::steady_clock::now() - begin) << "no oftener";
    EXPECT_TRUE(std::regex_match(outcome, std::regex("\\d+\n\\|137SIGKILL timeout"))) << outcome;
    EXPECT_GT(looks, 0);
    const auto runs = [process = "/proc/" + outcome.substr(0, outcome.find('\n')) + "/stat"] {
        std::ifstream stat(process); // of one that has ended and nobody took note of: Z
        std::string word;
        return stat >> word >> word >> word && word != "Z";
    };
    for (int tried = 0; tried < 200 && runs(); ++tried)
        std::this_thread::sleep_for(milliseconds(10));
    EXPECT_FALSE(runs()) << "its group goes with it";
}

TEST(ChildProgram, EndsWhenAsked) {
    CChildProgram child;
    child.AskToEnd("SIGTERM"); // nobody yet
    ASSERT_EQ(child.Start(Shell("trap 'echo hup; exit 5' HUP; echo up; while :; do sleep 0.01; done")), "");
    std::string output;
    const SChildEnd end = child.Await({.take = [&](std::string_view piece) {
        output += piece;
        if (output == "up\n")
            child.AskToEnd("SIGHUP");
    }});
    EXPECT_EQ(output + std::to_string(end.status), "up\nhup\n5");
    child.AskToEnd("SIGTERM"); // nor any more
    EXPECT_EQ(child.Number(), 0U);
}

} // namespace
} // namespace ruvo
