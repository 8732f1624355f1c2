// The status of all sites of a folder as text and JSON.
#include "base/json_writer.h"
#include "base/text.h"
#include "tools/status/status_output.h"
#include "tools/text_encoding.h"
#include "tools/text_table.h"

#include <algorithm>
#include <array>

namespace ruvo {

namespace {

constexpr std::array kWorstFirst{EState::Critical, EState::Unknown, EState::Warning, EState::Good};

/// "3 sites in /etc/ruvo: 1 critical, 2 good"
std::string CountsText(const SAllSites& all) {
    std::string text = Counted(all.sites.size(), "site") + " in " + EscapeControls(all.folder);
    std::string_view separator = ": ";
    for (const EState state : kWorstFirst) {
        const auto number = std::ranges::count_if(
            all.sites, [state](const SSiteReport& site) { return site.verdict.state == state; });
        if (number > 0) {
            text.append(separator).append(std::to_string(number)).append(" ").append(StateName(state));
            separator = ", ";
        }
    }
    return text;
}

} // namespace

std::string SitesAsText(const SAllSites& all) {
    constexpr std::size_t kMostCauses = 3;
    std::string out = ToUpperText(StateName(all.State())) + ": ";
    std::string_view separator;
    for (const std::string& failure : all.failures) {
        out.append(separator).append(EscapeControls(failure));
        separator = "; ";
    }
    if (!all.sites.empty()) {
        out.append(separator).append(CountsText(all));
    }
    out += '\n';
    std::vector<TableRow> rows;
    for (const SSiteReport& site : all.sites) {
        rows.push_back({ToUpperText(StateName(site.verdict.state)), EscapeControls(site.name),
                        VerdictText(site.status, site.verdict, kMostCauses)});
    }
    out += rows.empty() ? "" : "\n";
    AppendTable(out, rows, 3);
    return out;
}

std::string SitesAsJson(const SAllSites& all) {
    std::string out;
    CJsonWriter json(out);
    json.Open('{');
    json.Key("state").Text(StateName(all.State()));
    json.Key("folder").Text(all.folder);
    json.Key("failures").Open('[');
    for (const std::string& failure : all.failures) {
        json.Text(failure);
    }
    json.Close(']');
    json.Key("sites").Open('[');
    for (const SSiteReport& site : all.sites) {
        json.Open('{');
        json.Key("site").Text(site.name);
        json.Key("ini").Text(site.ini);
        WriteStatus(json, site.status, site.verdict);
        json.Close('}');
    }
    json.Close(']');
    json.Close('}');
    return out + '\n';
}

} // namespace ruvo
