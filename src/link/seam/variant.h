// The values that cross the boundary to the comms server: exactly the kinds that its interface uses.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace ruvo {

/// A small closed value type. Owns what it holds; copying copies deeply.
class Variant {
public:
    using Bytes = std::vector<std::uint8_t>;
    using Words = std::vector<std::int16_t>;
    using List = std::vector<Variant>;
    /// A value of a type that the interface has no use for; carried so that a wrong reply stays recognisable.
    struct SOther {
        bool operator==(const SOther&) const = default;
    };

    Variant() = default; ///< empty
    Variant(const Variant& other);
    Variant(Variant&& other) noexcept = default;
    Variant& operator=(const Variant& other) { return *this = Variant(other); }
    Variant& operator=(Variant&& other) noexcept = default;
    ~Variant() = default;

    static Variant FromUI1(std::uint8_t value) { return Variant(std::in_place_type<std::uint8_t>, value); }
    static Variant FromI2(std::int16_t value) { return Variant(std::in_place_type<std::int16_t>, value); }
    static Variant FromI4(std::int32_t value) { return Variant(std::in_place_type<std::int32_t>, value); }
    static Variant FromText(std::string text) {
        return Variant(std::in_place_type<std::string>, std::move(text));
    }
    static Variant FromBytes(Bytes bytes) { return Variant(std::in_place_type<Bytes>, std::move(bytes)); }
    static Variant FromWords(Words words) { return Variant(std::in_place_type<Words>, std::move(words)); }
    static Variant FromList(List list) { return Variant(std::in_place_type<List>, std::move(list)); }
    static Variant Other() { return Variant(std::in_place_type<SOther>, SOther{}); }

    bool IsEmpty() const { return std::holds_alternative<std::monostate>(m_value); }

    /// The held value of that kind, or null when another kind is held.
    const std::string* AsText() const { return std::get_if<std::string>(&m_value); }
    const Bytes* AsBytes() const { return std::get_if<Bytes>(&m_value); }
    const Words* AsWords() const { return std::get_if<Words>(&m_value); }
    const List* AsList() const { return std::get_if<List>(&m_value); }

    /// Conversion to an integer: empty is 0, a decimal text is its number; false when the held kind has no
    /// number or when the number does not fit.
    [[nodiscard]] bool ToUI1(std::uint8_t& value) const;
    [[nodiscard]] bool ToI2(std::int16_t& value) const;
    [[nodiscard]] bool ToI4(std::int32_t& value) const;

    /// Overwrites a held byte array, which was a secret.
    void WipeBytes() noexcept;

    bool operator==(const Variant&) const = default;

private:
    using Holder = std::variant<std::monostate, std::uint8_t, std::int16_t, std::int32_t, std::string, Bytes,
                                Words, List, SOther>;
    // In place: a holder moved in makes g++ warn, in sanitizer builds, of members that it does not hold.
    template <typename Held>
    Variant(std::in_place_type_t<Held> kind, Held value) : m_value(kind, std::move(value)) {}
    bool ToNumber(std::int64_t& value) const;

    Holder m_value;
};

} // namespace ruvo
