#include "model/format/format_output.h"

#include <algorithm>

namespace ruvo {

std::string_view SConversion::GetSign(bool negative) const {
    if (negative) {
        return "-";
    }
    if (plus) {
        return "+";
    }
    return blank ? " " : "";
}

CFormatOutput::CFormatOutput(char* buffer, std::size_t capacity)
    : m_buffer(buffer), m_limit(capacity > 0 ? capacity - 1 : 0) {
    if (capacity > 0) {
        m_buffer[0] = '\0';
    }
}

void CFormatOutput::PutText(std::string_view text) {
    const std::size_t count = std::min(text.size(), m_limit - m_length);
    if (count == 0) {
        return;
    }
    std::copy_n(text.data(), count, m_buffer + m_length);
    m_length += count;
    m_buffer[m_length] = '\0';
}

void CFormatOutput::Fill(char c, std::size_t count) {
    count = std::min(count, m_limit - m_length);
    if (count == 0) {
        return;
    }
    std::fill_n(m_buffer + m_length, count, c);
    m_length += count;
    m_buffer[m_length] = '\0';
}

void CFieldText::Add(const SPiece& piece) {
    if (piece.count == 0 || m_count == kMaxPieces) {
        return;
    }
    m_pieces[m_count++] = piece;
    m_length += piece.count;
}

void CFieldText::AddText(std::string_view text) {
    Add({.text = text, .fill = 0, .count = text.size()});
}

void CFieldText::AddFill(char c, int count) {
    Add({.text = {}, .fill = c, .count = static_cast<std::size_t>(std::max(count, 0))});
}

void CFieldText::WritePieces(CFormatOutput& output, std::size_t from, std::size_t to) const {
    for (std::size_t i = from; i < to; ++i) {
        const SPiece& piece = m_pieces[i];
        if (piece.text.empty()) {
            output.Fill(piece.fill, piece.count);
        } else {
            output.PutText(piece.text);
        }
    }
}

void CFieldText::Write(CFormatOutput& output, const SConversion& conversion) const {
    const auto width = static_cast<std::size_t>(conversion.width);
    const std::size_t padding = width > m_length ? width - m_length : 0;
    const bool zeros = conversion.zeroPad && !conversion.leftJustify && m_zeroPlace <= m_count;
    const std::size_t split = zeros ? m_zeroPlace : 0;
    WritePieces(output, 0, split);
    if (!conversion.leftJustify) {
        output.Fill(zeros ? '0' : ' ', padding);
    }
    WritePieces(output, split, m_count);
    if (conversion.leftJustify) {
        output.Fill(' ', padding);
    }
}

} // namespace ruvo
