#include "tools/pages/line_chapter.h"

#include "tools/lines/advice.h"
#include "tools/lines/line_table.h"
#include "tools/pages/markdown.h"

#include <algorithm>

namespace ruvo {

namespace {

constexpr std::array<std::string_view, kConcerns.size()> kHeadings{
    "The run", "The link to a relay", "The login", "Events that are safe, but not in their day file",
    "Events that are lost or may be, and damage"};

std::string Code(std::string_view line) {
    return "`" + std::string(line) + "`";
}

/// What stands in quotes is typed or read as it is.
std::string Marked(std::string_view text) {
    std::string out;
    for (bool isQuoted = false; !text.empty(); isQuoted = !isQuoted) {
        const std::size_t end = std::min(text.find('"'), text.size());
        const std::string_view part = text.substr(0, end);
        out += isQuoted ? Code(part) : Escaped(part);
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return out;
}

std::string Paragraph(std::string_view heading, std::string_view text) {
    return "\n  " + (heading.empty() ? "" : "**" + std::string(heading) + ":** ") +
           Marked(AdviceForAll(text)) + "\n";
}

void AppendLine(std::string& out, const SLineRow& row) {
    out += "- " + Code(row.form.Text()) + " (" + std::string(SeverityName(row.severity)) + ")\n";
    out +=
        Paragraph("", row.happened) + Paragraph("Cost", row.cost) + Paragraph("What to do", row.todo) + "\n";
}

/// The lines of runs that could not begin differ only in what was expected.
std::string Refusals() {
    const auto isRefusal = [](const SLineRow& row) { return !row.expected.empty(); };
    const SLineRow& first = *std::ranges::find_if(LineTable(), isRefusal);
    std::string out = "## A run that could not begin\n\n" + Escaped(first.happened) + " **Cost:** " +
                      Marked(first.cost) + " **What to do:** " + Marked(first.todo) + "\n\n";
    for (const SLineRow& row : LineTable()) {
        if (isRefusal(row)) {
            out += "- " + Code(row.form.Text()) + "\n" + Paragraph("", row.expected + ".") + "\n";
        }
    }
    return out + "\n";
}

/// The beginning of a long text is enough to find it by.
std::string Shortened(std::string_view text) {
    constexpr std::size_t kLongest = 44;
    return text.size() <= kLongest ? std::string(text)
                                   : std::string(text.substr(0, text.rfind(' ', kLongest))) + " ...";
}

std::string Statuses() {
    std::string out =
        "## How a request ended\n\nA line that ends with `P32LS status:` and a text also says how the "
        "request to the comms server ended. Long texts are shortened here.\n\n";
    for (const SStatusRow& row : StatusTable()) {
        std::string_view before;
        std::string texts;
        for (LinkStatus status = row.first; status <= row.last; status += row.Step()) {
            if (const std::string_view text = StatusText(status); text != before) {
                texts += (texts.empty() ? "- " : ",\n  ") + Code(Shortened(text));
                before = text;
            }
        }
        out += texts + "\n" + Paragraph("", row.happened) + Paragraph("What to do", row.todo) + "\n";
    }
    return out;
}

} // namespace

std::string LineChapters() {
    std::string out = "\n";
    for (const EConcern concern : kConcerns) {
        out += "## " + std::string(kHeadings[static_cast<std::size_t>(concern)]) + "\n\n";
        for (const SLineRow& row : LineTable()) {
            if (row.concern == concern && row.expected.empty()) {
                AppendLine(out, row);
            }
        }
        out += concern == EConcern::Run ? Refusals() : "";
    }
    return out + Statuses();
}

} // namespace ruvo
