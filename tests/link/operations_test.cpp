// Every operation of the client: the calls it makes with all their arguments, what it puts out, and what the
// statuses make of both.
#include "support/scripted_server.h"

#include "link/p32_wrap.h"
#include "protocol/data_factory.h"
#include "protocol/parlane_integers.h"
#include "protocol/parlane_time.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <regex>

namespace ruvo {

inline std::string g_debugOutput; // as support/fake_system.h has it

namespace test {
namespace {

/// All that an operation can put out, holding something else before.
struct SOutputs {
    CParlaneDataArray a, b, c;
    CParlaneDataArrayArray lists{4};
    std::unique_ptr<CParlaneData> one = std::make_unique<CParlaneUint>(0x99, 1);
    std::vector<std::uint8_t> bytes{0x99};
    std::uint8_t kind = 0x99;
    std::uint8_t more = 0x99;

    SOutputs() {
        for (CParlaneDataArray* list : {&a, &b, &c, &lists[0], &lists[1], &lists[2], &lists[3]})
            list->push_back(std::make_unique<CParlaneUint>(0x99, 1));
    }

    /// "name=hex " of all that is no longer what it was; a byte of 0 counts as empty.
    std::string Changes() const {
        std::string changes;
        const auto add = [&](const char* name, const std::string& hex) {
            if (!hex.ends_with("99"))
                changes += std::string(name) + "=" + (hex == "00" ? "" : hex) + " ";
        };
        const auto addList = [&](const char* name, const CParlaneDataArray& values) {
            std::vector<std::uint8_t> tagged;
            for (const auto& value : values)
                CDataFactory::AppendTagged(value.get(), tagged);
            add(name, HexDigits(tagged));
        };
        addList("a", a);
        addList("b", b);
        addList("c", c);
        for (const CParlaneDataArray& list : lists)
            addList("list", list);
        changes += lists.empty() ? "list= " : "";
        std::vector<std::uint8_t> tagged;
        CDataFactory::AppendTagged(one.get(), tagged);
        add("one", one == nullptr ? "" : HexDigits(tagged));
        add("bytes", HexDigits(bytes));
        add("kind", HexDigits(std::array{kind}));
        add("more", HexDigits(std::array{more}));
        return changes;
    }
};

enum class EAsks : bool { No, Yes };

struct SRow {
    std::string lines; ///< the calls, "; " between them
    std::string outputs;
    std::function<LinkStatus(CP32Wrap&, SOutputs&)> run;
    EAsks asks = EAsks::Yes; ///< enters a password
    std::string Name() const { return lines.substr(0, lines.find(' ')); }
};

constexpr CellAddress kCell = 0xBF15;
const std::string kAt = " UI1(200) I2(BF15)";
const std::string kColumn = " UI1(200) UI1(191)";

CParlaneIEC870 Time() {
    return CParlaneIEC870(CParlaneIEC870::Octets{1, 2, 3, 4, 5, 6, 7});
}

const SRow kRows[] = {
    {"OpenPort BSTR(\"COM1\") BSTR(\"9600,E,8,1\")", "",
     [](auto& link, auto&) { return link.OpenPort(nullptr, "COM1", "9600,E,8,1"); }, EAsks::No},
    {"ClosePort", "", [](auto& link, auto&) { return link.ClosePort(nullptr); }, EAsks::No},
    {"SetTransactionValues I2(0001) I2(0002) I2(FFFF) I2(1170) I2(0005) I2(8000) I2(FFFE)", "",
     [](auto& link, auto&) { return link.SetTransactionValues(nullptr, 1, 2, 65535, 70000, 5, 32768, -2); },
     EAsks::No},
    {"ModemConnect BSTR(\"m\") I4(70003) BSTR(\"44\") BSTR(\"1785\") BSTR(\"555\") UI1(1)", "",
     [](auto& link, auto&) { return link.ModemConnect(nullptr, "m", 70003, "44", "1785", "555", 1); },
     EAsks::No},
    {"ModemHangUp", "", [](auto& link, auto&) { return link.ModemHangUp(nullptr); }, EAsks::No},
    {"GetColumnHeadings UI1(200); FetchColumnHeadings", "a=2401A0 b=2401A1 ",
     [](auto& link, auto& out) { return link.GetColumnHeadings(nullptr, out.a, out.b); }},
    {"GetColumnText" + kColumn + "; FetchColumnText", "a=2401A0 b=2401A1 ",
     [](auto& link, auto& out) { return link.GetColumnText(nullptr, 0xBF, out.a, out.b); }},
    {"GetColumnValues" + kColumn + "; FetchColumnValues", "a=2401A0 b=2401A1 ",
     [](auto& link, auto& out) { return link.GetColumnValues(nullptr, 0xBF, out.a, out.b); }},
    {"GetColumnTextAndValues" + kColumn + "; FetchColumnTextAndValues", "a=2401A0 b=2401A1 c=2401A2 ",
     [](auto& link, auto& out) { return link.GetColumnTextAndValues(nullptr, 0xBF, out.a, out.b, out.c); }},
    {"GetStrings" + kAt + "; FetchStrings", "a=2401A0 ",
     [](auto& link, auto& out) { return link.GetStrings(nullptr, kCell, out.a); }},
    {"GetText" + kAt, "one=18024F4B ",
     [](auto& link, auto& out) { return link.GetText(nullptr, kCell, out.one); }},
    {"GetValue" + kAt, "a=2402010224020304 ",
     [](auto& link, auto& out) { return link.GetValue(nullptr, kCell, out.a); }},
    {"GetValue" + kAt, "one=24020102 bytes=0102030405 ",
     [](auto& link, auto& out) { return link.GetValue(nullptr, kCell, out.one, out.bytes); }},
    {"GetValues UI1(200) WORDS(0102BF15)", "a=2401A0 ",
     [](auto& link, auto& out) {
         return link.GetValues(nullptr, std::array<CellAddress, 2>{0x0102, kCell}, out.a);
     }},
    {"GetSettingLimits" + kAt, "a=2401A0 ",
     [](auto& link, auto& out) { return link.GetSettingLimits(nullptr, kCell, out.a); }},
    {"GetColumnSettingLimits" + kColumn + "; FetchColumnSettingLimits", "a=2401A0 b=2401A1 ",
     [](auto& link, auto& out) { return link.GetColumnSettingLimits(nullptr, 0xBF, out.a, out.b); }},
    {"ChangeSetting" + kAt + " 24020901", "",
     [](auto& link, auto&) { return link.ChangeSetting(nullptr, kCell, CParlaneUint(0x109, 2)); }},
    {"ResetCell" + kAt, "", [](auto& link, auto&) { return link.ResetCell(nullptr, kCell); }},
    {"SetValue" + kAt + " 24020901", "",
     [](auto& link, auto&) { return link.SetValue(nullptr, kCell, CParlaneUint(0x109, 2)); }},
    {"SetBlockedValue" + kAt + " 0109", "",
     [](auto& link, auto&) { return link.SetBlockedValue(nullptr, kCell, Hex("0109")); }},
    {"GetEvent UI1(200)", "a=2401A1 kind=03 more=05 ",
     [](auto& link, auto& out) { return link.GetEvent(nullptr, out.kind, out.a, out.more); }},
    {"TestAvailableDisturbanceRecord UI1(200)", "kind=03 ",
     [](auto& link, auto& out) { return link.TestAvailableDisturbanceRecord(nullptr, out.kind); }},
    {"GetCompressDisturbanceRecord UI1(200) 24020901; FetchCompressDisturbanceRecord", "a=2401A0 ",
     [](auto& link, auto& out) {
         return link.GetCompressDisturbanceRecord(nullptr, CParlaneUint(0x109, 2), out.a);
     }},
    {"GetDisturbanceRecordConfiguration UI1(200) 24020901; FetchDisturbanceRecordConfiguration",
     "list=2401A0 list=2401A1 list=2401A2 list=2401A3 ",
     [](auto& link, auto& out) {
         return link.GetDisturbanceRecordConfiguration(nullptr, CParlaneUint(0x109, 2), out.lists);
     }},
    {"GetDisturbanceRecordValues UI1(200); FetchDisturbanceRecordValues", "a=2401A0 b=2401A1 ",
     [](auto& link, auto& out) { return link.GetDisturbanceRecordValues(nullptr, out.a, out.b); }},
    {"SetRealTime UI1(200) 3C0701020304050607", "",
     [](auto& link, auto&) { return link.SetRealTime(nullptr, Time()); }},
    {"ChangeDeviceAddress UI1(200) UI1(9) BSTR(\"123\")", "",
     [](auto& link, auto&) { return link.ChangeDeviceAddress(nullptr, 9, "123"); }},
    {"SelectSettingGroup UI1(200) UI1(2)", "",
     [](auto& link, auto&) { return link.SelectSettingGroup(nullptr, 2); }},
    {"GetDeviceStatus UI1(200)", "kind=03 ",
     [](auto& link, auto& out) { return link.GetDeviceStatus(nullptr, out.kind); }, EAsks::No},
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

class Operations : public testing::Test {
protected:
    Operations() {
        EXPECT_EQ(CP32Wrap::CreateInstance(), kLinkGood);
        CP32Wrap::GetInstance()->SetDeviceAddress(200);
    }
    ~Operations() override { CP32Wrap::DestroyInstance(); }

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
        const LinkStatus status = row.run(*CP32Wrap::GetInstance(), outputs);
        return std::to_string(status) + " " + outputs.Changes();
    }

    CScriptedServer server;
    bool wrongOutputs = false;
};

TEST_F(Operations, TheirCallsTheirOutputsAndWhatStatusesMakeOfThem) {
    for (const SRow& row : kRows) {
        const std::string name = row.Name();
        std::string emptied = " " + std::regex_replace(row.outputs, std::regex("=[0-9A-F]*"), "=");
        if (name == "GetDeviceStatus")
            emptied = " "; // what it knew stays
        emptied = std::regex_replace(emptied, std::regex("( list=){2,}"), " list=");
        EXPECT_EQ(Run(row, 0), "0 " + row.outputs) << row.lines;
        std::string lines;
        for (const std::string& line : server.lines)
            lines += (lines.empty() ? "" : "; ") + line;
        EXPECT_EQ(lines, row.lines);
        EXPECT_EQ(Run(row, 1), "1" + emptied) << row.lines;
        EXPECT_EQ(Run(row, CScriptedServer::kComFailure), "255" + emptied) << row.lines;
        EXPECT_EQ(Run(row, CScriptedServer::kNoNumber), "255" + emptied) << row.lines;
        g_debugOutput.clear();
        const bool asks = row.asks == EAsks::Yes;
        EXPECT_EQ(Run(row, 0x0D11), (asks ? "18" : "3345") + emptied) << row.lines;
        const char* const more = "P32Wrap::ProcessPasswordRequest: Password requested for cell BF.15. ";
        const std::string trace = std::string("] ") + (name == "SetBlockedValue" ? more : "") +
                                  "CP32Wrap::" + name + " calls EnterPassword()\n";
        EXPECT_EQ(g_debugOutput.find(trace) != std::string::npos, asks) << g_debugOutput;
        CP32Wrap::GetInstance()->RequestAbort();
        EXPECT_EQ(Run(row, 0), "18" + emptied) << row.lines;
        EXPECT_TRUE(server.lines.empty()) << "a pending abort is consumed by the next command";
        wrongOutputs = !row.outputs.empty();
        EXPECT_EQ(Run(row, 0), (wrongOutputs ? "254" : "0") + emptied) << row.lines;
        wrongOutputs = false;
    }
}

} // namespace
} // namespace test
} // namespace ruvo
