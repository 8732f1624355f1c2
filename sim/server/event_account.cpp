#include "sim/server/event_account.h"

#include <chrono>
#include <span>
#include <string_view>
#include <thread>
#include <vector>

namespace ruvo::sim {
namespace {

/// The relay of a line "NAME;NUMBER;"; empty when it is none, such as one that a crash cut short.
std::string_view RelayOf(std::string_view line) {
    if (line.size() < 3 || line.back() != ';') {
        return {};
    }
    const std::size_t end = line.rfind(';', line.size() - 2);
    return line.substr(0, end == std::string_view::npos ? 0 : end);
}

std::span<const std::uint8_t> BytesOf(const std::string& text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

} // namespace

bool CEventAccount::Open(const std::string& path) {
    m_path = path;
    const bool isOpened =
        path.empty() || m_file.Open(path, {.read = true, .write = true, .create = true}).Good();
    End();
    return isOpened;
}

bool CEventAccount::Lock() {
    constexpr std::chrono::milliseconds kPause(1);
    constexpr int kMostPauses = 10000;
    if (!m_file.Open(m_path, {.read = true, .write = true, .create = true}).Good()) {
        return false;
    }
    EFileLock lock = m_file.TryLock();
    for (int pause = 0; pause < kMostPauses && lock == EFileLock::HeldByAnother; ++pause) {
        std::this_thread::sleep_for(kPause);
        lock = m_file.TryLock();
    }
    return lock != EFileLock::HeldByAnother;
}

std::optional<std::size_t> CEventAccount::Begin(const std::string& relay) {
    if (!Lock() || !ReadOn()) {
        End();
        return std::nullopt;
    }
    return m_counts[relay];
}

/// Reads what others have added since the last look.
bool CEventAccount::ReadOn() {
    if (!m_file.GetLength(m_length).Good()) {
        return false;
    }
    if (m_length < m_readTo) { // somebody has started it over
        m_readTo = 0;
        m_counts.clear();
    }
    std::vector<std::uint8_t> bytes(static_cast<std::size_t>(m_length - m_readTo));
    std::uint64_t position = 0;
    std::size_t held = 0;
    if (!m_file.Seek(static_cast<std::int64_t>(m_readTo), ESeekOrigin::Start, position).Good()) {
        return false;
    }
    for (std::size_t got = 1; got > 0 && held < bytes.size(); held += got) {
        if (!m_file.Read(std::span(bytes).subspan(held), got).Good()) {
            return false;
        }
    }
    std::string_view rest(reinterpret_cast<const char*>(bytes.data()), held);
    for (std::size_t end = rest.find('\n'); end != std::string_view::npos; end = rest.find('\n')) {
        ++m_counts[std::string(RelayOf(rest.substr(0, end)))];
        rest.remove_prefix(end + 1);
        m_readTo += end + 1;
    }
    return true;
}

bool CEventAccount::Add(const std::string& relay) {
    const std::string line = (m_readTo < m_length ? "\n" : "") + // closes the line that was cut short
                             relay + ";" + std::to_string(m_counts[relay] + 1) + ";\n";
    std::uint64_t position = 0;
    std::size_t written = 0;
    if (!m_file.Seek(static_cast<std::int64_t>(m_length), ESeekOrigin::Start, position).Good()) {
        return false;
    }
    if (!m_file.Write(BytesOf(line), written).Good()) {
        static_cast<void>(m_file.SetLength(m_length));
        return false;
    }
    m_length = m_readTo = m_length + line.size();
    ++m_counts[relay];
    return true;
}

void CEventAccount::End() {
    static_cast<void>(m_file.Close());
}

} // namespace ruvo::sim
