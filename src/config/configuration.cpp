#include "config/configuration.h"

#include "base/secret.h"
#include "config/duplicate_key.h"
#include "config/scramble.h"
#include "paths/path_utilities.h"
#include "platform/full_path.h"
#include "platform/ini_text.h"
#include "platform/profile.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <limits>
#include <utility>
#include <variant>

namespace ruvo {

namespace {

// Sizes of the buffers that take what is read: they bound the texts, so they are part of the file's format.
constexpr std::size_t kTextCapacity = kLongestText + 1;
constexpr std::size_t kIntegerCapacity = 1024;

constexpr std::string_view kRelayPrefix = "RV";
constexpr std::size_t kRelayKeySize = 5;

constexpr std::int32_t kNoAddress = -1;

std::string ReadTextKey(const CProfileReader& reader, std::string_view section, std::string_view key,
                        std::string_view defaultValue) {
    std::string text = reader.ReadString(section, key, "", kTextCapacity);
    return text.empty() ? std::string(defaultValue) : text;
}

std::string DefaultErrorLogPath(const std::string& eventRoot) {
    return eventRoot.empty() ? std::string() : eventRoot + '\\' + std::string(kErrorLogName);
}

// Paths come out as full ones. A log path of which none can be formed stays as typed, for the write test to
// refuse.
std::string ReadGeneralText(const CProfileReader& reader, const SGeneralKey& key, SRuvoConfigFields& fields) {
    const std::string typed = ReadTextKey(reader, kGeneralSection, key.name, "");
    if (key.rule == EKeyRule::ErrorLog) {
        fields.errorLogPathGiven = !typed.empty();
        if (typed.empty()) {
            return DefaultErrorLogPath(fields.eventRoot);
        }
        const std::string full = FullPath(typed);
        return full.empty() ? typed : full;
    }
    const std::string text = typed.empty() ? std::string(key.defaultText) : typed;
    return key.rule == EKeyRule::EventRoot ? FullFolderPath(text) : text;
}

// In the order of the table: the error log's default lies in the event root, which is read before it.
void ReadGeneralKeys(const CProfileReader& reader, SRuvoConfigFields& fields) {
    for (const SGeneralKey& key : kGeneralKeys) {
        if (const auto* const number = std::get_if<IntegerField>(&key.field)) {
            fields.** number = ReadIntKey(reader, kGeneralSection, key.name, NumericValue(key.defaultText),
                                          NotANumberValue(key.rule));
        } else {
            fields.*std::get<TextField>(key.field) = ReadGeneralText(reader, key, fields);
        }
    }
}

// An entry that is no number is left out, as if the key were missing; a number out of range is kept, for
// validation to refuse.
void ReadAddresses(const CProfileReader& reader, std::string_view section, AddressEntries& entries) {
    for (const std::string& key : RelayKeys(reader.KeyNames(section))) {
        const std::int32_t address = ReadIntKey(reader, section, key, kNoAddress, kNoAddress);
        if (address != kNoAddress) {
            entries.emplace_hint(entries.end(), key, address);
        }
    }
}

void ReadTexts(const CProfileReader& reader, std::string_view section, TextEntries& entries) {
    for (const std::string& key : RelayKeys(reader.KeyNames(section))) {
        std::string text = ReadTextKey(reader, section, key, "");
        if (!text.empty()) {
            entries.emplace_hint(entries.end(), key, std::move(text));
        }
    }
}

// A password that cannot be unscrambled counts as none: the relay is then contacted with an empty one.
void ReadPasswords(const CProfileReader& reader, TextEntries& passwords) {
    TextEntries scrambled;
    ReadTexts(reader, kPasswordsSection, scrambled);
    for (const auto& [key, text] : scrambled) {
        std::array<char, kMaxPasswordLength + 1> plain{};
        const CWipeValueAtScopeEnd wipe(plain);
        if (UnscramblePassword(text.c_str(), plain.data()) == 0) {
            passwords.emplace_hint(passwords.end(), key, plain.data());
        }
    }
}

} // namespace

std::string RelayKey(int number) {
    std::string key = "RV000";
    for (std::size_t digit = key.size(); digit > 2; --digit, number /= 10) {
        key[digit - 1] = static_cast<char>('0' + number % 10);
    }
    return key;
}

bool IsRelayKey(std::string_view key) {
    return key.size() == kRelayKeySize && EqualIniNames(key.substr(0, kRelayPrefix.size()), kRelayPrefix) &&
           IsNumericText(key.substr(kRelayPrefix.size()), true);
}

std::set<std::string> RelayKeys(std::span<const std::string> names) {
    std::set<std::string> keys;
    for (const std::string& name : names) {
        if (IsRelayKey(name)) {
            keys.insert(std::string(kRelayPrefix) + name.substr(kRelayPrefix.size()));
        }
    }
    return keys;
}

bool LoadConfiguration(const std::string& iniPath, CRuvoConfig& config) {
    SRuvoConfigFields fields;
    fields.iniPath = iniPath;
    const CProfileReader reader(iniPath);
    const bool hasSections = !reader.SectionNames(kTextCapacity).empty();
    if (hasSections) {
        ReadGeneralKeys(reader, fields);
        ReadAddresses(reader, kSerialSection, fields.serialEntries);
        ReadAddresses(reader, kModemSection, fields.modemEntries);
        ReadTexts(reader, kEthernetSection, fields.ethernetEntries);
        ReadPasswords(reader, fields.passwords);
        fields.sectionsWithDuplicates = SectionsWithDuplicates(reader.Text());
    }
    config = CRuvoConfig(std::move(fields));
    return hasSections;
}

std::int32_t ReadIntKey(const CProfileReader& reader, std::string_view section, std::string_view key,
                        std::int32_t defaultValue, std::int32_t notANumber) {
    const std::string text = reader.ReadString(section, key, "", kIntegerCapacity);
    if (text.empty()) {
        return defaultValue;
    }
    return IsNumericText(text, false) ? NumericValue(text) : notANumber;
}

bool IsNumericText(std::string_view text, bool allowLeadingZero) {
    const bool allDigits = !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
    return allDigits && (allowLeadingZero || text.size() == 1 || text.front() != '0');
}

std::int32_t NumericValue(std::string_view text) {
    constexpr std::int64_t kLargest = std::numeric_limits<std::int32_t>::max();
    std::int64_t value = 0;
    // Stops at the largest number: wrapping around could turn a number out of range into a valid one.
    for (const char digit : text) {
        value = std::min(value * 10 + (digit - '0'), kLargest);
    }
    return static_cast<std::int32_t>(value);
}

} // namespace ruvo
