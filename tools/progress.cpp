#include "tools/progress.h"

#include <string>

namespace ruvo {

namespace {

constexpr unsigned kCallsPerLook = 256; // the clock is not read at every record
constexpr std::chrono::milliseconds kStartDelay{1000};
constexpr std::chrono::milliseconds kPause{200};
constexpr std::string_view kClearLine = "\r\x1B[K";
constexpr std::uint64_t kMegabyte = 1'000'000;

} // namespace

CProgress::CProgress(SConsole& console, std::size_t fileCount)
    : m_console(console), m_fileCount(fileCount), m_next(Clock::now() + kStartDelay) {}

CProgress::~CProgress() {
    Clear();
}

void CProgress::Clear() {
    if (m_isShown) {
        m_console.error.Write(kClearLine);
        m_console.error.Flush();
        m_isShown = false;
    }
}

void CProgress::GiveWayToOutput() {
    if (m_console.outIsTerminal && !m_hasGivenWay) {
        Clear();
        m_hasGivenWay = true;
    }
}

void CProgress::Update(std::size_t filesDone, std::uint64_t bytes) {
    if (!m_console.errorIsTerminal || m_hasGivenWay || m_calls++ % kCallsPerLook != 0 ||
        Clock::now() < m_next) {
        return;
    }
    m_next = Clock::now() + kPause;
    m_isShown = true;
    m_console.error.Write(std::string(kClearLine) + std::to_string(filesDone) + " of " +
                          std::to_string(m_fileCount) + " files, " + std::to_string(bytes / kMegabyte) +
                          " MB read");
    m_console.error.Flush();
}

} // namespace ruvo
