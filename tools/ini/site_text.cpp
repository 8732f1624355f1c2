#include "tools/ini/site_text.h"

#include "config/configuration.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <iterator>

namespace ruvo {

namespace {

constexpr std::size_t kLongestText = 300; // what a run reads of a text

struct SEntryRow {
    std::string_view key;
    std::string SNewSite::*field;
    std::string_view comment;
};

constexpr SEntryRow kPathEntries[] = {
    {"EventRootDir", &SNewSite::events,
     "; Folder that receives a folder for each relay, with a file for each day. Give full paths: a relative "
     "one\n"
     "; counts from the folder of the program, not from yours.\n"},
    {"ErrorLogPathname", &SNewSite::log, "; What went wrong, a line each.\n"},
};
constexpr SEntryRow kSerialEntries[] = {
    {"CommPort", &SNewSite::port, "; The serial port, as the comms server names it.\n"},
    {"BaudRate", &SNewSite::baud, "; 1200, 2400, 4800, 9600, 19200, 38400, 57600 or 115200.\n"},
};
constexpr SEntryRow kModemEntries[] = {
    {"TAPI_ModemName", &SNewSite::modem, "; The modem, as the telephony of the machine names it.\n"},
    {"TAPI_NumberToDial", &SNewSite::number, "; The telephone number.\n"},
};

constexpr std::string_view kFrames =
    "; 1: frames of 11 bits with even parity, 0: frames of 10 bits without.\nElevenBits=1\n";
constexpr std::string_view kCodes = "; 1: dial with the country and area codes below.\n"
                                    "TAPI_UseCountryAndAreaCodes=0\n"
                                    ";TAPI_CountryCode=\n"
                                    ";TAPI_AreaCode=\n";
constexpr std::string_view kSwitches = "; UseEthernet=1 visits the relays of [RUVO_ETHERNET]. Else "
                                       "UseModem=1 visits those of [RUVO_MODEM], and\n"
                                       "; UseModem=0 those of [RUVO_SERIAL].\n";
constexpr std::string_view kTiming =
    "; Timing of the link, from 0 to 65535 each, handed to the comms server. These are the values without a "
    "line.\n"
    ";BusyHoldoff=50\n;BusyCount=100\n;ResetResponse=100\n;Response=100\n;TryCount=3\n;TransmitDelay=5\n"
    ";GlobalTransmit=10\n";
constexpr std::string_view kAddresses = "; The device address of each relay, 1 to 254.";
constexpr std::string_view kTunnels =
    "; IP address, device address and, where the relay has one, bus address of each relay, without blanks:\n"
    "; RV001=10.20.0.5,2,1.";
constexpr std::string_view kPasswords =
    "; Scrambled, which hides a password from a glance and is no encryption: keep this file from other "
    "users.\n"
    "; Without an entry here a relay is visited with an empty password. To store one, without showing it:\n";

std::span<const SEntryRow> LinkEntries(ELink link) {
    static constexpr std::array<std::span<const SEntryRow>, kLinks.size()> kEntries{
        kSerialEntries, kModemEntries, std::span<const SEntryRow>()};
    return kEntries[static_cast<std::size_t>(link)];
}

void AppendEntries(std::string& text, const SNewSite& site, std::span<const SEntryRow> rows) {
    for (const SEntryRow& row : rows) {
        text += row.comment;
        text += std::string(row.key) + "=" + site.*row.field + "\n";
    }
}

bool IsLineEnd(char c) {
    return c == '\r' || c == '\n';
}

/// A name goes into a comment, which a line end in it would end.
std::string OnOneLine(std::string text) {
    std::ranges::replace_if(text, IsLineEnd, ' ');
    return text;
}

} // namespace

std::string NewSiteText(const SNewSite& site) {
    const SLinkRow& link = LinkRow(site.link);
    const std::string file = OnOneLine(site.name) + ".ini";
    std::string text = "; Site " + OnOneLine(site.name) +
                       ". A line that begins with \";\" is a comment. Numbers are plain decimal digits.\n"
                       "; After an edit by hand, ruvoctl check " +
                       file + " tells what is wrong, and where.\n\n[" + std::string(kGeneralSection) + "]\n";
    AppendEntries(text, site, kPathEntries);
    text += "\n" + std::string(kSwitches) + "UseEthernet=" + std::string(link.useEthernet) +
            "\nUseModem=" + std::string(link.useModem) + "\n\n";
    AppendEntries(text, site, LinkEntries(site.link));
    text += site.link == ELink::Serial ? std::string(kFrames) + "\n" : "";
    text += site.link == ELink::Modem ? std::string(kCodes) + "\n" : "";
    text += std::string(kTiming) + "\n[" + std::string(link.section) + "]\n";
    text += site.link == ELink::Ethernet ? kTunnels : kAddresses;
    text += " Keys run from RV000 to RV999, and are visited in that order.\n; ruvoctl add " + file +
            " ADDRESS adds a relay.\n\n[" + std::string(kPasswordsSection) + "]\n" + std::string(kPasswords) +
            "; ruvoctl password set " + file + " RV001\n";
    return text;
}

std::string UnreadableEntry(const SNewSite& site, const CIniText& ini) {
    for (const auto& rows : {std::span<const SEntryRow>(kPathEntries), LinkEntries(site.link)}) {
        for (const SEntryRow& row : rows) {
            const SIniEntry* const entry = ini.FindEntry(kGeneralSection, row.key);
            const bool reads = entry != nullptr && entry->value == site.*row.field;
            const bool hasControl = std::ranges::any_of(
                site.*row.field, [](char c) { return std::iscntrl(static_cast<unsigned char>(c)) != 0; });
            if (!reads || hasControl || (site.*row.field).size() > kLongestText) {
                return std::string(row.key);
            }
        }
    }
    return {};
}

} // namespace ruvo
