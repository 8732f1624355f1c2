#include "tools/command_line.h"

#include "app/version.h"
#include "platform/files.h"
#include "tools/command.h"
#include "tools/text_encoding.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <iterator>
#include <sstream>
#include <vector>

namespace ruvo {

namespace {

std::vector<std::string> SplitChoices(std::string_view choices) {
    std::vector<std::string> words;
    std::istringstream stream{std::string(choices)};
    for (std::string word; std::getline(stream, word, '|');) {
        words.push_back(word);
    }
    return words;
}

std::string ValueName(const SOption& option) {
    return option.values.empty() ? "TEXT" : std::string(option.values);
}

/// A command and the parser object that holds its parsed options.
struct SParsedCommand {
    const SCommand* command = nullptr;
    CLI::App* app = nullptr;
};

void AddOption(CLI::App& app, const SOption& option) {
    const std::string name(option.name);
    const std::string help(option.help);
    switch (option.kind) {
    case EOptionKind::Flag:
        // In --password=TEXT the value would be a secret, silently ignored.
        app.add_flag(name, help)->disable_flag_override();
        break;
    case EOptionKind::Text:
        app.add_option(name, help)->type_name(ValueName(option))->expected(1);
        break;
    case EOptionKind::Choice: {
        const std::vector<std::string> words = SplitChoices(option.values);
        app.add_option(name, help)
            ->check(CLI::IsMember(words).description(""))
            ->type_name(ValueName(option))
            ->expected(1);
        break;
    }
    case EOptionKind::Repeated:
        app.add_option(name, help)
            ->type_name(ValueName(option))
            ->expected(1)
            ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
        break;
    case EOptionKind::Rest:
    case EOptionKind::MoreFiles:
        app.add_option(name, help)->type_name("")->expected(CLI::detail::expected_max_vector_size);
        break;
    case EOptionKind::Optional:
        app.add_option(name, help)->type_name("")->expected(1);
        break;
    case EOptionKind::Positional:
        app.add_option(name, help)->required()->type_name("")->expected(1);
        break;
    case EOptionKind::List:
    case EOptionKind::Files:
        app.add_option(name, help)
            ->required()
            ->type_name("")
            ->expected(CLI::detail::expected_max_vector_size);
        break;
    }
}

std::vector<SParsedCommand> AddCommands(CLI::App& program) {
    std::vector<SParsedCommand> parsed;
    for (const SCommand& command : Commands()) {
        CLI::App* const app = program.add_subcommand(std::string(command.name), std::string(command.summary));
        app->footer(std::string(command.notes));
        for (const SOption& option : command.options) {
            AddOption(*app, option);
        }
        parsed.push_back({&command, app});
    }
    return parsed;
}

std::vector<std::string> ValuesOf(const SOption& option, const std::vector<std::string>& typed) {
    if (option.kind != EOptionKind::Files && option.kind != EOptionKind::MoreFiles) {
        return typed;
    }
    std::vector<std::string> files;
    for (const std::string& word : typed) {
        std::ranges::move(FilesOfPattern(word), std::back_inserter(files));
    }
    return files;
}

CArguments CollectArguments(const SParsedCommand& parsed) {
    CArguments arguments;
    for (const SOption& option : parsed.command->options) {
        const std::string_view name = option.name.substr(option.name.find(',') + 1);
        const CLI::Option& found = *parsed.app->get_option(std::string(name));
        if (found.count() > 0) {
            arguments.Set(name, ValuesOf(option, found.results()));
        } else if (!option.defaultChoice.empty()) {
            arguments.Set(name, {std::string(option.defaultChoice)});
        }
    }
    return arguments;
}

int ReportParseResult(const CLI::App& program, const CLI::ParseError& result, const SCommand* command,
                      SConsole& console) {
    std::ostringstream help;
    std::ostringstream mistake;
    const int code = program.exit(result, help, mistake);
    console.out.Write(help.str());
    const bool isMistake = code != 0 && command != nullptr;
    const std::string_view notice = isMistake ? command->secretNotice : std::string_view();
    console.error.Write(notice.empty() ? mistake.str() : std::string(notice));
    console.out.Write(isMistake ? command->usageVerdict : std::string_view());
    return code == 0 ? kExitGood : command != nullptr ? command->usageStatus : kExitUsage;
}

} // namespace

int RunCommandLine(std::span<const std::string> arguments, SConsole& console) {
    if (!arguments.empty() && !arguments[0].starts_with('-') && FindCommand(arguments[0]) == nullptr) {
        console.error.Write(EscapeControls(SystemTextToUtf8(arguments[0])) +
                            ": unknown command; run \"ruvoctl --help\" for a list\n");
        return kExitUsage;
    }
    CLI::App program(
        "Command-line companion of ruvo: shows day files, creates, edits and checks INI files, tests relays.",
        "ruvoctl");
    program.require_subcommand(1);
    program.set_version_flag("--version", std::string("ruvoctl ") + ProgramVersion());
    program.get_formatter()->column_width(26);
    const std::vector<SParsedCommand> commands = AddCommands(program);
    std::vector<std::string> words(arguments.rbegin(),
                                   arguments.rend()); // the parser takes them from the end
    try {
        program.parse(words);
    } catch (const CLI::ParseError& result) {
        return ReportParseResult(program, result, FindNamedCommand(arguments), console);
    }
    const auto chosen =
        std::ranges::find_if(commands, [](const SParsedCommand& entry) { return entry.app->parsed(); });
    return chosen->command->run(CollectArguments(*chosen), console);
}

} // namespace ruvo
