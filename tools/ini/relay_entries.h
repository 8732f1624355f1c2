// The relays of an INI file, as the commands that list and edit them see them.
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

/// None for a text that names no link.
std::optional<ELink> LinkNamed(std::string_view name);
/// The link whose relays a run visits; none when the file's switches say neither 0 nor 1.
std::optional<ELink> SelectedLink(const CIniText& ini);

/// What stands for a relay; a password is `stored` when a run would use it, `none` also when it is an empty
/// one.
enum class EStoredPassword : std::uint8_t { None, Stored, Unusable };

struct SRelay {
    ELink link = ELink::Serial;
    std::string key;  ///< in capital letters
    std::string text; ///< what the file says behind the key
    EStoredPassword password = EStoredPassword::None;
};

/// Whether there is such an entry, and it says something.
bool HasValue(const SIniEntry* entry);

/// Every entry of a device section that a reader would see and that has a value; by link, then by key.
std::vector<SRelay> ListRelays(const CIniText& ini);
EStoredPassword PasswordOf(const CIniText& ini, std::string_view key);

/// What is expected of an entry of that link instead of the text, as "want ..."; empty when a run takes it.
std::string WantInstead(ELink link, std::string_view text);

/// What tells two relays of a link apart: IP address, device address, bus address.
using RelayAddress = std::tuple<std::string, std::int32_t, std::int32_t>;
/// Of an entry that says that text.
RelayAddress AddressOf(ELink link, std::string_view text);

/// The relay of the link that has that address, however its entry writes it; empty when none has.
std::string KeyWithAddress(const CIniText& ini, ELink link, std::string_view text);

/// The key behind the highest one that stands anywhere in the file, else the lowest that stands nowhere:
/// under a key that is left over in [RUVO_PASSWORDS] a new relay would get another one's password. None when
/// all are taken.
std::optional<std::string> FreeKey(const CIniText& ini);

/// Why the relay cannot be added under that key, with what is wanted; empty when it can. The key is empty
/// when none is free.
std::string WhyNotAdded(const CIniText& ini, ELink link, const std::string& key, const std::string& address);

/// "[NAME]".
std::string Bracketed(std::string_view section);

/// RV and three digits in capital letters.
std::string UpperKey(std::string_view key);

} // namespace ruvo
