#include "model/values/parlane_number.h"

#include "model/format/format_digits.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <string>

namespace ruvo {

namespace {

constexpr int kExponentBias = 126;
constexpr std::uint8_t kSignBit = 0x80;
constexpr std::uint32_t kShortMagnitude = 0x7FFF;
constexpr std::uint32_t kLongMagnitude = 0x7FFFFFFF;
constexpr std::uint8_t kLimitExponent = kExponentBias + 18; // the largest SI prefix, "E"

std::uint32_t GreatestMagnitude(ENumberForm form) {
    return form == ENumberForm::Long ? kLongMagnitude : kShortMagnitude;
}

// Powers of ten that a double holds exactly: one product or quotient with them rounds once, correctly.
constexpr std::array kExactPowers{1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                                  1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};

double ScaleByText(std::uint32_t magnitude, int exponent) {
    std::array<char, 24> text;
    const int length =
        std::snprintf(text.data(), text.size(), "%lue%d", static_cast<unsigned long>(magnitude), exponent);
    double value = 0.0;
    std::from_chars(text.data(), text.data() + length, value);
    return value;
}

/// magnitude x 10^exponent, correctly rounded.
double Scale(std::uint32_t magnitude, int exponent) {
    const auto power = static_cast<std::size_t>(std::abs(exponent));
    if (power >= kExactPowers.size()) {
        return ScaleByText(magnitude, exponent);
    }
    return exponent < 0 ? magnitude / kExactPowers[power] : magnitude * kExactPowers[power];
}

} // namespace

CParlaneNumber::CParlaneNumber(std::span<const std::uint8_t> data)
    : CParlaneData(data.size() < kLongSize ? kTypeShortNumber : kTypeLongNumber),
      m_size(data.size() < kLongSize ? kShortSize : kLongSize) {
    const std::size_t mantissaSize = m_size - 2;
    const std::uint32_t mantissa = TakeWord(data, mantissaSize);
    const std::uint32_t tail = data.size() < m_size ? 0 : TakeWord(data.subspan(mantissaSize), 2);
    const std::uint32_t greatest = GreatestMagnitude(GetForm());
    m_magnitude = mantissa & greatest;
    m_negative = mantissa > greatest;
    m_exponent = static_cast<std::uint8_t>(tail);
    m_unit = static_cast<std::uint8_t>(tail >> 8U);
    ValueFromFields();
}

CParlaneNumber::CParlaneNumber(double value, std::uint8_t unit, ENumberForm form)
    : CParlaneData(form == ENumberForm::Long ? kTypeLongNumber : kTypeShortNumber), m_unit(unit),
      m_size(form == ENumberForm::Long ? kLongSize : kShortSize) {
    SetValue(value);
}

void CParlaneNumber::ValueFromFields() {
    const double value = Scale(m_magnitude, static_cast<std::int8_t>(m_exponent - kExponentBias));
    m_value = m_negative ? -value : value;
}

void CParlaneNumber::SetValue(double value) {
    const int digits = GetForm() == ENumberForm::Long ? 9 : 4;
    m_value = std::isfinite(value) ? value : 0.0;
    m_negative = std::signbit(m_value);
    CDecimalDigits decimal(m_value);
    decimal.Round(digits);
    // A full set of digits fills the mantissa, so there is nothing left to normalise, whatever the unit.
    std::string text(decimal.GetDigits());
    text.resize(static_cast<std::size_t>(digits), '0');
    std::from_chars(text.data(), text.data() + text.size(), m_magnitude);
    const int beforePoint = decimal.IsZero() ? 0 : decimal.GetExponent() + 1;
    m_exponent = static_cast<std::uint8_t>(std::clamp(beforePoint - digits, -128, 127) + kExponentBias);
}

std::uint32_t CParlaneNumber::GetWireBytes(std::span<std::uint8_t> buffer, std::uint32_t& typeCode,
                                           std::size_t& size) const {
    std::array<std::uint8_t, kLongSize> bytes{};
    const std::size_t mantissaSize = m_size - 2;
    for (std::size_t i = 0; i < mantissaSize; ++i) {
        bytes[i] = static_cast<std::uint8_t>(m_magnitude >> (8 * i));
    }
    bytes[mantissaSize - 1] |= m_negative ? kSignBit : 0;
    bytes[mantissaSize] = m_exponent;
    bytes[mantissaSize + 1] = m_unit;
    return PutWireBytes(std::span(bytes).first(m_size), buffer, typeCode, size);
}

std::unique_ptr<CParlaneData> CParlaneNumber::Clone() const {
    return std::make_unique<CParlaneNumber>(*this);
}

std::unique_ptr<CParlaneData> CParlaneNumber::MakeLimit(std::uint32_t magnitude, std::uint8_t exponent,
                                                        bool negative) const {
    auto limit = std::make_unique<CParlaneNumber>(*this);
    limit->m_magnitude = magnitude;
    limit->m_exponent = exponent;
    limit->m_negative = negative;
    limit->ValueFromFields();
    return limit;
}

std::unique_ptr<CParlaneData> CParlaneNumber::CreateMinimum() const {
    return MakeLimit(GreatestMagnitude(GetForm()), kLimitExponent, true);
}

std::unique_ptr<CParlaneData> CParlaneNumber::CreateMaximum() const {
    return MakeLimit(GreatestMagnitude(GetForm()), kLimitExponent, false);
}

std::unique_ptr<CParlaneData> CParlaneNumber::CreateStep() const {
    return MakeLimit(0, 0, false);
}

CParlaneFloat::CParlaneFloat(std::span<const std::uint8_t> data)
    : CParlaneData(kTypeFloat), m_bits(TakeWord(data, 4)) {}

CParlaneFloat::CParlaneFloat(float value) : CParlaneData(kTypeFloat) {
    SetValue(value);
}

std::uint32_t CParlaneFloat::GetWireBytes(std::span<std::uint8_t> buffer, std::uint32_t& typeCode,
                                          std::size_t& size) const {
    return PutWord(m_bits, 4, buffer, typeCode, size);
}

std::unique_ptr<CParlaneData> CParlaneFloat::Clone() const {
    return std::make_unique<CParlaneFloat>(*this);
}

std::unique_ptr<CParlaneData> CParlaneFloat::CreateMinimum() const {
    return std::make_unique<CParlaneFloat>(std::numeric_limits<float>::lowest());
}

std::unique_ptr<CParlaneData> CParlaneFloat::CreateMaximum() const {
    return std::make_unique<CParlaneFloat>(std::numeric_limits<float>::max());
}

std::unique_ptr<CParlaneData> CParlaneFloat::CreateStep() const {
    return std::make_unique<CParlaneFloat>(0.0F);
}

float CParlaneFloat::GetValue() const {
    return std::bit_cast<float>(m_bits);
}

void CParlaneFloat::SetValue(float value) {
    m_bits = std::bit_cast<std::uint32_t>(value);
}

} // namespace ruvo
