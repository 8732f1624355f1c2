// What the run's password callbacks learn and the extraction looks at: process-wide, touched only by the
// thread of the run, while one of its requests is in progress.
#pragma once

#include <string>

namespace ruvo {

struct SPasswordState {
    std::string currentPassword;    ///< plain password of the relay being visited
    bool callbackCalled = false;    ///< the link has asked for a password since this was cleared
    bool accepted = false;          ///< the relay accepted the password supplied last
    bool unanswered = false;        ///< a password was supplied, and its outcome has not been reported since
    bool blocked = false;           ///< the relay has blocked its password
    bool insufficientLevel = false; ///< accepted, but the relay requires a higher level
};

/// The one password state of the process.
SPasswordState& PasswordState();

} // namespace ruvo
