// Conversions of the values that cross to the comms server. Input: a byte that chooses the kind, and what it
// holds.
#include "fuzz/support/input.h"
#include "fuzz/support/require.h"

#include "link/seam/variant.h"

#include <limits>
#include <optional>

namespace ruvo::fuzz {

namespace {

/// A variant, and the number that it stands for.
struct SSample {
    Variant variant;
    std::optional<std::int64_t> number = std::nullopt;
};

/// A minus sign or none, then digits.
std::optional<std::int64_t> NumberOf(std::string_view text) {
    const bool isNegative = text.starts_with('-');
    text.remove_prefix(isNegative ? 1 : 0);
    if (text.empty() || text.find_first_not_of("0123456789") != std::string_view::npos) {
        return std::nullopt;
    }
    std::int64_t value = 0;
    for (const char digit : text) {
        value = value * 10 + (digit - '0');
        if (value > std::int64_t{1} << 40) {
            return std::nullopt; // no kind has room for it
        }
    }
    return isNegative ? -value : value;
}

Variant::Words TakeWords(CInput& input) {
    Variant::Words words;
    while (!input.IsEmpty()) {
        words.push_back(static_cast<std::int16_t>(input.TakeWord()));
    }
    return words;
}

SSample TakeSample(CInput& input) {
    switch (input.TakeByte() % 10) {
    case 0:
        return {Variant(), 0};
    case 1: {
        const std::uint8_t number = input.TakeByte();
        return {Variant::FromUI1(number), number};
    }
    case 2: {
        const auto number = static_cast<std::int16_t>(input.TakeWord());
        return {Variant::FromI2(number), number};
    }
    case 3: {
        const auto number = static_cast<std::int32_t>(input.TakeLong());
        return {Variant::FromI4(number), number};
    }
    case 4:
        return {Variant::FromBytes({input.Rest().begin(), input.Rest().end()})};
    case 5:
        return {Variant::FromWords(TakeWords(input))};
    case 6: {
        Variant::List list;
        while (!input.IsEmpty() && list.size() < 4) {
            list.push_back(TakeSample(input).variant);
        }
        return {Variant::FromList(std::move(list))};
    }
    case 7:
        return {Variant::Other()};
    default: {
        const std::string text(input.Rest().begin(), input.Rest().end());
        input.TakeBytes(text.size());
        return {Variant::FromText(text), NumberOf(text)};
    }
    }
}

/// What fits is converted; what does not fit, or is no number, leaves the result as it was.
template <class TNumber>
void CheckConversion(const SSample& sample, bool (Variant::*convert)(TNumber&) const) {
    constexpr TNumber kBefore = 77;
    using Limits = std::numeric_limits<TNumber>;
    const bool fits = sample.number && *sample.number >= Limits::min() && *sample.number <= Limits::max();
    TNumber value = kBefore;
    const bool converted = (sample.variant.*convert)(value);
    Require(converted == fits, "a number is converted where it fits, and nothing else is");
    Require(value == (fits ? static_cast<TNumber>(*sample.number) : kBefore), "it is that number");
}

void CheckKinds(const Variant& variant) {
    const int held = (variant.AsText() != nullptr ? 1 : 0) + (variant.AsBytes() != nullptr ? 1 : 0) +
                     (variant.AsWords() != nullptr ? 1 : 0) + (variant.AsList() != nullptr ? 1 : 0) +
                     (variant.IsEmpty() ? 1 : 0);
    Require(held <= 1, "a variant is of one kind");
}

void CheckCopies(const Variant& variant) {
    Variant copy = variant;
    Require(copy == variant, "a copy is equal");
    copy.WipeBytes();
    if (const auto* const bytes = variant.AsBytes()) {
        Require(*copy.AsBytes() == Variant::Bytes(bytes->size()), "wiped bytes are zeros");
    } else {
        Require(copy == variant, "nothing but bytes is wiped");
    }
    copy = variant;
    const Variant moved = std::move(copy);
    Require(moved == variant, "what is moved is equal");
}

void Check(CInput input) {
    const SSample sample = TakeSample(input);
    CheckConversion(sample, &Variant::ToUI1);
    CheckConversion(sample, &Variant::ToI2);
    CheckConversion(sample, &Variant::ToI4);
    CheckKinds(sample.variant);
    CheckCopies(sample.variant);
}

} // namespace

} // namespace ruvo::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    ruvo::fuzz::Check(ruvo::fuzz::CInput({data, size}));
    return 0;
}
