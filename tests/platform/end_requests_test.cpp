// What a process hears when it is asked to end, and what the programs that it executes do.
#include "platform/child_process.h"
#include "platform/end_requests.h"

#include <gtest/gtest.h>

#include <csignal>
#include <poll.h>
#include <spawn.h>
#include <string>
#include <thread>

namespace ruvo {
namespace {

using namespace std::chrono_literals;

/// What a wait tells: the name, or a letter.
std::string Heard(IEndRequests& requests, std::chrono::milliseconds most) {
    const char* name = nullptr;
    switch (requests.Wait(most, name)) {
    case IEndRequests::EWake::Request:
        return std::string(name) + " ";
    case IEndRequests::EWake::Timeout:
        return "- ";
    case IEndRequests::EWake::Stopped:
        break;
    }
    return "stopped ";
}

/// What a child process hears of what it asks itself.
std::string HeardByChild(const std::function<std::string(IEndRequests&)>& ask) {
    int ends[2];
    EXPECT_EQ(pipe(ends), 0);
    EXPECT_TRUE(HoldsInChild([&] {
        const auto requests = HearEndRequests();
        const std::string heard = ask(*requests);
        return write(ends[1], heard.data(), heard.size()) > 0;
    }));
    char text[200];
    const ssize_t count = read(ends[0], text, sizeof text);
    close(ends[0]), close(ends[1]);
    return {text, static_cast<std::size_t>(count)};
}

} // namespace

TEST(EndRequests, AreHeardInsteadOfEndingTheProcess) {
    EXPECT_EQ(HeardByChild([](IEndRequests& requests) {
                  std::string heard = Heard(requests, 0ms);
                  for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
                      kill(getpid(), signal);
                      heard += Heard(requests, IEndRequests::kForever);
                  }
                  kill(getpid(), SIGTERM);
                  heard += requests.Skip(1ms) ? "skipped " : "";
                  return heard + Heard(requests, 0ms);
              }),
              "- SIGTERM SIGINT SIGHUP skipped - ");
    EXPECT_EQ(HeardByChild([](IEndRequests& requests) {
                  std::thread stopping([&] { requests.Stop(); });
                  std::string heard = Heard(requests, IEndRequests::kForever);
                  stopping.join();
                  return heard + (requests.Skip(1ms) ? "skipped" : "stopped");
              }),
              "stopped stopped");
}

TEST(EndRequests, OneThatIsIgnoredStaysSo) {
    struct sigaction before = {};
    sigaction(SIGINT, nullptr, &before);
    signal(SIGINT, SIG_IGN);
    EXPECT_EQ(HeardByChild([](IEndRequests& requests) {
                  kill(getpid(), SIGINT);
                  std::string heard = Heard(requests, 0ms);
                  kill(getpid(), SIGTERM);
                  return heard + Heard(requests, 0ms);
              }),
              "- SIGTERM ");
    sigaction(SIGINT, &before, nullptr);
}

TEST(EndRequests, AreHeardThoughTheStarterHasBlockedThem) {
    EXPECT_TRUE(HoldsInChild([] {
        sigset_t blocked;
        sigfillset(&blocked);
        pthread_sigmask(SIG_BLOCK, &blocked, nullptr);
        const auto requests = HearEndRequests();
        kill(getpid(), SIGHUP);
        return Heard(*requests, 0ms) == "SIGHUP ";
    }));
}

TEST(EndRequests, MoreThanCanBeNotedLeaveNoTrace) {
    EXPECT_TRUE(HoldsInChild([] {
        const auto requests = HearEndRequests();
        errno = ENOENT;
        for (int sent = 0; sent < 100'000 && errno == ENOENT; ++sent)
            raise(SIGTERM);
        const bool isKept = errno == ENOENT;
        return isKept && requests->Skip(0ms) && Heard(*requests, 0ms) == "- ";
    }));
}

TEST(EndRequests, ProgramsThatAreSpawnedEndAsUsual) {
    EXPECT_TRUE(HoldsInChild([] {
        const auto requests = HearEndRequests();
        char shell[] = "sh", option[] = "-c", command[] = "exec sleep 60";
        char* words[] = {shell, option, command, nullptr};
        pid_t program = 0;
        posix_spawn(&program, "/bin/sh", nullptr, nullptr, words, environ);
        kill(program, SIGTERM);
        int status = 0;
        waitpid(program, &status, 0);
        const int ended = system("kill -HUP $$; sleep 60");
        return WIFSIGNALED(status) && WTERMSIG(status) == SIGTERM && WIFSIGNALED(ended);
    }));
    EXPECT_EQ(HeardByChild([](IEndRequests& requests) {
                  const int copy = RunInChild([] { return raise(SIGTERM); });
                  return Heard(requests, 0ms) + (copy == -1 ? "ended" : "went on");
              }),
              "- ended")
        << "and what a copy of the process is asked is not heard here";
}

TEST(EndRequests, InterruptNoCallOfTheCode) {
    EXPECT_TRUE(HoldsInChild([] {
        std::unique_ptr<IEndRequests> requests;
        int interrupted = 0;
        std::string heard;
        RunUndisturbed([&] {
            requests = HearEndRequests();
            for (int wait = 0; wait < 20; ++wait) {
                const pid_t asking = fork();
                if (asking == 0)
                    _exit(kill(getppid(), SIGTERM));
                interrupted += poll(nullptr, 0, 20) == -1 ? 1 : 0;
                waitpid(asking, nullptr, 0);
            }
            heard = Heard(*requests, IEndRequests::kForever);
        });
        return heard == "SIGTERM " && interrupted == 0;
    }));
}

TEST(EndRequests, ProgramsThatAreExecutedEndAsUsual) {
    EXPECT_TRUE(HoldsInChild([] {
        const auto requests = HearEndRequests();
        const char* const script = "kill -TERM $$; sleep 60";
        return RunInChild([&] { return execl("/bin/sh", "sh", "-c", script, nullptr); }) == -1;
    }));
    EXPECT_EQ(RunInChild([] {
                  HearEndRequests()->Release();
                  return kill(getpid(), SIGHUP);
              }),
              -1)
        << "the same after nobody could be found to listen";
}

} // namespace ruvo
