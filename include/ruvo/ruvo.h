/* What ruvo offers to other programs: testing the connection to one relay, and the scrambled form of relay
 * passwords. Plain C (C89 or C++98, and all later ones) for libruvo.so, RUVO.exe and ruvo.dll.
 *
 * All texts end with a NUL. Paths and texts are in the system's narrow encoding (UTF-8 on POSIX). No function
 * throws, keeps a pointer after it has returned, or allocates memory for the caller. One call at a time per
 * process: the functions share their state without a lock.
 */
#ifndef RUVO_RUVO_H
#define RUVO_RUVO_H

#include <stdint.h>

#if defined(_WIN32)
#define RUVO_CALL __stdcall
#else
#define RUVO_CALL
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* Results of TestConnectionExt. */
enum {
    RUVO_TEST_GOOD = 0,                   /* the relay answered; a password, if asked for, was accepted */
    RUVO_TEST_COMMS_SERVER_FAILED = 1,    /* the comms server could not be started */
    RUVO_TEST_INI_FILE_REFUSED = 2,       /* the INI file cannot be read or breaks a rule */
    RUVO_TEST_UNKNOWN_KEY = 3,            /* no such key in the section of the configured link type */
    RUVO_TEST_LINK_NOT_OPENED = 4,        /* link not opened, or its transaction values not set */
    RUVO_TEST_PASSWORD_NOT_ASKED_FOR = 5, /* a password is configured; the relay did not ask for one */
    RUVO_TEST_PASSWORD_REFUSED = 6,       /* the relay refused the password */
    RUVO_TEST_RESET_FAILED = 7,           /* resetting cell 00.02 failed */
    RUVO_TEST_RELAY_NOT_RESPONDING = 8,   /* reading cell 00.DF failed with status 8 */
    RUVO_TEST_READ_FAILED = 9,            /* reading cell 00.DF failed with another status */
    RUVO_TEST_PASSWORD_MISSING = 10,      /* the relay asked for a password; none is configured */
    RUVO_TEST_PASSWORD_BLOCKED = 11,      /* the relay has blocked its password */
    RUVO_TEST_COM_FAILED = 12,            /* the COM library could not be initialised */
    RUVO_TEST_LEVEL_INSUFFICIENT = 13,    /* accepted, but the password's level is insufficient */
    RUVO_TEST_NO_RESULT = 14              /* the test's thread did not run */
};

/* Sizes of the buffers that encrypt and decrypt write to, the NUL included. */
enum { RUVO_SCRAMBLED_SIZE = 23, RUVO_PASSWORD_SIZE = 9 };

/* Can this relay of this INI file be reached and logged into? Returns one of the results above.
 *
 * iniPath      path of the INI file; a relative one, and every relative path in the file, counts from the
 *              working directory.
 * deviceKey    entry name in the section of the link type that the file selects, such as RV003; any letter
 *              case.
 *
 * Works on a thread of its own and returns when that has ended; there is no time-out. Starts its own
 * comms-server client and lets it go. Nothing is written to the error log, in this call and for the rest of
 * the process. The folder for event files is made for the write test and removed again. */
int32_t RUVO_CALL TestConnectionExt(const char* iniPath, const char* deviceKey);

/* Scrambles a password of at most 8 characters for the section [RUVO_PASSWORDS] of the INI file.
 * scrambled receives 22 characters and a NUL: RUVO_SCRAMBLED_SIZE bytes. Returns 0; -1, with the buffer
 * untouched, when the password is longer or a pointer is null. Seeds the C library's random generator. */
int32_t RUVO_CALL encrypt(const char* password, char* scrambled);

/* Turns a scrambled text back; what follows its first 22 characters is ignored. password receives at most 8
 * characters and a NUL: RUVO_PASSWORD_SIZE bytes. Returns 0; -1, with the buffer untouched, when the text is
 * shorter, says a length above 8, or a pointer is null. */
int32_t RUVO_CALL decrypt(const char* scrambled, char* password);

#ifdef __cplusplus
}
#endif

#endif
