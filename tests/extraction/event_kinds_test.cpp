// What each kind of event must hold, and the record that it becomes.
#include "extraction/extraction_fixture.h"
#include "support/case_table.h"

#include "ledger/run_ledger.h"
#include "ledger/visit_custody.h"
#include "model/status/status.h"
#include "platform/environment.h"

#include <filesystem>
#include <sstream>

namespace ruvo::test {

/// Tagged values in hex, blanks between them; words for those that most events have.
SScriptedEvent Event(const std::string& kind, const std::string& elements) {
    Variant::List list;
    std::istringstream words(elements);
    for (std::string word; words >> word;)
        list.push_back(Tagged(word == "where"  ? kLocation
                              : word == "when" ? kTime
                              : word == "trip" ? TextHex("Trip")
                                               : word));
    return {static_cast<std::uint8_t>(std::stoi(kind)), Variant::FromList(list)};
}

// A relay whose events need every request that events can need.
class EventKinds : public Extraction {
protected:
    EventKinds() {
        server.strings[0x0112] = {TextHex("Start"), TextHex("Trip A")};
        server.strings[0x3002] = {TextHex("Off"), TextHex("On\x95")}; // the relay's e with an acute accent
        server.limits[0x3003] = {TextHex("Limit")};
        server.texts[0x2005] = TextHex("Value %d");
        server.columns[0x30] = {
            List({"44020230", "24020330", "24020430", "24020530", "24020630", "44020730"}),
            List({TextHex("State"), TextHex("Text %s"), "240101", "240101"}),
            List({"500101", TextHex("old"), "480101", "240107", "240108"})};
        server.strings[0x3103] = server.strings[0x3002];
        server.limits[0x3104] = {}; // a text without any; and a value too many
        server.columns[0x31] = {List({"24020331", "24020431"}), List({}),
                                List({"500101", TextHex("Ok"), "240108"})};
    }
    const std::string trip = "04 54726970";
    const std::string column = // a state as its text, a text as its limit, two numbers without a label
        "05 5374617465 18034F6E95 00 07 54657874202573 18054C696D6974 00 00 24010700 00 24010800";
};

TEST_F(EventKinds, EachBecomesItsRecord) {
    ForEachCase<9>("extraction/event_kinds.txt", [this](auto& kind, auto& values, auto& text, auto& calls,
                                                        auto& length, auto& recordText, auto& value,
                                                        auto rest, auto& endStatus) {
        std::filesystem::remove_all(folder.Native("AB12-00001234"));
        server.events.push_back(Event(kind, "where when " + TextHex(text) + " " + values));
        const SExtractionReport report = Extract();
        EXPECT_EQ(report.recordsWritten, 1U);
        EXPECT_EQ(report.endStatus, endStatus.empty() ? kLinkGood : 0x0111U);
        EXPECT_TRUE(report.columnErrors.empty() && report.incomplete.Kinds().empty());
        EXPECT_EQ(Calls(), "GetEvent;" + calls + (endStatus.empty() ? "GetDeviceStatus;" : ""));
        if (const std::size_t at = rest.find("COLUMN"); at != std::string::npos)
            rest.replace(at, 6, column);
        const bool isSimple = kind == "1" || kind == "2";
        const std::string body =
            isSimple ? Body("00", "00000000", recordText, value) : Body("01", "01000000", recordText, value);
        EXPECT_EQ(Day(), Header(isSimple ? "000001" : "000002") + Bytes("00" + length + body + rest));
    });
}

// A relay that does not let a record be selected, or its texts be read, still gives its event.
TEST_F(EventKinds, ARecordThatCannotBeReadIsLeftOut) {
    const std::string value = " 01000000 0C 4576656E742056616C756520 24010700";
    const std::string noState =
        "01 3800" + value + "05 5374617465 FF00 00" + column.substr(column.find(" 07 "));
    const struct {
        const char* call;
        LinkStatus status;
        std::string cells; ///< hex; empty: no record
    } faults[] = {
        {"ChangeSetting 30.01", ReplyStatus(5), "01 1500" + value},
        {"ChangeSetting 30.01", ReplyStatus(9), "01 1500" + value},
        {"FetchColumnTextAndValues 00.30", ReplyStatus(12), "01 1500" + value},
        {"FetchStrings 30.02", ReplyStatus(5), noState},
        {"FetchStrings 30.02", ReplyStatus(9), noState},
        {"FetchStrings 30.02", 9, ""}, // the server does not understand itself
    };
    for (const auto& fault : faults) {
        std::filesystem::remove_all(folder.Native("AB12-00001234"));
        server.events.push_back(Event(3, {"240107", "44020030", "240109"}));
        server.statuses = {{fault.call, fault.status}};
        const SExtractionReport report = Extract();
        EXPECT_EQ(report.endStatus, fault.status) << fault.call;
        EXPECT_EQ(report.eventsLost, fault.cells.empty() ? 1U : 0U);
        EXPECT_EQ(Day(), fault.cells.empty()
                             ? ""
                             : Header("000002") + Bytes("002F00" + Body("02", "01000000", trip, "240107") +
                                                        "00" + fault.cells));
    }
}

TEST_F(EventKinds, AFormatThatCannotBeReadIsLeftOut) {
    for (const LinkStatus status : {ReplyStatus(5), ReplyStatus(9)}) {
        server.events.push_back(Event(2, {"240107", "44020520"}));
        server.statuses = {{"GetText 20.05", status}};
        const SExtractionReport report = Extract();
        EXPECT_EQ(report.recordsWritten, 1U) << status;
        EXPECT_EQ(report.endStatus, status);
    }
}

TEST_F(EventKinds, AKilledVisitLeavesWhyAnEventHasNoRecord) {
    SetEnvironmentValue("RUVO_STATE_DIR", folder.Native("state"));
    const std::string root = folder.Path("ev");
    std::filesystem::create_directory(folder.Native("ev"));
    const SScriptedEvent unknown = Event(77, {"240107"});
    const SScriptedEvent hasRecord = Event(3, {"240107", "44020030", "240109"});
    const struct {
        std::vector<SScriptedEvent> events;
        LinkStatus status; ///< of the record's texts
        bool isRefused;    ///< the password was, with the first event
        std::string told;
    } rows[] = {
        {{unknown}, 0, false, "1 passed over|"},
        {{hasRecord}, 9, false, "1 lost: a record that could not be read|"},
        {{hasRecord}, kLinkAborted, false, "1 lost: a record that could not be read|"},
        {{Event(1, {})}, 0, false, "1 lost: a reply that makes no sense|"},
        {{Event(0, {"240107"})}, 0, true, "1 lost: a reply that makes no sense|"},
        {{unknown, Event(0, {"240107"}), unknown, {1, Variant()}},
         0,
         false,
         "1 stored|2 passed over|1 lost: a reply that makes no sense|"},
    };
    for (const auto& row : rows) {
        server.events.assign(row.events.begin(), row.events.end());
        server.statuses = {{"FetchStrings 30.02", row.status}};
        PasswordState().callbackCalled = row.isRefused;
        {
            CRunLedger killed(root, [](const SLedgerReport&) {});
            CVisitCustody custody(&killed, "RV001");
            const auto visit = [&] { ExtractEventsToFile(5, root, kNoEventLimit, nullptr, {}, &custody); };
            if (row.status != kLinkAborted)
                visit();
            else
                EXPECT_THROW(visit(), CStatus);
        }
        std::string told;
        CRunLedger(root, [&told](const SLedgerReport& report) {
            const bool isPassedOver = report.outcome == ELedgerOutcome::PassedOver;
            told += std::to_string(report.events) + (report.IsStored() ? " stored|"
                                                     : isPassedOver    ? " passed over|"
                                                                       : " lost: " + report.reason + "|");
        }).BringIn();
        EXPECT_EQ(told, row.told);
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
    server.texts[0x2007] = "240107";
    ForEachCase<2>("extraction/malformed_events.txt", [&](auto& kind, auto& elements) {
        std::filesystem::remove_all(folder.Native("AB12-00001234"));
        server.events = {good, Event(kind, elements), good};
        const SExtractionReport report = Extract();
        EXPECT_EQ(report.recordsWritten, 1U);
        EXPECT_EQ(report.endStatus, 251U);
        EXPECT_EQ(server.events.size(), 1U);
    });
}

} // namespace ruvo::test
