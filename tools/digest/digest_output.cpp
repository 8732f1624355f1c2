#include "tools/digest/digest_output.h"

#include "base/text.h"
#include "tools/text_encoding.h"

#include <algorithm>
#include <array>
#include <functional>
#include <limits>

namespace ruvo {

namespace {

constexpr std::size_t kWidth = 100;

/// How a kind of line looks.
struct SLook {
    EDigestLine kind;
    std::string_view mark; ///< before the first line of text
    std::string_view rest; ///< before those after it
    std::string_view style;
};
constexpr std::array kLooks{
    SLook{EDigestLine::Headline, "", "", "font-size:18px;font-weight:bold;margin:0 0 4px 0"},
    SLook{EDigestLine::Lead, "", "", "color:#555555;margin:0 0 8px 0"},
    SLook{EDigestLine::Site, "\n", "  ",
          "font-size:16px;font-weight:bold;margin:16px 0 4px 0;border-top:1px solid #cccccc;padding-top:8px"},
    SLook{EDigestLine::Alarm, "  ! ", "    ", "color:#b00020;margin:2px 0 2px 16px"},
    SLook{EDigestLine::Remark, "  - ", "    ", "color:#555555;margin:2px 0 2px 16px"},
    SLook{EDigestLine::Bay, "  ", "  ", "font-weight:bold;margin:8px 0 2px 16px"},
    SLook{EDigestLine::Counts, "  ", "    ", "margin:4px 0 2px 16px"},
    SLook{EDigestLine::Event, "    ", "      ", "margin:2px 0 2px 32px"},
    SLook{EDigestLine::Detail, "      ", "      ", "color:#555555;margin:0 0 2px 48px"},
    SLook{EDigestLine::Text, "    ", "    ", "margin:2px 0 2px 32px"},
    SLook{EDigestLine::BayAlarm, "    ! ", "      ", "color:#b00020;margin:2px 0 2px 32px"},
    SLook{EDigestLine::Todo, "    To do: ", "    ", "margin:0 0 4px 32px"},
};
static_assert(std::ranges::is_sorted(kLooks, {}, &SLook::kind), "one row per EDigestLine, in order");

const SLook& LookOf(EDigestLine kind) {
    return kLooks[static_cast<std::size_t>(kind)];
}

std::string EventText(const SDigestEvent& event) {
    std::string text = event.time;
    const auto pad = [&text](std::size_t width) {
        text.append(width - std::min(ColumnsOf(text), width), ' ');
    };
    constexpr std::size_t kTime = 26;
    constexpr std::size_t kKind = 33;
    pad(kTime);
    text += EventKindName(event.kind);
    pad(kKind);
    return text + event.event + (event.value.empty() ? "" : "  " + event.value);
}

std::string TextOf(const SDigestLine& line) {
    return line.kind == EDigestLine::Event ? EventText(line.event) : line.text;
}

/// Appends the text, broken at blanks; the headline stays one line, as the subject of a mail is.
void AppendWrapped(std::string& out, const SLook& look, std::string_view text) {
    std::size_t column = 0;
    const auto begin = [&](std::string_view mark) {
        out += mark;
        column = ColumnsOf(mark);
    };
    begin(look.mark);
    while (!text.empty()) {
        std::size_t end = std::min(text.find(' '), text.size());
        end = end == 0 ? std::min(text.find_first_not_of(' '), text.size()) : end;
        const std::string_view word = text.substr(0, end);
        text.remove_prefix(end);
        const bool isFull = column + ColumnsOf(word) > kWidth && look.kind != EDigestLine::Headline;
        if (word.front() != ' ' && isFull && column > look.rest.size()) {
            EraseTrailingBlanks(out, 0);
            out += '\n';
            begin(look.rest);
        }
        out += word;
        column += ColumnsOf(word);
    }
    out += '\n';
}

std::string AsText(const std::vector<SDigestLine>& lines) {
    std::string text;
    for (const SDigestLine& line : lines) {
        AppendWrapped(text, LookOf(line.kind), TextOf(line));
    }
    return text;
}

std::size_t CountLines(const std::vector<SDigestLine>& lines) {
    const std::string text = AsText(lines);
    return static_cast<std::size_t>(std::ranges::count(text, '\n'));
}

/// As many trips and faults of each relay as fit; if none do, the lines that fit.
std::vector<SDigestLine> FittingLines(const SDigest& digest, std::size_t most) {
    std::vector<SDigestLine> lines = DigestLines(digest, std::numeric_limits<std::size_t>::max());
    for (const std::size_t events : {50U, 20U, 10U, 5U, 2U, 1U}) {
        if (most == 0 || CountLines(lines) <= most) {
            return lines;
        }
        lines = DigestLines(digest, events);
    }
    if (CountLines(lines) <= most) {
        return lines;
    }
    const std::size_t whole = CountLines(lines);
    std::erase_if(lines, [](const SDigestLine& line) { return line.kind == EDigestLine::Todo; });
    std::string text;
    std::size_t kept = 0; // without what to do, as many as fit
    for (std::size_t taken = 0; kept < lines.size(); ++kept) {
        text.clear();
        AppendWrapped(text, LookOf(lines[kept].kind), TextOf(lines[kept]));
        taken += static_cast<std::size_t>(std::ranges::count(text, '\n'));
        if (taken + 2 > most) {
            break;
        }
    }
    lines.resize(kept);
    const std::size_t left = whole - CountLines(lines);
    lines.push_back(
        {EDigestLine::Site, "and " + std::to_string(left) +
                                " further lines and what to do: \"ruvoctl digest --lines 0\" shows all"});
    return lines;
}

void AppendHtmlEvent(std::string& out, const SDigestEvent& event) {
    constexpr std::string_view kCell = "<td style=\"padding:1px 12px 1px 0;vertical-align:top\">";
    out += "<table style=\"margin:0 0 0 32px;border-collapse:collapse\"><tr>";
    for (const std::string_view cell : {std::string_view(event.time), EventKindName(event.kind),
                                        std::string_view(event.event), std::string_view(event.value)}) {
        out += kCell;
        out += EscapeMarkup(cell);
        out += "</td>";
    }
    out += "</tr></table>\n";
}

} // namespace

std::string DigestAsText(const SDigest& digest, std::size_t mostLines) {
    return AsText(FittingLines(digest, mostLines));
}

std::string DigestAsHtml(const SDigest& digest, std::size_t mostLines) {
    std::string html = "<!DOCTYPE html>\n<html><head><meta charset=\"utf-8\"><title>";
    html += EscapeMarkup(HeadlineOf(digest));
    html +=
        "</title></head>\n<body style=\"font-family:Arial,Helvetica,sans-serif;font-size:14px;color:#111111;"
        "background:#ffffff\">\n";
    for (const SDigestLine& line : FittingLines(digest, mostLines)) {
        if (line.kind == EDigestLine::Event) {
            AppendHtmlEvent(html, line.event);
            continue;
        }
        html += "<p style=\"" + std::string(LookOf(line.kind).style) + "\">";
        html += line.kind == EDigestLine::Todo ? "<b>To do:</b> " : "";
        html += EscapeMarkup(line.text);
        html += "</p>\n";
    }
    return html + "</body></html>\n";
}

} // namespace ruvo
