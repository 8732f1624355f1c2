// Where the formatter takes its arguments from: relay data values, or native ones.
#pragma once

#include "model/values/parlane_data.h"
#include "model/values/parlane_time.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <variant>

namespace ruvo {

/// A decimal number with its unit code.
struct SFormatNumber {
    double value = 0.0;
    std::uint8_t unit = 0;
};

/// A text, or instead of it a number of "*".
struct SFormatText {
    std::string_view text;
    std::size_t stars = 0;
};

/// Each take consumes one argument. A missing one, or one that the take cannot use, yields the neutral
/// result.
class IFormatArguments {
public:
    virtual ~IFormatArguments() = default;
    virtual std::int32_t TakeSigned() = 0;
    virtual std::uint32_t TakeUnsigned() = 0;
    virtual double TakeFloat() = 0;
    /// False for no number.
    virtual bool TakeNumber(SFormatNumber& number) = 0;
    virtual SFormatText TakeText() = 0;
    virtual CParlaneIEC870 TakeTime() = 0;

protected:
    IFormatArguments() = default;
    IFormatArguments(const IFormatArguments&) = default;
    IFormatArguments& operator=(const IFormatArguments&) = default;
};

/// Data values in order. Every neutral result clears the success flag.
class CValueArguments final : public IFormatArguments {
public:
    CValueArguments(std::span<const CParlaneData* const> values, bool& success)
        : m_values(values), m_success(&success) {}
    CValueArguments(const CParlaneDataList& values, bool& success) : m_list(values), m_success(&success) {}

    std::int32_t TakeSigned() override;
    std::uint32_t TakeUnsigned() override;
    double TakeFloat() override;
    bool TakeNumber(SFormatNumber& number) override;
    SFormatText TakeText() override;
    CParlaneIEC870 TakeTime() override;

private:
    const CParlaneData* Take();
    template <class TValue>
    const TValue* TakeAs();

    std::span<const CParlaneData* const> m_values;
    std::span<const std::unique_ptr<CParlaneData>> m_list;
    bool* m_success;
};

/// One native argument: an integer for d, i, u, x, b, c and "*", a double for e and f, a number for k, a text
/// for s (a null pointer: "(null)"), a time stamp for t.
using CNativeArgument =
    std::variant<std::int32_t, std::uint32_t, double, SFormatNumber, std::string_view, CParlaneIEC870>;

class CNativeArguments final : public IFormatArguments {
public:
    explicit CNativeArguments(std::span<const CNativeArgument> arguments) : m_rest(arguments) {}

    std::int32_t TakeSigned() override;
    std::uint32_t TakeUnsigned() override;
    double TakeFloat() override;
    bool TakeNumber(SFormatNumber& number) override;
    SFormatText TakeText() override;
    CParlaneIEC870 TakeTime() override;

private:
    template <class TArgument>
    const TArgument* TakeAs();

    std::span<const CNativeArgument> m_rest;
};

} // namespace ruvo
