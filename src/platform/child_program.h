// A program that this one starts and awaits. Path texts are Windows-form, as in files.h.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace ruvo {

/// Whether the system takes the file for one that this user can start.
bool IsProgram(const std::string& path);

struct SChildProgram {
    std::string path;                     ///< full; no folder is searched
    std::vector<std::string> arguments;   ///< without the program's own name
    std::vector<std::string> environment; ///< all of it, as "NAME=value"
    std::string input;                    ///< what it finds on its standard input
    bool isGroup = false; ///< what it starts in its turn is ended with it; a terminal's keys do not reach it
};

struct SChildEnd {
    std::uint32_t status = 0; ///< 128 and the signal's number, where a signal has ended it
    std::string signal;       ///< its name then
    bool hasTimedOut = false; ///< it was killed from here
};

/// One at a time; it must be awaited once it has started.
class CChildProgram {
public:
    CChildProgram();
    CChildProgram(const CChildProgram&) = delete;
    CChildProgram& operator=(const CChildProgram&) = delete;
    ~CChildProgram();

    /// Why it cannot be started, in the system's words; empty when it runs.
    [[nodiscard]] std::string Start(const SChildProgram& program);
    /// The number that the system knows it by.
    [[nodiscard]] std::uint64_t Number() const;

    /// What is done while it runs.
    struct SWatch {
        static constexpr std::chrono::milliseconds kForever = std::chrono::milliseconds::max();

        /// Gets what it writes to its standard output and standard error, piece by piece.
        std::function<void(std::string_view)> take = {};
        std::chrono::milliseconds every = kForever; ///< how often `look` is called
        std::function<void()> look = {};
        std::chrono::milliseconds most = kForever; ///< when it is killed
    };
    /// Returns when it has ended; what it has started in its turn may still run.
    SChildEnd Await(const SWatch& watch);

    /// Asks it to end: by the signal of that name, or as the system asks a program without a console. From
    /// any thread; without effect before its start and after its end.
    void AskToEnd(const char* request);

private:
    struct SHandle;
    std::unique_ptr<SHandle> m_handle;
};

} // namespace ruvo
