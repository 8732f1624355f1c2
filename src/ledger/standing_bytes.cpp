#include "ledger/standing_bytes.h"

#include "dayfile/block_parser.h"

#include <algorithm>

namespace ruvo {

namespace {

constexpr std::uint64_t kSectorSize = 512;

} // namespace

bool CStandingBytes::Compare(std::span<const std::uint8_t> expected) {
    const std::uint64_t left = m_length > m_position ? m_length - m_position : 0;
    const auto count = static_cast<std::size_t>(std::min<std::uint64_t>(left, expected.size()));
    if (!m_isOther && !Read(m_position, count)) {
        return false;
    }
    for (std::size_t i = 0; i < count && !m_isOther; ++i) {
        m_isInZeros = m_isInZeros && (m_position + i) % kSectorSize != 0;
        m_isEqual = m_isEqual && m_bytes[i] == expected[i];
        m_isInZeros = m_isInZeros || m_bytes[i] != expected[i];
        m_isOther = m_isInZeros && m_bytes[i] != 0;
    }
    m_position += expected.size();
    return true;
}

EStanding CStandingBytes::Outcome() {
    if (m_isOther) {
        return EStanding::Other;
    }
    if (m_isEqual) {
        return m_length < m_position ? EStanding::Beginning : EStanding::All;
    }
    if (m_length <= m_position || DoWholeRecordsFollow()) {
        return EStanding::Torn;
    }
    return m_isUnread ? EStanding::Unread : EStanding::Other;
}

bool CStandingBytes::Read(std::uint64_t position, std::size_t count) {
    std::uint64_t reached = 0;
    m_bytes.resize(count);
    bool isRead = m_file.Seek(static_cast<std::int64_t>(position), ESeekOrigin::Start, reached).Good();
    for (std::size_t held = 0, got = 0; isRead && held < count; held += got) {
        isRead = m_file.Read(std::span(m_bytes).subspan(held), got).Good() && got > 0;
    }
    m_isUnread = m_isUnread || !isRead;
    return isRead;
}

bool CStandingBytes::DoWholeRecordsFollow() {
    for (std::uint64_t at = m_position; at < m_length;) {
        const std::uint64_t left = m_length - at;
        if (!Read(at, static_cast<std::size_t>(std::min<std::uint64_t>(left, kMaxRecordImage)))) {
            return false;
        }
        const SParsedRecord parsed = ParseDayFileRecord(m_bytes);
        if (parsed.record == nullptr) {
            return false;
        }
        at += parsed.size;
    }
    return true;
}

} // namespace ruvo
