#include "tools/visit/visit_event.h"

#include "base/text.h"
#include "tools/visit/run_outcome.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace ruvo {

namespace {

constexpr std::uint16_t kFirstNumber = 100;

struct SRow {
    EVisitStatus status;
    ESystemEventKind kind;
    std::string_view text;
};
constexpr std::array kRows{
    SRow{EVisitStatus::Good, ESystemEventKind::Information, "visited, no problems"},
    SRow{EVisitStatus::Problems, ESystemEventKind::Warning, "visited, with problems"},
    SRow{EVisitStatus::Refused, ESystemEventKind::Error, "the visit could not take place as configured"},
    SRow{EVisitStatus::Ended, ESystemEventKind::Warning, "the visit was ended before it was complete"},
    SRow{EVisitStatus::IsVisited, ESystemEventKind::Warning,
         "not visited, because another visit was going on"},
};
constexpr std::string_view kCrashed = "the extractor crashed";

/// The log's viewer replaces "%1" and "%%1" even in a text that was handed to it.
std::string WithoutInsertions(std::string_view text) {
    std::string out;
    for (std::size_t at = 0; at < text.size(); ++at) {
        out += text[at];
        if (text[at] == '%' && at + 1 < text.size() && (IsDigit(text[at + 1]) || text[at + 1] == '%')) {
            out += ' ';
        }
    }
    return out;
}

} // namespace

SVisitEvent EventOfVisit(int status, const std::string& site, const std::string& reached, const SSaid& said) {
    const auto* const row = std::ranges::find(kRows, static_cast<EVisitStatus>(status), &SRow::status);
    const bool isKnown = row != kRows.end();
    SVisitEvent event;
    event.kind = isKnown ? row->kind : ESystemEventKind::Error;
    event.number = static_cast<std::uint16_t>(
        kFirstNumber + (isKnown ? row - kRows.begin() : static_cast<long>(kRows.size())));
    event.text = site + ": " + std::string(isKnown ? row->text : kCrashed) + " (status " +
                 std::to_string(status) + ")" + (reached.empty() ? "" : "; " + reached) + ".\n" + said.lines;
    if (said.more > 0) {
        event.text += Counted(said.more, "line") + " more; see the error log.\n";
    }
    event.text = WithoutInsertions(event.text);
    return event;
}

} // namespace ruvo
