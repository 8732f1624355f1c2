#include "sim/server/line_file.h"

#include <cstdint>
#include <span>

namespace ruvo::sim {

bool CLineFile::Open(const std::string& path) {
    return path.empty() || m_file.Open(path, {.read = true, .write = true, .create = true}).Good();
}

void CLineFile::Append(const std::string& line) {
    if (!m_file.IsOpen()) {
        return;
    }
    const std::string text = line + "\n";
    std::uint64_t position = 0;
    std::size_t written = 0;
    // The end is looked up each time: another connection may have written meanwhile.
    if (m_file.Seek(0, ESeekOrigin::End, position).Good()) {
        const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
        // A full disk loses lines, as it would for the real server's own files; the calls go on.
        static_cast<void>(m_file.Write(std::span(bytes, text.size()), written));
    }
}

} // namespace ruvo::sim
