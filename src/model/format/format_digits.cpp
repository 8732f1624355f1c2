#include "model/format/format_digits.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>

namespace ruvo {
namespace {

/// Enough significant digits for the exact decimal value of a positive double, and two more at most.
int ExactDigits(double value) {
    int exponent = 0;
    const double fraction = std::frexp(value, &exponent); // 0.5 to 1
    constexpr int kMantissaBits = std::numeric_limits<double>::digits;
    const auto mantissa = static_cast<std::uint64_t>(std::ldexp(fraction, kMantissaBits));
    // The value is odd x 2^lowestBit: below the point it has as many decimals as it has bits there, and of
    // its places above the first non-zero one none count.
    const int lowestBit = exponent - kMantissaBits + std::countr_zero(mantissa);
    constexpr double kLog2 = 0.30103;
    return std::max(-lowestBit, 0) + static_cast<int>(std::floor((exponent - 1) * kLog2)) + 2;
}

} // namespace

CDecimalDigits::CDecimalDigits(double value) : m_negative(value < 0) {
    if (value == 0) {
        return;
    }
    // The exact value is written once and rounded here: the library's own rounding takes ties to even. Point,
    // mark, sign and three digits of the exponent come on top of the digits.
    std::array<char, kMaxDigits + 10> text;
    const double magnitude = std::fabs(value);
    m_count = std::min(static_cast<std::size_t>(std::max(ExactDigits(magnitude), 2)), kMaxDigits);
    const auto end = std::to_chars(text.data(), text.data() + text.size(), magnitude,
                                   std::chars_format::scientific, static_cast<int>(m_count) - 1);
    const char* digitsEnd = text.data() + 1 + m_count;
    m_digits[0] = text[0];
    std::copy(static_cast<const char*>(text.data()) + 2, digitsEnd, m_digits.begin() + 1);
    const char* exponent = digitsEnd + 1;
    std::from_chars(*exponent == '+' ? exponent + 1 : exponent, end.ptr, m_exponent);
    DropTrailingZeros();
}

void CDecimalDigits::DropTrailingZeros() {
    while (m_count > 0 && m_digits[m_count - 1] == '0') {
        --m_count;
    }
    if (m_count == 0) {
        m_exponent = 0;
    }
}

void CDecimalDigits::CarryInto(std::size_t position) {
    while (position > 0 && m_digits[position - 1] == '9') {
        --position;
    }
    if (position == 0) {
        m_digits[0] = '1';
        m_count = 1;
        ++m_exponent;
        return;
    }
    ++m_digits[position - 1];
    m_count = position;
}

void CDecimalDigits::Round(int count) {
    if (count >= static_cast<int>(m_count)) {
        return;
    }
    const auto kept = static_cast<std::size_t>(std::max(count, 0));
    if (count >= 0 && m_digits[kept] >= '5') {
        CarryInto(kept);
        return;
    }
    m_count = kept;
    DropTrailingZeros();
}

} // namespace ruvo
