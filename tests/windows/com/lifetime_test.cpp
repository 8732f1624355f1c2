// What outlives what: servers that are killed, clients that die, connections one after the other.
#include "rig.h"

#include "link/windows/com_owners.h"

#include <algorithm>

namespace ruvo::test {
namespace {

/// Each of these runs in a session of its own: Wine goes on offering the class object of a server that was
/// killed, for as long as its services run.
class KilledServer : public Server {
protected:
    template <class Request>
    void ExpectLoss(const char* fault, Request request) {
        ServeWithFault(fault);
        CP32Wrap& client = CreateClient();
        std::thread killer([] {
            std::this_thread::sleep_for(500ms);
            EXPECT_GT(KillServer(), 0);
        });
        const auto begin = std::chrono::steady_clock::now();
        EXPECT_EQ(request(client), 255U);
        EXPECT_LT(std::chrono::steady_clock::now() - begin, 20s);
        killer.join();
        std::uint8_t byte = 0;
        EXPECT_EQ(client.GetDeviceStatus(nullptr, byte), 255U);
        CParlaneDataArray strings;
        EXPECT_EQ(client.GetStrings(nullptr, 0x0504, strings), 255U);
        EXPECT_EQ(client.ClosePort(nullptr), 255U);
        CP32Wrap::DestroyInstance();
    }
};

TEST_F(KilledServer, EndsTheWaitForAStartedCommand) {
    ExpectLoss("operation = \"StartGetStrings\"\nhang = true", [](CP32Wrap& client) {
        CParlaneDataArray strings;
        return client.GetStrings(nullptr, 0x0504, strings);
    });
}

TEST_F(KilledServer, EndsTheCallInProgress) {
    ExpectLoss("operation = \"GetText\"\ndelay = 60000", [](CP32Wrap& client) {
        std::unique_ptr<CParlaneData> text;
        return client.GetText(nullptr, 0x0502, text);
    });
}

/// Blocks in use on the heap where the system keeps texts and arrays.
std::size_t CountBlocks() {
    std::size_t blocks = 0;
    PROCESS_HEAP_ENTRY entry = {};
    HeapLock(GetProcessHeap());
    while (HeapWalk(GetProcessHeap(), &entry) != FALSE)
        blocks += (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0 ? 1 : 0;
    HeapUnlock(GetProcessHeap());
    return blocks;
}

TEST_F(Server, IsAskedWithoutLeavingAnythingBehind) {
    Connect();
    auto& server = connection->Server();
    const auto ask = [&] {
        EXPECT_EQ(Status(server.GetValue(address, Cell(0x0502), a, b, c, status)), 0);
        EXPECT_EQ(Status(server.GetSettingLimits(address, Cell(0x0503), a, status)), 0);
        EXPECT_EQ(Status(server.ChangeSetting(address, Cell(0x0503), Tagged(0x24, {20}), status)), 0);
        EXPECT_EQ(Status(server.OpenPort(Variant::FromText("COM9"), Variant::FromText("x"), status)), 11);
        EXPECT_EQ(Status(server.GetText(address, Cell(0x0101), a, status)), 0x0111);
        EXPECT_EQ(Status(server.GetValues(address, Variant::FromWords({0x0502}), a, status)), 0);
    };
    for (int i = 0; i < 20; ++i) // what is cached is there afterwards
        ask();
    const std::size_t before = CountBlocks();
    for (int i = 0; i < 300; ++i)
        ask();
    EXPECT_GT(before, 100U);
    EXPECT_LT(CountBlocks(), before + 100);
    std::printf("blocks: %zu to %zu\n", before, CountBlocks());
}

/// Open handles of a process, from the system's list of all of them.
std::size_t CountHandles(DWORD process) {
    struct SEntry {
        void* object;
        ULONG_PTR owner;
        ULONG_PTR handle;
        ULONG access, more, attributes, reserved;
    };
    constexpr ULONG kAllHandles = 64; // SystemExtendedHandleInformation, which the headers leave out
    using Query = LONG(WINAPI*)(ULONG, void*, ULONG, ULONG*);
    const auto query = reinterpret_cast<Query>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleA("ntdll.dll"), "NtQuerySystemInformation")));
    std::vector<ULONG_PTR> list(1U << 18U);
    ULONG used = 0;
    const LONG result =
        query(kAllHandles, list.data(), static_cast<ULONG>(list.size() * sizeof(ULONG_PTR)), &used);
    EXPECT_GE(result, 0);
    const auto* entries = reinterpret_cast<const SEntry*>(&list[2]); // after their number and a reserved word
    return static_cast<std::size_t>(std::count_if(
        entries, entries + list[0], [&](const SEntry& entry) { return entry.owner == process; }));
}

TEST_F(Server, IsConnectedToAgainAndAgain) {
    const auto useOnce = [this] {
        ASSERT_NO_FATAL_FAILURE(Connect());
        EXPECT_EQ(Status(connection->Server().StartGetStrings(address, Cell(0x0504), status)), 0);
        ASSERT_TRUE(sink.called.try_acquire_for(10s));
        connection->Unadvise(cookie);
        connection.reset();
    };
    const auto other = ConnectToServer(); // so that the server's process stays the same
    for (int i = 0; i < 5; ++i)           // what the runtimes keep for good is there afterwards
        ASSERT_NO_FATAL_FAILURE(useOnce());
    ASSERT_EQ(ServerProcesses().size(), 1U);
    const DWORD server = ServerProcesses().front();
    const DWORD client = GetCurrentProcessId();
    const std::size_t clientBefore = CountHandles(client);
    const std::size_t serverBefore = CountHandles(server);
    for (int i = 0; i < 50; ++i)
        ASSERT_NO_FATAL_FAILURE(useOnce()) << i;
    EXPECT_GT(clientBefore, 10U);
    EXPECT_GT(serverBefore, 10U);
    // Threads of the runtimes come and go, a few handles each; one handle per connection would be 50.
    EXPECT_LT(CountHandles(client), clientBefore + 25);
    EXPECT_LT(CountHandles(server), serverBefore + 25);
    std::printf("handles: client %zu to %zu, server %zu to %zu\n", clientBefore, CountHandles(client),
                serverBefore, CountHandles(server));
}

TEST_F(Server, EndsAfterItsLastClient) {
    Connect();
    auto second = ConnectToServer();
    ASSERT_NE(second, nullptr);
    EXPECT_EQ(ServerProcesses().size(), 1U) << "one process serves all";
    connection.reset();
    std::this_thread::sleep_for(2500ms);
    EXPECT_EQ(ServerProcesses().size(), 1U) << "one client is left";
    second.reset();
    EXPECT_TRUE(AwaitNoServer());
}

TEST_F(Server, EndsWhenItsClientHasDiedAndNotBefore) {
    ASSERT_TRUE(AwaitNoServer());
    const DWORD seconds = 1;
    ASSERT_EQ(
        RegSetKeyValueA(HKEY_CLASSES_ROOT, kClassKey, "IdleSeconds", REG_DWORD, &seconds, sizeof(seconds)),
        ERROR_SUCCESS);
    Connect();
    std::this_thread::sleep_for(4s);
    EXPECT_EQ(Status(connection->Server().GetDeviceStatus(address, a, status)), 0) << "silent, yet alive";
    EXPECT_EQ(CProcess("test_com.exe", "--die").Wait(30000), 7);
    connection->Unadvise(cookie);
    connection.reset();
    EXPECT_TRUE(AwaitNoServer());
    RegDeleteKeyValueA(HKEY_CLASSES_ROOT, kClassKey, "IdleSeconds");
}

} // namespace
} // namespace ruvo::test
