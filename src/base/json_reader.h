// Reads JSON that one of our programs has written, without copying it: values are parts of the caller's text.
// Nothing in the text is believed.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace ruvo {

/// Takes one value off the front of the text, blanks around it included; none where no whole value stands.
[[nodiscard]] std::optional<std::string_view> TakeJsonValue(std::string_view& text);

/// The members of one object.
class CJsonObject {
public:
    /// None unless the text is one whole object and nothing else.
    [[nodiscard]] static std::optional<CJsonObject> Read(std::string_view text);

    /// The value of the first member of that name; empty without one.
    [[nodiscard]] std::string_view Value(std::string_view name) const;
    /// Empty where it is no text, too.
    [[nodiscard]] std::string Text(std::string_view name) const;
    [[nodiscard]] std::optional<std::uint64_t> Number(std::string_view name) const;
    [[nodiscard]] bool IsTrue(std::string_view name) const { return Value(name) == "true"; }

private:
    std::vector<std::pair<std::string_view, std::string_view>> m_members; ///< names as they are written
};

/// The values of an array; none where the text is no array.
[[nodiscard]] std::vector<std::string_view> JsonItems(std::string_view array);

} // namespace ruvo
