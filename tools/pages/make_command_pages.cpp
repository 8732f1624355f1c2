// Writes what the documentation says about the commands of ruvoctl, the keys of the INI file and the lines of
// the error log, from the tables that the programs themselves use:
//   make_command_pages completion           the shell's completion, on standard output
//   make_command_pages check PAGE.md...     fails when a page's chapter is not the table's
//   make_command_pages update PAGE.md...    puts the table's into the page
#include "config/result_messages.h"
#include "tools/command.h"
#include "tools/pages/key_chapter.h"
#include "tools/pages/line_chapter.h"
#include "tools/pages/markdown.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

namespace {

using ruvo::EOptionKind;
using ruvo::Escaped;
using ruvo::SCommand;
using ruvo::SOption;

bool IsPositional(const SOption& option) {
    return !option.name.starts_with('-');
}

std::vector<std::string> Split(std::string_view text, char separator) {
    std::vector<std::string> parts;
    for (std::size_t start = 0; start <= text.size();) {
        const std::size_t end = std::min(text.find(separator, start), text.size());
        parts.emplace_back(text.substr(start, end - start));
        start = end + 1;
    }
    return parts;
}

/// Words that are typed as they are, as in "encrypt|decrypt", and not names of what is typed, as in
/// "FILE|FOLDER".
bool IsLiteral(std::string_view name) {
    return std::ranges::none_of(name, [](char c) { return c >= 'A' && c <= 'Z'; });
}

bool TakesSeveral(EOptionKind kind) {
    using enum EOptionKind;
    return kind == List || kind == Rest || kind == Files || kind == MoreFiles;
}

bool MayBeMissing(EOptionKind kind) {
    using enum EOptionKind;
    return kind == Optional || kind == Rest || kind == MoreFiles;
}

/// As it is typed: "--format text|json|csv", "-o, --output TEXT", "INI", "FILE|FOLDER...".
std::string Spelling(const SOption& option) {
    std::string typed;
    for (const std::string& form : Split(option.name, ',')) {
        typed += (typed.empty() ? "" : ", ") + form;
    }
    if (IsPositional(option)) {
        typed += TakesSeveral(option.kind) ? "..." : "";
    } else if (!option.values.empty()) {
        typed += " " + std::string(option.values);
    } else if (option.kind != EOptionKind::Flag) {
        typed += " TEXT";
    }
    return typed;
}

std::string Synopsis(const SCommand& command) {
    std::string line = "ruvoctl " + std::string(command.name);
    if (std::ranges::any_of(command.options, [](const SOption& option) { return !IsPositional(option); })) {
        line += " [OPTION...]";
    }
    for (const SOption& option : command.options) {
        if (MayBeMissing(option.kind)) {
            line += " [" + Spelling(option) + "]";
        } else if (IsPositional(option)) {
            line += " " + Spelling(option);
        }
    }
    return line;
}

/// The notes of the help: lines set in by blanks are shown as they are, all others are running text.
std::string Notes(std::string_view notes) {
    std::string out;
    bool inBlock = false;
    for (const std::string& line : Split(notes, '\n')) {
        const bool isExample = line.starts_with("  ");
        if (isExample != inBlock && !line.empty()) {
            out += isExample ? "\n```\n" : "```\n\n";
            inBlock = isExample;
        }
        out += (isExample ? line.substr(2) : Escaped(line)) + "\n";
    }
    return out + (inBlock ? "```\n" : "");
}

/// The exit statuses of check. Numbers of messages that no run ends with are left out.
std::string ResultCodes() {
    constexpr std::array kNeverReached{1, 2, 3, 5, 8, 9, 10, 11};
    std::string out = "\n| exit status | message |\n|---|---|\n";
    for (int code = 0; code < static_cast<int>(ruvo::kResultMessages.size()); ++code) {
        if (std::ranges::find(kNeverReached, code) == kNeverReached.end()) {
            const std::string_view message = ruvo::ResultMessage(static_cast<ruvo::EResultCode>(code));
            out += "| " + std::to_string(code) + " | " + Escaped(message) + " |\n";
        }
    }
    return out;
}

std::string CommandChapter() {
    std::string out;
    for (const SCommand& command : ruvo::Commands()) {
        out += "\n### " + std::string(command.name) + "\n\n`" + Synopsis(command) + "`\n\n" +
               Escaped(command.summary) + ".\n\n";
        for (const SOption& option : command.options) {
            out += "- `" + Spelling(option) + "`: " + Escaped(option.help) + "\n";
        }
        out += "\n" + Notes(command.notes) + (command.name == "check" ? ResultCodes() : "");
    }
    return out + "\n";
}

/// What the completion looks words up in: lines of shell code, by what was typed before.
struct SCompletionTables {
    std::string names;   ///< of the commands
    std::string options; ///< by command
    std::string choices; ///< by command and the word before
    std::string sites;   ///< commands that take the INI file of a site, with "|" between them
    std::string keys;    ///< what stands before a relay's key: a command, or a command and its option
};

/// A pattern of the shell's "case" that also matches this.
void AddPattern(std::string& patterns, std::string_view first, std::string_view rest = "") {
    patterns.append(patterns.empty() ? "" : " | ").append("\"").append(first).append(rest).append("\"");
}

constexpr std::string_view kOfferFunctions =
    R"(# The INI files of sites that this user can see.
_ruvoctl_sites() {
    local ini
    for ini in /etc/ruvo/*.ini; do
        [[ $1 != /etc/ruvo/* ]] || break # then they are offered as files, below
        if [ -f "$ini" ] && [ "$ini" != /etc/ruvo/registry.ini ]; then printf '%s\n' "$ini"; fi
    done
    compgen -f -X '!*.[iI][nN][iI]' -- "$1"
    compgen -d -- "$1"
}
# The relays' keys in the INI file that was typed, or in that of the site.
_ruvoctl_keys() {
    local typed
    for typed in "${COMP_WORDS[@]:2:COMP_CWORD-2}"; do
        case $typed in
        *.[iI][nN][iI]) ;;
        -* | */*) continue ;;
        *) typed=/etc/ruvo/$typed.ini ;;
        esac
        if [ -r "$typed" ]; then
            ruvoctl list "$typed" 2>/dev/null | grep -o '^RV[0-9]*'
            return
        fi
    done
}
)";

void AddCase(std::string& table, const std::string& command, const std::string& before, std::string words) {
    std::ranges::replace(words, '|', ' ');
    table.append("        \"").append(command).append(before.empty() ? "" : " ").append(before);
    table.append("\") words=\"").append(words).append("\" ;;\n");
}

void AddCommand(SCompletionTables& tables, const SCommand& command) {
    const std::string name(command.name);
    tables.names.append(name).append(" ");
    std::string all;
    for (const SOption& option : command.options) {
        if (IsPositional(option)) {
            if (IsLiteral(option.name)) {
                AddCase(tables.choices, name, name, std::string(option.name));
            } else if (option.name == "KEY") {
                AddPattern(tables.keys, name);
            } else if (name != "new" && (option.name.find("INI") != std::string_view::npos ||
                                         option.name.find("SITE") != std::string_view::npos)) {
                AddPattern(tables.sites, " ", name);
            }
            continue;
        }
        for (const std::string& form : Split(option.name, ',')) {
            all.append(form).append(" ");
            if (option.kind == EOptionKind::Text && option.values == "KEY") {
                AddPattern(tables.keys, name + " ", form);
            }
            if (option.kind == EOptionKind::Choice) {
                AddCase(tables.choices, name, form, std::string(option.values));
            }
        }
    }
    AddCase(tables.options, name, "", all + "--help");
}

std::string Completion() {
    SCompletionTables tables;
    for (const SCommand& command : ruvo::Commands()) {
        AddCommand(tables, command);
    }
    AddCase(tables.choices, "help", "help", tables.names);
    return "# Completion of ruvoctl's commands, options, choices, sites and keys; anything else is the name of a "
           "file.\n" +
           std::string(kOfferFunctions) +
           "_ruvoctl() {\n"
           "    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]} words=\n"
           "    COMPREPLY=()\n"
           "    if [ \"$COMP_CWORD\" -eq 1 ]; then\n"
           "        words=\"" +
           tables.names +
           "--help --version\"\n"
           "    else\n"
           "        case \"${COMP_WORDS[1]} $before\" in\n" +
           tables.choices +
           "        esac\n"
           "        if [[ $word == -* ]]; then\n"
           "            case \"${COMP_WORDS[1]}\" in\n" +
           tables.options +
           "            esac\n"
           "        elif [ -z \"$words\" ]; then\n"
           "            local option=\n"
           "            case $before in --all) ;; -*) option=\" $before\" ;; esac\n"
           "            case \"${COMP_WORDS[1]}$option\" in\n"
           "            " +
           tables.keys +
           ") words=$(_ruvoctl_keys) ;;\n"
           "            esac\n"
           "            case \"$words ${COMP_WORDS[1]}$option\" in\n"
           "            " +
           tables.sites +
           ")\n"
           "                compopt -o filenames 2>/dev/null\n"
           "                mapfile -t COMPREPLY < <(IFS=$'\\n'; compgen -W \"$(_ruvoctl_sites \"$word\")\" -- \"$word\") ;;\n"
           "            esac\n"
           "        fi\n"
           "    fi\n"
           "    [ -z \"$words\" ] || mapfile -t COMPREPLY < <(compgen -W \"$words\" -- \"$word\")\n"
           "}\n"
           "complete -o bashdefault -o default -F _ruvoctl ruvoctl\n";
}

std::string ReadPage(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// A chapter that is made, between its marks.
struct SChapter {
    std::string_view begin;
    std::string_view end;
    std::string (*make)();
};
constexpr std::array kChapters{
    SChapter{"<!-- commands: made by scripts/upkeep/pages.sh -->\n", "<!-- end of commands -->\n",
             CommandChapter},
    SChapter{"<!-- keys: made by scripts/upkeep/pages.sh -->\n", "<!-- end of keys -->\n", ruvo::KeyChapter},
    SChapter{"<!-- lines: made by scripts/upkeep/pages.sh -->\n", "<!-- end of lines -->\n",
             ruvo::LineChapters},
};

/// The page with the tables' chapters between their marks; empty when it has no marks.
std::string Updated(std::string page) {
    bool hasMarks = false;
    for (const SChapter& chapter : kChapters) {
        const std::size_t begin = page.find(chapter.begin);
        const std::size_t end = page.find(chapter.end);
        if (begin != std::string::npos && end != std::string::npos && begin < end) {
            const std::size_t start = begin + chapter.begin.size();
            page.replace(start, end - start, chapter.make());
            hasMarks = true;
        }
    }
    return hasMarks ? page : std::string();
}

bool CheckPage(const std::string& path) {
    const std::string page = ReadPage(path);
    const bool isCurrent = !page.empty() && page == Updated(page);
    if (!isCurrent) {
        std::cerr << path << ": out of date; run scripts/upkeep/pages.sh\n";
    }
    return isCurrent;
}

bool UpdatePage(const std::string& path) {
    const std::string updated = Updated(ReadPage(path));
    if (updated.empty()) {
        std::cerr << path << ": the marks around the chapter are missing\n";
        return false;
    }
    std::ofstream file(path, std::ios::binary);
    file << updated;
    return file.flush().good();
}

} // namespace

int main(int count, char** texts) {
    const std::vector<std::string> arguments(texts + 1, texts + count);
    if (arguments == std::vector<std::string>{"completion"}) {
        std::cout << Completion();
        return std::cout.flush().good() ? 0 : 1;
    }
    if (arguments.size() >= 2 && (arguments[0] == "check" || arguments[0] == "update")) {
        const auto treat = arguments[0] == "check" ? CheckPage : UpdatePage;
        const auto failures = std::count_if(arguments.begin() + 1, arguments.end(),
                                            [&](const std::string& path) { return !treat(path); });
        return failures == 0 ? 0 : 1;
    }
    std::cerr << "usage: make_command_pages completion | check PAGE.md... | update PAGE.md...\n";
    return 2;
}
