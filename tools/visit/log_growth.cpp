#include "tools/visit/log_growth.h"

#include "platform/files.h"

#include <array>
#include <regex>
#include <utility>

namespace ruvo {

namespace {

std::uint64_t LengthOf(const std::string& path) {
    CFile file;
    std::uint64_t length = 0;
    const bool isKnown = !path.empty() && GetPathKind(path) == EPathKind::File &&
                         file.Open(path, {.read = true}).Good() && file.GetLength(length).Good();
    return isKnown ? length : 0;
}

} // namespace

CLogGrowth::CLogGrowth(std::string path) : m_path(std::move(path)), m_length(LengthOf(m_path)) {}

std::string CLogGrowth::Added() const {
    const std::uint64_t length = LengthOf(m_path);
    const std::uint64_t from = length < m_length ? 0 : m_length;
    std::string added;
    CFile file;
    std::uint64_t position = 0;
    if (length == from || !file.Open(m_path, {.read = true}).Good() ||
        !file.Seek(static_cast<std::int64_t>(from), ESeekOrigin::Start, position).Good()) {
        return added;
    }
    std::array<std::uint8_t, 65536> piece{};
    std::size_t count = 0;
    while (file.Read(piece, count).Good() && count > 0) {
        added.append(reinterpret_cast<const char*>(piece.data()), count);
    }
    return added;
}

bool TellOfRequestedEnd(const std::string& lines) {
    static const std::regex line("(^|\n)[0-9/]+ [0-9:]+ Run ended by ");
    return std::regex_search(lines, line);
}

} // namespace ruvo
