#include "config/configuration.h"

#include "base/secret.h"
#include "config/scramble.h"
#include "paths/path_utilities.h"
#include "platform/full_path.h"
#include "platform/ini_text.h"
#include "platform/message_box.h"
#include "platform/profile.h"
#include "platform/registry.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <limits>
#include <optional>
#include <utility>

namespace ruvo {

namespace {

// Sizes of the buffers that take what is read: they bound the texts, so they are part of the file's format.
constexpr std::size_t kTextCapacity = 301;
constexpr std::size_t kIntegerCapacity = 1024;
constexpr std::size_t kRegistryCapacity = 100000;

constexpr std::string_view kStudioKey = R"(SOFTWARE\Halvex\Norvo Q7 Studio)";
constexpr std::string_view kDestinationValue = "Q7SecurityLogs";
constexpr std::string_view kRegistrySubfolder = R"(\RUVO\)";

constexpr std::string_view kRelayPrefix = "RV";
constexpr std::size_t kRelayKeySize = 5;

// What a text that is no number becomes: above every limit, so that validation names the key.
constexpr std::int32_t kBadSwitch = 2;
constexpr std::int32_t kBadBaudRate = 0;
constexpr std::int32_t kBadTransactionValue = 70000;
constexpr std::int32_t kNoAddress = -1;

struct SIntegerKey {
    std::string_view name;
    std::int32_t SRuvoConfigFields::*field;
    std::int32_t defaultValue;
    std::int32_t notANumber;
};

constexpr std::array kIntegerKeys{
    SIntegerKey{"UseEthernet", &SRuvoConfigFields::useEthernet, 0, kBadSwitch},
    SIntegerKey{"BaudRate", &SRuvoConfigFields::baudRate, 9600, kBadBaudRate},
    SIntegerKey{"ElevenBits", &SRuvoConfigFields::elevenBits, 1, kBadSwitch},
    SIntegerKey{"BusyHoldoff", &SRuvoConfigFields::busyHoldoff, 50, kBadTransactionValue},
    SIntegerKey{"BusyCount", &SRuvoConfigFields::busyCount, 100, kBadTransactionValue},
    SIntegerKey{"ResetResponse", &SRuvoConfigFields::resetResponse, 100, kBadTransactionValue},
    SIntegerKey{"Response", &SRuvoConfigFields::response, 100, kBadTransactionValue},
    SIntegerKey{"TryCount", &SRuvoConfigFields::tryCount, 3, kBadTransactionValue},
    SIntegerKey{"TransmitDelay", &SRuvoConfigFields::transmitDelay, 5, kBadTransactionValue},
    SIntegerKey{"GlobalTransmit", &SRuvoConfigFields::globalTransmit, 10, kBadTransactionValue},
    SIntegerKey{"UseModem", &SRuvoConfigFields::useModem, 0, kBadSwitch},
    SIntegerKey{"TAPI_LineAddress", &SRuvoConfigFields::tapiLineAddress, 0, 0},
    SIntegerKey{"TAPI_UseCountryAndAreaCodes", &SRuvoConfigFields::tapiUseCountryAndAreaCodes, 0, kBadSwitch},
};

struct STextKey {
    std::string_view name;
    std::string SRuvoConfigFields::*field;
    std::string_view defaultValue;
};

constexpr std::array kTextKeys{
    STextKey{"CommPort", &SRuvoConfigFields::commPort, "COM1"},
    STextKey{"TAPI_ModemName", &SRuvoConfigFields::tapiModemName, ""},
    STextKey{"TAPI_NumberToDial", &SRuvoConfigFields::tapiNumberToDial, ""},
    STextKey{"TAPI_AreaCode", &SRuvoConfigFields::tapiAreaCode, ""},
    STextKey{"TAPI_CountryCode", &SRuvoConfigFields::tapiCountryCode, ""},
};

std::string ReadTextKey(const CProfileReader& reader, std::string_view section, std::string_view key,
                        std::string_view defaultValue) {
    std::string text = reader.ReadString(section, key, "", kTextCapacity);
    return text.empty() ? std::string(defaultValue) : text;
}

// Full path without separators at its end; empty when it cannot be formed. Whoever joins something to it has
// to look at that first: "\name" would be a file in the root of the current drive.
std::string FullFolderPath(const std::string& folder) {
    std::string full = FullPath(folder);
    StripTrailingSeparators(full);
    return full;
}

std::string DefaultErrorLogPath(const std::string& eventRoot) {
    return eventRoot.empty() ? std::string() : eventRoot + '\\' + std::string(kErrorLogName);
}

void ReadPaths(const CProfileReader& reader, SRuvoConfigFields& fields) {
    fields.eventRoot = FullFolderPath(ReadTextKey(reader, kGeneralSection, "EventRootDir", "."));
    const std::string typed = ReadTextKey(reader, kGeneralSection, "ErrorLogPathname", "");
    fields.errorLogPathGiven = !typed.empty();
    if (!fields.errorLogPathGiven) {
        fields.errorLogPath = DefaultErrorLogPath(fields.eventRoot);
        return;
    }
    fields.errorLogPath = FullPath(typed);
    if (fields.errorLogPath.empty()) {
        fields.errorLogPath = typed;
    }
}

void ReadGeneralKeys(const CProfileReader& reader, SRuvoConfigFields& fields) {
    for (const SIntegerKey& key : kIntegerKeys) {
        fields.*key.field = ReadIntKey(reader, kGeneralSection, key.name, key.defaultValue, key.notANumber);
    }
    for (const STextKey& key : kTextKeys) {
        fields.*key.field = ReadTextKey(reader, kGeneralSection, key.name, key.defaultValue);
    }
}

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

std::optional<std::string> RegistryDestination(ERegistryRoot root) {
    std::optional<std::string> value =
        ReadRegistryValue(root, kStudioKey, kDestinationValue, kRegistryCapacity);
    if (value) {
        value->resize(std::min(value->size(), value->find('\0')));
    }
    return value;
}

// Looks at the very folder that would be used.
bool IsUsableFolder(const std::string& folder) {
    const std::string full = FullFolderPath(folder);
    std::string firstCreated;
    return DirectoryExists(full) || CreateDirectoryPath(full, firstCreated);
}

// A folder that cannot be made absolute leaves the root empty, which the write test then refuses.
void TakeRegistryDestination(CRunContext& context, const std::string& folder) {
    std::string root = FullFolderPath(folder);
    if (!root.empty()) {
        root += kRegistrySubfolder;
    }
    context.SetDestinationRoot(std::move(root));
    context.SetDestinationFromRegistry(true);
}

void TellUserDestinationInvalid(const std::string& machineFolder) {
    ShowMessageBox(EMessageIcon::Information, "Information",
                   "Registry entry with destination path for current user is invalid.\n"
                   "Events will be extracted with use of default application settings.\n"
                   "Destination path: " +
                       DisplayPath(FullPath(machineFolder)));
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
        ReadPaths(reader, fields);
        ReadGeneralKeys(reader, fields);
        ReadAddresses(reader, kSerialSection, fields.serialEntries);
        ReadAddresses(reader, kModemSection, fields.modemEntries);
        ReadTexts(reader, kEthernetSection, fields.ethernetEntries);
        ReadPasswords(reader, fields.passwords);
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
    for (const char digit : text) {
        value = std::min(value * 10 + (digit - '0'), kLargest);
    }
    return static_cast<std::int32_t>(value);
}

void ResolveDestinationRoot(CRunContext& context, bool configurationLoaded) {
    context.SetDestinationFromRegistry(false);
    if (configurationLoaded) {
        context.SetDestinationRoot(context.Config().EventRoot());
    }
    const std::optional<std::string> userFolder = RegistryDestination(ERegistryRoot::CurrentUser);
    if (userFolder && IsUsableFolder(*userFolder)) {
        TakeRegistryDestination(context, *userFolder);
        return;
    }
    const std::optional<std::string> machineFolder = RegistryDestination(ERegistryRoot::LocalMachine);
    if (!machineFolder) {
        return;
    }
    if (userFolder) {
        TellUserDestinationInvalid(*machineFolder);
    }
    TakeRegistryDestination(context, *machineFolder);
}

} // namespace ruvo
