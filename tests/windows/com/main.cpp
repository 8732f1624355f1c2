#include "rig.h"

#include "link/windows/kept_stubs.h"
#include "platform/com_runtime.h"

namespace ruvo::test {
namespace {

/// A client that ends in the middle of a command without giving anything back.
void Die() {
    CTestSink sink;
    std::uint32_t cookie = 0;
    Variant status;
    const auto connection = ConnectToServer();
    const bool advised = connection != nullptr && connection->Advise(sink, cookie);
    TerminateProcess(GetCurrentProcess(), advised ? 7 : 8);
}

} // namespace
} // namespace ruvo::test

int main(int count, char** arguments) {
    if (!ruvo::StartComRuntime())
        return 1;
    if (count == 2 && std::string(arguments[1]) == "--die")
        ruvo::test::Die();
    testing::InitGoogleTest(&count, arguments);
    int result = 1;
    {
        // The tests end their connections right after an event, again and again.
        const IID interfaces[] = {IID_IUnknown, IID_IDispatch, __uuidof(::IP32lsSink_v2)};
        const ruvo::CKeptStubs stubs(interfaces);
        result = RUN_ALL_TESTS();
    }
    ruvo::StopComRuntime();
    return result;
}
