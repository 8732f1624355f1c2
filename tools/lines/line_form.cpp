#include "tools/lines/line_form.h"

#include "base/text.h"

#include <algorithm>
#include <array>

namespace ruvo {

namespace {

/// The form with the first or the second of each <one|many>.
std::string Chosen(std::string_view form, bool isMany) {
    std::string text;
    while (!form.empty()) {
        const std::size_t start = std::min(form.find('<'), form.size());
        text += form.substr(0, start);
        form.remove_prefix(start);
        if (!form.empty()) {
            const std::size_t bar = form.find('|');
            const std::size_t end = form.find('>');
            text += isMany ? form.substr(bar + 1, end - bar - 1) : form.substr(1, bar - 1);
            form.remove_prefix(end + 1);
        }
    }
    return text;
}

bool IsNumber(std::string_view text) {
    return !text.empty() && std::ranges::all_of(text, IsDigit);
}

} // namespace

CLineForm::CLineForm(std::string_view form) : m_text(Chosen(form, true)) {
    m_variants.push_back(Split(m_text));
    if (const std::string one = Chosen(form, false); one != m_text) {
        m_variants.push_back(Split(one));
    }
    std::erase_if(m_text, [](char c) { return c == '{' || c == '}'; });
}

CLineForm::Variant CLineForm::Split(std::string_view form) {
    Variant parts;
    for (;;) {
        const std::size_t start = std::min(form.find('{'), form.size());
        parts.push_back({std::string(form.substr(0, start)), form.substr(start).starts_with("{N}")});
        if (start == form.size()) {
            return parts;
        }
        form.remove_prefix(form.find('}') + 1);
    }
}

std::size_t CLineForm::Match(std::string_view line, bool isEndOpen) const {
    std::size_t best = 0;
    for (const Variant& parts : m_variants) {
        best = std::max(best, MatchVariant(parts, line, isEndOpen));
    }
    return best;
}

/// Takes each part where it first occurs behind the one before it.
std::size_t CLineForm::MatchVariant(const Variant& parts, std::string_view line, bool isEndOpen) {
    if (!line.starts_with(parts.front().words)) {
        return 0;
    }
    line.remove_prefix(parts.front().words.size());
    std::size_t fixed = parts.front().words.size();
    for (std::size_t i = 1; i < parts.size(); ++i) {
        const std::string& words = parts[i].words;
        const bool isLast = i + 1 == parts.size();
        std::size_t at = words.empty() ? line.size() : line.find(words);
        if (isLast && !isEndOpen && line.size() >= words.size() && line.ends_with(words)) {
            at = line.size() - words.size();
        }
        if (at == std::string_view::npos || (parts[i - 1].isNumber && !IsNumber(line.substr(0, at)))) {
            return 0;
        }
        line.remove_prefix(at + words.size());
        fixed += words.size();
    }
    return line.empty() || isEndOpen ? fixed : 0;
}

} // namespace ruvo
