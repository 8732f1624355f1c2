// The form of a line of the error log: its fixed words, and what differs from line to line.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace ruvo {

/// Written as "<1 event waits|{N} events wait> in journal {JOURNAL}.": {NAME} stands for any text, {N} for a
/// number; of <one|many> the first word is that of a line about one thing.
class CLineForm {
public:
    explicit CLineForm(std::string_view form);

    /// As people read it: "N events wait in journal JOURNAL."
    [[nodiscard]] const std::string& Text() const { return m_text; }

    /// The number of fixed characters in the line if it has this form: the more, the better it fits. 0 for
    /// another line. With an open end, anything may follow.
    [[nodiscard]] std::size_t Match(std::string_view line, bool isEndOpen = false) const;

private:
    struct SPart {
        std::string words;     ///< fixed
        bool isNumber = false; ///< what follows them
    };
    /// The fixed words in their order; something stands between each two. The last part is not followed by
    /// anything.
    using Variant = std::vector<SPart>;

    static Variant Split(std::string_view form);
    static std::size_t MatchVariant(const Variant& parts, std::string_view line, bool isEndOpen);

    std::string m_text;
    std::vector<Variant> m_variants;
};

} // namespace ruvo
