// What the runs that end begin with, and the events of their relays.
#pragma once

#include "fault_rig.h"

#include <array>
#include <cstdio>
#include <iomanip>
#include <ostream>
#include <sstream>
#include <string>

namespace ruvo::test {

inline constexpr const char* kDayFile = "C:\\ev\\AB12-0001\\AB12-0001-2026-11-16-DEV.evt";

enum class EStart : std::uint8_t { NoRoot, NoFolder, Folder, EmptyFile, Header, Records };

struct SCrashCase {
    const char* name;
    EStart start = EStart::NoFolder;
    bool bothInOneFile = false; ///< two relays of one name: two visits to one day file
    bool isNextVisited = false; ///< the second relay has events
    bool hasState = true;       ///< the state folder is there
    const char* locked = "";    ///< for the first run: a folder that takes nothing new
    const char* full = "";      ///< and one that takes some bytes only, another number in each run
    std::size_t fullAt = 0;     ///< the least of them, and by how many they may be more
    std::size_t fullWithin = 2'000;
    bool isMoved = false;       ///< a person may put the day file away after an end
    std::size_t abortedAt = 0;  ///< the first relay's event at which the first run's visit is aborted
    bool isRefusedOnce = false; ///< one operation of the first run fails
    bool meetsAnother = false;  ///< another run cleans up during the first
    int cells = 1;              ///< of extended records, with 250 letters each
};
inline void PrintTo(const SCrashCase& test, std::ostream* out) {
    *out << test.name;
}

inline const SCrashCase kCases[] = {
    {.name = "NothingThere", .hasState = false},
    {.name = "NoEventRoot", .start = EStart::NoRoot},
    {.name = "FolderThere", .start = EStart::Folder},
    {.name = "EmptyFile", .start = EStart::EmptyFile},
    {.name = "HeaderAlone", .start = EStart::Header},
    {.name = "EarlierRecords", .start = EStart::Records},
    {.name = "TwoRelays", .start = EStart::Records, .isNextVisited = true},
    {.name = "TwoVisitsToOneFile", .bothInOneFile = true, .isNextVisited = true},
    {.name = "NoJournal", .hasState = false, .locked = "C:\\var"},
    {.name = "NoJournalNoEventRoot", .start = EStart::NoRoot, .locked = "C:\\var\\state"},
    {.name = "FullJournal", .isNextVisited = true, .full = "C:\\var", .fullWithin = 400'000, .cells = 200},
    {.name = "FullEventDisk", .isNextVisited = true, .full = "C:\\ev"},
    {.name = "FullEventDiskBehindRecords", .start = EStart::Records, .full = "C:\\ev", .fullAt = 1'000},
    {.name = "MovedDayFile", .start = EStart::Records, .isMoved = true},
    {.name = "MovedNewDayFile", .isMoved = true},
    {.name = "OneRefusal", .start = EStart::Records, .isNextVisited = true, .isRefusedOnce = true},
    {.name = "Aborted", .start = EStart::Records, .isNextVisited = true, .abortedAt = 4},
    {.name = "AbortedWithLongRecords", .abortedAt = 5, .cells = 200},
    {.name = "AbortedRefusedOnce", .start = EStart::Header, .abortedAt = 5, .isRefusedOnce = true},
    {.name = "AnotherRun", .meetsAnother = true},
    {.name = "AnotherRunOnEmptyFile", .start = EStart::EmptyFile, .meetsAnother = true},
    {.name = "LongRecords", .start = EStart::Records, .cells = 200},
};

// ---- The relays: of each, some events wait for the first run, some for the second, one for the third.

inline constexpr int kSimple = 0, kExtended = 3, kUnknown = 99; // kinds of events
inline constexpr std::array kEvents{kSimple, kExtended, kUnknown, kExtended,
                                    kSimple, kExtended, kSimple,  kSimple};
inline constexpr std::array<std::size_t, 3> kReadyAt{5, 7, 8};
inline constexpr int kPerRelay = 1000;
inline constexpr std::array kAddresses{kTested, kNext};

inline int RelayOf(int event) {
    return event / kPerRelay;
}
inline bool IsUnknown(int event) {
    return kEvents[static_cast<std::size_t>(event % kPerRelay)] == kUnknown;
}

/// The relay at the address, as its substation file describes it.
inline std::string RelayText(const SCrashCase& test, int address, bool hasEvents) {
    std::ostringstream text;
    text << "[[relay]]\nserial = " << address << "\nidentity = { model = \"AB12-X\", serial = \"000"
         << (test.bothInOneFile ? kTested : address) << "\" }\n"
         << "cells.\"09.01\" = { index = 1, strings = [\"Off\", \"On\"] }\n"
         << "columns.\"30\" = { locations = \"uint\" }\n"
         << "[[relay.record]]\ncolumn = \"30\"\nnumber = 1\n";
    for (int cell = 2; cell < 2 + test.cells; ++cell)
        text << "cells.\"30." << std::hex << std::uppercase << std::setw(2) << std::setfill('0') << cell
             << std::dec << "\" = { text = \"" << std::string(250, 'z') << "\", label = \"Cell\" }\n";
    for (std::size_t n = 0; hasEvents && n < kEvents.size(); ++n) {
        std::array<char, 16> mark{};
        std::snprintf(mark.data(), mark.size(), "Event#%04d ", address * kPerRelay + static_cast<int>(n));
        text << "[[relay.event]]\nkind = " << kEvents[n]
             << "\nlocation = \"09.01\"\ntime = 2026-02-16T13:07:09\n"
             << "text = \"" << mark.data() << std::string(150, static_cast<char>('a' + n))
             << "\"\nvalue = { uint = 1 }\n"
             << (kEvents[n] == kExtended ? "record = { column = \"30\", number = 1 }\n" : "");
    }
    return text.str();
}

} // namespace ruvo::test
