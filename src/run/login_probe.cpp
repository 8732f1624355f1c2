#include "run/login_probe.h"

#include "base/secret.h"
#include "extraction/password_state.h"
#include "link/client.h"
#include "link/seam/known_cells.h"
#include "log/error_log.h"
#include "log/run_texts.h"
#include "model/values/parlane_integers.h"

namespace ruvo {

void PrepareLogin(const CRuvoConfig& config, const std::string& key) {
    SPasswordState& state = PasswordState();
    state.callbackCalled = false;
    state.unanswered = false;
    WipeText(state.currentPassword);
    const TextEntries& passwords = config.Passwords();
    if (const auto password = passwords.find(key); password != passwords.end()) {
        state.currentPassword = password->second; // no copy on the way, which would not be wiped
    }
}

ELoginProbe ProbeLogin(CP32Wrap& link) {
    CParlaneDataArray values;
    const LinkStatus status = link.GetValue(nullptr, cells::kSecurityVersion, values);
    if (status == kReplyNoSuchCell) {
        return ELoginProbe::NotAsked; // a relay without that cell knows no login
    }
    if (status != kLinkGood) {
        return status == kLinkNotResponding ? ELoginProbe::NotResponding : ELoginProbe::ReadFailed;
    }
    if (!IsWriteGood(link.ResetCell(nullptr, cells::kPassword))) {
        return ELoginProbe::ResetFailed;
    }
    // Whether the relay takes the value does not matter: writing it is what makes it ask for the password.
    link.ChangeSetting(nullptr, cells::kLoginProbe, CParlaneInt(1, 2));
    const bool isAsked = PasswordState().callbackCalled;
    if (isAsked && !PasswordState().accepted) {
        return ELoginProbe::Refused;
    }
    link.ResetCell(nullptr, cells::kPassword);
    return isAsked ? ELoginProbe::Accepted : ELoginProbe::NotAsked;
}

bool TestDeviceConnection(const CRunContext& context) {
    const ELoginProbe outcome = ProbeLogin(*CP32Wrap::GetInstance());
    if (outcome == ELoginProbe::Accepted || outcome == ELoginProbe::NotAsked) {
        return true;
    }
    if (!CP32Wrap::GetInstance()->HasCutShort()) {
        LogMessage(LoginProbeFailedText(context), false);
    }
    return false;
}

} // namespace ruvo
