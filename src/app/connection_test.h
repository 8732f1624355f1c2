// The connection test: can this relay of this INI file be reached and logged into?
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace ruvo {

/// Results of the connection test. Other programs know the numbers: never renumber.
enum class [[nodiscard]] EConnectionTestResult : std::uint8_t{
    Good = 0,
    CommsServerFailed = 1,
    IniFileRefused = 2,
    UnknownKey = 3,
    LinkNotOpened = 4,
    PasswordNotAskedFor = 5,
    PasswordRefused = 6,
    ResetFailed = 7,
    RelayNotResponding = 8,
    ReadFailed = 9,
    PasswordMissing = 10,
    PasswordBlocked = 11,
    ComRuntimeFailed = 12,
    LevelInsufficient = 13,
    NoResult = 14,
};

/// What the results mean, for people; row n describes result n.
inline constexpr std::array<std::string_view, 15> kConnectionTestMeanings{
    "The relay answered, and the password, if one was asked for, was accepted.",
    "The comms server could not be started.",
    "The INI file was refused.",
    "The key is not an entry of the section of the configured link type.",
    "The link could not be opened, or its transaction values could not be set.",
    "A password is configured, but the relay did not ask for one.",
    "The relay refused the password.",
    "Resetting cell 00.02 failed.",
    "The relay is not connected or does not respond (reading cell 00.DF, status 8).",
    "Reading cell 00.DF failed.",
    "The relay asked for a password, and none is configured.",
    "The relay has blocked its password.",
    "The COM library could not be initialised.",
    "The password was accepted, but its level is insufficient.",
    "The test could not be run: no result was delivered.",
};
static_assert(kConnectionTestMeanings.size() ==
              static_cast<std::size_t>(EConnectionTestResult::NoResult) + 1);

constexpr std::string_view ConnectionTestMeaning(EConnectionTestResult result) {
    return kConnectionTestMeanings[static_cast<std::size_t>(result)];
}

/// Tests one relay on a thread of its own and waits for it, without time-out. Relative paths, in the INI file
/// too, count from the working directory. `deviceKey` is an entry name such as RV003, in any letter case;
/// null stands for an empty text. Silences the error log for the rest of the process. One call at a time:
/// the comms-server client and the password state are process-wide. Throws nothing.
EConnectionTestResult TestConnection(const char* iniPath, const char* deviceKey) noexcept;

} // namespace ruvo
