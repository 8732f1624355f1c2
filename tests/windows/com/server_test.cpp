// Requests of the client to the simulated server's program, through the real COM.
#include "rig.h"

#include "link/windows/com_sink.h"
#include "link/windows/variant_conversion.h"
#include "model/status/progress.h"

#include <fstream>

namespace ruvo::test {
namespace {

TEST_F(Server, ThatIsNotRegisteredCannotBeConnectedTo) {
    ASSERT_EQ(RunServer("/UnregServer"), 0);
    EXPECT_EQ(ConnectToServer(), nullptr);
    EXPECT_EQ(CP32Wrap::CreateInstance(), 255U);
    EXPECT_EQ(RunServer("-unregserver"), 0) << "nothing there is no failure";
    EXPECT_EQ(RunServer("/RegServer \"" + File() + "\""), 0);
    EXPECT_NE(ConnectToServer(), nullptr);
}

TEST_F(Server, RefusesWhatItCannotServe) {
    const std::string bad = Folder() + "\\bad.toml";
    std::ofstream(bad) << "relays = 1";
    EXPECT_EQ(RunServer("/RegServer \"" + bad + "\""), 1);
    EXPECT_EQ(RunServer(""), 2);
    Serve("relays = 1");
    EXPECT_EQ(ConnectToServer(), nullptr);
    Serve(kSubstation);
    EXPECT_NE(ConnectToServer(), nullptr) << "the registered file is still the old one";
}

TEST_F(Server, AnswersRequestsOfEveryShape) {
    Connect();
    auto& server = connection->Server();
    const Variant word = Variant::FromI2(-7);
    EXPECT_EQ(Status(server.SetTransactionValues(word, word, word, word, word, word, word, status)), 0);
    EXPECT_EQ(Status(server.GetValue(address, Cell(0x0502), a, b, c, status)), 0);
    EXPECT_EQ(a, Variant::FromUI1(0x24));
    EXPECT_EQ(b, Variant::FromUI1(2));
    EXPECT_EQ(c, Variant::FromBytes({7, 0}));
    EXPECT_EQ(Status(server.GetValue(address, Cell(0xBF15), a, b, c, status)), 0)
        << "a negative cell address";
    EXPECT_EQ(c, Variant::FromBytes({0xFE, 0xFF}));
    EXPECT_EQ(Status(server.GetValue(address, Cell(0x0101), a, b, c, status)), 0x0111);
    EXPECT_TRUE(a.IsEmpty() && b.IsEmpty() && c.IsEmpty());
    EXPECT_EQ(Status(server.GetText(address, Cell(0x0502), a, status)), 0);
    EXPECT_EQ(a, Tagged(0x18, {'V', 'o', 'l', 't', 'a', 'g', 'e'}));
    EXPECT_EQ(Status(server.GetValues(address, Variant::FromWords({0x0502, 0x0503}), a, status)), 0);
    EXPECT_EQ(a, Variant::FromList({Tagged(0x24, {7, 0}), Tagged(0x24, {9})}));
    EXPECT_EQ(Status(server.GetSettingLimits(address, Cell(0x0503), a, status)), 0);
    EXPECT_EQ(a, Variant::FromList({Tagged(0x24, {0}), Tagged(0x24, {20})}));
    EXPECT_EQ(Status(server.ChangeSetting(address, Cell(0x0503), Tagged(0x24, {21}), status)), 0x0411);
    EXPECT_EQ(Status(server.ChangeSetting(address, Cell(0x0503), Tagged(0x24, {20}), status)), 0);
    EXPECT_EQ(Status(server.GetDeviceStatus(address, a, status)), 0);
    EXPECT_EQ(a, Variant::FromUI1(0x20));
    EXPECT_EQ(Status(server.GetEvent(address, a, b, c, status)), 0);
    EXPECT_EQ(a, Variant::FromUI1(0));
    ASSERT_NE(b.AsList(), nullptr);
    EXPECT_EQ(b.AsList()->size(), 4U);
    EXPECT_TRUE(b.AsList()->at(3).IsEmpty()) << "no value in the event";
    EXPECT_EQ(c, Variant::FromUI1(0));
}

TEST_F(Server, CompletesCommandsOnAnotherThread) {
    Connect();
    auto& server = connection->Server();
    EXPECT_EQ(Status(server.StartGetStrings(address, Cell(0x0504), status)), 0);
    ASSERT_TRUE(sink.called.try_acquire_for(10s));
    EXPECT_EQ(sink.last, Variant::FromI4(0));
    EXPECT_NE(sink.thread, std::this_thread::get_id());
    EXPECT_EQ(Status(server.FetchStrings(a, status)), 0);
    EXPECT_EQ(a, Variant::FromList({Tagged(0x18, {'O', 'f', 'f'}), Variant(), Variant::Other()}));
    EXPECT_EQ(Status(server.StartGetColumnTextAndValues(address, Variant::FromUI1(5), status)), 0);
    ASSERT_TRUE(sink.called.try_acquire_for(10s));
    EXPECT_EQ(Status(server.FetchColumnTextAndValues(a, b, c, status)), 0);
    EXPECT_EQ(a.AsList()->size(), 3U);
    EXPECT_EQ(c.AsList()->at(0), Tagged(0x24, {7, 0}));
}

TEST_F(Server, DialsAModem) {
    Connect();
    auto& server = connection->Server();
    EXPECT_EQ(Status(server.ClosePort(status)), 0);
    EXPECT_EQ(Status(server.ModemConnect(Variant::FromText("M\xF6"
                                                           "dem"),
                                         Variant::FromI4(-1), Variant::FromText("49"), Variant::FromText(""),
                                         Variant::FromText("0123"), Variant::FromUI1(0), status)),
              0);
    ASSERT_TRUE(sink.called.try_acquire_for(10s));
    EXPECT_EQ(sink.last, Variant::FromI4(0));
    EXPECT_EQ(Status(server.GetDeviceStatus(Variant::FromUI1(6), a, status)), 0);
    EXPECT_EQ(Status(server.ModemHangUp(status)), 0);
}

TEST_F(Server, AnswersLateBoundCallsByName) {
    CComPointer<IDispatch> object;
    ASSERT_EQ(CoCreateInstance(CLSID_P32LS, nullptr, CLSCTX_LOCAL_SERVER, IID_IDispatch,
                               reinterpret_cast<void**>(object.Receive())),
              S_OK);
    std::wstring name = L"OpenPort";
    LPOLESTR names[] = {name.data()};
    DISPID id = 0;
    ASSERT_EQ(object->GetIDsOfNames(IID_NULL, names, 1, LOCALE_NEUTRAL, &id), S_OK);
    EXPECT_EQ(id, 1);
    COwnedVariant port;
    COwnedVariant result;
    ToVariant(Variant::FromText("COM1"), port);
    VARIANTARG arguments[] = {port.Get(), port.Get()};
    DISPPARAMS parameters = {arguments, nullptr, 2, 0};
    ASSERT_EQ(object->Invoke(id, IID_NULL, LOCALE_NEUTRAL, DISPATCH_METHOD, &parameters, result.Receive(),
                             nullptr, nullptr),
              S_OK);
    EXPECT_EQ(FromVariant(result.Get()), Variant::FromI4(0));
}

TEST_F(Server, RefusesTheSlotsThatNobodyUses) {
    CComPointer<::IP32ls> object;
    ASSERT_EQ(CoCreateInstance(CLSID_P32LS, nullptr, CLSCTX_LOCAL_SERVER, __uuidof(::IP32ls),
                               reinterpret_cast<void**>(object.Receive())),
              S_OK);
    COwnedVariant result;
    EXPECT_EQ(object->Unused35(result.Receive()), E_NOTIMPL);
    EXPECT_EQ(object->Unused56({}, {}, result.Receive(), COwnedVariant().Receive()), E_NOTIMPL);
}

TEST_F(Server, DamagesRepliesAsItsFaultsSay) {
    const std::tuple<const char*, const char*, std::int32_t, Variant> cases[] = {
        {"output of a useless type", "wrong_type = 3", 0, Variant::Other()},
        {"status of a useless type", "wrong_type = 0", -1, Variant::FromBytes({7, 0})},
        {"cut short", "truncate = 1", 0, Variant::FromBytes({7})},
        {"failed call", "com_failure = true", -1, Variant()},
    };
    for (const auto& [name, fault, wanted, data] : cases) {
        ServeWithFault(std::string("operation = \"GetValue\"\n") + fault);
        ASSERT_NO_FATAL_FAILURE(Connect());
        c = {};
        EXPECT_EQ(Status(connection->Server().GetValue(address, Cell(0x0502), a, b, c, status)), wanted)
            << name;
        EXPECT_EQ(c, data) << name;
        connection.reset();
    }
}

// --- events ---

TEST(Sink, AnswersForItsInterfacesAndLateBoundCalls) {
    CTestSink target;
    const auto object = CComPointer<CComSink>::Adopt(new CComSink(target));
    for (const IID& id : {IID_IUnknown, IID_IDispatch, __uuidof(::IP32lsSink_v2)}) {
        CComPointer<IUnknown> asked;
        EXPECT_EQ(object->QueryInterface(id, reinterpret_cast<void**>(asked.Receive())), S_OK);
    }
    CComPointer<IUnknown> asked;
    EXPECT_EQ(object->QueryInterface(IID_IStream, reinterpret_cast<void**>(asked.Receive())), E_NOINTERFACE);
    VARIANTARG number;
    VariantInit(&number);
    number.vt = VT_I4;
    number.lVal = 8;
    for (const DISPID method : {2, 3, 4, 5}) { // one input each
        ++number.lVal;
        DISPPARAMS parameters = {&number, nullptr, 1, 0};
        EXPECT_EQ(object->Invoke(method, IID_NULL, LOCALE_NEUTRAL, DISPATCH_METHOD, &parameters, nullptr,
                                 nullptr, nullptr),
                  S_OK);
        EXPECT_EQ(target.last, Variant::FromI4(number.lVal)) << method;
    }
    object->Detach();
    EXPECT_EQ(object->OnCommandComplete(number), S_OK);
    EXPECT_EQ(target.calls, 4) << "a detached sink forwards nothing";
}

TEST_F(Server, TellsEverySinkAndNoneThatHasLeft) {
    ServeWithFault("operation = \"StartGetStrings\"\ndelay = 300");
    Connect();
    CTestSink second;
    std::uint32_t secondCookie = 0;
    ASSERT_TRUE(connection->Advise(second, secondCookie));
    EXPECT_NE(secondCookie, cookie);
    EXPECT_EQ(Status(connection->Server().StartGetStrings(address, Cell(0x0504), status)), 0);
    ASSERT_TRUE(sink.called.try_acquire_for(10s));
    ASSERT_TRUE(second.called.try_acquire_for(10s));
    EXPECT_EQ(Status(connection->Server().StartGetStrings(address, Cell(0x0504), status)), 0);
    connection->Unadvise(secondCookie);
    ASSERT_TRUE(sink.called.try_acquire_for(10s));
    EXPECT_EQ(sink.calls, 2);
    EXPECT_EQ(second.calls, 1);
    EXPECT_EQ(sink.progress, 4);
}

class CMonitor final : public CProgressMonitor {
public:
    CMonitor() : CProgressMonitor(nullptr, 0, 100) {}
    void SetPercent(int percent) override { last = percent; }
    std::atomic<int> last = -1;
};

TEST_F(Server, ReportsProgressAndCompletionWhileTheClientBlocks) {
    ServeWithFault("operation = \"StartGetStrings\"\ndelay = 300");
    CP32Wrap& client = CreateClient();
    CMonitor monitor;
    CParlaneDataArray strings;
    EXPECT_EQ(client.GetStrings(&monitor, 0x0504, strings), 254U) << "an element of a useless type";
    EXPECT_EQ(monitor.last, 100);
    EXPECT_EQ(strings.size(), 2U);
}

TEST_F(Server, LetsAHangingCommandBeAborted) {
    ServeWithFault("operation = \"StartGetStrings\"\nhang = true");
    CP32Wrap& client = CreateClient();
    std::thread user([&] {
        std::this_thread::sleep_for(300ms);
        client.RequestAbort();
    });
    CParlaneDataArray strings;
    EXPECT_EQ(client.GetStrings(nullptr, 0x0504, strings), 18U);
    user.join();
    std::uint8_t byte = 0;
    EXPECT_EQ(client.GetDeviceStatus(nullptr, byte), kLinkGood) << "the next command runs";
}

} // namespace
} // namespace ruvo::test
