#include "tools/lines/explain.h"

#include "base/text.h"
#include "tools/text_encoding.h"

#include <algorithm>

namespace ruvo {

namespace {

constexpr std::size_t kLongestLine = 4096; ///< that is looked at word by word
constexpr std::size_t kFewestWords = 12;   ///< fixed characters, below which a line in other words is none

const SLineRow* FindLine(std::string_view message, bool isEndOpen) {
    const SLineRow* best = nullptr;
    std::size_t most = isEndOpen ? kFewestWords : 0;
    for (const SLineRow& row : LineTable()) {
        if (const std::size_t fixed = row.form.Match(message, isEndOpen); fixed > most) {
            best = &row;
            most = fixed;
        }
    }
    return best;
}

/// Calls `take` with the text and the row of each status until that returns true.
template <class TTake>
void ForEachStatus(const TTake& take) {
    for (const SStatusRow& row : StatusTable()) {
        for (LinkStatus status = row.first; status <= row.last; status += row.Step()) {
            take(TrimEnd(StatusText(status), ". "), row);
        }
    }
}

const SStatusRow* FindStatus(std::string_view text) {
    const SStatusRow* found = nullptr;
    const std::string_view wanted = TrimEnd(text, ". ");
    ForEachStatus([&](std::string_view known, const SStatusRow& row) {
        if (found == nullptr && known == wanted) {
            found = &row;
        }
    });
    return found;
}

/// The status with the longest text that stands in another.
const SStatusRow* FindStatusIn(std::string_view text) {
    const SStatusRow* found = nullptr;
    std::size_t longest = 0;
    ForEachStatus([&](std::string_view known, const SStatusRow& row) {
        if (known.size() > longest && text.find(known) != std::string_view::npos) {
            longest = known.size();
            found = &row;
        }
    });
    return found;
}

} // namespace

std::string SMeaning::Happened() const {
    std::string text = AdviceOf(line->happened);
    if (!line->expected.empty()) {
        text.back() = ':';
        text += " " + line->expected + ".";
    }
    if (status != nullptr) {
        text += " " + std::string(status->happened);
    }
    return text;
}

std::optional<SMeaning> Explain(const SLogLine& line) {
    const SLineRow* const row = FindLine(line.message, false);
    if (row == nullptr) {
        return std::nullopt;
    }
    constexpr std::string_view kOfColumn = "Extracting event records  ";
    const bool isColumn = row->form.Text().starts_with(kOfColumn); // which has its status within
    const std::string_view status =
        isColumn ? std::string_view(line.message).substr(kOfColumn.size()) : std::string_view(line.status);
    return SMeaning{row, status.empty() ? nullptr : FindStatus(status)};
}

std::optional<SMeaning> ExplainText(std::string_view text) {
    text = Trim(text, kWhiteSpace).substr(0, kLongestLine);
    if (const auto meaning = Explain(ParseLogLine(text))) {
        return meaning;
    }
    const std::string utf8 = SystemTextToUtf8(text);
    const std::string_view whole = utf8;
    for (std::size_t at = 0; at < whole.size(); ++at) {
        if (at > 0 && whole[at - 1] != ' ') {
            continue;
        }
        const std::string_view rest = whole.substr(at);
        if (const auto meaning = Explain(ParseLogLine(rest))) {
            return meaning;
        }
        if (const SLineRow* const row = FindLine(rest, true)) {
            return SMeaning{row, FindStatusIn(rest)};
        }
    }
    return std::nullopt;
}

} // namespace ruvo
