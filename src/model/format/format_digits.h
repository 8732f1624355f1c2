// The exact decimal value of a double, rounded half up to any number of digits without allocating.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace ruvo {

/// A finite double as sign and digits: |x| = d.ddd x 10^exponent. Zero has no digits, exponent 0 and no sign.
class CDecimalDigits {
public:
    explicit CDecimalDigits(double value);

    [[nodiscard]] bool IsNegative() const { return m_negative; }
    [[nodiscard]] bool IsZero() const { return m_count == 0; }
    [[nodiscard]] int GetExponent() const { return m_exponent; }
    /// The digits without trailing zeros; those not given are zeros.
    [[nodiscard]] std::string_view GetDigits() const { return {m_digits.data(), m_count}; }

    /// Keeps the given number of digits; the digit after them decides, 5 and more round up. A carry out of
    /// the first digit leaves a single "1" and raises the exponent by one. A negative count leaves zero.
    void Round(int count);

private:
    /// No double has more significant digits.
    static constexpr std::size_t kMaxDigits = 767;

    bool TakeParts(double magnitude);
    void TakeText(double magnitude);
    void CarryInto(std::size_t position);
    void DropTrailingZeros();

    std::array<char, kMaxDigits> m_digits;
    std::size_t m_count = 0;
    int m_exponent = 0;
    bool m_negative = false;
};

} // namespace ruvo
