// A relay with events for a visit, and its day file written out by hand.
#pragma once

#include "support/linked_test.h"
#include "support/scratch_folder.h"

#include "extraction/password_state.h"
#include "extraction/relay_visit.h"
#include "platform/full_path.h"

namespace ruvo::test {

inline constexpr const char* kFile = "AB12-00001234/AB12-00001234-2026-11-16-DEV.evt";
inline const std::string kTime =
    "3C07 4523 8D 87 10 02 1A";                   // 13:07:09.029 summer time, invalid, 16 February 2026
inline const std::string kLocation = "4402 1201"; // cell 01.12: the row comes first

inline std::string Bytes(std::string_view hex) {
    const auto bytes = Hex(hex);
    return {bytes.begin(), bytes.end()};
}

inline std::string Header(const std::string& nextExtended, const std::string& freeText = "headerText") {
    return "APP: Parlane\r\nTYPE: EventList\r\nFORMAT: 1.0\r\nNEXTEXTENDED: " + nextExtended + "\r\n\r\n" +
           freeText + "\r\n\x1A";
}

/// Items 3 to 15 of a block for device address 5, without the block's tag and length.
inline std::string Body(const std::string& recordNumber, const std::string& id, const std::string& text,
                        const std::string& value) {
    return recordNumber + id + kTime + "00 00 01 05 05 506C616E74 04 44657363 06 414231322D58 12 01" + text +
           value;
}

inline SScriptedEvent Event(std::uint8_t kind, std::initializer_list<std::string_view> further,
                            const std::string& text = TextHex("Trip"),
                            const std::string& location = kLocation) {
    Variant::List list = *List({location, kTime, text}).AsList();
    for (const std::string_view value : further)
        list.push_back(Tagged(value));
    return {kind, Variant::FromList(list)};
}

class Extraction : public LinkedTest {
protected:
    Extraction() {
        PasswordState() = SPasswordState{};
        server.values = {{0x0004, TextHex("Desc")},
                         {0x0005, TextHex("Plant  ")},
                         {0x0006, TextHex("AB12-X")},
                         {0x0008, TextHex("00001234 ")}};
    }

    SExtractionReport Extract(std::int32_t maxEvents = kNoEventLimit, const SVisitLimits& limits = {}) {
        SExtractionReport report;
        server.calls.clear();
        ExtractEventsToFile(5, folder.Path(), maxEvents, &report, limits);
        return report;
    }
    /// The same where one event is pending.
    SExtractionReport ExtractOne() {
        server.events = {Event(0, {"240107"})};
        return Extract();
    }
    std::string Calls(std::size_t from = 8) const {
        std::string all;
        for (std::size_t i = from; i < server.calls.size(); ++i)
            all += server.calls[i] + ";";
        return all;
    }
    /// The day file's path as the log shows it.
    std::string DayFileShown() const {
        return DisplayPath(folder.Path("AB12-00001234\\AB12-00001234-2026-11-16-DEV.evt"));
    }
    std::string Day() const { return folder.Read(kFile); }

    CScratchFolder folder;
};

} // namespace ruvo::test
