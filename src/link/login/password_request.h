// The record and the callbacks through which an application supplies passwords and learns the outcome.
#pragma once

#include "link/seam/known_cells.h"

#include <cstdint>

namespace ruvo {

/// Facts about the relay that asks for a password: texts, each ended by a NUL, 118 bytes in all without gaps.
struct SPasswordRequest {
    char description[17];  ///< cell 00.04
    char plant[17];        ///< cell 00.05
    char model[17];        ///< cell 00.06
    char serialNumber[17]; ///< cell 00.08
    char software[17];     ///< cell 00.11
    char displayText[33];  ///< text of the cyber-security column, empty for a relay without one
};
static_assert(sizeof(SPasswordRequest) == 5 * 17 + 33, "callbacks read the record byte for byte");

/// What the call is about: the outcome of the attempt before it.
enum EGetPasswordCode : int {
    GETPASSWORD_PASS_REQUEST = 0,          ///< first request
    GETPASSWORD_PASS_ACCEPTED = 1,         ///< the last password was accepted
    GETPASSWORD_PASS_LEVEL_ERR = 2,        ///< accepted earlier, but the level does not suffice
    GETPASSWORD_PASS_INVALID_ERR = 3,      ///< plain password rejected
    GETPASSWORD_PASS_CS_INVALID_ERR = 4,   ///< cyber-security password rejected; extra: attempts left or -1
    GETPASSWORD_PASS_BLOCKED_TEMP_ERR = 5, ///< blocked; extra: blocking time left or -1
    GETPASSWORD_PASS_UNKNOWN_ERR = 6,      ///< any other reply
    GETPASSWORD_PASS_USERNAME_ERR = 7,     ///< user name rejected
    GETPASSWORD_PASS_NOT_SETTABLE_ERR = 8, ///< the password cell is not settable
    GETPASSWORD_PASS_BLOCKED_PERM_ERR = 9, ///< blocked for good
};

/// Asks for a password. `*buffer` holds `maxLength` blanks and a NUL; `*noNotify` is 0. Returns 0 to go on
/// with the text now in the buffer, anything else to give up.
using GetPasswordFunction = int (*)(const SPasswordRequest& request, char** buffer, std::uint32_t maxLength,
                                    std::uint32_t* noNotify, int code, std::int32_t extra);

/// A user name: 16 characters, filled up with blanks, and a NUL.
struct SUserName {
    char text[kUserNameLength + 1];
};
static_assert(sizeof(SUserName) == 17, "callbacks see an array of char[17]");

/// Asks for one of the relay's user names and its password. `*buffer` holds `maxLength` (16) blanks and a
/// NUL;
/// `*selected` is 0 and becomes the index of the user chosen among `userNames`. Returns 0 to go on, anything
/// else to give up.
using UsernamePasswordFunction = int (*)(const SPasswordRequest& request, char** buffer,
                                         std::uint32_t maxLength, const SUserName* userNames,
                                         std::uint32_t* selected, std::uint32_t userCount, int code,
                                         std::int32_t extra);
/// The same for the second edition, where any user name may be typed: `*userName` holds the name of the
/// attempt before, or else the first of `userNames`, filled up with blanks to `userNameMaxLength`, and a NUL.
using SecondEditionLoginFunction = int (*)(const SPasswordRequest& request, char** buffer,
                                           std::uint32_t passwordMaxLength, const SUserName* userNames,
                                           std::uint32_t userCount, char** userName,
                                           std::uint32_t userNameMaxLength, int code, std::int32_t extra);

/// Reports that a user name and its password were accepted; `model` is the record's text of cell 00.06.
using LoginAcceptedFunction = void (*)(const char* model);
/// Reports that a password was accepted; `model` is the record's text of cell 00.06. The result is ignored.
using PasswordAcceptedFunction = int (*)(const char* model);
/// Reports that a login ended because its callback is missing or declined.
using LoginCancelledFunction = void (*)();

} // namespace ruvo
