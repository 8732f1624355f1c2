#include "run/login_probe.h"

#include "extraction/password_state.h"
#include "link/client.h"
#include "log/connection_text.h"
#include "log/error_log.h"
#include "model/values/parlane_integers.h"

namespace ruvo {

namespace {

/// The probe itself; nothing is logged here.
bool ProbeLogin(CP32Wrap& link) {
    CParlaneDataArray values;
    const LinkStatus status = link.GetValue(nullptr, cells::kSecurityVersion, values);
    if (status == kReplyNoSuchCell) {
        return true; // a relay without that cell knows no login
    }
    if (status != kLinkGood || !IsWriteGood(link.ResetCell(nullptr, cells::kPassword))) {
        return false;
    }
    // Whether the relay takes the value does not matter: writing it is what makes it ask for the password.
    link.ChangeSetting(nullptr, cells::kLoginProbe, CParlaneInt(1, 2));
    if (PasswordState().callbackCalled && !PasswordState().accepted) {
        return false;
    }
    link.ResetCell(nullptr, cells::kPassword);
    return true;
}

} // namespace

bool TestDeviceConnection(const CRunContext& context) {
    if (ProbeLogin(*CP32Wrap::GetInstance())) {
        return true;
    }
    LogMessage("Test connection failed. Unable to connect to the device or password is invalid. " +
                   ConnectionText(context),
               false);
    return false;
}

} // namespace ruvo
