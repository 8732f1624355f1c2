// A line on the error output that tells how far long work has come.
#pragma once

#include "tools/text_output.h"

#include <chrono>
#include <cstddef>
#include <cstdint>

namespace ruvo {

/// Silent unless a person sees it and nothing else is written to the same terminal, and then only once the
/// work has gone on for a second.
class CProgress {
public:
    CProgress(SConsole& console, std::size_t fileCount);
    ~CProgress();
    CProgress(const CProgress&) = delete;
    CProgress& operator=(const CProgress&) = delete;

    /// To be called often; `bytes` is what was read in all.
    void Tell(std::size_t filesDone, std::uint64_t bytes);

private:
    using Clock = std::chrono::steady_clock;

    CTextOutput& m_error;
    std::size_t m_fileCount;
    bool m_isWanted;
    bool m_isShown = false;
    unsigned m_calls = 0;
    Clock::time_point m_next;
};

} // namespace ruvo
