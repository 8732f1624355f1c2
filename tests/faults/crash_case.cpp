#include "crash_case.h"

#include <cstdio>
#include <iomanip>
#include <sstream>

namespace ruvo::test {

std::string RelayText(const SCrashCase& test, int address, bool hasEvents) {
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
             << "text = \"" << mark.data() << std::string(kTextSize, static_cast<char>('a' + n))
             << "\"\nvalue = { uint = 1 }\n"
             << (kEvents[n] == kExtended ? "record = { column = \"30\", number = 1 }\n" : "");
    }
    return text.str();
}

} // namespace ruvo::test
