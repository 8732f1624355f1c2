#include "tools/lines/line_table.h"

#include "config/result_messages.h"
#include "tools/ini/diagnostics.h"

#include <algorithm>

namespace ruvo {

namespace {

/// A run that cannot begin writes the message of its result code.
void AddResults(std::vector<SLineRow>& table) {
    for (std::size_t code = 1; code < kResultMessages.size(); ++code) {
        const auto result = static_cast<EResultCode>(code);
        const std::string expected = ExpectedInstead(result);
        if (!expected.empty()) { // else no run ends with it
            table.push_back(
                {EConcern::Run, ESeverity::Critical, CLineForm(ResultMessage(result)),
                 "The run could not begin.",
                 "No relay was visited. Nothing is lost: the relays keep their events, as long as their "
                 "memories last.",
                 "\"ruvoctl check SITE.ini\", as the user of the visits, names the line of the file, if it "
                 "is one. Correct it, then visit again.",
                 expected});
        }
    }
}

} // namespace

std::string_view ConcernName(EConcern concern) {
    static constexpr std::array<std::string_view, kConcerns.size()> kNames{"run", "link", "password",
                                                                           "storage", "loss"};
    return kNames[static_cast<std::size_t>(concern)];
}

std::string_view SeverityName(ESeverity severity) {
    static constexpr std::array<std::string_view, 3> kNames{"notice", "warning", "critical"};
    return kNames[static_cast<std::size_t>(severity)];
}

const std::vector<SLineRow>& LineTable() {
    static const std::vector<SLineRow> table = [] {
        std::vector<SLineRow> rows;
        for (const auto& lines : {LinesOfRun(), LinesOfStorage(), LinesOfLoss()}) {
            for (const SLineWords& words : lines) {
                rows.push_back({words.concern, words.severity, CLineForm(words.form), words.happened,
                                words.cost, words.todo});
            }
        }
        AddResults(rows);
        std::ranges::stable_sort(rows, {}, &SLineRow::concern);
        return rows;
    }();
    return table;
}

} // namespace ruvo
