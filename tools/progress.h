// A progress line on standard error.
#pragma once

#include "tools/text_output.h"

#include <chrono>
#include <cstddef>
#include <cstdint>

namespace ruvo {

/// Shown only on a terminal, and only after a second. It ends when output is printed on the same terminal.
class CProgress {
public:
    CProgress(SConsole& console, std::size_t fileCount);
    ~CProgress();
    CProgress(const CProgress&) = delete;
    CProgress& operator=(const CProgress&) = delete;

    /// Call it often; `bytes` is the total read so far.
    void Update(std::size_t filesDone, std::uint64_t bytes);
    /// Clears the line until the next Update, before other text on standard error.
    void Clear();
    /// Call it before printing: ends the progress line if output goes to a terminal too.
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
