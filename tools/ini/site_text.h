// The text of a new INI file.
#pragma once

#include "tools/ini/relay_entries.h"

#include <string>

namespace ruvo {

/// What a new file says beyond its relays.
struct SNewSite {
    std::string name;
    ELink link = ELink::Serial;
    std::string events; ///< full paths, as the system's own programs write them
    std::string log;
    std::string port; ///< of a serial link
    std::string baud;
    std::string modem; ///< of a modem link
    std::string number;
};

/// The file with comments and without relays yet: its last two sections are the link's and the passwords'.
std::string NewSiteText(const SNewSite& site);

/// The entry that does not read back as it was meant, since its text has blanks or quotes around it, a
/// control character or too much of everything; empty when all do.
std::string UnreadableEntry(const SNewSite& site, const CIniText& ini);

} // namespace ruvo
