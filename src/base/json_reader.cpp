#include "base/json_reader.h"

#include "base/code_page.h"
#include "base/text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>

namespace ruvo {

namespace {

constexpr int kDeepest = 16; // ours has four levels

bool IsJsonBlank(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

void SkipBlanks(std::string_view& text) {
    while (!text.empty() && IsJsonBlank(text.front())) {
        text.remove_prefix(1);
    }
}

bool Take(std::string_view& text, char wanted) {
    SkipBlanks(text);
    const bool isThere = text.starts_with(wanted);
    text.remove_prefix(isThere ? 1 : 0);
    return isThere;
}

bool SkipText(std::string_view& text) {
    for (std::size_t at = 1; at < text.size(); ++at) {
        if (text[at] == '\\') {
            ++at;
        } else if (text[at] == '"') {
            text.remove_prefix(at + 1);
            return true;
        }
    }
    return false;
}

bool SkipWord(std::string_view& text) {
    constexpr std::string_view kLetters = "+-.0123456789Eaeflnrstu"; // of numbers, true, false and null
    const std::size_t size = std::min(text.find_first_not_of(kLetters), text.size());
    text.remove_prefix(size);
    return size > 0;
}

bool SkipValue(std::string_view& text, int depth);

/// The rest of an array, or of an object, whose items have names.
bool SkipItems(std::string_view& text, char end, int depth) {
    if (Take(text, end)) {
        return true;
    }
    do {
        if (end == '}' && !(SkipValue(text, depth) && Take(text, ':'))) {
            return false;
        }
        if (!SkipValue(text, depth)) {
            return false;
        }
    } while (Take(text, ','));
    return Take(text, end);
}

bool SkipValue(std::string_view& text, int depth) {
    SkipBlanks(text);
    if (text.empty() || depth == kDeepest) {
        return false;
    }
    const char first = text.front();
    if (first == '"') {
        return SkipText(text);
    }
    if (first != '{' && first != '[') {
        return SkipWord(text);
    }
    text.remove_prefix(1);
    return SkipItems(text, first == '{' ? '}' : ']', depth + 1);
}

/// The character that "\u" and four digits stand for; half a surrogate pair becomes the sign for none.
void AppendUnit(std::string& out, std::string_view& escaped) {
    unsigned unit = 0;
    const auto digits = escaped.substr(0, 4);
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), unit, 16);
    escaped.remove_prefix(static_cast<std::size_t>(end - digits.data()));
    const std::array<char, 2> bytes{static_cast<char>(unit & 0xFFU), static_cast<char>(unit >> 8U)};
    out += Utf16ToUtf8({bytes.data(), bytes.size()});
}

/// The text between two quotes, as UTF-8.
std::string Unescaped(std::string_view inside) {
    constexpr std::string_view kEscapes = "bfnrt";
    constexpr std::string_view kMeant = "\b\f\n\r\t";
    std::string text;
    while (!inside.empty()) {
        const std::size_t plain = std::min(inside.find('\\'), inside.size());
        text += inside.substr(0, plain);
        inside.remove_prefix(plain);
        if (inside.size() < 2) {
            break;
        }
        const char escape = inside[1];
        inside.remove_prefix(2);
        if (escape == 'u') {
            AppendUnit(text, inside);
        } else {
            const std::size_t at = kEscapes.find(escape);
            text += at == std::string_view::npos ? escape : kMeant[at];
        }
    }
    return SystemTextToUtf8(text);
}

} // namespace

std::optional<std::string_view> TakeJsonValue(std::string_view& text) {
    SkipBlanks(text);
    const std::string_view whole = text;
    if (!SkipValue(text, 0)) {
        return std::nullopt;
    }
    const std::string_view value = whole.substr(0, whole.size() - text.size());
    SkipBlanks(text);
    return value;
}

std::optional<CJsonObject> CJsonObject::Read(std::string_view text) {
    CJsonObject object;
    if (!Take(text, '{')) {
        return std::nullopt;
    }
    bool isMore = !Take(text, '}');
    while (isMore) {
        const auto name = TakeJsonValue(text);
        const bool isNamed = name && name->starts_with('"') && Take(text, ':');
        const auto value = isNamed ? TakeJsonValue(text) : std::nullopt;
        if (!value) {
            return std::nullopt;
        }
        object.m_members.emplace_back(name->substr(1, name->size() - 2), *value);
        isMore = Take(text, ',');
        if (!isMore && !Take(text, '}')) {
            return std::nullopt;
        }
    }
    SkipBlanks(text);
    return text.empty() ? std::optional(std::move(object)) : std::nullopt;
}

std::string_view CJsonObject::Value(std::string_view name) const {
    const auto found = std::ranges::find(m_members, name, [](const auto& member) { return member.first; });
    return found == m_members.end() ? std::string_view() : found->second;
}

std::string CJsonObject::Text(std::string_view name) const {
    const std::string_view value = Value(name);
    return value.starts_with('"') ? Unescaped(value.substr(1, value.size() - 2)) : std::string();
}

std::optional<std::uint64_t> CJsonObject::Number(std::string_view name) const {
    const std::string_view value = Value(name);
    std::uint64_t number = 0;
    const auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), number);
    return !value.empty() && error == std::errc() && end == value.data() + value.size()
               ? std::optional(number)
               : std::nullopt;
}

std::vector<std::string_view> JsonItems(std::string_view array) {
    std::vector<std::string_view> items;
    if (!Take(array, '[') || Take(array, ']')) {
        return items;
    }
    do {
        const auto item = TakeJsonValue(array);
        if (!item) {
            return {};
        }
        items.push_back(*item);
    } while (Take(array, ','));
    return array == "]" ? items : std::vector<std::string_view>();
}

} // namespace ruvo
