// The client of the comms server: life, command discipline, requests and their replies.
#include "support/fake_system.h"
#include "support/scripted_server.h"

#include "link/p32_wrap.h"
#include "protocol/parlane_integers.h"
#include "protocol/parlane_text.h"
#include "protocol/parlane_time.h"
#include "protocol/progress.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

namespace ruvo::test {

class Client : public testing::Test {
protected:
    Client() {
        g_debugOutput.clear();
        EXPECT_EQ(CP32Wrap::CreateInstance(), kLinkGood);
        link = CP32Wrap::GetInstance();
        link->SetDeviceAddress(5);
    }
    ~Client() override { CP32Wrap::DestroyInstance(); }

    CScriptedServer server;
    CP32Wrap* link = nullptr;
};

TEST(ClientLife, AServerThatCannotBeHadLeavesNoClient) {
    for (bool CScriptedServer::*refusal :
         {&CScriptedServer::refuseConnection, &CScriptedServer::refuseAdvise}) {
        CScriptedServer server;
        server.*refusal = true;
        EXPECT_EQ(CP32Wrap::CreateInstance(), kLinkComFailure);
        EXPECT_EQ(CP32Wrap::GetInstance(), nullptr);
    }
    CP32Wrap::DestroyInstance(); // nothing to destroy is fine
}

TEST_F(Client, CreatingTwiceKeepsTheOneClientAndDestroyingUnadvises) {
    EXPECT_EQ(CP32Wrap::CreateInstance(), kLinkGood);
    EXPECT_EQ(CP32Wrap::GetInstance(), link);
    EXPECT_NE(server.sink, nullptr);
    CP32Wrap::DestroyInstance();
    EXPECT_EQ(server.sink, nullptr);
    EXPECT_EQ(CP32Wrap::GetInstance(), nullptr);
}

TEST_F(Client, EveryOperationCallsItsSlotsWithItsArguments) {
    const CParlaneUint value(9, 1);
    const CParlaneIEC870 time;
    CParlaneDataArray a;
    CParlaneDataArray b;
    CParlaneDataArray c;
    CParlaneDataArrayArray lists;
    std::uint8_t byte = 0;
    std::unique_ptr<CParlaneData> one;
    std::vector<std::uint8_t> bytes;
    const std::vector<CellAddress> cellList{0x0102, 0xBF15};
    std::string seen;
    server.onCall = [&](SCall& call) -> std::optional<std::int64_t> {
        seen += call.name + "(" + std::to_string(call.inputs.size()) + "," +
                std::to_string(call.outputs.size()) + ")";
        for (Variant* output : call.outputs) // good enough for every kind of output
            *output = call.name == "GetText" || call.name == "GetValue" ? Tagged("2401AA") : List({"240101"});
        if (call.name == "GetEvent" || call.name == "TestAvailableDisturbanceRecord" ||
            call.name == "GetDeviceStatus")
            *call.outputs.front() = *call.outputs.back() = Variant::FromUI1(3);
        if (call.name == "GetEvent")
            *call.outputs[1] = List({});
        if (call.name == "GetValue") {
            *call.outputs[0] = Variant::FromUI1(0x24);
            *call.outputs[1] = Variant::FromUI1(1);
        }
        return 0;
    };
    struct SRow {
        const char* want;
        std::function<LinkStatus()> run;
        LinkStatus status = kLinkGood;
    };
    const SRow rows[] = {
        {"OpenPort(2,0)", [&] { return link->OpenPort(nullptr, "COM1", "9600,E,8,1"); }},
        {"ClosePort(0,0)", [&] { return link->ClosePort(nullptr); }},
        {"SetTransactionValues(7,0)",
         [&] { return link->SetTransactionValues(nullptr, 1, 2, 3, 4, 5, 6, 7); }},
        {"ModemConnect(6,0)", [&] { return link->ModemConnect(nullptr, "m", 0, "44", "1", "2", 1); }},
        {"ModemHangUp(0,0)", [&] { return link->ModemHangUp(nullptr); }},
        {"GetColumnHeadings(1,0)FetchColumnHeadings(1,2)",
         [&] { return link->GetColumnHeadings(nullptr, a, b); }},
        {"GetColumnText(2,0)FetchColumnText(2,2)", [&] { return link->GetColumnText(nullptr, 1, a, b); }},
        {"GetColumnValues(2,0)FetchColumnValues(2,2)",
         [&] { return link->GetColumnValues(nullptr, 1, a, b); }},
        {"GetColumnTextAndValues(2,0)FetchColumnTextAndValues(2,3)",
         [&] { return link->GetColumnTextAndValues(nullptr, 1, a, b, c); }},
        {"GetStrings(2,0)FetchStrings(2,1)", [&] { return link->GetStrings(nullptr, 1, a); }},
        {"GetText(2,1)", [&] { return link->GetText(nullptr, 1, one); }},
        {"GetValue(2,3)", [&] { return link->GetValue(nullptr, 1, a); }},
        {"GetValue(2,3)", [&] { return link->GetValue(nullptr, 1, one, bytes); }},
        {"GetValues(2,1)", [&] { return link->GetValues(nullptr, cellList, a); }},
        {"GetSettingLimits(2,1)", [&] { return link->GetSettingLimits(nullptr, 1, a); }},
        {"GetColumnSettingLimits(2,0)FetchColumnSettingLimits(2,2)",
         [&] { return link->GetColumnSettingLimits(nullptr, 1, a, b); }},
        {"ChangeSetting(3,0)", [&] { return link->ChangeSetting(nullptr, 1, value); }},
        {"ResetCell(2,0)", [&] { return link->ResetCell(nullptr, 1); }},
        {"SetValue(3,0)", [&] { return link->SetValue(nullptr, 1, value); }},
        {"SetBlockedValue(3,0)", [&] { return link->SetBlockedValue(nullptr, 1, bytes); }},
        {"GetEvent(1,3)", [&] { return link->GetEvent(nullptr, byte, a, byte); }},
        {"TestAvailableDisturbanceRecord(1,1)",
         [&] { return link->TestAvailableDisturbanceRecord(nullptr, byte); }},
        {"GetCompressDisturbanceRecord(2,0)FetchCompressDisturbanceRecord(2,1)",
         [&] { return link->GetCompressDisturbanceRecord(nullptr, value, a); }},
        {"GetDisturbanceRecordConfiguration(2,0)FetchDisturbanceRecordConfiguration(2,4)",
         [&] { return link->GetDisturbanceRecordConfiguration(nullptr, value, lists); }},
        {"GetDisturbanceRecordValues(1,0)FetchDisturbanceRecordValues(1,2)",
         [&] { return link->GetDisturbanceRecordValues(nullptr, a, b); }},
        {"SetRealTime(2,0)", [&] { return link->SetRealTime(nullptr, time); }},
        {"ChangeDeviceAddress(3,0)", [&] { return link->ChangeDeviceAddress(nullptr, 9, "123"); }},
        {"SelectSettingGroup(2,0)", [&] { return link->SelectSettingGroup(nullptr, 2); }},
        {"GetDeviceStatus(1,1)", [&] { return link->GetDeviceStatus(nullptr, byte); }},
    };
    for (const SRow& row : rows) {
        seen.clear();
        EXPECT_EQ(row.run(), row.status) << row.want;
        EXPECT_EQ(seen, row.want);
        link->RequestAbort(); // a pending abort is consumed by the next command, which calls nothing
        seen.clear();
        EXPECT_EQ(row.run(), kLinkAborted) << row.want;
        EXPECT_EQ(seen, "") << row.want;
    }
    EXPECT_EQ(lists.size(), 0U) << "outputs are emptied before an aborted request too";
}

TEST_F(Client, GetValueCutsPackedDataIntoValues) {
    struct SRow {
        const char* name;
        int type;
        int size;
        Variant data;
        LinkStatus status;
        std::size_t count;
    };
    const SRow rows[] = {
        {"three of four bytes", 0x24, 4, Tagged("010203040506070809101112"), kLinkGood, 3},
        {"trailing bytes are left out", 0x64, 5, Tagged("010203040506070809101112"), kLinkGood, 2},
        {"size 0 is one value", 0x18, 0, Tagged(""), kLinkGood, 1},
        {"size 0 of a type without an empty form", 0x24, 0, Tagged("01"), kLinkGood, 1},
        {"nothing but a size", 0x24, 4, Tagged(""), kLinkGood, 0},
        {"an unknown type", 0x11, 1, Tagged("01"), kLinkBadReply, 0},
        {"data of the wrong type", 0x24, 1, Variant::FromI4(1), kLinkBadReply, 0},
        {"no data at all", 0x24, 1, Variant(), kLinkBadReply, 0},
        {"a type that is no byte", 256, 1, Tagged("01"), kLinkBadReply, 0},
        {"a size that is no byte", 0x24, -1, Tagged("01"), kLinkBadReply, 0},
    };
    for (const SRow& row : rows) {
        server.onCall = [&](SCall& call) {
            *call.outputs[0] = Variant::FromI4(row.type);
            *call.outputs[1] = Variant::FromI4(row.size);
            *call.outputs[2] = row.data;
            return 0;
        };
        CParlaneDataArray values;
        EXPECT_EQ(link->GetValue(nullptr, 0x0102, values), row.status) << row.name;
        EXPECT_EQ(values.size(), row.count) << row.name;
    }
}

TEST_F(Client, ValueListsStopAtTheFirstElementThatIsNoValue) {
    struct SRow {
        const char* name;
        Variant list;
        LinkStatus status;
        std::size_t count;
    };
    const SRow rows[] = {
        {"an empty element is the invalid value", List({"240101", "", "1800"}), kLinkGood, 3},
        {"an empty list", List({}), kLinkGood, 0},
        {"no list", Variant(), kLinkBadReply, 0},
        {"bytes instead of a list", Tagged("240101"), kLinkBadReply, 0},
        {"an element of one byte", List({"240101", "24"}), kLinkBadReply, 1},
        {"an element shorter than its length", List({"240101", "240401"}), kLinkBadReply, 1},
        {"an unknown type", List({"110101"}), kLinkBadReply, 0},
        {"an element that is no bytes", Variant::FromList({Variant::FromUI1(1)}), kLinkBadReply, 0},
    };
    for (const SRow& row : rows) {
        server.onCall = [&](SCall& call) {
            *call.outputs[0] = row.list;
            return 0;
        };
        CParlaneDataArray values;
        EXPECT_EQ(link->GetSettingLimits(nullptr, 0x0102, values), row.status) << row.name;
        EXPECT_EQ(values.size(), row.count) << row.name;
    }
}

TEST_F(Client, CallsThatDoNotGetThroughAre255) {
    std::uint8_t byte = 7;
    server.statuses["GetDeviceStatus"] = CScriptedServer::kComFailure;
    EXPECT_EQ(link->GetDeviceStatus(nullptr, byte), kLinkComFailure);
    server.onCall = [](SCall&) -> std::optional<std::int64_t> { throw std::runtime_error("marshalling"); };
    EXPECT_EQ(link->GetDeviceStatus(nullptr, byte), kLinkComFailure);
    server.onCall = nullptr;
    server.statuses["GetDeviceStatus"] = 8;
    EXPECT_EQ(link->GetDeviceStatus(nullptr, byte), kLinkNotResponding);
    EXPECT_EQ(byte, 7) << "the byte is set by status 0 only";
}

std::atomic<bool> g_abortSeen; ///< the server has been asked to abort

/// Runs a command that waits and acts on it from this thread once it waits.
template <class Action>
LinkStatus WhileWaiting(CScriptedServer& server, CP32Wrap& link, Action action) {
    std::atomic<bool> started = false;
    server.completeInside = false;
    server.onCall = [&](SCall& call) -> std::optional<std::int64_t> {
        started = started || call.name == "GetStrings";
        g_abortSeen = g_abortSeen || call.name == "Abort";
        return std::nullopt;
    };
    LinkStatus status = kLinkGood;
    CParlaneDataArray strings;
    std::thread command([&] { status = link.GetStrings(nullptr, 0x0102, strings); });
    while (!started)
        std::this_thread::yield();
    action();
    command.join();
    server.onCall = nullptr;
    return status;
}

TEST_F(Client, StartedCommandsWaitForTheSink) {
    const auto complete = [&](std::int32_t status) {
        return [&, status] { server.sink->OnCommandComplete(Variant::FromI4(status)); };
    };
    EXPECT_EQ(WhileWaiting(server, *link, complete(0)), kLinkGood);
    EXPECT_EQ(server.calls.back(), "FetchStrings 01.02");
    EXPECT_EQ(WhileWaiting(server, *link, complete(0x0211)), ReplyStatus(2));
    EXPECT_EQ(server.calls.back(), "GetStrings 01.02") << "nothing is fetched after a failure";
    EXPECT_EQ(WhileWaiting(server, *link, [&] { server.sink->OnCommandCompleteAlt(Tagged("01")); }),
              kLinkComFailure);
}

TEST_F(Client, AbortEndsAWaitingCommand) {
    server.onCall = nullptr;
    const auto abort = [&] { link->RequestAbort(); };
    server.statuses["Abort"] = 29;
    EXPECT_EQ(WhileWaiting(server, *link, abort), 29U)
        << "an abort that is refused ends the wait with its status";
    server.statuses["Abort"] = CScriptedServer::kComFailure;
    EXPECT_EQ(WhileWaiting(server, *link, abort), kLinkComFailure);
    server.statuses["Abort"] = 0;
    g_abortSeen = false;
    EXPECT_EQ(WhileWaiting(server, *link,
                           [&] {
                               link->RequestAbort();
                               while (!g_abortSeen) {
                                   std::this_thread::yield();
                               }
                               server.sink->OnCommandComplete(Variant::FromI4(18));
                           }),
              kLinkAborted);
    std::uint8_t byte = 0;
    EXPECT_EQ(link->GetDeviceStatus(nullptr, byte), kLinkGood) << "the abort is used up";
}

TEST_F(Client, DestroyingWhileACommandWaitsAbortsItFirst) {
    server.statuses["Abort"] = 29;
    EXPECT_EQ(WhileWaiting(server, *link, [] { CP32Wrap::DestroyInstance(); }), 29U);
    EXPECT_EQ(CP32Wrap::GetInstance(), nullptr);
}

TEST_F(Client, TheSinkReportsProgressToTheRunningCommandOnly) {
    struct CRecorder final : CTransferProgressMonitor {
        CRecorder() : CTransferProgressMonitor(nullptr, 0, 100) {}
        void SetPercent(int percent) override { percents.push_back(percent); }
        std::vector<int> percents;
    } monitor;
    const auto report = [&](std::int32_t done, std::int32_t total) {
        server.sink->OnProgress(Variant::FromI4(done), Variant::FromI4(total));
    };
    server.onCall = [&](SCall&) -> std::optional<std::int64_t> {
        report(1, 3);
        report(5, 0);
        report(-1, 3); // unsigned: far beyond the total
        server.sink->OnTransferProgress(Variant::FromI4(77));
        return std::nullopt;
    };
    std::uint8_t byte = 0;
    EXPECT_EQ(link->GetDeviceStatus(&monitor, byte), kLinkGood);
    EXPECT_EQ(monitor.GetTransferred(), 0);
    monitor.SetReportingTransfer(true);
    EXPECT_EQ(link->GetDeviceStatus(&monitor, byte), kLinkGood);
    report(1, 1); // nobody listens any more
    EXPECT_EQ(monitor.percents, (std::vector<int>{33, 100, 33, 100}));
    EXPECT_EQ(monitor.GetTransferred(), 77);
}

TEST_F(Client, WritesLeaveSecurityEvents) {
    const auto lines = [&](auto write) {
        g_debugOutput.clear();
        write();
        const std::string tag = "     [ PARLANE QTV INFO ] P32Wrap : ";
        std::string all = g_debugOutput;
        for (std::size_t at = all.find(tag); at != std::string::npos; at = all.find(tag)) {
            all.erase(at, tag.size());
        }
        return all;
    };
    const std::string stamp = "Security Event : 2021-03-02 14:03:07.000  '                ' ";
    EXPECT_EQ(lines([&] { link->ChangeSetting(nullptr, 0x0102, CParlaneUint(5, 1)); }),
              stamp + "[01.02] 'Setting change          '  dt:0x24  dl:0x01  dv:'0x05'\n" + stamp +
                  "[01.02] 'Setting reply code      '  dt:0x24  dl:0x01  dv:'0x00'\n");
    server.statuses["SetValue"] = 0x0411;
    EXPECT_EQ(lines([&] { link->SetValue(nullptr, 0x0010, CParlaneText("trip\n")); }),
              stamp + "[FF.FC] 'Change Breaker          '  dt:0x18  dl:0x05  dv:'trip.'\n" + stamp +
                  "[00.10] 'Setting reply code      '  dt:0x24  dl:0x01  dv:'0x04'\n");
    EXPECT_EQ(lines([&] { link->ResetCell(nullptr, 0x0010); }),
              stamp + "[FF.FD] 'Reset cell 00.10        '  dt:0x24  dl:0x02  dv:'0x00 0x00'\n");
    EXPECT_EQ(lines([&] { link->ResetCell(nullptr, 0x0002); }), "");
    static std::string called;
    CP32Wrap::SetSecurityEventCallback([](const char*, std::uint16_t code, const char* label,
                                          std::span<const std::uint8_t> time, std::span<const std::uint8_t>) {
        called = label + std::to_string(code) + "/" + std::to_string(time[3] * 256 + time[2]);
    });
    g_localTime.reset();
    EXPECT_NE(lines([&] { link->ResetCell(nullptr, 0x0110); }), "")
        << "without a clock the event is still there";
    EXPECT_EQ(called, "Reset cell 01.10" + std::to_string(0xFFFD) + "/0");
    CP32Wrap::SetSecurityEventCallback(nullptr);
    g_localTime = SCalendarTime{2021, 3, 2, 14, 3, 7};
}

TEST_F(Client, AValueThatCannotBePackedIsNeverSent) {
    const CParlaneText longText(std::string(256, 'x'));
    EXPECT_EQ(link->ChangeSetting(nullptr, 0x0102, longText), kLinkBadReply);
    EXPECT_TRUE(server.calls.empty());
    EXPECT_EQ(g_debugOutput, "");
}

} // namespace ruvo::test
