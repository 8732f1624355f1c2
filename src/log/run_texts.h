// Texts of the log lines that a run writes. Their wording is fixed: people and scripts look for it.
#pragma once

#include "config/run_context.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace ruvo {

/// "Connection details - ..." of the relay being handled, by the configured link type, with a full stop.
std::string ConnectionText(const CRunContext& context);

// Opening and closing the link.
std::string OpenPortFailedText(const std::string& port, const std::string& parameters);
std::string ModemConnectFailedText(const CRuvoConfig& config);
std::string EthernetFailedText(const std::string& connection);
/// The place where a link without transaction values was opened, in OpenIncompleteText.
std::string PortPlaceText(const std::string& port);
std::string RelayPlaceText(const std::string& ip, std::int32_t deviceAddress, std::int32_t busAddress);
std::string OpenIncompleteText(const std::string& place);
inline constexpr std::string_view kTransactionValuesFailed = "Setting transaction values failed.";
inline constexpr std::string_view kHangUpFailed = "Modem hang-up failed.";
inline constexpr std::string_view kClosePortFailed = "Failed to close COM port.";

// Login.
std::string LoginProbeFailedText(const CRunContext& context);
inline constexpr const char* kInsufficientLevel = "Insufficient password level.";
inline constexpr const char* kInvalidPassword = "Invalid password.";
inline constexpr const char* kInvalidUserPassword = "Password to a Cyber Security device is invalid.";
inline constexpr const char* kBlockedTemporarily = "Password is blocked temporarily.";
inline constexpr const char* kBlockedPermanently = "Password is blocked permanently.";
inline constexpr const char* kUnknownPasswordError =
    "Unknown error occured (GETPASSWORD_PASS_UNKNOWN_ERR passed to password callback).";
std::string UnrecognizedPasswordCodeText(int code);

// Extraction.
std::string ExtractionProblemText(const CRunContext& context);

// The run as a whole.
/// `name` is the system's word for what asked the run to end.
std::string RunEndedText(std::string_view name, std::size_t relaysNotVisited);
inline constexpr std::string_view kAlreadyRunning = "Only one instance can be running at one time.";
/// `kind` is "Unhandled" or "Fatal".
std::string ExceptionText(std::string_view kind, std::string_view what);

} // namespace ruvo
