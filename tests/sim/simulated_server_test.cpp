#include "platform/files.h"
#include "sim/server/simulated_connection.h"
#include "support/case_table.h"
#include "support/hex.h"
#include "support/scratch_folder.h"

#include <gtest/gtest.h>
#include <semaphore>
#include <thread>

namespace ruvo::sim {
namespace {

using test::ForEachCase;

class CTestSink final : public IP32lsSink_v2 {
public:
    void OnProgress(const Variant&, const Variant&) noexcept override { ++progress; }
    void OnCommandComplete(const Variant& value) noexcept override { Note(value, 1); }
    void OnCommandCompleteAlt(const Variant& value) noexcept override { Note(value, 2); }
    void OnLineStatus(const Variant&) noexcept override {}
    void OnTransferProgress(const Variant&) noexcept override {}
    void Note(const Variant& value, int by) noexcept {
        method = value.ToI4(status) ? by : 0;
        thread = std::this_thread::get_id();
        completed.release();
    }

    std::counting_semaphore<> completed{0};
    std::int32_t status = -1;
    int progress = 0;
    int method = 0; ///< which of the two completion methods came
    std::thread::id thread;
};

Variant Tagged(std::uint8_t type, Variant::Bytes data) {
    data.insert(data.begin(), {type, static_cast<std::uint8_t>(data.size())});
    return Variant::FromBytes(std::move(data));
}

/// Bytes in hex; OTHER is what no operation gives, and nothing is nothing.
Variant Data(const std::string& hex) {
    return hex == "OTHER" ? Variant::Other() : hex.empty() ? Variant() : Variant::FromBytes(test::Hex(hex));
}

/// A connection with COM1 open, and relay requests to address 5.
class CRig {
public:
    explicit CRig(const std::string& toml, const std::string& folder = "C:\\nowhere",
                  bool cryptoProvider = true) {
        SLoadedSubstation loaded = ReadSubstation("link.serial = [\"COM1\"]\n" + toml, "f", folder);
        EXPECT_EQ(loaded.error, "");
        if (!cryptoProvider)
            loaded.substation->relays.at(0).access->providerFiles = {"C:\\nowhere\\HalvexCryptoKit.dll"};
        connection = std::make_unique<CSimulatedConnection>(std::move(loaded.substation));
        EXPECT_EQ(connection->OpenFiles(), "");
        connection->Advise(sink, cookie);
        EXPECT_EQ(Open("COM1"), 0);
    }
    ~CRig() { connection->Unadvise(cookie); }

    IP32ls& Server() { return connection->Server(); }
    std::int32_t Status(EComResult result) {
        std::int32_t number = -1;
        return result == EComResult::Ok && status.ToI4(number) ? number : -1;
    }
    std::int32_t Completion(EComResult result) {
        const std::int32_t started = Status(result);
        return started == 0 ? (sink.completed.acquire(), sink.status) : started;
    }
    std::int32_t Open(const char* port) {
        return Status(Server().OpenPort(Variant::FromText(port), Variant::FromText(""), status));
    }
    std::int32_t Value(int cell) { return Status(Server().GetValue(address, Cell(cell), a, b, c, status)); }
    std::int32_t Change(int cell, const Variant& value) {
        return Status(Server().ChangeSetting(address, Cell(cell), value, status));
    }
    std::int32_t Event() { return Status(Server().GetEvent(address, a, b, c, status)); }
    static Variant Cell(int cell) { return Variant::FromI2(static_cast<std::int16_t>(cell)); }

    CTestSink sink;
    std::uint32_t cookie = 0;
    std::unique_ptr<CSimulatedConnection> connection;
    Variant address = Variant::FromUI1(5), a, b, c, status;
};

const std::string kRelay = "[[relay]]\nserial = 5\n";
const std::string kUsers = kRelay + "access = { generation = 2, users = [";
const std::string kFault = "[[fault]]\noperation = ";

TEST(SubstationFile, BadFilesAreRefusedWithLineAndReason) {
    ForEachCase<2>("sim/bad_files.txt", [](auto& toml, auto& error) {
        const SLoadedSubstation loaded = ReadSubstation(toml, "f", "C:\\nowhere");
        EXPECT_EQ(loaded.substation, nullptr);
        EXPECT_EQ(loaded.error.substr(0, error.size()), error);
    });
}

TEST(SubstationFile, FriendlyValuesHaveTheRelaysByteForms) {
    ForEachCase<2>("sim/friendly_values.txt", [](auto& toml, auto& tagged) {
        CRig rig(kRelay + "cells.\"01.01\" = { uint = 1, limits = [" + toml + "] }\n");
        EXPECT_EQ(rig.Status(rig.Server().GetSettingLimits(rig.address, CRig::Cell(257), rig.a, rig.status)),
                  0);
        EXPECT_EQ(rig.a, Variant::FromList({Data(tagged)}));
    });
}

const std::string kEvent = "[[relay.event]]\nlocation = \"01.20\"\ntime = 2026-03-05T14:07:09\ntext = \"T\"\n"
                           "value = { uint = 1 }\nkind = ";

TEST(Relay, HandsOverEachKindOfEventOnce) {
    ForEachCase<4>("sim/event_kinds.txt", [](auto& kind, auto& more, auto& elements, auto& last) {
        const std::string start = more.starts_with("event = ") ? "" : kEvent + kind + "\n";
        CRig rig(kRelay + start + more);
        Variant before;
        EXPECT_EQ(rig.Status(rig.Server().GetDeviceStatus(rig.address, before, rig.status)), 0);
        EXPECT_EQ(rig.Event(), 0);
        EXPECT_EQ(rig.a, Variant::FromUI1(static_cast<std::uint8_t>(std::stoi(kind))));
        ASSERT_EQ(rig.b.AsList()->size(), std::stoul(elements));
        EXPECT_EQ(rig.b.AsList()->back(), Data(last));
        EXPECT_EQ(rig.c, Variant::FromUI1(0));
        EXPECT_EQ(rig.Event(), 0x211);
        EXPECT_EQ(rig.Status(rig.Server().GetDeviceStatus(rig.address, rig.a, rig.status)), 0);
        EXPECT_EQ(std::pair(before, rig.a), std::pair(Variant::FromUI1(0x20), Variant::FromUI1(0)));
    });
}

TEST(Relay, GeneratesTheSameEventsFromTheSameSeed) {
    const auto read = [](const std::string& seed) {
        const std::string toml = kRelay + "generate = { count = 40, kinds = [0, 1, 4], seed = " + seed + " }";
        return ReadSubstation(toml, "f", "C:\\nowhere").substation->relays.at(0).events;
    };
    EXPECT_EQ(read("7").size(), 40U);
    EXPECT_TRUE(read("7") == read("7") && read("7") != read("8"));
}

TEST(Relay, NeverRunsOutOfEventsAndTenMinutesPassInNoTime) {
    CRig rig("speed = 1000000\n" + kRelay + "generate = { count = 2, endless = true }\n" + kFault +
             "\"GetEvent\"\ndelay = 600000\n" + kFault + "\"StartGetColumnText\"\ndelay = 600000\n");
    std::vector<Variant> values;
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(rig.Event(), 0);
        EXPECT_EQ(rig.c, Variant::FromUI1(1)) << "more wait";
        values.push_back(rig.b);
    }
    EXPECT_TRUE(values[0] == values[2] && values[2] == values[4] && !(values[0] == values[1]));
    EXPECT_EQ(rig.Completion(rig.Server().StartGetColumnText(rig.address, rig.address, rig.status)), 0x0111);
}

TEST(Relay, ListsTheSelectedRecord) {
    CRig rig(kRelay + "columns.\"05\" = { locations = \"uint\" }\n[[relay.record]]\nnumber = 3\n"
                      "column = \"05\"\ncells.\"05.02\" = { uint = 4, label = \"L\" }\n");
    EXPECT_EQ(rig.Change(0x0501, Tagged(0x24, {2, 0})), 0x411);
    EXPECT_EQ(rig.Change(0x0501, Tagged(0x24, {3, 0})), 0);
    auto& server = rig.Server();
    EXPECT_EQ(rig.Completion(server.StartGetColumnTextAndValues(rig.address, rig.address, rig.status)), 0);
    EXPECT_EQ(rig.Status(server.FetchColumnTextAndValues(rig.a, rig.b, rig.c, rig.status)), 0);
    EXPECT_EQ(rig.a, Variant::FromList({Tagged(0x24, {0x02, 0x05})}));
    EXPECT_EQ(rig.b, Variant::FromList({Tagged(0x18, {'L'})}));
    EXPECT_EQ(rig.c, Variant::FromList({Tagged(0x24, {4, 0})}));
}

TEST(Relay, LetsInWithTheRightPasswordAndBlocks) {
    const std::tuple<std::string, int, Variant, Variant> cases[] = {
        {"password = \"AB\"", 0x0002, Tagged(0x1C, {'A', 'B', 'C', ' '}), Tagged(0x1C, {'A', 'B', ' ', ' '})},
        // The bytes come from another implementation of the cipher, under the default key.
        {"generation = 1, password = \"AAAAAAAA\"", 0x00E1, Tagged(0x6C, {0, 0, 0, 0, 0, 0, 0, 0}),
         Tagged(0x6C, {0x70, 0x78, 0xAA, 0xFF, 0x5F, 0x34, 0xF9, 0x78})}};
    for (const auto& [toml, cell, wrong, right] : cases) {
        const std::string head = kRelay + "access = { " + toml;
        CRig rig(head + ", attempts = 2, blocked_requests = 1, forget_after = 1 }\n" + kEvent + "0");
        EXPECT_EQ(rig.Event(), 0x0611);
        EXPECT_EQ(rig.Change(cell, wrong) | rig.Change(cell, wrong), 0x411);
        EXPECT_EQ(rig.Change(cell, right), 0xB11);
        EXPECT_EQ(rig.Change(cell, right), 0) << "one request later the blocking is over";
        EXPECT_EQ(rig.Event(), 0);
        EXPECT_EQ(rig.Change(0xBF15, Tagged(0x28, {1, 0})), 0x0611) << "the login is forgotten";
        CRig low(head + ", level_too_low = true, reply = 13 }\n");
        EXPECT_EQ(low.Change(cell, right), 0);
        EXPECT_EQ(low.Event(), 0x0D11);
        CRig shut(head + ", attempts = 1, blocking = \"permanent\" }\n");
        EXPECT_EQ(shut.Change(cell, wrong), 0x411);
        EXPECT_EQ(shut.Change(cell, right), 0xB11);
        EXPECT_EQ(shut.Value(0x2512), 0x111);
    }
}

Variant TaggedText(std::uint8_t type, const std::string& text) {
    return Tagged(type, Variant::Bytes(text.begin(), text.end()));
}

// Digests under this salt, made by another implementation: of "Secret 1", "Sch\xF6n" and "Other".
const std::string kSalt = "0123 abcXYZ<{}|}",
                  kOperator = "C59C4C7250F0E3CFE1725BCAC52A0A5DE1C9AF8253CAE366970911A79B41FFE3",
                  kHunter = "E5C4A54A34C399642DBE646DF9303A2567CB8C85B871740E206EE3FC7E2A99A0",
                  kViewer = "C3FD0936A9088F2C7FA7CF14FF81DC238D0B45CCDD0FB63F69EDF2AC3FB00AB1";

std::string UserRelay(int generation, const std::string& options = "") {
    return kRelay + "access = { generation = " + std::to_string(generation) + options +
           ", users = [{ name = \"OPERATOR\", password = \"Secret 1\" }, \"GUEST\", "
           "{ name = \"VIEWER\", password = \"Other\", level_too_low = true }, "
           "{ name = \"J\u00E4ger\", password = \"Sch\u00F6n  \" }] }\n" +
           kEvent + "0\n";
}

std::int32_t LogIn(CRig& rig, const std::string& name, const std::string& digest) {
    EXPECT_EQ(rig.Change(0x00F1, TaggedText(0x18, name)), 0);
    EXPECT_EQ(rig.Change(0x00E5, TaggedText(0x18, kSalt)), 0);
    return rig.Change(0x00E1, TaggedText(0x1C, digest));
}

TEST(Relay, LetsUsersInWithTheirSaltedDigest) {
    const std::map<std::string, std::string> digests{
        {"OPERATOR", kOperator}, {"HUNTER", kHunter}, {"VIEWER", kViewer}};
    ForEachCase<6>("sim/user_logins.txt",
                   [&](auto& options, auto& user, auto& digest, auto& second, auto& third, auto& event) {
                       for (const int generation : {2, 3}) {
                           CRig rig(UserRelay(generation, options));
                           EXPECT_EQ(LogIn(rig, user, digests.at(digest)),
                                     std::stoi(generation == 2 ? second : third, nullptr, 0));
                           EXPECT_EQ(rig.Event(), std::stoi(event, nullptr, 0)) << generation;
                       }
                   });
}

TEST(Relay, BlocksUsersWhenNoAttemptsAreLeft) {
    CRig rig(UserRelay(2, ", attempts = 2, blocked_requests = 5"));
    const auto number = [&](int cell) { return rig.Value(cell) == 0 ? rig.c.AsBytes()->at(0) : -1; };
    EXPECT_EQ(LogIn(rig, "OPERATOR", kViewer), 0x411);
    EXPECT_EQ(number(0x2511), 1);
    EXPECT_EQ(LogIn(rig, "OPERATOR", kOperator), 0);
    EXPECT_EQ(number(0x2511), 2);
    EXPECT_EQ(LogIn(rig, "OPERATOR", kViewer), 0x411);
    EXPECT_EQ(LogIn(rig, "NOBODY", kOperator), 0x411);
    EXPECT_EQ(number(0x2511), 0);
    EXPECT_EQ(number(0x2512), 4);
    EXPECT_EQ(LogIn(rig, "OPERATOR", kOperator), 0x411) << "in the fifth request";
    EXPECT_EQ(LogIn(rig, "OPERATOR", kOperator), 0) << "the sixth request ended the blocking";
    CRig shut(UserRelay(3, ", attempts = 1, blocking = \"permanent\""));
    EXPECT_EQ(LogIn(shut, "OPERATOR", kViewer), 0x411);
    EXPECT_EQ(LogIn(shut, "OPERATOR", kOperator), 0x411);
    EXPECT_EQ(shut.Value(0x2512), 0x111);
}

TEST(Relay, WantsAFreshSaltAfterTheNameAndHidesIt) {
    const CScratchFolder folder;
    CRig rig("trace = \"t\"\n" + UserRelay(3, ", fresh_salt = true"), folder.Path(), false);
    EXPECT_EQ(LogIn(rig, "OPERATOR", kOperator), 0x911);
    EXPECT_EQ(rig.Change(0x00E5, TaggedText(0x18, kSalt)), 0x411);
    const std::string trace = folder.Read("t");
    EXPECT_EQ(trace.substr(trace.find('\n') + 1), "ChangeSetting 5 00.F1 0x0000 18084F50455241544F52\n"
                                                  "ChangeSetting 5 00.E5 0x0000 (masked)\n"
                                                  "ChangeSetting 5 00.E1 0x0911 (masked) no crypto provider\n"
                                                  "ChangeSetting 5 00.E5 0x0411 (masked)\n");
    CRig late(UserRelay(3, ", salted = false"));
    EXPECT_EQ(late.Value(0x00F4), 0);
    EXPECT_EQ(late.Status(late.Server().GetText(late.address, CRig::Cell(0x2522), late.a, late.status)), 0);
    EXPECT_EQ(late.a, TaggedText(0x18, "GUEST           "));
    EXPECT_EQ(LogIn(late, "OPERATOR", kOperator), 0);
    EXPECT_EQ(late.Change(0x00E1, TaggedText(0x1C, kOperator)), 0x411) << "the salt has served";
    EXPECT_EQ(late.Change(0x00E5, TaggedText(0x18, kSalt)), 0);
    EXPECT_EQ(late.Change(0x00F1, TaggedText(0x18, "OPERATOR")), 0);
    EXPECT_EQ(late.Change(0x00E1, TaggedText(0x1C, kOperator)), 0x411) << "the salt came before the name";
}

const std::string kNamedRelay = kRelay + "name = \"A\"\nidentity.model = \"ABC\"\n"
                                         "cells.\"01.01\" = { index = 0, strings = [\"a\"] }\n";

TEST(Commands, FaultsHitTheCallsTheyName) {
    ForEachCase<4>("sim/faults.txt", [](auto& toml, auto& first, auto& second, auto& data) {
        CRig rig(kNamedRelay + kFault + "\"GetValue\"\nrelay = \"A\"\n" + toml + "\n");
        EXPECT_EQ(rig.Value(0x0006), std::stoi(first));
        EXPECT_EQ(rig.Value(0x0006), std::stoi(second, nullptr, 0));
        EXPECT_EQ(rig.c, Data(data));
    });
}

TEST(Commands, LinkAndInputsAreChecked) {
    CRig rig("link.modems = [\"M\"]\n[[relay]]\nmodem = { number = \"12\", address = 5 }\n"
             "ethernet = { ip = \"10.0.0.5\", bus = 1, address = 5 }\n");
    IP32ls& server = rig.Server();
    const Variant number = Variant::FromText("12"), none = Variant::FromText(""),
                  modem = Variant::FromText("M");
    EXPECT_EQ(rig.Value(0x0006), 8);
    EXPECT_EQ(rig.Status(server.GetText(number, CRig::Cell(6), rig.a, rig.status)), 10);
    EXPECT_EQ(rig.Status(server.ClosePort(rig.status)), 0);
    EXPECT_EQ(rig.Value(0x0006), 15);
    EXPECT_EQ(rig.Open("TNLC=\"RPCDll.Dll\",\"10.0.0.6\",\"1\",\"5\",\"0\""), 11);
    EXPECT_EQ(rig.Open("TNLC=\"RPCDll.Dll\",\"10.0.0.5\",\"1\",\"5\",\"0\""), 0);
    EXPECT_EQ(rig.Value(0x0006), 0x111);
    EXPECT_EQ(rig.Status(server.ClosePort(rig.status)), 0);
    EXPECT_EQ(rig.Completion(server.ModemConnect(modem, Variant::FromI4(0), none, none, number,
                                                 Variant::FromUI1(0), rig.status)),
              0);
    EXPECT_EQ(rig.Value(0x0006), 0x111);
}

TEST(Commands, RunOnAnotherThreadUntilTheyAreCompleteOrAborted) {
    CRig rig(kNamedRelay + kFault + "\"StartGetStrings\"\nfrom = 3\nhang = true\n");
    const Variant cell = CRig::Cell(0x0101);
    const auto start = [&] { return rig.Server().StartGetStrings(rig.address, cell, rig.status); };
    const auto fetch = [&] { return rig.Status(rig.Server().FetchStrings(rig.a, rig.status)); };
    for (const int method : {1, 2}) {
        EXPECT_EQ(rig.Completion(start()), 0);
        EXPECT_EQ(rig.sink.method, method);
        EXPECT_EQ(fetch(), 0);
        EXPECT_EQ(rig.a, Variant::FromList({Tagged(0x18, {'a'})}));
    }
    EXPECT_NE(rig.sink.thread, std::this_thread::get_id());
    EXPECT_GE(rig.sink.progress, 4);
    EXPECT_EQ(rig.Status(rig.Server().Abort(rig.status)), 28);
    EXPECT_EQ(rig.Status(start()), 0);
    EXPECT_EQ(rig.Value(0x0006), 7);
    EXPECT_EQ(rig.Completion(rig.Server().Abort(rig.status)), 18);
    EXPECT_EQ(fetch(), 14);
    EXPECT_EQ(rig.Status(start()), 0); // still hanging when the connection goes
}

TEST(Commands, StateAndTraceAreKept) {
    const CScratchFolder folder;
    const std::string toml = "state = \"s\"\ntrace = \"t\"\n" + kRelay + "access = { protect = [] }\n" +
                             "event = [{ kind = 0, elements = [] }, { kind = 0, elements = [] }]\n";
    EXPECT_EQ(CRig(toml, folder.Path()).Event(), 0);
    CRig rig(toml, folder.Path());
    EXPECT_EQ(rig.Event(), 0);
    EXPECT_EQ(rig.Event(), 0x211);
    EXPECT_EQ(rig.Change(0x0002, Tagged(0x1C, {'X', 'X', 'X', 'X'})), 0x411);
    EXPECT_EQ(folder.Read("t"),
              "OpenPort - - 0x0000 COM1 \nGetEvent 5 - 0x0000\nOpenPort - - 0x0000 COM1 \n"
              "GetEvent 5 - 0x0000\nGetEvent 5 - 0x0211\nChangeSetting 5 00.02 0x0411 (masked)\n");
}

TEST(Commands, ConnectionsThatShareAnAccountGetEachEventOnce) {
    const CScratchFolder folder;
    const std::string toml = "account = \"a\"\n" + kRelay + "access = { protect = [] }\n" +
                             "event = [{ kind = 0, elements = [] }, { kind = 1, elements = [] }]\n";
    folder.Write("a", "relay 1;1");
    CRig first(toml, folder.Path()), second(toml, folder.Path());
    EXPECT_EQ(first.Event(), 0) << "the line that was cut short does not count";
    EXPECT_EQ(second.Event(), 0);
    EXPECT_EQ(first.Event(), 0x211);
    EXPECT_EQ(folder.Read("a"), "relay 1;1\nrelay 1;1;\nrelay 1;2;\n");
    ASSERT_TRUE(RemoveFile(folder.Path("a")));
    EXPECT_EQ(second.Event(), 0) << "started over";
    ASSERT_TRUE(RemoveFile(folder.Path("a")) && MakeFolder(folder.Path("a")).Good());
    EXPECT_EQ(second.Event(), 8) << "what cannot be noted is not handed over";
}

} // namespace
} // namespace ruvo::sim
