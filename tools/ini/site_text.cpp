#include "tools/ini/site_text.h"

#include "base/text.h"
#include "config/configuration.h"
#include "platform/native_text.h"

#include <algorithm>
#include <array>
#include <iterator>

namespace ruvo {

namespace {

/// A key of a new file and what it says there.
struct SEntryRow {
    const SGeneralKey& key;
    std::string SNewSite::*field;
    std::string_view advice = {}; ///< comment lines below the key's meaning
};

constexpr SEntryRow kPathEntries[] = {
    {GeneralKey("EventRootDir"), &SNewSite::events,
     "; Use absolute paths: a relative one is resolved against the folder of the program.\n"},
    {GeneralKey("ErrorLogPathname"), &SNewSite::log},
};
constexpr SEntryRow kSerialEntries[] = {
    {GeneralKey("CommPort"), &SNewSite::port},
    {GeneralKey("BaudRate"), &SNewSite::baud},
};
constexpr SEntryRow kModemEntries[] = {
    {GeneralKey("TAPI_ModemName"), &SNewSite::modem},
    {GeneralKey("TAPI_NumberToDial"), &SNewSite::number},
};

constexpr std::string_view kAddresses = "; Device address of each relay, from 1 to 254.";
constexpr std::string_view kTunnels =
    "; IP address, device address and, if the relay has one, bus address of each relay, without blanks:\n"
    "; RV001=10.20.0.5,2,1.";
constexpr std::string_view kPasswords =
    "; Scrambling only obscures a password; it is not encryption. Keep this file private.\n"
    "; A relay without an entry here is visited with an empty password. To store a password:\n";

std::span<const SEntryRow> LinkEntries(ELink link) {
    static constexpr std::array<std::span<const SEntryRow>, kLinks.size()> kEntries{
        kSerialEntries, kModemEntries, std::span<const SEntryRow>()};
    return kEntries[static_cast<std::size_t>(link)];
}

/// The key's meaning as a comment, with the valid values if they are a list.
std::string Comment(const SGeneralKey& key) {
    const std::string expected =
        key.rule == EKeyRule::BaudRate ? " One of " + Expectation(key.rule) + "." : "";
    return "; " + std::string(key.meaning) + expected + "\n";
}

std::string Line(const SGeneralKey& key, std::string_view value) {
    return std::string(key.name) + "=" + std::string(value) + "\n";
}
std::string DefaultLine(const SGeneralKey& key) {
    return Line(key, key.defaultText);
}

void AppendEntries(std::string& text, const SNewSite& site, std::span<const SEntryRow> rows) {
    for (const SEntryRow& row : rows) {
        text += Comment(row.key) + std::string(row.advice) + Line(row.key, site.*row.field);
    }
}

/// The keys of a link whose default is nearly always right.
std::string UsualEntries(ELink link) {
    constexpr const SGeneralKey& kFrames = GeneralKey("ElevenBits");
    constexpr const SGeneralKey& kCodes = GeneralKey("TAPI_UseCountryAndAreaCodes");
    switch (link) {
    case ELink::Serial:
        return Comment(kFrames) + DefaultLine(kFrames) + "\n";
    case ELink::Modem:
        return Comment(kCodes) + DefaultLine(kCodes) + ";" + DefaultLine(GeneralKey("TAPI_CountryCode")) +
               ";" + DefaultLine(GeneralKey("TAPI_AreaCode")) + "\n";
    case ELink::Ethernet:
        return {};
    }
    return {};
}

std::string Switches(const SLinkRow& link) {
    constexpr const SGeneralKey& kUseEthernet = GeneralKey("UseEthernet");
    constexpr const SGeneralKey& kUseModem = GeneralKey("UseModem");
    return Comment(kUseEthernet) + Line(kUseEthernet, link.useEthernet) + Comment(kUseModem) +
           Line(kUseModem, link.useModem) + "\n";
}

std::string TimingEntries() {
    std::string text;
    for (const SGeneralKey& key : kGeneralKeys) {
        if (key.rule == EKeyRule::Timing) {
            text += text.empty() ? Comment(key) + "; Each is " + Expectation(key.rule) +
                                       ". The values shown are the defaults.\n"
                                 : "";
            text += ";" + DefaultLine(key);
        }
    }
    return text;
}

bool IsLineEnd(char c) {
    return c == '\r' || c == '\n';
}

/// The name goes into a comment, which must stay on one line.
std::string OnOneLine(std::string text) {
    std::ranges::replace_if(text, IsLineEnd, ' ');
    return text;
}

} // namespace

std::optional<SNewSite> AsStored(SNewSite site) {
    for (std::string SNewSite::*field : {&SNewSite::name, &SNewSite::events, &SNewSite::log, &SNewSite::port,
                                         &SNewSite::baud, &SNewSite::modem, &SNewSite::number}) {
        const auto stored = StoredText(site.*field);
        if (!stored) {
            return std::nullopt;
        }
        site.*field = *stored;
    }
    return site;
}

std::string NewSiteText(const SNewSite& site) {
    const SLinkRow& link = LinkRow(site.link);
    const std::string file = OnOneLine(site.name) + ".ini";
    std::string text = "; Site " + OnOneLine(site.name) +
                       ". A line that starts with \";\" is a comment. Numbers are decimal.\n"
                       "; After editing this file, run ruvoctl check " +
                       file + " to validate it.\n\n[" + std::string(kGeneralSection) + "]\n";
    AppendEntries(text, site, kPathEntries);
    text += "\n" + Switches(link);
    AppendEntries(text, site, LinkEntries(site.link));
    text += UsualEntries(site.link) + TimingEntries() + "\n[" + std::string(link.section) + "]\n";
    text += site.link == ELink::Ethernet ? kTunnels : kAddresses;
    text += " Keys run from RV000 to RV999; relays are visited in that order.\n"
            "; ruvoctl add " +
            file + " ADDRESS adds a relay.\n\n[" + std::string(kPasswordsSection) + "]\n" +
            std::string(kPasswords) + "; ruvoctl password set " + file + " RV001\n";
    return text;
}

std::string UnreadableEntry(const SNewSite& site, const CIniText& ini) {
    for (const auto& rows : {std::span<const SEntryRow>(kPathEntries), LinkEntries(site.link)}) {
        for (const SEntryRow& row : rows) {
            const SIniEntry* const entry = ini.FindEntry(kGeneralSection, row.key.name);
            const bool reads = entry != nullptr && entry->value == site.*row.field;
            const bool hasControl = std::ranges::any_of(site.*row.field, IsControlCharacter);
            if (!reads || hasControl || (site.*row.field).size() > kLongestText) {
                return std::string(row.key.name);
            }
        }
    }
    return {};
}

} // namespace ruvo
