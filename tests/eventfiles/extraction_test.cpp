// One relay's pending events become its day file, byte for byte as written out here by hand.
#include "support/fake_system.h"
#include "support/scratch_folder.h"
#include "support/scripted_server.h"

#include "eventfiles/event_extraction.h"
#include "eventfiles/event_file_names.h"
#include "eventfiles/event_file_writer.h"
#include "link/p32_wrap.h"
#include "link/password_state.h"
#include "protocol/status.h"

#include <gtest/gtest.h>

namespace ruvo::test {

namespace {

constexpr const char* kFile = "AB12-00001234/AB12-00001234-2026-11-16-DEV.evt";
const std::string kTime = "3C07 4523 8D 87 10 02 1A"; // 13:07:09.029 summer time, invalid, 16 February 2026
const std::string kLocation = "4402 1201";            // cell 01.12: the row comes first

std::string Bytes(std::string_view hex) {
    const auto bytes = Hex(hex);
    return {bytes.begin(), bytes.end()};
}

std::string Header(const std::string& nextExtended) {
    return "APP: Parlane\r\nTYPE: EventList\r\nFORMAT: 1.0\r\nNEXTEXTENDED: " + nextExtended +
           "\r\n\r\nheaderText\r\n\x1A";
}

/// Items 3 to 15 of a block for device address 5, without the block's tag and length.
std::string Body(const std::string& recordNumber, const std::string& id, const std::string& text,
                 const std::string& value) {
    return recordNumber + id + kTime + "00 00 01 05 05 506C616E74 04 44657363 06 414231322D58 12 01" + text +
           value;
}

SScriptedEvent Event(std::uint8_t kind, std::initializer_list<std::string_view> further,
                     const std::string& text = TextHex("Trip"), const std::string& location = kLocation) {
    Variant::List list = *List({location, kTime, text}).AsList();
    for (const std::string_view value : further)
        list.push_back(Tagged(value));
    return {kind, Variant::FromList(list)};
}

} // namespace

class Extraction : public testing::Test {
protected:
    Extraction() {
        PasswordState() = SPasswordState{};
        EXPECT_EQ(CP32Wrap::CreateInstance(), kLinkGood);
        server.values = {{0x0004, TextHex("Desc")},
                         {0x0005, TextHex("Plant  ")},
                         {0x0006, TextHex("AB12-X")},
                         {0x0008, TextHex("00001234 ")}};
    }
    ~Extraction() override { CP32Wrap::DestroyInstance(); }

    SExtractionReport Extract(std::int32_t maxEvents = kNoEventLimit) {
        SExtractionReport report;
        server.calls.clear();
        ExtractEventsToFile(5, folder.Path(), maxEvents, &report);
        return report;
    }
    std::string Calls(std::size_t from = 8) const {
        std::string all;
        for (std::size_t i = from; i < server.calls.size(); ++i)
            all += server.calls[i] + ";";
        return all;
    }
    std::string Day() const { return folder.Read(kFile); }

    CScriptedServer server;
    CScratchFolder folder;
};

TEST_F(Extraction, NothingPendingLeavesNothingAndAsksExactlyThis) {
    EXPECT_EQ(Extract().recordsWritten, 0U);
    EXPECT_EQ(Calls(0),
              "GetValue 00.08;GetValue 00.06;GetValue 00.08;GetValue 00.06;GetValue 00.05;GetValue 00.04;"
              "GetValue 00.06;GetDeviceStatus;");
    EXPECT_FALSE(folder.Has("AB12-00001234"));
}

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
        {"FetchStrings 30.02", kLinkNotResponding, ""},
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

TEST_F(Extraction, ALaterRunAppendsAndKeepsTheHeader) {
    server.events = {Event(0, {"240107"}), Event(0, {"240107"})};
    Extract();
    const std::string first = Day();
    server.events = {Event(77, {"240107"}), Event(0, {"240107"}), Event(0, {"240107"}), Event(0, {"240107"})};
    const SExtractionReport report = Extract(2);
    EXPECT_EQ(report.recordsWritten, 2U);
    EXPECT_EQ(report.problems, std::vector<std::string>{"1 event of unknown kind passed over."});
    EXPECT_EQ(server.events.size(), 1U) << "the limit of two records leaves one event in the relay";
    const std::size_t headerSize = Header("000003").size();
    EXPECT_EQ(first.substr(0, headerSize), Header("000003"));
    EXPECT_EQ(Day(), first + first.substr(headerSize)) << "numbering starts at 1 again";
}

TEST_F(Extraction, ATornEndIsToldOnceAndStaysAsItIs) {
    const auto run = [this] {
        server.events = {Event(0, {"240107"})};
        return Extract().problems;
    };
    run();
    const std::string whole = Day();
    const std::size_t header = Header("000002").size();
    const std::string record = whole.substr(header);
    const struct {
        const char* name;
        std::string before;
        const char* damageAt; ///< null: nothing to tell
    } cases[] = {
        {"a whole record", whole, nullptr},
        {"no record", whole.substr(0, header), nullptr},
        {"an empty file, which gets its header", "", nullptr},
        {"a torn record", whole + record.substr(0, record.size() - 1), "155"},
        {"a record without its cells", whole.substr(0, whole.size() - 25), "81"},
        {"an older tear, followed by a whole record", whole + record.substr(0, 9) + record, nullptr},
        {"an older tear and a new one", whole + record.substr(0, 9) + record + record.substr(0, 1), "238"},
        {"a torn header", whole.substr(0, header - 1), "0"},
        {"no header and no record", "junk", "0"},
    };
    for (const auto& test : cases) {
        folder.Write(kFile, test.before);
        const std::string line = "Day file " +
                                 folder.Path("AB12-00001234\\AB12-00001234-2026-11-16-DEV.evt") +
                                 " does not end with a whole record: damage at byte ";
        EXPECT_EQ(run(), test.damageAt == nullptr ? std::vector<std::string>{}
                                                  : std::vector<std::string>{line + test.damageAt + "."})
            << test.name;
        EXPECT_EQ(Day(), test.before.empty() ? whole : test.before + record) << test.name;
        EXPECT_EQ(run(), std::vector<std::string>{}) << test.name << ": told once";
    }
}

TEST_F(Extraction, ARelayWithoutANameIsTold) {
    const std::array<std::string, 2> cases[] = {{"P14-", "12--34"}, {"", "1234"}, {"AB12", ""}};
    for (const auto& [model, serialNumber] : cases) { // dashes are no lack
        server.values[0x0006] = TextHex(model.c_str());
        server.values[0x0008] = TextHex(serialNumber.c_str());
        server.events = {Event(1, {"240107", TextHex("f")})};
        EXPECT_EQ(Extract().problems.empty(), !model.empty() && !serialNumber.empty()) << model;
        EXPECT_TRUE(folder.Has(model + "-" + serialNumber)) << model;
    }
}

TEST_F(Extraction, AnEndlessStreamIsTakenInPieces) {
    const std::vector<std::string> said{
        "This visit has taken 3 events; the rest waits in the relay for the next run."};
    for (const SVisitLimits limits : {SVisitLimits{.events = 3}, SVisitLimits{.bytes = 130}}) {
        SExtractionReport report;
        server.events.assign(5, Event(1, {"240107", TextHex("f")}));
        ExtractEventsToFile(5, folder.Path(), kNoEventLimit, &report, limits);
        EXPECT_EQ(report.recordsWritten, 3U);
        EXPECT_EQ(report.problems, said);
        EXPECT_EQ(server.events.size(), 2U);
    }
    server.onCall = [&](SCall& call) -> std::optional<std::int64_t> { // kinds that nobody knows count as well
        server.events.assign(call.name == "GetEvent" ? 2 : server.events.size(), Event(77, {"240107"}));
        return std::nullopt;
    };
    SExtractionReport report;
    server.events.push_back(Event(77, {"240107"}));
    ExtractEventsToFile(5, folder.Path(), kNoEventLimit, &report, {.events = 3});
    EXPECT_EQ(report.problems.size(), 2U);
}

TEST_F(Extraction, RequestsThatFailEndTheVisit) {
    const auto prepare = [this] {
        std::filesystem::remove_all(folder.Native("AB12-00001234"));
        server.events = {Event(1, {"240107", TextHex("f")}), Event(1, {"240107", TextHex("f")})};
        PasswordState() = SPasswordState{};
    };
    const auto failSecondEvent = [&](std::int64_t status) {
        int count = 0;
        server.onCall = [count, status](SCall& call) mutable -> std::optional<std::int64_t> {
            return call.name == "GetEvent" && ++count == 2 ? std::optional(status) : std::nullopt;
        };
    };
    prepare();
    failSecondEvent(8);
    SExtractionReport report = Extract();
    EXPECT_EQ(report.endStatus, kLinkNotResponding);
    EXPECT_EQ(report.recordsWritten, 1U);

    prepare();
    failSecondEvent(0x10000); // would be success if its upper half were dropped
    EXPECT_EQ(Extract().endStatus, kLinkComFailure);

    for (const bool isHandedOver :
         {false, true}) { // the server cannot answer, or what it answers makes no sense
        prepare();
        failSecondEvent(isHandedOver ? 0 : 254);
        report = Extract();
        EXPECT_EQ(report.endStatus, kLinkBadReply);
        EXPECT_EQ(report.recordsWritten, 1U);
        EXPECT_EQ(report.problems.size(), isHandedOver ? 1U : 0U);
        EXPECT_EQ(report.eventsLost, isHandedOver ? 1U : 0U);
    }

    prepare();
    failSecondEvent(18); // the user aborted
    report = SExtractionReport{};
    EXPECT_THROW(ExtractEventsToFile(5, folder.Path(), kNoEventLimit, &report), CStatus);
    EXPECT_EQ(report.problems, std::vector<std::string>{"1 event taken from the relay, but not stored."});
    EXPECT_FALSE(folder.Has("AB12-00001234"));

    prepare();
    failSecondEvent(18);
    PasswordState().callbackCalled = true; // a declined password also ends with 18, but has been told already
    report = Extract();
    EXPECT_TRUE(report.passwordDeclined);
    EXPECT_EQ(report.endStatus, kLinkGood);

    prepare();
    server.onCall = nullptr;
    server.statuses["GetDeviceStatus"] = 255;
    EXPECT_EQ(Extract().endStatus, kLinkComFailure);
    EXPECT_FALSE(folder.Has("AB12-00001234"));
    server.statuses.clear();

    PasswordState().callbackCalled =
        true; // declined during the identification: the event that still comes is counted
    server.events = {Event(1, {"240107", TextHex("f")})};
    EXPECT_EQ(Extract().eventsLost, 1U);
    PasswordState() = SPasswordState{};

    server.statuses["GetDeviceStatus"] = 0x0801; // good, but without the byte
    EXPECT_EQ(Extract().endStatus, 0x0801U);
    server.statuses.clear();

    server.events = {Event(3, {"240107", "44020030", "240109"})};
    server.statuses["FetchColumnTextAndValues"] = 0x0211;
    EXPECT_EQ(Extract().problems,
              std::vector<std::string>{"Extracting event records  Cell data not available."});
}

TEST_F(Extraction, NoNameLeadsOutOfTheEventRoot) {
    for (const char* serial : {"..\\x", "a/b", "C:x", "a\nb", "a?b", "a|b"}) {
        server.values[0x0008] = TextHex(serial);
        server.events = {Event(1, {"240107", TextHex("f")})};
        const SExtractionReport report = Extract();
        ASSERT_EQ(report.problems.size(), 1U) << serial;
        EXPECT_EQ(
            report.problems[0].rfind("Failed to save event file\nThe relay's model or serial number", 0), 0U);
        EXPECT_EQ(server.events.size(), 1U) << "no event is taken";
        EXPECT_TRUE(std::filesystem::is_empty(folder.Native())) << serial;
    }
    EXPECT_TRUE(IsSafeFileName("AB12-\xE9") && !IsSafeFileName("AB12-\x7F"))
        << "no relay can send a DEL alone";
    server.values[0x0008] = "18FA" + std::string(500, '5'); // longer than a path may be
    server.events = {Event(1, {"240107", TextHex("f")})};
    EXPECT_EQ(Extract().problems.size(), 1U);
    EXPECT_EQ(server.events.size(), 1U);
    server.values[0x0008] = "1803209520"; // a device character that is no ASCII letter, blanks around it
    Extract();
    EXPECT_TRUE(folder.Has("AB12- \xC3\xA9/AB12-\xC3\xA9-2026-11-16-DEV.evt")) << "UTF-8 on disk";
}

TEST_F(Extraction, RecordsWithoutABinaryFormAreWrittenWithoutTheItem) {
    server.strings[0x0112] = {TextHex("only")};
    server.events = {Event(0, {"500105"}), Event(0, {"240107"})};
    const SExtractionReport report = Extract();
    EXPECT_EQ(report.recordsWritten, 2U);
    EXPECT_EQ(report.problems,
              std::vector<std::string>{"Event record of 2026-02-16 07:13:09.029 is written without "
                                       "the value of cell 1 (Event Value ), which cannot be stored."});
    Variant::List many = *Event(1, {"240107", TextHex("f")}).values.AsList();
    for (int i = 0; i < 300; ++i)
        many.push_back(Tagged(TextHex(std::string(250, 'x'))));
    server.events = {{1, Variant::FromList(many)}};
    EXPECT_NE(Extract().problems.at(0).find("is written without value 260 and 40 more"), std::string::npos);
}

TEST_F(Extraction, AFileThatCannotBeWrittenIsReported) {
    folder.Write("AB12-00001234", "a file where the folder should be");
    server.events = {Event(1, {"240107", TextHex("f")})};
    const SExtractionReport report = Extract();
    EXPECT_EQ(report.eventsLost, 1U);
    ASSERT_EQ(report.problems.size(), 2U);
    EXPECT_NE(report.problems[0].find("Failed to save event file\n" + folder.Path() + "\\AB12-00001234\\"),
              std::string::npos);
    EXPECT_EQ(report.problems[1], "1 event taken from the relay, but not stored.");
}

} // namespace ruvo::test
