// ruvoctl relays: the relays of a site, as the INI file, the records of visits and the day files know them.
#include "base/json_writer.h"
#include "base/text.h"
#include "platform/full_path.h"
#include "tools/events/csv_row.h"
#include "tools/events/format_options.h"
#include "tools/relays/site_relays.h"
#include "tools/text_encoding.h"
#include "tools/text_table.h"
#include "tools/typed_path.h"

#include <algorithm>
#include <array>

namespace ruvo {

namespace {

constexpr std::array kOptions{
    SOption{EOptionKind::Positional, "SITE.ini",
            "INI file of the site; a relative path is resolved against the current folder"},
    kFormatOption,
    kSpreadsheetOption,
    kDecimalCommaOption,
    SOption{EOptionKind::Text, "--match",
            "only relays with this text in their key, address, name, plant reference, description or model; "
            "case does not matter"},
};

constexpr std::string_view kNotes =
    R"(Lists the relays that a visit of the site reaches out to, with what their visits and their day files say of
them. A relay that no visit has reached yet has no name. Last reached is in local time, in json and csv in
UTC; the last event is the latest one in the relay's newest day file, by the relay's own clock.
The records of visits are readable only to the user of the visits and to root.
Exit status: 0 on success, 1 if something cannot be read, 2 on a usage error.

Example: which relay is feeder 7?
  ruvoctl relays /etc/ruvo/north.ini --match "Feeder 7")";

/// Of the columns of csv and the members of json. Never rename: scripts rely on them.
struct SField {
    std::string_view name;
    const std::string& (*text)(const SSiteRelay& relay);
};
constexpr std::array kFields{
    SField{"key", [](const SSiteRelay& relay) -> const std::string& { return relay.visit.key; }},
    SField{"link", [](const SSiteRelay& relay) -> const std::string& { return relay.visit.link; }},
    SField{"address", [](const SSiteRelay& relay) -> const std::string& { return relay.visit.address; }},
    SField{"relay", [](const SSiteRelay& relay) -> const std::string& { return relay.visit.name; }},
    SField{"plant", [](const SSiteRelay& relay) -> const std::string& { return relay.visit.plant; }},
    SField{"description", [](const SSiteRelay& relay) -> const std::string& { return relay.description; }},
    SField{"model", [](const SSiteRelay& relay) -> const std::string& { return relay.model; }},
    SField{"last_reached",
           [](const SSiteRelay& relay) -> const std::string& { return relay.visit.lastReached; }},
    SField{"last_event", [](const SSiteRelay& relay) -> const std::string& { return relay.lastEvent; }},
    SField{"last_file", [](const SSiteRelay& relay) -> const std::string& { return relay.lastFile; }},
};

std::string OrDash(const std::string& text) {
    return text.empty() ? "-" : EscapeControls(text);
}

/// "2026-11-16 03:12:01", without the milliseconds.
std::string EventTimeForPeople(const std::string& time) {
    constexpr std::size_t kToSeconds = 19;
    std::string text = time.substr(0, kToSeconds);
    std::ranges::replace(text, 'T', ' ');
    return OrDash(text);
}

/// "not reached for 2 nights; muted until the end of 2026-12-31".
std::string RemarkOn(const SRelayVisit& visit) {
    std::string text = visit.IsMissed() && visit.nights > 0
                           ? "not reached for " + Counted(visit.nights, "night")
                           : std::string();
    if (visit.mute) {
        text += (text.empty() ? "" : "; ") + ("muted until " + MuteEndForPeople(*visit.mute));
    }
    return text;
}

void PrintText(const std::vector<SSiteRelay>& relays, std::string& out) {
    std::vector<TableRow> rows{
        {"KEY", "LINK", "ADDRESS", "RELAY", "PLANT", "REACHED", "LAST REACHED", "LAST EVENT", "REMARK"}};
    for (const SSiteRelay& relay : relays) {
        const SRelayVisit& visit = relay.visit;
        const std::string& title =
            visit.plant.empty() && !relay.description.empty() ? "(" + relay.description + ")" : visit.plant;
        rows.push_back({EscapeControls(visit.key), EscapeControls(visit.link), EscapeControls(visit.address),
                        OrDash(visit.name), OrDash(title),
                        !visit.entry        ? "-"
                        : visit.IsReached() ? "yes"
                                            : "no",
                        visit.lastReached.empty() ? "-" : RecordTimeForPeople(visit.lastReached),
                        EventTimeForPeople(relay.lastEvent), RemarkOn(visit)});
    }
    AppendTable(out, rows, rows.front().size());
}

void PrintJson(const SSiteRelays& all, const std::vector<SSiteRelay>& relays, std::string& out) {
    for (const SSiteRelay& relay : relays) {
        CJsonWriter json(out);
        json.Open('{');
        json.Key("site").Text(all.site);
        for (const SField& field : kFields) {
            const std::string& text = field.text(relay);
            json.Key(field.name);
            text.empty() ? json.Null() : json.Text(text);
        }
        json.Key("reached");
        relay.visit.entry ? json.Bool(relay.visit.IsReached()) : json.Null();
        json.Key("missed_nights").Number(relay.visit.nights);
        json.Key("muted_until");
        relay.visit.mute ? json.Text(relay.visit.mute->until) : json.Null();
        json.Close('}');
        out += '\n';
    }
}

void PrintCsv(const SSiteRelays& all, const std::vector<SSiteRelay>& relays, const SCsvForm& form,
              std::string& out) {
    std::string names = "site";
    for (const SField& field : kFields) {
        names.append(",").append(field.name);
    }
    AppendCsvHead(out, names + ",reached,missed_nights,muted_until", form);
    for (const SSiteRelay& relay : relays) {
        CCsvRow row(out, form);
        row.Text(all.site);
        for (const SField& field : kFields) {
            row.Text(field.text(relay));
        }
        relay.visit.entry ? row.Bool(relay.visit.IsReached()) : row.Empty();
        row.Number(relay.visit.nights);
        row.Text(relay.visit.mute ? relay.visit.mute->until : std::string());
        row.End();
    }
}

/// "No relay matches "Feeder 9". There are: Feeder 7 (RV003), RV004 (10.0.0.6,2)."
void SayChoices(const SSiteRelays& all, const std::string& wanted, SConsole& console) {
    std::string text;
    for (const SSiteRelay& relay : all.relays) {
        text += (text.empty() ? "" : ", ") + EscapeControls(relay.visit.Label());
    }
    console.error.Write("No relay matches \"" + EscapeControls(wanted) + "\". There are: " + text + ".\n");
}

int RunRelays(const CArguments& arguments, SConsole& console) {
    if (!CheckFormatOptions(arguments, console)) {
        return kExitUsage;
    }
    const CSite site(TypedPath(arguments.Get("SITE.ini")));
    const SSiteRelays all = ReadSiteRelays(site, console);
    for (const std::string& failure : all.failures) {
        console.error.Write("ruvoctl: " + EscapeControls(failure) + "\n");
    }
    const std::string wanted = SystemTextToUtf8(arguments.Get("--match"));
    std::vector<SSiteRelay> relays = all.relays;
    std::erase_if(relays, [&wanted](const SSiteRelay& relay) { return !relay.Matches(wanted); });
    const std::string format = arguments.Get("--format");
    if (relays.empty() && !all.relays.empty()) {
        SayChoices(all, wanted, console);
    }
    if (format == "json") {
        PrintJson(all, relays, console.out.Text());
    } else if (format == "csv") {
        PrintCsv(all, relays, CsvFormOf(arguments), console.out.Text());
    } else if (!relays.empty()) {
        PrintText(relays, console.out.Text());
    }
    console.out.Flush();
    return all.isWhole ? kExitGood : kExitFailed;
}

} // namespace

SCommand RelaysCommand() {
    return {"relays", "List the relays of a site by what they are called", kNotes, kOptions, RunRelays};
}

} // namespace ruvo
