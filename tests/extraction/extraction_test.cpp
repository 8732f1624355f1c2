// One relay's pending events become its day file, byte for byte as written out here by hand.
#include "extraction/extraction_fixture.h"
#include "support/fake_system.h"

#include "dayfile/day_file_writer.h"
#include "extraction/event_file_names.h"
#include "model/status/status.h"

#include <filesystem>

namespace ruvo::test {

TEST_F(Extraction, NothingPendingLeavesNothingAndAsksExactlyThis) {
    server.onCall = [](SCall& call) -> std::optional<std::int64_t> {
        if (call.name != "GetDeviceStatus")
            return std::nullopt;
        *call.outputs[0] = Variant::FromUI1(0xDF); // all but one bit of a relay's status tell of other things
        return 0;
    };
    EXPECT_EQ(Extract().recordsWritten, 0U);
    EXPECT_EQ(Calls(0),
              "GetValue 00.08;GetValue 00.06;GetValue 00.08;GetValue 00.06;GetValue 00.05;GetValue 00.04;"
              "GetValue 00.06;GetDeviceStatus;");
    EXPECT_FALSE(folder.Has("AB12-00001234"));
}

TEST_F(Extraction, ALaterRunAppendsAndKeepsTheHeader) {
    server.events = {Event(0, {"240107"}), Event(0, {"240107"})};
    Extract();
    const std::string first = Day();
    server.events = {Event(77, {"240107"}), Event(0, {"240107"}), Event(0, {"240107"}), Event(0, {"240107"})};
    const SExtractionReport report = Extract(2);
    EXPECT_EQ(report.recordsWritten, 2U);
    EXPECT_EQ(report.eventsPassedOver, 1U);
    EXPECT_EQ(server.events.size(), 1U) << "the limit of two records leaves one event in the relay";
    const std::size_t headerSize = Header("000003").size();
    EXPECT_EQ(first.substr(0, headerSize), Header("000003"));
    EXPECT_EQ(Day(), first + first.substr(headerSize)) << "numbering starts at 1 again";
}

TEST_F(Extraction, NothingIsWrittenBehindATornEnd) {
    ExtractOne();
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
        const std::string why =
            "Day file " + DayFileShown() + " does not end with a whole record: damage at byte ";
        EXPECT_EQ(ExtractOne().refusal.value_or(SRefusal{}).subject,
                  test.damageAt == nullptr ? "" : why + test.damageAt)
            << test.name;
        EXPECT_EQ(server.events.size(), test.damageAt == nullptr ? 0U : 1U) << test.name;
        EXPECT_EQ(Day(), test.damageAt != nullptr ? test.before
                         : test.before.empty()    ? whole
                                                  : test.before + record)
            << test.name;
    }
}

TEST_F(Extraction, AFileThatAnotherRunHoldsLeavesTheEventsInTheRelay) {
    CHeldDayFile other;
    EXPECT_FALSE(other.Hold(folder.Path("AB12-00001234\\AB12-00001234-2026-11-16-DEV.evt")));
    EXPECT_EQ(ExtractOne().refusal,
              (SRefusal{ERefusal::FileNotHeld, "Day file " + DayFileShown() + " is held by another run"}));
    EXPECT_EQ(server.events.size(), 1U);
    EXPECT_EQ(Day(), "");
    other.Release();
    EXPECT_FALSE(folder.Has("AB12-00001234")) << "made by that one, for nothing";
    EXPECT_EQ(ExtractOne().recordsWritten, 1U);
    const std::string once = Day();
    EXPECT_EQ(ExtractOne().recordsWritten, 1U);
    EXPECT_EQ(Day(), once + once.substr(Header("000002").size()));
}

TEST_F(Extraction, AFileThatGoesWhileItIsHeldTakesNoEventAlong) {
    CHeldDayFile other;
    bool isOthers = false;
    const auto run = [&](const std::string& moved, bool isTakenOver) {
        server.onCall = [&](SCall& call) -> std::optional<std::int64_t> {
            std::error_code ignored; // where an open file cannot be moved, its records are in it
            if (call.name == "GetEvent")
                std::filesystem::rename(folder.Native(moved), folder.Native(moved + "-old"), ignored);
            if (call.name == "GetEvent" && isTakenOver)
                isOthers = !other.Hold(folder.Path("AB12-00001234\\AB12-00001234-2026-11-16-DEV.evt"));
            return std::nullopt;
        };
        return ExtractOne();
    };
    run("nothing", false);
    const std::string record = Day().substr(Header("000002").size());
    for (const char* moved : {kFile, "AB12-00001234"}) {
        EXPECT_EQ(run(moved, false).recordsWritten, 1U) << moved;
        EXPECT_TRUE(Day().starts_with(Header("000002")) && Day().ends_with(record)) << moved;
    }
    const SExtractionReport report = run(kFile, true);
    EXPECT_EQ(report.eventsLost, isOthers ? 1U : 0U) << "told, and not written beside the other run's";
    EXPECT_EQ(report.recordsWritten + report.eventsLost, 1U);
    EXPECT_EQ(report.failedWrite.has_value(), isOthers);
}

TEST_F(Extraction, ARelayWithoutANameIsTold) {
    const std::array<std::string, 2> cases[] = {{"P14-", "12--34"}, {"", "1234"}, {"AB12", ""}};
    for (const auto& [model, serialNumber] : cases) { // dashes are no lack
        server.values[0x0006] = TextHex(model.c_str());
        server.values[0x0008] = TextHex(serialNumber.c_str());
        EXPECT_EQ(ExtractOne().isNameUnread, model.empty() || serialNumber.empty()) << model;
        EXPECT_TRUE(folder.Has(model + "-" + serialNumber)) << model;
    }
    server.events = {Event(77, {"240107"})};
    EXPECT_FALSE(Extract().isNameUnread) << "no day file has what is passed over";
}

TEST_F(Extraction, AnEndlessStreamIsTakenInPieces) {
    EXPECT_EQ(SVisitLimits{}.events, 1'000'000U) << "as people are told";
    EXPECT_EQ(SVisitLimits{}.bytes, 268'435'456U);
    for (const SVisitLimits limits :
         {SVisitLimits{.events = 3}, SVisitLimits{.bytes = 2 * 51 + 1}, SVisitLimits{.bytes = 3 * 51}}) {
        server.events.assign(5, Event(1, {"240107", TextHex("f")}));
        const SExtractionReport report = Extract(kNoEventLimit, limits);
        EXPECT_EQ(report.recordsWritten, 3U);
        EXPECT_TRUE(report.end == EVisitEnd::LimitReached && report.eventsTaken == 3);
        EXPECT_EQ(server.events.size(), 2U);
    }
    server.onCall = [&](SCall& call) -> std::optional<std::int64_t> { // kinds that nobody knows count as well
        server.events.assign(call.name == "GetEvent" ? 2 : server.events.size(), Event(77, {"240107"}));
        return std::nullopt;
    };
    server.events.push_back(Event(77, {"240107"}));
    const SExtractionReport report = Extract(kNoEventLimit, {.events = 3});
    EXPECT_TRUE(report.end == EVisitEnd::LimitReached && report.eventsPassedOver == 3);
}

/// Two events, of which the second request for one is answered with a status.
class SecondEventFails : public Extraction {
protected:
    void Prepare(std::int64_t status) {
        std::filesystem::remove_all(folder.Native("AB12-00001234"));
        server.events.assign(2, Event(1, {"240107", TextHex("f")}));
        PasswordState() = SPasswordState{};
        server.onCall = [count = 0, status](SCall& call) mutable -> std::optional<std::int64_t> {
            return call.name == "GetEvent" && ++count == 2 ? std::optional(status) : std::nullopt;
        };
    }
};

TEST_F(SecondEventFails, EndsTheVisit) {
    const struct {
        const char* name;
        std::int64_t answer;
        LinkStatus status;
        std::size_t lost;
    } cases[] = {{"no answer of the relay", 8, 8, 0},
                 {"would be success if its upper half were dropped", 0x10000, 255, 0},
                 {"the largest status that there is", 0xFFFF, 0xFFFF, 0},
                 {"the relay has no data", 0x0211, 0x0211, 0},
                 {"the relay rejects the command", 0x0911, 0x0911, 0},
                 {"no answer", 254, 254, 0},
                 {"an answer that makes no sense", 0, 254, 1}};
    for (const auto& test : cases) {
        Prepare(test.answer);
        const SExtractionReport report = Extract();
        EXPECT_EQ(report.endStatus, test.status) << test.name;
        EXPECT_EQ(report.recordsWritten, 1U) << test.name;
        EXPECT_EQ(report.eventsLost, test.lost) << test.name;
    }
}

TEST_F(SecondEventFails, WithAnAbortWhichADeclinedPasswordIsNot) {
    Prepare(18);
    SExtractionReport report;
    EXPECT_THROW(ExtractEventsToFile(5, folder.Path(), kNoEventLimit, &report), CStatus);
    EXPECT_EQ(report.eventsLost, 1U);
    EXPECT_FALSE(folder.Has("AB12-00001234"));
    for (const bool unanswered : {false, true}) { // if answered, it has been told
        Prepare(18);
        server.onCall = [fails = server.onCall, unanswered](SCall& call) {
            const std::optional<std::int64_t> status = fails(call);
            PasswordState().callbackCalled = status.has_value();
            PasswordState().unanswered = status.has_value() && unanswered;
            return status;
        };
        report = Extract();
        EXPECT_TRUE(report.passwordDeclined);
        EXPECT_EQ(report.endStatus, unanswered ? kLinkAborted : kLinkGood);
    }
}

TEST_F(Extraction, OtherRequestsThatFailEndTheVisit) {
    for (const LinkStatus status : {255U, 0x0801U}) { // the second is good, but without the byte
        server.statuses["GetDeviceStatus"] = status;
        EXPECT_EQ(Extract().endStatus, status);
    }
    server.statuses.clear();
    PasswordState().callbackCalled = true; // declined at identification: what still comes is counted
    server.events = {Event(1, {"240107", TextHex("f")})};
    EXPECT_EQ(Extract().eventsLost, 1U);
    PasswordState() = SPasswordState{};
    for (const LinkStatus status : {0x0211U, 0x0911U}) {
        server.events = {Event(3, {"240107", "44020030", "240109"})};
        server.statuses["FetchColumnTextAndValues"] = status;
        const SExtractionReport report = Extract();
        ASSERT_EQ(report.columnErrors.size(), 1U);
        EXPECT_EQ(report.columnErrors[0]->GetStatusCode(), status);
    }
}

TEST_F(Extraction, NoNameLeadsOutOfTheEventRoot) {
    for (const char* serial : {"..\\x", "a/b", "C:x", "a\nb", "a?b", "a|b"}) {
        server.values[0x0008] = TextHex(serial);
        EXPECT_EQ(ExtractOne().refusal, (SRefusal{ERefusal::UnfitName, std::string("AB12-") + serial}));
        EXPECT_EQ(server.events.size(), 1U) << "no event is taken";
        EXPECT_TRUE(std::filesystem::is_empty(folder.Native())) << serial;
    }
    EXPECT_TRUE(IsSafeFileName("AB12-\xE9") && !IsSafeFileName("AB12-\x7F"))
        << "no relay can send a DEL alone";
    server.values[0x0008] = "18FA" + std::string(500, '5'); // longer than a path may be
    EXPECT_EQ(ExtractOne().refusal.value_or(SRefusal{ERefusal::DiskFull, {}}).cause, ERefusal::UnfitName);
    EXPECT_EQ(server.events.size(), 1U);
    server.values[0x0008] = "1803209520"; // a device character that is no ASCII letter, blanks around it
    Extract();
    EXPECT_TRUE(std::filesystem::exists(std::filesystem::path(folder.Native()) /
                                        u8"AB12- \u00E9/AB12-\u00E9-2026-11-16-DEV.evt"));
}

TEST_F(Extraction, RecordsWithoutABinaryFormAreWrittenWithoutTheItem) {
    server.strings[0x0112] = {TextHex("only")};
    server.events = {Event(0, {"500105"}), Event(0, {"240107"})};
    const SExtractionReport report = Extract();
    EXPECT_EQ(report.recordsWritten, 2U);
    ASSERT_EQ(report.incomplete.Kinds().size(), 1U);
    EXPECT_EQ(report.incomplete.Kinds()[0].dropped, (SDroppedItems{1, "the value of cell 1 (Event Value )"}));
    EXPECT_EQ(report.incomplete.Kinds()[0].firstTime.milliseconds, 29);
    for (int i = 0; i < 100; ++i) // the text becomes the cell's label, of the relay's choice
        server.events.push_back(Event(0, {"500105"}, TextHex("%" + std::to_string(i % 50))));
    const SExtractionReport many = Extract();
    EXPECT_EQ(many.incomplete.Kinds().size(), CIncompleteRecords::kMostKinds);
    EXPECT_EQ(many.incomplete.Kinds().back().count, 2U);
    EXPECT_EQ(many.incomplete.OtherCount(), 100 - 2 * CIncompleteRecords::kMostKinds);
    Variant::List list = *Event(1, {"240107", TextHex("f")}).values.AsList();
    for (int i = 0; i < 300; ++i)
        list.push_back(Tagged(TextHex(std::string(250, 'x'))));
    server.events.assign(3, SScriptedEvent{1, Variant::FromList(list)});
    const SExtractionReport large = Extract();
    EXPECT_EQ(large.recordsWritten, 3U) << "the disk has room for more than is taken between two looks at it";
    EXPECT_EQ(large.incomplete.Kinds().at(0).dropped, (SDroppedItems{41, "value 260"}));
}

} // namespace ruvo::test
