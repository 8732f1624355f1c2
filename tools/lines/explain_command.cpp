// ruvoctl explain: says what a line of the error log means.
#include "base/text.h"
#include "tools/command.h"
#include "tools/lines/explain.h"
#include "tools/text_encoding.h"

#include <algorithm>
#include <array>
#include <istream>

namespace ruvo {

namespace {

constexpr std::array kOptions{
    SOption{
        EOptionKind::Rest, "LINE",
        "the line, or a part of it from its first word on; - reads lines from standard input (default: list "
        "all lines)"},
};

constexpr std::string_view kNotes =
    R"(Says what happened, what it cost, and what to do. The line may begin with its time or with what a
journal or a mail has put before it. Quote it for the shell. ruvo-log(5) lists all lines.
Lines that mean the same are explained once.
Exit status: 0 on success, 1 if a line is not one that ruvo writes, 2 on a usage error.

Examples: one line, and a whole log
  ruvoctl explain 'Insufficient password level.'
  ruvoctl explain - < RUVO_Errors.log)";

/// A line, and how many others mean the same.
struct SExplained {
    std::string line; ///< the first of them
    std::optional<SMeaning> meaning;
    std::size_t count = 1;
};

/// Fills a paragraph, set in behind its heading.
void AppendParagraph(std::string& out, std::string_view heading, std::string_view text, std::size_t width) {
    constexpr std::size_t kIndent = 17;
    constexpr std::size_t kNarrowest = 40;
    const std::size_t room = std::max(width, kIndent + kNarrowest) - kIndent;
    std::string line = "  " + std::string(heading);
    line.append(kIndent - line.size(), ' ');
    std::size_t used = 0;
    while (!text.empty()) {
        const std::size_t size = std::min(text.find(' '), text.size());
        if (used > 0 && used + 1 + size > room) {
            out += line + "\n";
            line.assign(kIndent, ' ');
            used = 0;
        }
        line += used > 0 ? " " : "";
        line += text.substr(0, size);
        used += size + (used > 0 ? 1 : 0);
        text.remove_prefix(std::min(size + 1, text.size()));
    }
    out += line + "\n";
}

void AppendMeaning(std::string& out, const SMeaning& meaning, std::size_t width) {
    AppendParagraph(out, "What happened:", meaning.Happened(), width);
    AppendParagraph(out, "What it cost:", meaning.Cost(), width);
    AppendParagraph(out, "What to do:", meaning.ToDo(), width);
}

void PrintAll(SConsole& console) {
    std::string& out = console.out.Text();
    const std::vector<SLineRow>& table = LineTable();
    for (std::size_t i = 0; i < table.size(); ++i) {
        const SLineRow& row = table[i];
        out += row.form.Text() + "\n";
        if (row.expected.empty()) {
            AppendMeaning(out, {&row, nullptr}, console.width);
        } else { // these lines differ in nothing else
            AppendParagraph(out, "", row.expected + ".", console.width);
            if (i + 1 < table.size() && !table[i + 1].expected.empty()) {
                continue;
            }
            AppendParagraph(out, "What happened:", AdviceOf(row.happened), console.width);
            AppendParagraph(out, "What it cost:", row.cost, console.width);
            AppendParagraph(out, "What to do:", AdviceOf(row.todo), console.width);
        }
        out += '\n';
    }
    out += "A line that ends with \"P32LS status: TEXT\" also says how the request ended:\n\n";
    for (const SStatusRow& row : StatusTable()) {
        std::string_view before;
        for (LinkStatus status = row.first; status <= row.last; status += row.Step()) {
            if (const std::string_view text = StatusText(status); text != before) {
                out.append(text).append("\n");
                before = text;
            }
        }
        AppendParagraph(out, "What happened:", AdviceOf(row.happened), console.width);
        AppendParagraph(out, "What to do:", AdviceOf(row.todo), console.width);
        out += '\n';
    }
}

int PrintExplained(const std::vector<SExplained>& lines, SConsole& console) {
    bool isAnyUnknown = false;
    for (const SExplained& each : lines) {
        std::string& out = console.out.Text();
        out += EscapeControls(SystemTextToUtf8(each.line)) + "\n";
        if (each.meaning) {
            AppendMeaning(out, *each.meaning, console.width);
        } else {
            out += "  Not a line that ruvo writes to its error log.\n";
        }
        if (each.count > 1) {
            out += "  " + Counted(each.count - 1, "other line") + (each.count == 2 ? " means" : " mean") +
                   (each.meaning ? " the same.\n" : " nothing either.\n");
        }
        out += &each == &lines.back() ? "" : "\n";
        console.out.FlushIfFull();
        isAnyUnknown = isAnyUnknown || !each.meaning;
    }
    return isAnyUnknown ? kExitFailed : kExitGood;
}

std::vector<SExplained> ReadAndExplain(std::istream& in) {
    std::vector<SExplained> lines;
    for (std::string line; std::getline(in, line);) {
        const std::string_view trimmed = Trim(line, kWhiteSpace);
        if (trimmed.empty()) {
            continue;
        }
        auto meaning = ExplainText(trimmed);
        const auto same = std::ranges::find(lines, meaning, &SExplained::meaning);
        if (same != lines.end()) {
            ++same->count;
        } else {
            lines.push_back({std::string(trimmed), meaning});
        }
    }
    return lines;
}

int RunExplain(const CArguments& arguments, SConsole& console) {
    std::string line;
    for (const std::string& word : arguments.GetAll("LINE")) {
        line += (line.empty() ? "" : " ") + word;
    }
    if (line.empty()) {
        PrintAll(console);
        return kExitGood;
    }
    return PrintExplained(line == "-" ? ReadAndExplain(console.in)
                                      : std::vector<SExplained>{{line, ExplainText(line)}},
                          console);
}

} // namespace

SCommand ExplainCommand() {
    return {"explain", "Say what a line of the error log means", kNotes, kOptions, RunExplain};
}

} // namespace ruvo
