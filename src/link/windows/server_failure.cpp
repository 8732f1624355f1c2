#include "link/seam/server_failure.h"

#include "link/seam/class_id.h"
#include "link/seam/com_failure.h"
#include "link/windows/com_owners.h"
#include "platform/files.h"
#include "platform/native_text.h"

#include <algorithm>
#include <array>

namespace ruvo {

namespace {

constexpr unsigned kOwnBits = sizeof(void*) * 8;

/// What COM does for the client, step by step, until one fails.
HRESULT Attempt(std::string_view& step) {
    constexpr DWORD kAnyServer =
        CLSCTX_INPROC_SERVER | CLSCTX_INPROC_HANDLER | CLSCTX_LOCAL_SERVER | CLSCTX_REMOTE_SERVER;
    CComPointer<IUnknown> object;
    CComPointer<::IP32ls> server;
    step = "creating it";
    HRESULT result = CoCreateInstance(CLSID_P32LS, nullptr, kAnyServer, IID_IUnknown,
                                      reinterpret_cast<void**>(object.Receive()));
    if (SUCCEEDED(result)) {
        step = "running it";
        result = OleRun(object.Get());
    }
    if (SUCCEEDED(result)) {
        step = "asking for its interface";
        result = object.Query(server);
    }
    return result;
}

bool IsSystemOf64Bits() {
    BOOL isOther = FALSE;
    return kOwnBits == 64 || (IsWow64Process(GetCurrentProcess(), &isOther) != FALSE && isOther != FALSE);
}

std::string ReadDefaultValue(const std::string& key, REGSAM view) {
    HKEY opened = nullptr;
    if (RegOpenKeyExA(HKEY_CLASSES_ROOT, key.c_str(), 0, KEY_READ | view, &opened) != ERROR_SUCCESS) {
        return {};
    }
    std::array<char, 1024> bytes{};
    auto size = static_cast<DWORD>(bytes.size() - 1); // a NUL is left at the end
    const bool isRead = RegQueryValueExA(opened, nullptr, nullptr, nullptr,
                                         reinterpret_cast<BYTE*>(bytes.data()), &size) == ERROR_SUCCESS;
    RegCloseKey(opened);
    return isRead ? TextOfStored(bytes.data()) : std::string();
}

/// The file of a command line, in quotes or not.
std::string FileOf(const std::string& command) {
    if (command.starts_with('"')) {
        return command.substr(1, command.find('"', 1) - 1);
    }
    const std::size_t options = std::min(command.find(" /"), command.find(" -"));
    return command.substr(0, options);
}

std::vector<SServerRegistration> FindRegistrations() {
    std::vector<SServerRegistration> found;
    const auto look = [&](unsigned bits, REGSAM view) {
        for (const char* const kind : {"LocalServer32", "InprocServer32"}) {
            const std::string path = FileOf(ReadDefaultValue(ServerClassKey(kind), view));
            if (!path.empty()) {
                found.push_back({bits, kind[0] == 'L', path, GetPathKind(path) == EPathKind::File});
            }
        }
    };
    if (IsSystemOf64Bits()) {
        look(64, KEY_WOW64_64KEY);
        look(32, KEY_WOW64_32KEY);
    } else {
        look(32, 0);
    }
    return found;
}

std::string AccountName() {
    std::array<char, 257> name{};
    auto size = static_cast<DWORD>(name.size());
    return GetUserNameA(name.data(), &size) != FALSE ? TextOfStored(name.data()) : std::string();
}

} // namespace

std::string ExplainServerFailure() {
    SComFailure failure;
    const HRESULT result = Attempt(failure.step);
    if (SUCCEEDED(result)) {
        return "the registered comms server was created, but it refused to start";
    }
    failure.code = static_cast<std::uint32_t>(result);
    failure.system = SystemErrorText(result);
    failure.account = AccountName();
    failure.bits = kOwnBits;
    failure.registrations = FindRegistrations();
    return DescribeComFailure(failure);
}

} // namespace ruvo
