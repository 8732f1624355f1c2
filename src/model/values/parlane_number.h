// Numbers with a fraction: decimal numbers with a unit, and IEEE singles.
#pragma once

#include "model/values/parlane_data.h"
#include "model/values/units.h"

namespace ruvo {

enum class ENumberForm : std::uint8_t {
    Short, ///< 4 bytes: mantissa of 15 bits and sign, exponent, unit
    Long,  ///< 6 bytes: mantissa of 31 bits and sign, exponent, unit
};

/// A decimal number: magnitude x 10^e with a sign and a unit. e is the exponent byte less 126, as a signed
/// byte.
class CParlaneNumber final : public CParlaneData {
public:
    /// Six bytes or more are the long form, fewer the short one.
    explicit CParlaneNumber(std::span<const std::uint8_t> data);
    CParlaneNumber(double value, std::uint8_t unit, ENumberForm form);

    std::uint32_t GetWireBytes(std::span<std::uint8_t> buffer, std::uint32_t& typeCode,
                               std::size_t& size) const override;
    std::size_t GetSize() const override { return m_size; }
    std::unique_ptr<CParlaneData> Clone() const override;
    std::unique_ptr<CParlaneData> CreateMinimum() const override;
    std::unique_ptr<CParlaneData> CreateMaximum() const override;
    std::unique_ptr<CParlaneData> CreateStep() const override;
    double GetFloat() const override { return m_value; }

    double GetValue() const { return m_value; }
    /// Rounds to the form's significant digits (4 or 9) for the wire; GetValue() keeps the value as given. An
    /// exponent beyond the wire's is held at its end; infinities and NaN count as 0.
    void SetValue(double value);
    std::uint8_t GetUnit() const { return m_unit; }
    void SetUnit(std::uint8_t unit) { m_unit = unit; }
    ENumberForm GetForm() const { return m_size == kLongSize ? ENumberForm::Long : ENumberForm::Short; }

private:
    static constexpr std::size_t kShortSize = 2 + 1 + 1;
    static constexpr std::size_t kLongSize = 4 + 1 + 1;

    std::unique_ptr<CParlaneData> MakeLimit(std::uint32_t magnitude, std::uint8_t exponent,
                                            bool negative) const;
    void ValueFromFields();

    double m_value = 0.0;
    std::uint8_t m_unit = 0;
    std::uint32_t m_magnitude = 0;
    std::uint8_t m_exponent = 0;
    bool m_negative = false;
    std::size_t m_size = kShortSize;
};

/// An IEEE 754 single, always 4 bytes.
class CParlaneFloat final : public CParlaneData {
public:
    /// Takes the first four bytes.
    explicit CParlaneFloat(std::span<const std::uint8_t> data);
    explicit CParlaneFloat(float value);

    std::uint32_t GetWireBytes(std::span<std::uint8_t> buffer, std::uint32_t& typeCode,
                               std::size_t& size) const override;
    std::size_t GetSize() const override { return 4; }
    std::unique_ptr<CParlaneData> Clone() const override;
    std::unique_ptr<CParlaneData> CreateMinimum() const override;
    std::unique_ptr<CParlaneData> CreateMaximum() const override;
    std::unique_ptr<CParlaneData> CreateStep() const override;
    double GetFloat() const override { return static_cast<double>(GetValue()); }

    float GetValue() const;
    void SetValue(float value);

private:
    // Bits, not a float: some processors change a signalling NaN when they load it, and it must return
    // unchanged.
    std::uint32_t m_bits = 0;
};

} // namespace ruvo
