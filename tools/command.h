// A command of the companion program, described without the parser that reads the command line: each command
// is one file, and one line in the table of command_table.cpp.
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
    Repeated,   ///< --name TEXT, as often as wanted
    Positional, ///< one argument, required
    Optional,   ///< one argument that may be missing
    List,       ///< one argument or more, required
};

struct SOption {
    EOptionKind kind = EOptionKind::Flag;
    /// "--since"; "-o,--output" for one with a short form, which then answers to "--output"; "FILE" for a
    /// positional one.
    std::string_view name;
    std::string_view help;
    /// For a Choice its words, separated by "|"; for a text what stands for it in the help, as "FILE".
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
    /// Empty when it was not given.
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
    std::string_view notes; ///< at the end of the command's help: its examples
    std::span<const SOption> options;
    /// The exit status.
    int (*run)(const CArguments& arguments, SConsole& console);
    /// For a command that handles secrets: what is said of any mistake in its arguments. They are not
    /// repeated, since one of them may be the secret.
    std::string_view secretNotice = {};
    int usageStatus = kExitUsage;       ///< for a mistake in the arguments
    std::string_view usageVerdict = {}; ///< what such a mistake puts on the standard output
    int failureStatus = kExitFailed;    ///< for output that could not be written, and for what nobody foresaw
};

/// Every command there is.
std::span<const SCommand> Commands();
/// The command of that name; null when there is none.
const SCommand* FindCommand(std::string_view name);
/// The command that the arguments name: their first word that is no option. Null when there is none.
const SCommand* FindNamedCommand(std::span<const std::string> arguments);

} // namespace ruvo
