// ruvoctl list: lists the relays of an INI file.
#include "base/json_writer.h"
#include "base/text.h"
#include "config/ethernet_entry.h"
#include "platform/full_path.h"
#include "platform/text_file.h"
#include "tools/command.h"
#include "tools/ini/ini_document.h"
#include "tools/ini/relay_entries.h"
#include "tools/text_encoding.h"

#include <algorithm>
#include <array>

namespace ruvo {

namespace {

constexpr std::array kOptions{
    SOption{EOptionKind::Positional, "INI",
            "INI file; a relative path is resolved against the current folder"},
    SOption{EOptionKind::Choice, "--format", "text (default) or json (one object per line for each relay)",
            "text|json", "text"},
};

constexpr std::string_view kNotes =
    R"(Lists the relays in the order of a visit: first those of the link that the file selects, then those of
the other sections, which are not visited. Passwords are not shown; "stored" means that a run has one.
Exit status: 0 on success, 1 if the file cannot be read, 2 on a usage error.

Example: the keys of the relays without a password
  ruvoctl list --format json site.ini | jq -r 'select(.password == "none").key')";

/// In the order of EStoredPassword.
constexpr std::array<std::string_view, 3> kPasswordStateTexts{"none", "stored", "unusable"};

constexpr std::size_t kColumns = 5;
using Row = std::array<std::string, kColumns>;

std::string_view PasswordStateText(const SRelay& relay) {
    return kPasswordStateTexts[static_cast<std::size_t>(relay.password)];
}

void AppendRow(std::string& out, const Row& row, const std::array<std::size_t, kColumns>& widths) {
    std::string line;
    for (std::size_t column = 0; column < kColumns; ++column) {
        line += row[column];
        line.append(widths[column] + 2 - std::min(ColumnsOf(row[column]), widths[column]), ' ');
    }
    out += std::string(TrimEnd(line, kBlank)) + "\n";
}

void PrintText(const std::vector<SRelay>& relays, std::optional<ELink> selected, CTextOutput& out) {
    std::vector<Row> rows{{"KEY", "LINK", "ADDRESS", "PASSWORD", ""}};
    for (const SRelay& relay : relays) {
        std::string remark = WantInstead(relay.link, relay.text);
        if (remark.empty() && relay.link != selected) {
            remark = "not visited";
        }
        rows.push_back({relay.key, std::string(LinkRow(relay.link).name),
                        EscapeControls(SystemTextToUtf8(relay.text)), std::string(PasswordStateText(relay)),
                        std::move(remark)});
    }
    std::array<std::size_t, kColumns> widths{};
    for (const Row& row : rows) {
        for (std::size_t column = 0; column < kColumns; ++column) {
            widths[column] = std::max(widths[column], ColumnsOf(row[column]));
        }
    }
    for (const Row& row : rows) {
        AppendRow(out.Text(), row, widths);
    }
    if (!selected) {
        out.Write(
            "UseEthernet and UseModem select no link, so no relay is visited; expected 0 or 1 for both\n");
    }
}

void WriteAddress(CJsonWriter& json, const SRelay& relay) {
    if (!WantInstead(relay.link, relay.text).empty()) {
        return;
    }
    if (relay.link != ELink::Ethernet) {
        json.Key("device").Number(std::stoul(relay.text));
        return;
    }
    json.Key("ip").Text(ParseEthernetIp(relay.text));
    json.Key("device").Number(static_cast<std::uint64_t>(ParseEthernetDeviceAddress(relay.text)));
    if (const std::int32_t bus = ParseEthernetBusAddress(relay.text); bus != 0) {
        json.Key("bus").Number(static_cast<std::uint64_t>(bus));
    }
}

void PrintJson(const std::vector<SRelay>& relays, std::optional<ELink> selected, CTextOutput& out) {
    for (const SRelay& relay : relays) {
        CJsonWriter json(out.Text());
        json.Open('{');
        json.Key("key").Text(relay.key);
        json.Key("link").Text(LinkRow(relay.link).name);
        json.Key("visited").Bool(relay.link == selected);
        json.Key("text").Text(SystemTextToUtf8(relay.text));
        json.Key("valid").Bool(WantInstead(relay.link, relay.text).empty());
        WriteAddress(json, relay);
        json.Key("password").Text(PasswordStateText(relay));
        json.Close('}');
        out.Write("\n");
    }
}

int RunList(const CArguments& arguments, SConsole& console) {
    const std::string typed = arguments.Get("INI");
    const std::string path = FullPath(typed);
    std::string bytes;
    const std::string_view why = path.empty() || !ReadTextFileBytes(path, bytes)
                                     ? "cannot read the file; ruvoctl new creates an INI file"
                                     : WhyNotReadable(bytes);
    if (!why.empty()) {
        console.error.Write("ruvoctl: " + EscapeControls(SystemTextToUtf8(typed)) + ": " + std::string(why) +
                            "\n");
        return kExitFailed;
    }
    const CIniText ini = CIniText::Parse(TextOfFileBytes(bytes));
    const std::optional<ELink> selected = SelectedLink(ini);
    std::vector<SRelay> relays = ListRelays(ini);
    std::stable_partition(relays.begin(), relays.end(),
                          [&](const SRelay& relay) { return relay.link == selected; });
    if (arguments.Get("--format") == "json") {
        PrintJson(relays, selected, console.out);
    } else {
        PrintText(relays, selected, console.out);
    }
    return kExitGood;
}

} // namespace

SCommand ListCommand() {
    return {"list", "List the relays of an INI file", kNotes, kOptions, RunList};
}

} // namespace ruvo
