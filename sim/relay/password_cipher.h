// Passwords in the forms in which a login writes them.
#pragma once

#include "link/seam/variant.h"

#include <cstddef>
#include <string>

namespace ruvo::sim {

/// A password's characters as a login sends them (code page 1252); throws CSubstationError when one has none.
std::string PasswordText(const std::string& utf8, std::size_t line);

/// The text without the white space at its end, which counts neither in a user's name nor in the password.
std::string WithoutTrailingBlanks(std::string text);

/// What a relay with an enciphering key (32 hexadecimal digits) is sent for a password of 8 characters.
Variant::Bytes EncipherPassword(const std::string& password, const std::string& key);

} // namespace ruvo::sim
