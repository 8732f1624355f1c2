#include "platform/child_program.h"

#include "platform/posix/end_signals.h"
#include "platform/posix/file_failures.h"
#include "platform/posix/native_path.h"
#include "platform/posix/place.h"
#include "platform/posix/program_words.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstring>
#include <fcntl.h>
#include <mutex>
#include <optional>
#include <poll.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

namespace ruvo {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

std::string TextOf(int code) {
    return std::generic_category().message(code);
}

struct SPipe {
    CDescriptor out; ///< to read from
    CDescriptor in;

    bool Open() {
        std::array<int, 2> ends{};
        if (pipe2(ends.data(), O_CLOEXEC) != 0) {
            return false;
        }
        out = CDescriptor(ends[0]);
        in = CDescriptor(ends[1]);
        return true;
    }
};

/// A file in memory: unlike a pipe it takes all of it at once, whether it is read or not.
CDescriptor OpenInput(const std::string& input) {
    if (input.empty()) {
        return CDescriptor(open("/dev/null", O_RDONLY | O_CLOEXEC));
    }
    CDescriptor file(memfd_create("input", MFD_CLOEXEC));
    std::size_t count = 0;
    const bool isWhole = WriteAll(file.Get(), input.data(), input.size(), count);
    return isWhole && lseek(file.Get(), 0, SEEK_SET) == 0 ? std::move(file) : CDescriptor();
}

/// What the new process needs until it is the program; after the fork nothing may be made.
struct SExecution {
    std::string path;
    std::vector<std::string> words;
    std::vector<std::string> variables;
    std::vector<char*> argv;
    std::vector<char*> envp;
    CDescriptor input;
    SPipe output;
    SPipe failure; ///< the reason, should it not become the program
    bool isGroup = false;

    [[noreturn]] void BecomeProgram() {
        if (isGroup) {
            setpgid(0, 0);
        }
        signal(SIGPIPE, SIG_DFL);
        if (dup2(input.Get(), STDIN_FILENO) != -1 && dup2(output.in.Get(), STDOUT_FILENO) != -1 &&
            dup2(output.in.Get(), STDERR_FILENO) != -1) {
            execve(path.c_str(), argv.data(), envp.data());
        }
        const int code = errno;
        static_cast<void>(!write(failure.in.Get(), &code, sizeof code));
        _exit(127);
    }
};

int TimeoutOf(milliseconds rest) {
    return static_cast<int>(std::clamp(rest, milliseconds(0), milliseconds(INT_MAX)).count());
}

/// Time left until something that is due; it may be never.
milliseconds RestUntil(const std::optional<Clock::time_point>& due) {
    return due ? std::chrono::ceil<milliseconds>(*due - Clock::now()) : milliseconds(INT_MAX);
}

std::optional<Clock::time_point> After(milliseconds time) {
    return time == CChildProgram::SWatch::kForever ? std::nullopt : std::optional(Clock::now() + time);
}

std::string NameOf(int signal) {
    const char* const name = sigabbrev_np(signal);
    return name == nullptr ? "signal " + std::to_string(signal) : "SIG" + std::string(name);
}

} // namespace

struct CChildProgram::SHandle {
    pid_t process = 0; ///< 0 before its start and after its end
    bool isGroup = false;
    CDescriptor output;
    CDescriptor ended; ///< readable once it has ended; not open where the system has no such thing
    std::mutex mutex;  ///< of `process`: its number may be another's once its end is taken note of

    void Kill(int signal) {
        const std::lock_guard lock(mutex);
        if (process != 0) {
            kill(isGroup ? -process : process, signal);
        }
    }
    [[nodiscard]] bool HasEnded() const {
        siginfo_t info{};
        return waitid(P_PID, static_cast<id_t>(process), &info, WEXITED | WNOHANG | WNOWAIT) != 0 ||
               info.si_pid != 0;
    }
    void TakeOutput(const SWatch& watch) {
        std::array<char, 4096> piece{};
        const ssize_t count = read(output.Get(), piece.data(), piece.size());
        if (count <= 0) { // nothing more comes
            output = CDescriptor();
        } else if (watch.take) {
            watch.take({piece.data(), static_cast<std::size_t>(count)});
        }
    }
    /// What it has written before its end. Others may have the pipe open for as long as they like.
    void TakeRest(const SWatch& watch) {
        constexpr int kMostPieces = 1024;
        pollfd source{output.Get(), POLLIN, 0};
        for (int piece = 0; piece < kMostPieces && output.IsOpen() && poll(&source, 1, 0) > 0; ++piece) {
            TakeOutput(watch);
        }
    }
    void WaitForMore(const SWatch& watch, milliseconds most) {
        constexpr milliseconds kPause{50}; // where nothing tells of its end
        // A closed one (-1) is passed over.
        std::array sources{pollfd{output.Get(), POLLIN, 0}, pollfd{ended.Get(), POLLIN, 0}};
        poll(sources.data(), sources.size(), TimeoutOf(ended.IsOpen() ? most : std::min(most, kPause)));
        if (sources[0].revents != 0) {
            TakeOutput(watch);
        }
    }
    SChildEnd TakeEnd() {
        const std::lock_guard lock(mutex);
        int status = 0;
        Retry([&] { return waitpid(process, &status, 0); });
        process = 0;
        ended = CDescriptor();
        output = CDescriptor();
        constexpr std::uint32_t kBySignal = 128;
        return WIFSIGNALED(status) ? SChildEnd{kBySignal + static_cast<std::uint32_t>(WTERMSIG(status)),
                                               NameOf(WTERMSIG(status))}
                                   : SChildEnd{static_cast<std::uint32_t>(WEXITSTATUS(status)), {}};
    }
};

bool IsProgram(const std::string& path) {
    const auto native = ToNativePath(path);
    struct stat status = {};
    return native && stat(native->c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
           access(native->c_str(), X_OK) == 0;
}

CChildProgram::CChildProgram() : m_handle(std::make_unique<SHandle>()) {}

CChildProgram::~CChildProgram() = default;

std::string CChildProgram::Start(const SChildProgram& program) {
    SExecution execution;
    execution.path = ToNativePath(program.path).value_or("");
    execution.words = program.arguments;
    execution.words.insert(execution.words.begin(), execution.path);
    execution.variables = program.environment;
    execution.argv = PointersTo(execution.words);
    execution.envp = PointersTo(execution.variables);
    execution.isGroup = program.isGroup;
    execution.input = OpenInput(program.input);
    if (!execution.input.IsOpen() || !execution.output.Open() || !execution.failure.Open()) {
        return TextOf(errno);
    }
    const pid_t process = fork();
    if (process == 0) {
        execution.BecomeProgram();
    }
    if (process == -1) {
        return TextOf(errno);
    }
    execution.failure.in = CDescriptor();
    if (int code = 0; read(execution.failure.out.Get(), &code, sizeof code) == sizeof code) {
        waitpid(process, nullptr, 0);
        return TextOf(code);
    }
    const std::lock_guard lock(m_handle->mutex);
    m_handle->process = process;
    m_handle->isGroup = program.isGroup;
    m_handle->output = std::move(execution.output.out);
    m_handle->ended = CDescriptor(static_cast<int>(syscall(SYS_pidfd_open, process, 0)));
    return {};
}

std::uint64_t CChildProgram::Number() const {
    return static_cast<std::uint64_t>(m_handle->process);
}

SChildEnd CChildProgram::Await(const SWatch& watch) {
    const auto killed = After(watch.most);
    auto looked = After(watch.every);
    bool hasTimedOut = false;
    while (!m_handle->HasEnded()) {
        m_handle->WaitForMore(watch, std::min(RestUntil(looked), RestUntil(hasTimedOut ? looked : killed)));
        if (looked && Clock::now() >= *looked) {
            watch.look();
            looked = After(watch.every);
        }
        if (!hasTimedOut && killed && Clock::now() >= *killed) {
            hasTimedOut = true;
            m_handle->Kill(SIGKILL);
        }
    }
    m_handle->TakeRest(watch);
    SChildEnd end = m_handle->TakeEnd();
    end.hasTimedOut = hasTimedOut;
    return end;
}

void CChildProgram::AskToEnd(const char* request) {
    for (const SSignalRow& row : kEndSignals) {
        if (row.name == std::string_view(request)) {
            m_handle->Kill(row.number);
        }
    }
}

} // namespace ruvo
