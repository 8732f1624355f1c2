// What each kind of event must hold, and the record that it becomes.
#include "extraction/extraction_fixture.h"

#include <filesystem>

namespace ruvo::test {

struct SKindCase {
    const char* name;
    SScriptedEvent event;
    std::string calls; ///< between the first status byte and the one after the event
    std::string image; ///< hex
    const char* nextExtended;
    LinkStatus endStatus = kLinkGood;
};

TEST_F(Extraction, EachEventKindBecomesItsRecord) {
    server.strings[0x0112] = {TextHex("Start"), TextHex("Trip A")};
    server.strings[0x3002] = {TextHex("Off"), TextHex("On\x95")}; // the relay's e with an acute accent
    server.limits[0x3003] = {TextHex("Limit")};
    server.texts[0x2005] = TextHex("Value %d");
    server.columns[0x30] = {List({"44020230", "24020330", "24020430", "24020530", "24020630", "44020730"}),
                            List({TextHex("State"), TextHex("Text %s"), "240101", "240101"}),
                            List({"500101", TextHex("old"), "480101", "240107", "240108"})};
    const std::string id1 = "01000000";
    const std::string trip = "04 54726970";
    const std::string column = // a state as its text, a text as its limit, two numbers without a label
        "05 5374617465 18034F6E95 00 07 54657874202573 18054C696D6974 00 00 24010700 00 24010800";
    const auto extended = [&](const std::string& number, const std::string& length, const std::string& text,
                              const std::string& value) {
        return "00" + length + Body(number, id1, text, value) + "00";
    };
    const SKindCase cases[] = {
        {"kind 0 with a value", Event(0, {"24020700"}), "",
         extended("01", "3000", trip, "24020700") + "01 1600 01000000 0C 4576656E742056616C756520 2402070000",
         "000002"},
        {"kind 0, the text's format moves to the cell", Event(0, {"240107"}, TextHex("Amps %u of %u")), "",
         extended("01", "2F00", "04 416D7073", "240107") +
             "01 1D00 01000000 14 4576656E742056616C7565202575206F66202575 24010700",
         "000002"},
        {"kind 0 with flags asks for their names", Event(0, {"200103"}),
         "GetStrings 01.12;FetchStrings 01.12;",
         extended("01", "2F00", trip, "200103") +
             "01 2200 01000000 0C 4576656E742056616C756520 200103 02 05 5374617274 06 547269702041",
         "000002"},
        {"kind 0 with an index stores its text", Event(0, {"500101"}), "GetStrings 01.12;FetchStrings 01.12;",
         extended("01", "2F00", trip, "500101") +
             "01 1A00 01000000 0C 4576656E742056616C756520 1806547269702041 00",
         "000002"},
        {"kind 0 with a reply code has no cell", Event(0, {"480105"}), "",
         extended("01", "2F00", trip, "480105") + "01 0400 01000000", "000002"},
        {"kind 0 without data has an empty cell", Event(0, {"5800"}), "",
         extended("01", "2E00", trip, "FF00") + "01 1400 01000000 0C 4576656E742056616C756520 FF00 00",
         "000002"},
        {"kind 4 adds the relay's own id", Event(4, {"240107", "240409000000"}), "",
         extended("01", "2F00", trip, "240107") +
             "01 3100 01000000 0C 4576656E742056616C756520 24010700"
             "14 45767420556E69717565204964202020 20256C75 24040900000000",
         "000002"},
        {"kind 1 carries format and values",
         Event(1, {"240107", TextHex("%d and %s"), "280105", TextHex("x")}), "",
         "00 3E00" + Body("00", "00000000", trip, "240107") + "09 256420616E64202573 280105 180178",
         "000001"},
        {"kind 2 fetches its format", Event(2, {"240107", "44020520", "280105"}), "GetText 20.05;",
         "00 3A00" + Body("00", "00000000", trip, "240107") + "08 56616C7565202564 280105", "000001"},
        {"kind 2 without its format is still kept", Event(2, {"240107", "44020620"}), "GetText 20.06;",
         "00 2F00" + Body("00", "00000000", trip, "240107") + "00", "000001", kReplyNoSuchCell},
        {"kind 3 reads its record column", Event(3, {"240107", "44020030", "240109"}),
         "ChangeSetting 30.01;GetColumnTextAndValues 00.30;FetchColumnTextAndValues 00.30;GetStrings 30.02;"
         "FetchStrings 30.02;GetSettingLimits 30.03;",
         extended("01", "2F00", trip, "240107") + "01 3B00 01000000 0C 4576656E742056616C756520 24010700" +
             column,
         "000002"},
        {"kind 5 adds the relay's own id", Event(5, {"240107", "240108", "44020030", "240109"}),
         "ChangeSetting 30.01;GetColumnTextAndValues 00.30;FetchColumnTextAndValues 00.30;GetStrings 30.02;"
         "FetchStrings 30.02;GetSettingLimits 30.03;",
         extended("01", "2F00", trip, "240107") + "01 5400 01000000 0C 4576656E742056616C756520 24010700" +
             column + "14 45767420556E69717565204964202020 20256C75 24010800",
         "000002"},
    };
    for (const SKindCase& test : cases) {
        std::filesystem::remove_all(folder.Native("AB12-00001234"));
        server.events.push_back(test.event);
        const SExtractionReport report = Extract();
        EXPECT_EQ(report.recordsWritten, 1U) << test.name;
        EXPECT_EQ(report.endStatus, test.endStatus) << test.name;
        EXPECT_TRUE(report.problems.empty()) << test.name;
        EXPECT_EQ(Calls(), "GetEvent;" + test.calls + (test.endStatus == kLinkGood ? "GetDeviceStatus;" : ""))
            << test.name;
        EXPECT_EQ(Day(), Header(test.nextExtended) + Bytes(test.image)) << test.name;
    }
    // A relay that does not let a record be selected, or its texts be read, still gives its event.
    const std::string value = " 01000000 0C 4576656E742056616C756520 24010700";
    const struct {
        const char* call;
        LinkStatus status;
        std::string cells; ///< hex; empty: no record
    } faults[] = {
        {"ChangeSetting 30.01", ReplyStatus(9), "01 1500" + value},
        {"FetchColumnTextAndValues 00.30", ReplyStatus(12), "01 1500" + value},
        {"FetchStrings 30.02", ReplyStatus(9),
         "01 3800" + value + "05 5374617465 FF00 00" + column.substr(column.find(" 07 "))},
        {"FetchStrings 30.02", 9, ""}, // the server does not understand itself
    };
    for (const auto& fault : faults) {
        std::filesystem::remove_all(folder.Native("AB12-00001234"));
        server.events.push_back(Event(3, {"240107", "44020030", "240109"}));
        server.statuses = {{fault.call, fault.status}};
        const SExtractionReport report = Extract();
        EXPECT_EQ(report.endStatus, fault.status) << fault.call;
        EXPECT_EQ(report.eventsLost, fault.cells.empty() ? 1U : 0U);
        EXPECT_EQ(Day(),
                  fault.cells.empty()
                      ? ""
                      : Header("000002") + Bytes(extended("02", "2F00", trip, "240107") + fault.cells));
    }
}

TEST_F(Extraction, KindsWithoutAnUpperLimitTakeMoreElements) {
    server.events = {Event(0, {"240107", "240107"}), Event(4, {"240107", "240107", "240107"}),
                     Event(2, {"240107", "44020620", "240107"})};
    EXPECT_EQ(Extract().recordsWritten, 3U);
}

TEST_F(Extraction, AnEventThatIsTheLastEndsTheVisit) {
    server.events.assign(3, Event(1, {"240107", TextHex("f")}));
    std::uint8_t more = 1;
    server.onCall = [&](SCall& call) -> std::optional<std::int64_t> {
        if (call.name != "GetEvent")
            return std::nullopt;
        *call.outputs[0] = Variant::FromUI1(1);
        *call.outputs[1] = server.events.front().values;
        *call.outputs[2] = Variant::FromUI1(std::exchange(more, std::uint8_t{0}));
        return 0;
    };
    EXPECT_EQ(Extract().recordsWritten, 2U) << "whatever the relay's status says behind the second one";
}

TEST_F(Extraction, MalformedEventsEndTheVisitAndKeepWhatCameBefore) {
    const SScriptedEvent good = Event(1, {"240107", TextHex("f")});
    const struct {
        const char* name;
        SScriptedEvent event;
    } cases[] = {
        {"three elements", {0, List({kLocation, kTime, TextHex("x")})}},
        {"no menu location", Event(0, {"240107"}, TextHex("x"), "24020112")},
        {"no time", {0, List({kLocation, TextHex("t"), TextHex("x"), "240107"})}},
        {"no text", Event(0, {"240107"}, "240107")},
        {"an unknown kind is looked at too", Event(200, {"240107"}, "240107")},
        {"kind 4 of four", Event(4, {"240107"})},
        {"kind 1 of four", Event(1, {"240107"})},
        {"kind 1 without a format", Event(1, {"240107", "240107"})},
        {"kind 2 of four", Event(2, {"240107"})},
        {"kind 2 without a location", Event(2, {"240107", TextHex("x")})},
        {"kind 2 whose text is none", Event(2, {"240107", "44020720"})},
        {"kind 3 of five", Event(3, {"240107", "44020030"})},
        {"kind 3 of seven", Event(3, {"240107", "44020030", "240109", "240109"})},
        {"kind 3 with a signed record", Event(3, {"240107", "44020030", "280109"})},
        {"kind 5 of six", Event(5, {"240107", "240108", "44020030"})},
        {"kind 5 of eight", Event(5, {"240107", "240108", "44020030", "240109", "240109"})},
        {"kind 5 without a column", Event(5, {"240107", "240108", "240130", "240109"})},
    };
    server.texts[0x2007] = "240107";
    for (const auto& test : cases) {
        std::filesystem::remove_all(folder.Native("AB12-00001234"));
        server.events = {good, test.event, good};
        const SExtractionReport report = Extract();
        EXPECT_EQ(report.recordsWritten, 1U) << test.name;
        EXPECT_EQ(report.endStatus, kLinkDisobeysProtocol) << test.name;
        EXPECT_EQ(server.events.size(), 1U) << test.name;
    }
}

} // namespace ruvo::test
