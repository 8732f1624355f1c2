#include "link/seam/variant.h"

#include "base/secret.h"

#include <charconv>
#include <limits>

namespace ruvo {

namespace {

template <class Number>
bool Fit(std::int64_t wide, Number& value) {
    if (wide < std::numeric_limits<Number>::min() || wide > std::numeric_limits<Number>::max()) {
        return false;
    }
    value = static_cast<Number>(wide);
    return true;
}

bool ParseNumber(const std::string& text, std::int64_t& value) {
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    return error == std::errc() && stop == end;
}

} // namespace

/// Not by the holder's own copy: with g++ 12 one that fails for want of memory leaves a holder that holds
/// nothing, which its destructor does not expect. Here what fails has not touched the holder yet.
Variant::Variant(const Variant& other) {
    const auto take = [this](const auto& held) {
        auto copy(held);
        m_value.template emplace<decltype(copy)>(std::move(copy));
    };
    std::visit(take, other.m_value);
}

bool Variant::ToNumber(std::int64_t& value) const {
    struct SToNumber {
        std::int64_t& value;
        bool operator()(std::monostate) const { return Set(0); }
        bool operator()(std::uint8_t number) const { return Set(number); }
        bool operator()(std::int16_t number) const { return Set(number); }
        bool operator()(std::int32_t number) const { return Set(number); }
        bool operator()(const std::string& text) const { return ParseNumber(text, value); }
        bool operator()(const Bytes&) const { return false; }
        bool operator()(const Words&) const { return false; }
        bool operator()(const List&) const { return false; }
        bool operator()(SOther) const { return false; }
        bool Set(std::int64_t number) const {
            value = number;
            return true;
        }
    };
    return std::visit(SToNumber{value}, m_value);
}

bool Variant::ToUI1(std::uint8_t& value) const {
    std::int64_t wide = 0;
    return ToNumber(wide) && Fit(wide, value);
}

bool Variant::ToI2(std::int16_t& value) const {
    std::int64_t wide = 0;
    return ToNumber(wide) && Fit(wide, value);
}

bool Variant::ToI4(std::int32_t& value) const {
    std::int64_t wide = 0;
    return ToNumber(wide) && Fit(wide, value);
}

void Variant::WipeBytes() noexcept {
    if (auto* bytes = std::get_if<Bytes>(&m_value)) {
        ruvo::WipeBytes(bytes->data(), bytes->size());
    }
}

} // namespace ruvo
