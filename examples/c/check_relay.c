/* Asks whether one relay of an INI file can be reached and logged into:
 *     check_relay SITE.INI RV003
 * Prints the result; the exit status is its number. */
#include <ruvo/ruvo.h>

#include <stdio.h>

static const char* const kMeanings[] = {
    "reached, and logged in where the relay wants it",
    "the comms server could not be started",
    "the INI file was refused",
    "no such key for the configured link type",
    "the link could not be opened",
    "a password is configured, but was not asked for",
    "the password was refused",
    "resetting the password cell failed",
    "the relay does not respond",
    "the relay could not be read",
    "the relay wants a password, and none is configured",
    "the password is blocked",
    "the COM library could not be initialised",
    "the password's level is insufficient",
    "the test did not run"
};

int main(int count, char** arguments) {
    int result, known;
    if (count != 3) {
        fprintf(stderr, "usage: check_relay INI KEY\n");
        return 64;
    }
    result = (int)TestConnectionExt(arguments[1], arguments[2]);
    known = result >= RUVO_TEST_GOOD && result <= RUVO_TEST_NO_RESULT;
    printf("%s: %s (%d)\n", arguments[2], known ? kMeanings[result] : "unknown result", result);
    return result;
}
