// The formatter's output: a borrowed buffer that is never overrun, and the text of one conversion before
// padding.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace ruvo {

/// Flags, width and precision of one conversion. Widths and precisions come from the relay: they are clamped
/// when they are read, so that sums of them cannot overflow.
struct SConversion {
    static constexpr int kMaxCount = 1'000'000;
    static constexpr int kNoPrecision = -1;

    bool leftJustify = false;
    bool plus = false;
    bool blank = false;
    bool sharp = false;
    bool zeroPad = false;
    int width = 0;
    int precision = kNoPrecision;
    char size = 0;   ///< 'h', 'l' or none
    char letter = 0; ///< none when the format ends inside the conversion

    /// What signed conversions show in front of the digits; "+" wins over the blank.
    [[nodiscard]] std::string_view GetSign(bool negative) const;
};

/// Appends to a buffer and drops what lies beyond capacity - 1 characters; the text is always terminated.
class CFormatOutput {
public:
    CFormatOutput(char* buffer, std::size_t capacity);

    void PutChar(char c) { PutText({&c, 1}); }
    void PutText(std::string_view text);
    void Fill(char c, std::size_t count);
    [[nodiscard]] std::size_t GetLength() const { return m_length; }

private:
    char* m_buffer;
    std::size_t m_limit;
    std::size_t m_length = 0;
};

/// The text of one conversion as pieces, borrowed texts and repeated characters, so that the width can be met
/// without building the text anywhere.
class CFieldText {
public:
    void AddText(std::string_view text);
    void AddFill(char c, int count);
    /// The width's padding with zeros goes to this place; without one the padding is blanks outside the text.
    void SetZeroPlace() { m_zeroPlace = m_count; }
    void Write(CFormatOutput& output, const SConversion& conversion) const;

private:
    struct SPiece {
        std::string_view text;
        char fill = 0;
        std::size_t count = 0;
    };
    /// A number is the longest: blank, sign, three pieces of digits on each side of the point, point,
    /// exponent mark, sign and digits, unit.
    static constexpr std::size_t kMaxPieces = 16;

    void Add(const SPiece& piece);
    void WritePieces(CFormatOutput& output, std::size_t from, std::size_t to) const;

    std::array<SPiece, kMaxPieces> m_pieces;
    std::size_t m_count = 0;
    std::size_t m_length = 0;
    std::size_t m_zeroPlace = kMaxPieces;
};

} // namespace ruvo
