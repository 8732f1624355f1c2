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
    const double magnitude = std::fabs(value);
    if (!TakeParts(magnitude)) {
        TakeText(magnitude);
    }
    DropTrailingZeros();
}

/// What relays measure fits into two whole numbers, before and behind the point, and their digits need no
/// arithmetic of many words. False for other numbers.
bool CDecimalDigits::TakeParts(double magnitude) {
    constexpr double kWholeLimit = 1e15; // below it, a fraction is not rounded
    constexpr int kFractionBits = 60;    // ten times as much fits into 64 bits
    constexpr std::uint64_t kOne = std::uint64_t{1} << kFractionBits;
    if (magnitude >= kWholeLimit) {
        return false;
    }
    const auto whole = static_cast<std::uint64_t>(magnitude);
    const double scaled = (magnitude - static_cast<double>(whole)) * static_cast<double>(kOne);
    auto fraction = static_cast<std::uint64_t>(scaled);
    if (static_cast<double>(fraction) != scaled) {
        return false; // it has bits below
    }
    char* at = m_digits.data();
    at = whole > 0 ? std::to_chars(at, at + m_digits.size(), whole).ptr : at;
    m_exponent = static_cast<int>(at - m_digits.data()) - 1;
    for (; fraction > 0; fraction %= kOne) {
        fraction *= 10;
        const auto digit = static_cast<char>('0' + fraction / kOne);
        if (at == m_digits.data() && digit == '0') {
            --m_exponent;
        } else {
            *at++ = digit;
        }
    }
    m_count = static_cast<std::size_t>(at - m_digits.data());
    return true;
}

/// The exact value is written once and rounded here: the library's own rounding takes ties to even.
void CDecimalDigits::TakeText(double magnitude) {
    std::array<char, kMaxDigits + 10> text; // point, mark, sign and three digits of the exponent on top
    m_count = std::min(static_cast<std::size_t>(std::max(ExactDigits(magnitude), 2)), kMaxDigits);
    const auto end = std::to_chars(text.data(), text.data() + text.size(), magnitude,
                                   std::chars_format::scientific, static_cast<int>(m_count) - 1);
    const char* digitsEnd = text.data() + 1 + m_count;
    m_digits[0] = text[0];
    std::copy(static_cast<const char*>(text.data()) + 2, digitsEnd, m_digits.begin() + 1);
    const char* exponent = digitsEnd + 1;
    std::from_chars(*exponent == '+' ? exponent + 1 : exponent, end.ptr, m_exponent);
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
