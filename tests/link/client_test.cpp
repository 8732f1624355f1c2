// The client of the comms server: life, command discipline, requests and their replies.
#include "support/case_table.h"
#include "support/linked_test.h"

#include "model/values/parlane_integers.h"
#include "model/values/parlane_text.h"
#include "model/values/parlane_time.h"

#include <array>
#include <chrono>
#include <stdexcept>
#include <thread>

namespace ruvo::test {

/// It must not notice anything of the recording.
class Client : public SPlannedRecording, public LinkedTest {};

TEST(ClientLife, AServerThatCannotBeHadLeavesNoClient) {
    for (bool CScriptedServer::*refusal :
         {&CScriptedServer::refuseConnection, &CScriptedServer::refuseAdvise}) {
        CScriptedServer server;
        server.*refusal = true;
        EXPECT_EQ(CP32Wrap::CreateInstance(), 255U);
        EXPECT_EQ(CP32Wrap::GetInstance(), nullptr);
    }
    CP32Wrap::DestroyInstance(); // nothing to destroy is fine
}

TEST_F(Client, CreatingTwiceKeepsTheOneClientAndDestroyingUnadvises) {
    EXPECT_EQ(CP32Wrap::CreateInstance(), kLinkGood);
    EXPECT_EQ(CP32Wrap::GetInstance(), link);
    EXPECT_NE(server.sink, nullptr);
    const std::shared_ptr<CChannel> held = HoldChannel(); // with which the client itself lives on
    CP32Wrap::DestroyInstance();
    EXPECT_EQ(server.sink, nullptr);
    EXPECT_EQ(CP32Wrap::GetInstance(), nullptr);
    std::uint8_t byte = 0;
    std::thread([&] { EXPECT_EQ(link->GetDeviceStatus(nullptr, byte), 255U); }).join();
    EXPECT_EQ(CP32Wrap::CreateInstance(), kLinkGood);
    EXPECT_EQ(CP32Wrap::GetInstance()->GetDeviceStatus(nullptr, byte), kLinkGood);
    EXPECT_EQ(server.lines.back(), "GetDeviceStatus UI1(255)") << "before anybody has set an address";
}

TEST_F(Client, GetValueCutsPackedDataIntoValues) {
    ForEachCase<5>("link/packed_values.txt",
                   [this](auto& type, auto& size, auto& data, auto& status, auto& count) {
                       server.onCall = [&](SCall& call) {
                           *call.outputs[0] = Variant::FromI4(std::stoi(type, nullptr, 0));
                           *call.outputs[1] = Variant::FromI4(std::stoi(size));
                           *call.outputs[2] = data == "number" ? Variant::FromI4(1)
                                              : data == "none" ? Variant()
                                                               : Tagged(data);
                           return 0;
                       };
                       CParlaneDataArray values;
                       EXPECT_EQ(link->GetValue(nullptr, 0x0102, values), std::stoul(status));
                       EXPECT_EQ(values.size(), std::stoul(count));
                       std::unique_ptr<CParlaneData> first;
                       std::vector<std::uint8_t> bytes;
                       EXPECT_EQ(link->GetValue(nullptr, 0x0102, first, bytes), std::stoul(status));
                       EXPECT_EQ(first != nullptr, count != "0");
                   });
}

TEST_F(Client, ValueListsStopAtTheFirstElementThatIsNoValue) {
    const std::tuple<const char*, Variant, LinkStatus, std::size_t> rows[] = {
        {"an empty element is the invalid value", List({"240101", "", "1800"}), kLinkGood, 3},
        {"an empty list", List({}), kLinkGood, 0},
        {"no list", Variant(), 254U, 0},
        {"bytes instead of a list", Tagged("240101"), 254U, 0},
        {"an element of one byte", List({"240101", "24"}), 254U, 1},
        {"an element shorter than its length", List({"240101", "240401"}), 254U, 1},
        {"an unknown type", List({"110101"}), 254U, 0},
        {"an element that is no bytes", Variant::FromList({Variant::FromUI1(1)}), 254U, 0},
    };
    for (const auto& [name, list, status, count] : rows) {
        server.onCall = [&given = list](SCall& call) {
            *call.outputs[0] = given;
            return 0;
        };
        CParlaneDataArray values;
        EXPECT_EQ(link->GetSettingLimits(nullptr, 0x0102, values), status) << name;
        EXPECT_EQ(values.size(), count) << name;
    }
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
    EXPECT_EQ(WhileWaiting(server, *link, [&] { server.sink->OnCommandComplete(Variant()); }), kLinkGood)
        << "nothing is the number 0";
    for (const Variant& wrong : {Tagged("01"), Variant::FromWords({1}), List({"240101"}),
                                 Variant::FromText("1x"), Variant::FromText("")})
        EXPECT_EQ(WhileWaiting(server, *link, [&] { server.sink->OnCommandCompleteAlt(wrong); }), 255U);
}

TEST_F(Client, AbortEndsAWaitingCommand) {
    server.onCall = nullptr;
    const auto abort = [&] { link->RequestAbort(); };
    server.statuses["Abort"] = 29;
    EXPECT_EQ(WhileWaiting(server, *link, abort), 29U)
        << "an abort that is refused ends the wait with its status";
    server.statuses["Abort"] = CScriptedServer::kComFailure;
    EXPECT_EQ(WhileWaiting(server, *link, abort), 255U);
    server.statuses["Abort"] = 0;
    g_abortSeen = false;
    EXPECT_EQ(WhileWaiting(server, *link,
                           [&] {
                               link->RequestAbort();
                               while (!g_abortSeen)
                                   std::this_thread::yield();
                               server.sink->OnCommandComplete(Variant::FromI4(18));
                           }),
              18U);
    std::uint8_t byte = 0;
    EXPECT_EQ(link->GetDeviceStatus(nullptr, byte), kLinkGood) << "the abort is used up";
    server.completeInside = true;
    server.onCall = [&](SCall& call) -> std::optional<std::int64_t> {
        if (call.name == "GetStrings")
            link->RequestAbort();
        return std::nullopt;
    };
    CParlaneDataArray strings;
    EXPECT_EQ(link->GetStrings(nullptr, 0x0102, strings), kLinkGood) << "what has completed is not aborted";
    EXPECT_EQ(link->GetDeviceStatus(nullptr, byte), 18U);
}

TEST_F(Client, ACommandThatIsCutShortIsTheOnlyOne) {
    const auto cutShort = [&] {
        while (!HoldChannel()->CutShort())
            std::this_thread::yield();
    };
    const auto complete = [&] { server.sink->OnCommandComplete(Variant::FromI4(0)); };
    EXPECT_FALSE(HoldChannel()->CutShort()) << "nothing is awaited";
    for (int round = 0; round < 50; ++round) { // the completion comes before the wait hears of the other
        g_abortSeen = false;
        const LinkStatus status = WhileWaiting(server, *link, [&] { cutShort(), complete(); });
        EXPECT_EQ(link->HasCutShort(), g_abortSeen);
        EXPECT_EQ(status, kLinkGood);
        g_abortSeen = false;
        EXPECT_EQ(WhileWaiting(server, *link, complete), kLinkGood);
        EXPECT_FALSE(g_abortSeen) << "what ended by itself leaves nothing behind";
        if (link->HasCutShort())
            break;
    }
    server.statuses["Abort"] = 29;
    EXPECT_EQ(WhileWaiting(server, *link, cutShort), 29U);
    EXPECT_TRUE(link->HasCutShort());
    EXPECT_FALSE(HoldChannel()->CutShort()) << "nothing is awaited any more";
}

TEST_F(Client, WhatIsKeptInTheServerDoesNotComeBack) {
    const std::shared_ptr<CChannel> channel = HoldChannel(); // for longer than the thread that is kept
    EXPECT_FALSE(channel->Stay().Keep()) << "nothing is there";
    const std::uint64_t returns = channel->Stay().Returns();
    std::atomic<bool> isInside = false, mayReturn = false;
    server.onCall = [&](SCall&) -> std::optional<std::int64_t> {
        isInside = true;
        while (!mayReturn)
            std::this_thread::yield();
        return std::nullopt;
    };
    EXPECT_EXIT(
        {
            std::uint8_t byte = 0;
            std::thread([&] { link->GetDeviceStatus(nullptr, byte), _exit(1); }).detach();
            while (!isInside)
                std::this_thread::yield();
            const bool isKept = channel->Stay().Keep();
            mayReturn = true;
            std::thread([&] { CServerStay::CScope(channel->Stay()), _exit(3); }).detach();
            std::this_thread::sleep_for(std::chrono::milliseconds(100)); // for a thread that would come back
            _exit(isKept && channel->Stay().Returns() == returns ? 0 : 2);
        },
        testing::ExitedWithCode(0), "");
    mayReturn = true;
    std::uint8_t byte = 0;
    EXPECT_EQ(link->GetDeviceStatus(nullptr, byte), kLinkGood);
    server.sink->OnProgress(Variant::FromI4(1), Variant::FromI4(2));
    EXPECT_EQ(channel->Stay().Returns(), returns + 2) << "the call, and the report";
    EXPECT_FALSE(channel->Stay().Keep()) << "nothing is there any more";
}

TEST_F(Client, DestroyingWhileACommandWaitsAbortsItFirst) {
    server.statuses["Abort"] = 29;
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(WhileWaiting(server, *link, [] { CP32Wrap::DestroyInstance(); }), 29U);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::seconds(1)) << "not at once";
    EXPECT_EQ(CP32Wrap::GetInstance(), nullptr);
}

TEST_F(Client, TheSinkReportsProgressToTheRunningCommandOnly) {
    CProgressRecorder recorder;
    CTransferProgressMonitor monitor(&recorder, 100, 300);
    const auto report = [&](std::int32_t done, std::int32_t total) {
        server.sink->OnProgress(Variant::FromI4(done), Variant::FromI4(total));
    };
    server.onCall = [&](SCall&) -> std::optional<std::int64_t> {
        report(1, 1);
        report(2, 3); // 66 of 100, not 67
        report(2, 3); // told once
        report(5, 0);
        server.sink->OnProgress(Tagged("01"), Variant::FromI4(2));
        report(INT32_MIN, -1); // unsigned: a half
        report(-1, 3);         // unsigned: far beyond the total
        server.sink->OnTransferProgress(Variant::FromI4(77));
        return std::nullopt;
    };
    std::uint8_t byte = 0;
    EXPECT_EQ(link->GetDeviceStatus(&monitor, byte), kLinkGood);
    EXPECT_EQ(monitor.GetTransferred(), 0);
    monitor.SetReportingTransfer(true);
    EXPECT_EQ(link->GetDeviceStatus(&monitor, byte), kLinkGood);
    report(1, 4); // nobody listens any more
    EXPECT_EQ(recorder.percents, (std::vector<int>{300, 232, 200, 300, 232, 200, 300}));
    EXPECT_EQ(monitor.GetTransferred(), 77);
}

TEST_F(Client, AReportMayAskTheClientItself) {
    struct CAsking final : CProgressMonitor {
        explicit CAsking(CP32Wrap& client) : CProgressMonitor(nullptr, 0, 100), link(client) {}
        void SetPercent(int) override {
            std::uint8_t byte = 0;
            CParlaneDataArray strings;
            statuses.push_back(link.GetDeviceStatus(nullptr, byte));
            statuses.push_back(link.GetStrings(nullptr, 0x0102, strings));
            throw std::runtime_error("monitor");
        }
        CP32Wrap& link;
        std::vector<LinkStatus> statuses;
    } monitor(*link);
    bool isInside = true;
    std::thread serverThread;
    server.completeInside = false;
    server.onCall = [&](SCall& call) -> std::optional<std::int64_t> {
        const auto report = [&] { server.sink->OnProgress(Variant::FromI4(1), Variant::FromI4(2)); };
        if (call.name == "GetDeviceStatus") {
            report(); // to nobody: what is asked out of a report has no monitor
        } else if (call.name == "GetStrings" && isInside) {
            server.sink->OnCommandComplete(Variant::FromI4(0)); // which is not forgotten over the reports
            report();
            report();
        } else if (call.name == "GetStrings") {
            serverThread = std::thread([&, report] {
                report();
                server.sink->OnCommandComplete(Variant::FromI4(0));
            });
        }
        return std::nullopt;
    };
    CParlaneDataArray strings;
    EXPECT_EQ(link->GetStrings(&monitor, 0x0102, strings), kLinkGood);
    EXPECT_EQ(monitor.statuses, (std::vector<LinkStatus>{0, 255, 0, 255})) << "inside the call that reports";
    monitor.statuses.clear();
    isInside = false;
    EXPECT_EQ(link->GetStrings(&monitor, 0x0102, strings), kLinkGood);
    serverThread.join();
    EXPECT_EQ(monitor.statuses, (std::vector<LinkStatus>{255, 255})) << "the command would never end";
}

TEST_F(Client, AReportEndsItsCommandButNotTheClient) {
    struct CEnding final : CProgressMonitor {
        CEnding() : CProgressMonitor(nullptr, 0, 100) {}
        void SetPercent(int) override { CP32Wrap::DestroyInstance(); }
    } monitor;
    std::thread serverThread;
    server.completeInside = false;
    server.onCall = [&](SCall& call) -> std::optional<std::int64_t> {
        if (call.name == "Abort") {
            serverThread.join(); // the command goes on for as long as the report
            return 29;
        }
        serverThread = std::thread([&] { server.sink->OnProgress(Variant::FromI4(1), Variant::FromI4(2)); });
        return std::nullopt;
    };
    CParlaneDataArray strings;
    EXPECT_EQ(link->GetStrings(&monitor, 0x0102, strings), 29U);
    EXPECT_EQ(CP32Wrap::GetInstance(), link);
}

TEST_F(Client, ALineThatHangsUpCallsTheHandler) {
    static int calls = 0;
    server.sink->OnLineStatus(Variant::FromI4(46));
    link->SetDisconnectHandler([] { ++calls; });
    for (const int status : {0, 45, 46, 47}) {
        server.sink->OnLineStatus(Variant::FromI4(status));
        EXPECT_EQ(calls, status < 46 ? 0 : 1) << status;
    }
}

TEST_F(Client, WritesLeaveSecurityEvents) {
    const auto lines = [&](auto write) {
        g_debugOutput.clear();
        write();
        const std::string tag = "     [ PARLANE QTV INFO ] P32Wrap : ";
        std::string all = g_debugOutput;
        for (std::size_t at = all.find(tag); at != std::string::npos; at = all.find(tag))
            all.erase(at, tag.size());
        return all;
    };
    const std::string stamp = "Security Event : 2021-03-02 14:03:07.000  '                ' ";
    EXPECT_EQ(lines([&] { link->ChangeSetting(nullptr, 0x0102, CParlaneUint(5, 1)); }),
              stamp + "[01.02] 'Setting change          '  dt:0x24  dl:0x01  dv:'0x05'\n" + stamp +
                  "[01.02] 'Setting reply code      '  dt:0x24  dl:0x01  dv:'0x00'\n");
    server.statuses["SetValue"] = 0x0511;
    EXPECT_EQ(lines([&] { link->SetValue(nullptr, 0x0010, CParlaneText(std::string_view("tr\0p\n", 5))); }),
              stamp + "[FF.FC] 'Change Breaker          '  dt:0x18  dl:0x05  dv:'tr.p\n'\n" + stamp +
                  "[00.10] 'Setting reply code      '  dt:0x24  dl:0x01  dv:'0x05'\n");
    EXPECT_EQ(lines([&] { link->ResetCell(nullptr, 0x0010); }),
              stamp + "[FF.FD] 'Reset cell 00.10        '  dt:0x24  dl:0x02  dv:'0x00 0x00'\n");
    EXPECT_EQ(lines([&] { link->ResetCell(nullptr, 0x0002); }), "");
    static std::string called;
    CP32Wrap::SetSecurityEventCallback([](const char* user, std::uint16_t code, const char* label,
                                          std::span<const std::uint8_t> time,
                                          std::span<const std::uint8_t> value) {
        called = std::string(user) + "|" + label + "|" + HexDigits(std::array{code >> 8, code & 0xFF}) + "|" +
                 HexDigits(time) + "|" + HexDigits(value);
    });
    g_daylight = true; // the marks of a time are in the bytes of its hour and its minute
    EXPECT_EQ(lines([&] { link->ResetCell(nullptr, 0x0110); }),
              stamp + "[FF.FD] 'Reset cell 01.10        '  dt:0x24  dl:0x02  dv:'0x00 0x00'\n");
    EXPECT_EQ(called, "                |Reset cell 01.10|FFFD|3C07581B038E020315|24020000");
    g_localTime = SCalendarTime{2027, 11, 29, 23, 59, 59};
    EXPECT_TRUE(
        Contains(lines([&] { link->ResetCell(nullptr, 0x0110); }), "Event : 2027-11-29 23:59:59.000  '"));
    g_localTime.reset();
    EXPECT_TRUE(
        Contains(lines([&] { link->SetValue(nullptr, 0xBF15, CParlaneUint(0x0203, 2)); }), "01 00:00:00.0"))
        << "without a clock the event is still there";
    EXPECT_EQ(called, "                |Setting reply code|BF15|3C0700008080010162|240105");
    CP32Wrap::SetSecurityEventCallback(nullptr);
    g_daylight = false;
}

TEST_F(Client, AValueThatCannotBePackedIsNeverSent) {
    const CParlaneText longText(std::string(256, 'x'));
    EXPECT_EQ(link->ChangeSetting(nullptr, 0x0102, longText), 254U);
    EXPECT_TRUE(server.calls.empty());
    EXPECT_EQ(g_debugOutput, "");
}

} // namespace ruvo::test
