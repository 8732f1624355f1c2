// What a line of the error log means.
#pragma once

#include "tools/lines/advice.h"
#include "tools/lines/line_table.h"
#include "tools/log_lines.h"

#include <optional>
#include <string>
#include <string_view>

namespace ruvo {

struct SMeaning {
    const SLineRow* line = nullptr;     ///< its row; never null
    const SStatusRow* status = nullptr; ///< that of its status; null without one

    [[nodiscard]] EConcern Concern() const { return line->concern; }
    [[nodiscard]] ESeverity Severity() const { return line->severity; }
    [[nodiscard]] std::string Happened() const;
    [[nodiscard]] std::string_view Cost() const { return line->cost; }
    /// The status knows better than the line, which knows only what was tried.
    [[nodiscard]] std::string ToDo() const { return AdviceOf(status != nullptr ? status->todo : line->todo); }

    bool operator==(const SMeaning&) const = default;
};

/// The meaning of a line that was read from a log; none of one that no run writes.
[[nodiscard]] std::optional<SMeaning> Explain(const SLogLine& line);

/// The same for a line as a person has it, which other programs may have put words before and behind:
/// a journal, a mail, or ruvoctl status.
[[nodiscard]] std::optional<SMeaning> ExplainText(std::string_view text);

} // namespace ruvo
