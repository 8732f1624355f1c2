#include "run/password_callbacks.h"

#include "extraction/password_state.h"
#include "log/error_log.h"
#include "log/run_texts.h"

#include <algorithm>
#include <array>
#include <string>

namespace ruvo {

namespace {

/// Why a login did not succeed: what is noted, and what the log says.
struct SRefusalRow {
    int code;
    bool SPasswordState::*flag; ///< null: nothing is noted
    const char* message;
};

constexpr std::array kRefusals{
    SRefusalRow{GETPASSWORD_PASS_LEVEL_ERR, &SPasswordState::insufficientLevel, kInsufficientLevel},
    SRefusalRow{GETPASSWORD_PASS_INVALID_ERR, nullptr, kInvalidPassword},
    SRefusalRow{GETPASSWORD_PASS_CS_INVALID_ERR, nullptr, kInvalidUserPassword},
    SRefusalRow{GETPASSWORD_PASS_BLOCKED_TEMP_ERR, &SPasswordState::blocked, kBlockedTemporarily},
    SRefusalRow{GETPASSWORD_PASS_UNKNOWN_ERR, nullptr, kUnknownPasswordError},
    SRefusalRow{GETPASSWORD_PASS_BLOCKED_PERM_ERR, &SPasswordState::blocked, kBlockedPermanently},
};

void SupplyPassword(const std::string& password, char* buffer, std::uint32_t maxLength,
                    std::uint32_t* noNotify) {
    if (password.size() > maxLength) {
        return; // the blanks already there go out, and the relay refuses them
    }
    *noNotify = 0;
    std::fill_n(std::ranges::copy(password, buffer).out, maxLength - password.size(), ' ');
}

} // namespace

int PasswordCallback(const SPasswordRequest& /*request*/, char** buffer, std::uint32_t maxLength,
                     std::uint32_t* noNotify, int code, std::int32_t /*extra*/) {
    SPasswordState& state = PasswordState();
    // Cleared at every call, before its code is looked at: what an earlier call found must not pass for what
    // became of this password.
    state.callbackCalled = true;
    state.accepted = false;
    state.unanswered = code == GETPASSWORD_PASS_REQUEST;
    state.blocked = false;
    state.insufficientLevel = false;
    if (code == GETPASSWORD_PASS_REQUEST) {
        SupplyPassword(state.currentPassword, *buffer, maxLength, noNotify);
        return 0;
    }
    if (code == GETPASSWORD_PASS_ACCEPTED) {
        state.accepted = true;
        return 0;
    }
    const auto* refusal = std::ranges::find(kRefusals, code, &SRefusalRow::code);
    if (refusal == kRefusals.end()) {
        LogMessage(UnrecognizedPasswordCodeText(code), true);
        return 1;
    }
    if (refusal->flag != nullptr) {
        state.*(refusal->flag) = true;
    }
    LogMessage(refusal->message, true);
    return 1;
}

int PasswordAcceptedCallback(const char* /*model*/) {
    PasswordState().accepted = true;
    PasswordState().unanswered = false;
    return 1;
}

} // namespace ruvo
