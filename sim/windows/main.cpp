// The simulated comms server as a program that COM starts.
#include "link/windows/kept_stubs.h"
#include "platform/modules.h"
#include "sim/windows/class_object.h"
#include "sim/windows/error_report.h"
#include "sim/windows/registration.h"
#include "sim/windows/server_lifetime.h"

#include <algorithm>
#include <cctype>
#include <exception>
#include <string>
#include <string_view>
#include <thread>

namespace ruvo::sim {
namespace {

constexpr int kGood = 0;
constexpr int kFailed = 1;
constexpr int kMisused = 2;
constexpr std::chrono::milliseconds kLateClientWait(200);

/// Whether an argument is that option, written with "/" or "-", in any letter case.
bool IsOption(std::string_view argument, std::string_view name) {
    const auto sameLetter = [](unsigned char a, unsigned char b) {
        return std::tolower(a) == std::tolower(b);
    };
    return !argument.empty() && (argument.front() == '/' || argument.front() == '-') &&
           std::ranges::equal(argument.substr(1), name, sameLetter);
}

int ExitStatus(const std::string& reason) {
    if (!reason.empty()) {
        ReportError(reason);
    }
    return reason.empty() ? kGood : kFailed;
}

CComPointer<ITypeInfo> ServerDescription() {
    wchar_t path[MAX_PATH] = {};
    CComPointer<ITypeLib> library;
    CComPointer<ITypeInfo> description;
    if (GetModuleFileNameW(nullptr, path, MAX_PATH) == 0 ||
        FAILED(LoadTypeLibEx(path, REGKIND_NONE, library.Receive())) ||
        FAILED(library->GetTypeInfoOfGuid(__uuidof(::IP32ls), description.Receive()))) {
        return {}; // the vtable still works
    }
    return description;
}

int Serve() {
    CClassObject classObject(ServerDescription());
    DWORD cookie = 0;
    const HRESULT result =
        CoRegisterClassObject(CLSID_P32LS, &classObject, CLSCTX_LOCAL_SERVER, REGCLS_MULTIPLEUSE, &cookie);
    if (FAILED(result)) {
        return ExitStatus("cannot be found by clients: error " + std::to_string(result));
    }
    const IID interfaces[] = {IID_IUnknown,         IID_IDispatch,
                              IID_IClassFactory,    IID_IConnectionPointContainer,
                              IID_IConnectionPoint, __uuidof(::IP32ls)};
    const CKeptStubs stubs(interfaces);
    CServerLifetime& lifetime = CServerLifetime::Get();
    const CServerLifetime::SLimits limits{RegisteredReconnectLimit(), RegisteredIdleLimit()};
    lifetime.WaitUntilUnneeded(limits);
    static_cast<void>(CoRevokeClassObject(cookie));
    // One more round for a client that has found the class object in time; no other can come now.
    std::this_thread::sleep_for(kLateClientWait);
    lifetime.WaitUntilUnneeded(limits);
    return kGood;
}

int Run(int count, char** arguments) {
    const std::string_view first = count > 1 ? arguments[1] : "";
    if (count == 3 && IsOption(first, "RegServer")) {
        return ExitStatus(RegisterServer(arguments[2]));
    }
    if (count == 2 && IsOption(first, "UnregServer")) {
        return ExitStatus(UnregisterServer());
    }
    if (count == 2 && IsOption(first, "Embedding")) {
        return Serve();
    }
    ReportError("usage: p32ls-sim /RegServer FILE | /UnregServer");
    return kMisused;
}

} // namespace
} // namespace ruvo::sim

int main(int count, char** arguments) {
    // Multithreaded: clients are served on threads of the runtime, and commands complete on others.
    if (FAILED(CoInitializeEx(nullptr, COINIT_MULTITHREADED))) {
        return ruvo::sim::kFailed;
    }
    int status = ruvo::sim::kFailed;
    try {
        status = ruvo::sim::Run(count, arguments);
    } catch (const std::exception& error) {
        ruvo::sim::ReportError(error.what());
    }
    CoUninitialize();
    return status;
}
