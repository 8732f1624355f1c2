#include "tools/archive/archive_texts.h"

#include <utility>

namespace ruvo {

namespace {

/// Shorter ones take no more room than a number does.
constexpr std::size_t kShortest = 4;
/// More of them, or longer ones, would cost each run time and memory.
constexpr std::size_t kMostTexts = 100'000;
constexpr std::size_t kMostBytes = std::size_t{16} * 1024 * 1024;

} // namespace

CArchiveTexts::CArchiveTexts(CDatabase& database)
    : m_database(database), m_put(database, "INSERT INTO texts (text) VALUES (?)") {
    CStatement rows(database, "SELECT id, text FROM texts ORDER BY id");
    while (rows.Step()) {
        if (std::string text = rows.TextAt(1); HasRoomFor(text)) {
            Remember(std::move(text), rows.NumberAt(0));
        }
    }
}

std::optional<std::int64_t> CArchiveTexts::NumberOf(const std::string& text) {
    if (text.size() < kShortest) {
        return std::nullopt;
    }
    if (const auto found = m_numbers.find(text); found != m_numbers.end()) {
        return found->second;
    }
    if (!HasRoomFor(text) || !IsMetAgain(text)) {
        return std::nullopt;
    }
    m_put.Bind(text).Step();
    m_put.Rewind();
    const std::int64_t number = m_database.LastId();
    Remember(text, number);
    return number;
}

bool CArchiveTexts::IsMetAgain(const std::string& text) {
    const std::size_t hash = std::hash<std::string_view>()(text);
    return std::exchange((*m_met)[hash % kSlots], hash) == hash;
}

bool CArchiveTexts::HasRoomFor(const std::string& text) const {
    return m_numbers.size() < kMostTexts && m_bytes + text.size() <= kMostBytes;
}

void CArchiveTexts::Remember(std::string text, std::int64_t number) {
    m_bytes += text.size();
    m_numbers.emplace(std::move(text), number);
}

} // namespace ruvo
