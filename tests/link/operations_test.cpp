// Every operation of the client: the calls it makes with all their arguments, what it puts out, and what the
// statuses make of both.
#include "support/linked_test.h"

#include "link/seam/operations.h"
#include "model/values/data_factory.h"
#include "model/values/parlane_integers.h"
#include "model/values/parlane_time.h"

#include <algorithm>
#include <array>
#include <regex>

namespace ruvo::test {
namespace {

/// All that an operation can put out, holding something else before.
struct SOutputs {
    CParlaneDataArrayArray lists{4};
    std::unique_ptr<CParlaneData> one = std::make_unique<CParlaneUint>(0x99, 1);
    std::vector<std::uint8_t> bytes{0x99};
    std::uint8_t kind = 0x99;
    std::uint8_t more = 0x99;

    SOutputs() {
        for (CParlaneDataArray& list : lists)
            list.push_back(std::make_unique<CParlaneUint>(0x99, 1));
    }

    /// "=hex " of all that is no longer what it was, in its order; a byte of 0 counts as empty.
    std::string Changes() const {
        std::string changes = lists.empty() ? "= " : "";
        const auto add = [&](const std::vector<std::uint8_t>& now) {
            if (now.empty() || now.back() != 0x99)
                changes += "=" + HexDigits(now) + " ";
        };
        for (const CParlaneDataArray& list : lists) {
            std::vector<std::uint8_t> tagged;
            for (const auto& value : list)
                CDataFactory::AppendTagged(value.get(), tagged);
            add(tagged);
        }
        std::vector<std::uint8_t> tagged;
        if (one != nullptr)
            CDataFactory::AppendTagged(one.get(), tagged);
        add(tagged);
        add(bytes);
        for (const std::uint8_t byte : {kind, more})
            add(std::vector<std::uint8_t>(byte == 0 ? 0 : 1, byte));
        return changes;
    }
};

struct SRow {
    std::string lines; ///< the calls, "; " between them
    std::string outputs;
    std::function<LinkStatus(CP32Wrap&, SOutputs&)> run;
    bool asks = true; ///< enters a password
    std::string Name() const { return lines.substr(0, lines.find(' ')); }
};

constexpr CellAddress kCell = 0xBF15;
const std::string kAt = " UI1(200) I2(BF15)";
const std::string kColumn = " UI1(200) UI1(191)";

#define RUN(call) [](CP32Wrap& client, [[maybe_unused]] SOutputs& out) { return client.call; }

const SRow kRows[] = {
    {"OpenPort BSTR(\"COM1\") BSTR(\"9600,E,8,1\")", "", RUN(OpenPort(nullptr, "COM1", "9600,E,8,1")), false},
    {"ClosePort", "", RUN(ClosePort(nullptr)), false},
    {"SetTransactionValues I2(0001) I2(0002) I2(FFFF) I2(1170) I2(0005) I2(8000) I2(FFFE)", "",
     RUN(SetTransactionValues(nullptr, 1, 2, 65535, 70000, 5, 32768, -2)), false},
    {"ModemConnect BSTR(\"m\") I4(70003) BSTR(\"44\") BSTR(\"1785\") BSTR(\"555\") UI1(1)", "",
     RUN(ModemConnect(nullptr, "m", 70003, "44", "1785", "555", 1)), false},
    {"ModemHangUp", "", RUN(ModemHangUp(nullptr)), false},
    {"GetColumnHeadings UI1(200); FetchColumnHeadings", "=2401A0 =2401A1 ",
     RUN(GetColumnHeadings(nullptr, out.lists[0], out.lists[1]))},
    {"GetColumnText" + kColumn + "; FetchColumnText", "=2401A0 =2401A1 ",
     RUN(GetColumnText(nullptr, 0xBF, out.lists[0], out.lists[1]))},
    {"GetColumnValues" + kColumn + "; FetchColumnValues", "=2401A0 =2401A1 ",
     RUN(GetColumnValues(nullptr, 0xBF, out.lists[0], out.lists[1]))},
    {"GetColumnTextAndValues" + kColumn + "; FetchColumnTextAndValues", "=2401A0 =2401A1 =2401A2 ",
     RUN(GetColumnTextAndValues(nullptr, 0xBF, out.lists[0], out.lists[1], out.lists[2]))},
    {"GetStrings" + kAt + "; FetchStrings", "=2401A0 ", RUN(GetStrings(nullptr, kCell, out.lists[0]))},
    {"GetText" + kAt, "=18024F4B ", RUN(GetText(nullptr, kCell, out.one))},
    {"GetValue" + kAt, "=2402010224020304 ", RUN(GetValue(nullptr, kCell, out.lists[0]))},
    {"GetValue" + kAt, "=24020102 =0102030405 ", RUN(GetValue(nullptr, kCell, out.one, out.bytes))},
    {"GetValues UI1(200) WORDS(0102BF15)", "=2401A0 ",
     RUN(GetValues(nullptr, std::array<CellAddress, 2>{0x0102, kCell}, out.lists[0]))},
    {"GetSettingLimits" + kAt, "=2401A0 ", RUN(GetSettingLimits(nullptr, kCell, out.lists[0]))},
    {"GetColumnSettingLimits" + kColumn + "; FetchColumnSettingLimits", "=2401A0 =2401A1 ",
     RUN(GetColumnSettingLimits(nullptr, 0xBF, out.lists[0], out.lists[1]))},
    {"ChangeSetting" + kAt + " 24020901", "", RUN(ChangeSetting(nullptr, kCell, CParlaneUint(0x109, 2)))},
    {"ResetCell" + kAt, "", RUN(ResetCell(nullptr, kCell))},
    {"SetValue" + kAt + " 24020901", "", RUN(SetValue(nullptr, kCell, CParlaneUint(0x109, 2)))},
    {"SetBlockedValue" + kAt + " 0109", "", RUN(SetBlockedValue(nullptr, kCell, Hex("0109")))},
    {"GetEvent UI1(200)", "=2401A1 =03 =05 ", RUN(GetEvent(nullptr, out.kind, out.lists[0], out.more))},
    {"TestAvailableDisturbanceRecord UI1(200)", "=03 ",
     RUN(TestAvailableDisturbanceRecord(nullptr, out.kind))},
    {"GetCompressDisturbanceRecord UI1(200) 24020901; FetchCompressDisturbanceRecord", "=2401A0 ",
     RUN(GetCompressDisturbanceRecord(nullptr, CParlaneUint(0x109, 2), out.lists[0]))},
    {"GetDisturbanceRecordConfiguration UI1(200) 24020901; FetchDisturbanceRecordConfiguration",
     "=2401A0 =2401A1 =2401A2 =2401A3 ",
     RUN(GetDisturbanceRecordConfiguration(nullptr, CParlaneUint(0x109, 2), out.lists))},
    {"GetDisturbanceRecordValues UI1(200); FetchDisturbanceRecordValues", "=2401A0 =2401A1 ",
     RUN(GetDisturbanceRecordValues(nullptr, out.lists[0], out.lists[1]))},
    {"SetRealTime UI1(200) 3C0701020304050607", "",
     RUN(SetRealTime(nullptr, CParlaneIEC870(CParlaneIEC870::Octets{1, 2, 3, 4, 5, 6, 7})))},
    {"ChangeDeviceAddress UI1(200) UI1(9) BSTR(\"123\")", "", RUN(ChangeDeviceAddress(nullptr, 9, "123"))},
    {"SelectSettingGroup UI1(200) UI1(2)", "", RUN(SelectSettingGroup(nullptr, 2))},
    {"GetDeviceStatus UI1(200)", "=03 ", RUN(GetDeviceStatus(nullptr, out.kind)), false},
};

/// Fills every output with what its operation puts out, and no two of one call alike.
void Fill(SCall& call) {
    int number = 0xA0;
    for (Variant* output : call.outputs)
        *output = List({"2401" + HexDigits(std::array{number++})});
    const bool isValue = call.name == "GetValue";
    if (isValue || call.name == "GetEvent" || call.name == "GetDeviceStatus" ||
        call.name == "TestAvailableDisturbanceRecord")
        *call.outputs[0] = Variant::FromUI1(isValue ? 0x24 : 3);
    if (call.name == "GetEvent")
        *call.outputs[2] = Variant::FromUI1(5);
    if (call.name == "GetText")
        *call.outputs[0] = Tagged("18024F4B");
    if (isValue) {
        *call.outputs[1] = Variant::FromUI1(2);
        *call.outputs[2] = Tagged("0102030405");
    }
}

class Operations : public LinkedTest {
protected:
    /// Runs one; its status and what it put out. Its last call is answered with `answer`, others with 0.
    std::string Run(const SRow& row, std::int64_t answer) {
        SOutputs outputs;
        server.lines.clear();
        const auto last = 1 + std::ranges::count(row.lines, ';');
        server.onCall = [&, last](SCall& call) -> std::optional<std::int64_t> {
            Fill(call);
            if (wrongOutputs)
                for (Variant* output : call.outputs)
                    *output = Variant::Other();
            return std::ssize(server.lines) < last ? 0 : answer;
        };
        const LinkStatus status = row.run(*link, outputs);
        return std::to_string(status) + " " + outputs.Changes();
    }

    bool wrongOutputs = false;
};

TEST(OperationRows, FollowTheirNames) {
    std::string slots;
    for (const SOperationRow& row : kOperationRows) {
        slots += std::to_string(row.slot) + " ";
        const bool isStart = row.name.starts_with("Start");
        EXPECT_EQ(row.runsOn, isStart || row.name == "ModemConnect") << row.name;
        EXPECT_EQ(FindOperation(row.name), &row);
        EXPECT_EQ(FindOperationInSlot(row.slot), &row) << row.name;
        const bool isOfColumn =
            row.name.starts_with("StartGetColumn") && row.name != "StartGetColumnHeadings";
        EXPECT_TRUE(!isOfColumn || row.target == ETarget::Column) << row.name;
        EXPECT_TRUE(!row.name.starts_with("Fetch") || row.target == ETarget::Link) << row.name;
        EXPECT_TRUE(!isStart || FindOperation("Fetch" + std::string(row.name.substr(8))) != nullptr);
    }
    EXPECT_EQ(slots,
              "7 8 9 13 14 15 16 17 18 19 20 21 22 23 24 25 26 27 28 29 30 31 34 36 37 38 39 40 41 42 43 "
              "44 47 50 51 53 54 55 ")
        << "recordings have them, and other programs' servers";
}

static_assert(kLinkBadPortParameters == 12 && kLinkNothingToClose == 13 && kLinkNoDisturbanceRecord == 19 &&
                  kLinkNoDisturbanceConfiguration == 20 && kLinkNoCompressedRecord == 21 &&
                  kLinkWrongSerialNumber == 22 && kLinkSameAddress == 23 && kLinkAddressTaken == 24 &&
                  kLinkAbortInProgress == 29 && kLinkNoCall == 48 && kLinkNoSuchLine == 50 &&
                  kLinkLineInUse == 54 && kLinkCallTimedOut == 68,
              "the server's numbers");

TEST_F(Operations, TheirCallsTheirOutputsAndWhatStatusesMakeOfThem) {
    for (const SRow& row : kRows) {
        const std::string name = row.Name();
        std::string emptied = " " + std::regex_replace(row.outputs, std::regex("=[0-9A-F]*"), "=");
        if (name == "GetDeviceStatus")
            emptied = " "; // what it knew stays
        if (name == "GetDisturbanceRecordConfiguration")
            emptied = " = "; // its lists are gone, or one of them is empty
        SCOPED_TRACE(row.lines);
        EXPECT_EQ(Run(row, 0), "0 " + row.outputs);
        std::string lines;
        for (const std::string& line : server.lines)
            lines += (lines.empty() ? "" : "; ") + line;
        EXPECT_EQ(lines, row.lines);
        EXPECT_EQ(Run(row, 1), "1" + emptied);
        EXPECT_EQ(Run(row, CScriptedServer::kComFailure), "255" + emptied);
        EXPECT_EQ(Run(row, CScriptedServer::kNoNumber), "255" + emptied);
        g_debugOutput.clear();
        EXPECT_EQ(Run(row, 0x0D11), (row.asks ? "18" : "3345") + emptied);
        const char* const more = "P32Wrap::ProcessPasswordRequest: Password requested for cell BF.15. ";
        const std::string trace = std::string("] ") + (name == "SetBlockedValue" ? more : "") +
                                  "CP32Wrap::" + name + " calls EnterPassword()\n";
        EXPECT_EQ(g_debugOutput.find(trace) != std::string::npos, row.asks) << g_debugOutput;
        link->RequestAbort();
        EXPECT_EQ(Run(row, 0), "18" + emptied);
        EXPECT_TRUE(server.lines.empty()) << "a pending abort is consumed by the next command";
        wrongOutputs = !row.outputs.empty();
        EXPECT_EQ(Run(row, 0), (wrongOutputs ? "254" : "0") + emptied);
        wrongOutputs = false;
    }
}

} // namespace
} // namespace ruvo::test
