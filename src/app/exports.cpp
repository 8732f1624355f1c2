// The entry points for other programs. Everything else stays inside the library.
#include "ruvo/ruvo.h"

#include "app/connection_test.h"
#include "config/scramble.h"

static_assert(RUVO_TEST_NO_RESULT == static_cast<int>(ruvo::EConnectionTestResult::NoResult));
static_assert(RUVO_SCRAMBLED_SIZE == ruvo::kScrambledLength + 1);
static_assert(RUVO_PASSWORD_SIZE == ruvo::kMaxPasswordLength + 1);

extern "C" {

std::int32_t RUVO_CALL TestConnectionExt(const char* iniPath, const char* deviceKey) {
    return static_cast<std::int32_t>(ruvo::TestConnection(iniPath, deviceKey));
}

std::int32_t RUVO_CALL encrypt(const char* password, char* scrambled) {
    return ruvo::ScramblePassword(password, scrambled);
}

std::int32_t RUVO_CALL decrypt(const char* scrambled, char* password) {
    return ruvo::UnscramblePassword(scrambled, password);
}

} // extern "C"
