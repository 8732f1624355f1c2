#include "extraction/password_state.h"

namespace ruvo {

SPasswordState& PasswordState() {
    static SPasswordState state;
    return state;
}

} // namespace ruvo
