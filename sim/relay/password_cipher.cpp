#include "sim/relay/password_cipher.h"

#include "model/values/parlane_text.h"
#include "sim/file/relay_text.h"
#include "sim/file/substation_error.h"

namespace ruvo::sim {

std::string PasswordText(const std::string& utf8, std::size_t line) {
    std::optional<std::string> text = Utf8ToCp1252(utf8);
    if (!text) {
        throw CSubstationError(line, "password: has a character that code page 1252 lacks");
    }
    return std::move(*text);
}

std::string WithoutTrailingBlanks(std::string text) {
    text.erase(text.find_last_not_of(" \t\n\v\f\r") + 1);
    return text;
}

Variant::Bytes EncipherPassword(const std::string& password, const std::string& key) {
    return CParlaneEncryptedPassword(password, key).GetBytes();
}

} // namespace ruvo::sim
