// The text of a new INI file.
#pragma once

#include "tools/ini/relay_entries.h"

#include <optional>
#include <string>

namespace ruvo {

/// The settings of a new file, without its relays.
struct SNewSite {
    std::string name;
    ELink link = ELink::Serial;
    std::string events; ///< absolute paths, in the system's own form
    std::string log;
    std::string port; ///< of a serial link
    std::string baud;
    std::string modem; ///< of a modem link
    std::string number;
};

/// The same in the bytes of a file that a run reads; none where the file cannot hold a text.
std::optional<SNewSite> AsStored(SNewSite site);

/// The file with comments, without relays; its last two sections are the link's and the passwords'.
std::string NewSiteText(const SNewSite& site);

/// The key of an entry that would not read back unchanged, because its text has surrounding blanks or quotes,
/// a control character or too many characters; empty if all would.
std::string UnreadableEntry(const SNewSite& site, const CIniText& ini);

} // namespace ruvo
