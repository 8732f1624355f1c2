// The relays of an INI file, for the commands that list and edit them.
#pragma once

#include "config/ini_keys.h"
#include "platform/ini_text.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

namespace ruvo {

inline constexpr std::string_view kLinkChoices = "serial|modem|ethernet";

/// None if the text is not the name of a link.
std::optional<ELink> LinkNamed(std::string_view name);
/// The link whose relays a run visits; none if a switch is neither 0 nor 1.
std::optional<ELink> SelectedLink(const CIniText& ini);

/// A password is `Stored` if a run would use it, and `None` also if it is empty.
enum class EStoredPassword : std::uint8_t { None, Stored, Unusable };

struct SRelay {
    ELink link = ELink::Serial;
    std::string key;  ///< in capital letters
    std::string text; ///< the value of the key
    EStoredPassword password = EStoredPassword::None;
};

/// True if the entry exists and is not empty.
bool HasValue(const SIniEntry* entry);

/// Every effective entry of a device section that has a value; by link, then by key.
std::vector<SRelay> ListRelays(const CIniText& ini);
EStoredPassword PasswordOf(const CIniText& ini, std::string_view key);

/// What is expected of an entry of that link instead of the text, as "expected ..."; empty if a run accepts
/// it.
std::string WantInstead(ELink link, std::string_view text);

/// The identity of a relay within a link: IP address, device address, bus address.
using RelayAddress = std::tuple<std::string, std::int32_t, std::int32_t>;
/// The address in the text of an entry.
RelayAddress AddressOf(ELink link, std::string_view text);

/// The key of the link's relay that has that address, in any notation; empty if there is none.
std::string KeyWithAddress(const CIniText& ini, ELink link, std::string_view text);

/// The key after the highest one in the file, else the lowest one that does not occur in it: a key left in
/// [RUVO_PASSWORDS] would give a new relay the password of another. None if all are in use.
std::optional<std::string> FreeKey(const CIniText& ini);

/// Why the relay cannot be added with that key; empty if it can. The key is empty if none is free.
std::string WhyNotAdded(const CIniText& ini, ELink link, const std::string& key, const std::string& address);

/// "[NAME]".
std::string Bracketed(std::string_view section);

/// RV and three digits in capital letters.
std::string UpperKey(std::string_view key);

} // namespace ruvo
