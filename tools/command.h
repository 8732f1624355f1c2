// A command of the companion program, independent of the command-line parser: each command is one file, and
// one row in the table of command_table.cpp.
#pragma once

#include "tools/text_output.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace ruvo {

inline constexpr int kExitGood = 0;
inline constexpr int kExitFailed = 1;
inline constexpr int kExitUsage = 2;

enum class EOptionKind : std::uint8_t {
    Flag,       ///< --name
    Text,       ///< --name TEXT
    Choice,     ///< --name ONE, of the choices
    Repeated,   ///< --name TEXT, repeatable
    Positional, ///< one argument, required
    Optional,   ///< one argument, optional
    List,       ///< one argument or more, required
    Rest,       ///< any number of arguments
    Files,      ///< one file or folder or more, required; also patterns such as *.evt
    MoreFiles,  ///< any number of them
};

struct SOption {
    EOptionKind kind = EOptionKind::Flag;
    /// "--since"; "-o,--output" for one with a short form, which is then found as "--output"; "FILE" for a
    /// positional one.
    std::string_view name;
    std::string_view help;
    /// For a Choice its words, separated by "|"; for a Text its placeholder in the help, such as "FILE".
    std::string_view values = {};
    std::string_view defaultChoice = {};
};

/// What the user typed for a command's options.
class CArguments {
public:
    void Set(std::string_view name, std::vector<std::string> values) {
        m_values.insert_or_assign(std::string(name), std::move(values));
    }
    [[nodiscard]] bool Has(std::string_view name) const { return m_values.contains(std::string(name)); }
    /// Empty if it was not given.
    [[nodiscard]] std::string Get(std::string_view name) const {
        const std::vector<std::string> values = GetAll(name);
        return values.empty() ? std::string() : values.front();
    }
    [[nodiscard]] std::vector<std::string> GetAll(std::string_view name) const {
        const auto found = m_values.find(std::string(name));
        return found == m_values.end() ? std::vector<std::string>() : found->second;
    }

private:
    std::map<std::string, std::vector<std::string>> m_values;
};

struct SCommand {
    std::string_view name;
    std::string_view summary;
    std::string_view notes; ///< text at the end of the command's help, with examples
    std::span<const SOption> options;
    /// The exit status.
    int (*run)(const CArguments& arguments, SConsole& console);
    /// For a command that handles secrets: the message for any usage error. It does not repeat the arguments,
    /// because one of them may be the secret.
    std::string_view secretNotice = {};
    int usageStatus = kExitUsage;       ///< on a usage error
    std::string_view usageVerdict = {}; ///< printed on standard output on a usage error
    int failureStatus = kExitFailed;    ///< if output cannot be written, and on unexpected errors
};

/// All commands.
std::span<const SCommand> Commands();
/// The command of that name; null if there is none.
const SCommand* FindCommand(std::string_view name);
/// The command that the arguments name: the first one that is not an option. Null if there is none.
const SCommand* FindNamedCommand(std::span<const std::string> arguments);

} // namespace ruvo
