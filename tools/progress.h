// A line on the error output that tells how far long work has come.
#pragma once

#include "tools/text_output.h"

#include <chrono>
#include <cstddef>
#include <cstdint>

namespace ruvo {

/// Silent unless a person sees it, and then only once the work has gone on for a second. It gives way to what
/// is printed on the same terminal.
class CProgress {
public:
    CProgress(SConsole& console, std::size_t fileCount);
    ~CProgress();
    CProgress(const CProgress&) = delete;
    CProgress& operator=(const CProgress&) = delete;

    /// To be called often; `bytes` is what was read in all.
    void Tell(std::size_t filesDone, std::uint64_t bytes);
    /// Takes the line away until the next Tell: something else follows on the error output.
    void Clear();
    /// To be called before something is printed: the end of the progress where output is a terminal too.
    void GiveWayToOutput();

private:
    using Clock = std::chrono::steady_clock;

    SConsole& m_console;
    std::size_t m_fileCount;
    bool m_isShown = false;
    bool m_hasGivenWay = false;
    unsigned m_calls = 0;
    Clock::time_point m_next;
};

} // namespace ruvo
