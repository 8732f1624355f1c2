// What the tests of the COM side share: the server's program, its substation file, a sink that counts.
#pragma once

#include "link/client.h"
#include "link/windows/com_headers.h"
#include "windows/program_run.h"
#include "windows/server_processes.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <semaphore>

namespace ruvo::test {

using namespace std::chrono_literals;

inline constexpr const char* kClassKey = "CLSID\\{9A69E99F-E86F-455D-B971-355C1139963E}";

Variant Tagged(std::uint8_t type, Variant::Bytes data);

/// A folder of this process's own.
std::string Folder();
/// Its exit status, or -1 when it does not end in time.
inline int RunServer(const std::string& arguments) {
    return CProcess(kServerProgram, arguments).Wait(30000);
}
bool AwaitNoServer();

class CTestSink final : public ruvo::IP32lsSink_v2 {
public:
    void OnProgress(const Variant&, const Variant&) noexcept override { ++progress; }
    void OnCommandComplete(const Variant& value) noexcept override { Note(value); }
    void OnCommandCompleteAlt(const Variant& value) noexcept override { Note(value); }
    void OnLineStatus(const Variant& value) noexcept override { Note(value); }
    void OnTransferProgress(const Variant& value) noexcept override { Note(value); }
    void Note(const Variant& value) noexcept {
        last = value;
        thread = std::this_thread::get_id();
        ++calls;
        called.release();
    }

    std::counting_semaphore<> called{0};
    std::atomic<int> calls = 0;
    std::atomic<int> progress = 0;
    Variant last;
    std::thread::id thread;
};

extern const std::string kSubstation;

/// A registered server that serves what a test wants; the file is read anew for each connection.
class Server : public testing::Test {
protected:
    static void SetUpTestSuite() {
        std::filesystem::create_directories(Folder());
        Serve(kSubstation);
        ASSERT_EQ(RunServer("/RegServer \"" + File() + "\""), 0);
    }
    static void TearDownTestSuite() { std::filesystem::remove_all(Folder()); }

    static std::string File() { return Folder() + "\\yard \xE4.toml"; }
    static void Serve(const std::string& toml);
    static void ServeWithFault(const std::string& fault) { Serve(kSubstation + "[[fault]]\n" + fault); }

    void SetUp() override { Serve(kSubstation); }
    void TearDown() override { CP32Wrap::DestroyInstance(); }

    void Connect() {
        connection = ConnectToServer();
        ASSERT_NE(connection, nullptr);
        ASSERT_TRUE(connection->Advise(sink, cookie));
        ASSERT_NE(cookie, 0U);
        ASSERT_EQ(Status(connection->Server().OpenPort(Variant::FromText("COM1"),
                                                       Variant::FromText("9600,E,8,1"), status)),
                  0);
    }
    std::int32_t Status(EComResult result) {
        std::int32_t number = -1;
        return result == EComResult::Ok && status.ToI4(number) ? number : -1;
    }
    CP32Wrap& CreateClient() {
        EXPECT_EQ(CP32Wrap::CreateInstance(), kLinkGood);
        CP32Wrap& client = *CP32Wrap::GetInstance();
        client.SetDeviceAddress(5);
        EXPECT_EQ(client.OpenPort(nullptr, "COM1", ""), kLinkGood);
        return client;
    }
    static Variant Cell(int cell) { return Variant::FromI2(static_cast<std::int16_t>(cell)); }

    CTestSink sink;
    std::uint32_t cookie = 0;
    Variant address = Variant::FromUI1(5), a, b, c, status;
    std::unique_ptr<IServerConnection> connection; // first to go: it uses the sink
};

} // namespace ruvo::test
