#include "platform/terminal.h"

#include "base/secret.h"
#include "platform/posix/file_failures.h"

#include <array>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/signalfd.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

namespace ruvo {

namespace {

constexpr std::array kSignals{SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGTSTP};

enum class [[nodiscard]] EReading : std::uint8_t{Character, LineEnd, End, Signal};

/// Holds back what would end or stop the process while the terminal is without echo. They take effect when
/// this goes, which must be after the echo is back.
class CHeldSignals {
public:
    CHeldSignals() {
        sigset_t held;
        sigemptyset(&held);
        pthread_sigmask(SIG_BLOCK, nullptr, &m_saved);
        for (const int signal : kSignals) {
            if (sigismember(&m_saved, signal) == 0) { // one that is blocked anyway would wait here for ever
                sigaddset(&held, signal);
            }
        }
        pthread_sigmask(SIG_BLOCK, &held, nullptr);
        m_descriptor = signalfd(-1, &held, SFD_CLOEXEC);
    }
    CHeldSignals(const CHeldSignals&) = delete;
    CHeldSignals& operator=(const CHeldSignals&) = delete;
    ~CHeldSignals() {
        if (m_descriptor != -1) {
            close(m_descriptor);
        }
        pthread_sigmask(SIG_SETMASK, &m_saved, nullptr);
    }

    /// Readable once a signal is held back.
    int Descriptor() const { return m_descriptor; }

private:
    sigset_t m_saved{};
    int m_descriptor = -1;
};

/// The terminal without echo, but for the end of the line.
class CHiddenInput {
public:
    CHiddenInput() {
        termios hidden{};
        m_isHidden = tcgetattr(STDIN_FILENO, &m_saved) == 0;
        hidden = m_saved;
        hidden.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        hidden.c_lflag |= static_cast<tcflag_t>(ECHONL | ICANON);
        m_isHidden = m_isHidden && tcsetattr(STDIN_FILENO, TCSAFLUSH, &hidden) == 0;
    }
    CHiddenInput(const CHiddenInput&) = delete;
    CHiddenInput& operator=(const CHiddenInput&) = delete;
    ~CHiddenInput() {
        if (m_isHidden) {
            tcsetattr(STDIN_FILENO, TCSADRAIN, &m_saved);
        }
    }

    bool IsHidden() const { return m_isHidden; }

private:
    termios m_saved{};
    bool m_isHidden = false;
};

void WritePrompt(std::string_view prompt) {
    std::fwrite(prompt.data(), 1, prompt.size(), stderr);
    std::fflush(stderr);
}

/// Waits for what comes first. A terminal has characters to read only when a whole line is there.
EReading ReadCharacter(const CHeldSignals& signals, char& character) {
    std::array<pollfd, 2> sources{pollfd{STDIN_FILENO, POLLIN, 0}, pollfd{signals.Descriptor(), POLLIN, 0}};
    const int ready = Retry([&] { return poll(sources.data(), sources.size(), -1); });
    if (sources[1].revents != 0) {
        return EReading::Signal;
    }
    if (ready == -1 || read(STDIN_FILENO, &character, 1) != 1) {
        return EReading::End;
    }
    return character == '\n' ? EReading::LineEnd : EReading::Character;
}

EReading ReadOnce(std::string_view prompt, std::string& line) {
    const CHeldSignals signals;
    const CHiddenInput input;
    if (!input.IsHidden()) {
        return EReading::End;
    }
    WritePrompt(prompt);
    EReading reading = EReading::Character;
    while (reading == EReading::Character) {
        char character = '\0';
        reading = ReadCharacter(signals, character);
        if (reading == EReading::Character && line.size() < kLongestHiddenLine) {
            line += character;
        }
        WipeBytes(&character, 1);
    }
    if (reading != EReading::LineEnd) {
        WritePrompt("\n");
        WipeText(line);
    }
    return reading;
}

int DescriptorOf(EStandardStream stream) noexcept {
    constexpr std::array kDescriptors{STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO};
    return kDescriptors[static_cast<std::size_t>(stream)];
}

} // namespace

bool IsTerminal(EStandardStream stream) noexcept {
    return isatty(DescriptorOf(stream)) == 1;
}

// A program that was started with another place for its output has the variable all the same.
bool IsSystemJournal(EStandardStream stream) noexcept {
    const char* const named = std::getenv("JOURNAL_STREAM");
    struct stat status = {};
    unsigned long long device = 0;
    unsigned long long inode = 0;
    return named != nullptr && std::sscanf(named, "%llu:%llu", &device, &inode) == 2 &&
           fstat(DescriptorOf(stream), &status) == 0 && status.st_dev == device && status.st_ino == inode;
}

std::size_t TerminalWidth() noexcept {
    winsize size{};
    return ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 ? size.ws_col : 0;
}

std::optional<std::string> ReadHiddenLine(std::string_view prompt) {
    std::optional<std::string> line(std::in_place);
    line->reserve(kLongestHiddenLine); // growing would leave copies in memory
    EReading reading = EReading::Signal;
    while (reading == EReading::Signal) { // one that the process survives, such as stopping: ask again
        reading = ReadOnce(prompt, *line);
    }
    if (reading == EReading::End) {
        line.reset();
    }
    return line;
}

} // namespace ruvo
