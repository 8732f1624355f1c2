#include "sim/windows/registration.h"

#include "link/seam/class_id.h"
#include "link/windows/com_owners.h"
#include "platform/full_path.h"
#include "platform/modules.h"
#include "sim/server/served_connection.h"
#include "sim/server/simulated_connection.h"

#include <cstdio>

namespace ruvo::sim {
namespace {

constexpr const char* kSubstationValue = "Substation";
constexpr const char* kReconnectValue = "ReconnectSeconds";
constexpr const char* kIdleValue = "IdleSeconds";
// A client that comes right after the last one has gone finds this process and not one on its way out: a
// visit starts the extractor after a check, and a busy machine takes its time.
constexpr std::chrono::seconds kReconnectLimit(5);
constexpr std::chrono::seconds kIdleLimit(300);
constexpr DWORD kPathCapacity = 1024;

/// Of the system that the library is registered for.
constexpr SYSKIND kSystem = sizeof(void*) == 8 ? SYS_WIN64 : SYS_WIN32;

struct SKey {
    std::string path;
    const char* name; ///< null: the key's own value
    std::string text;
};

std::string Reason(const char* what, unsigned long code) {
    char text[64];
    std::snprintf(text, sizeof(text), "%s failed: error %lX", what, code);
    // Machine-wide keys, as for every server that other programs' users are to find.
    const bool denied = code == ERROR_ACCESS_DENIED || code == static_cast<unsigned long>(E_ACCESSDENIED) ||
                        code == static_cast<unsigned long>(TYPE_E_REGISTRYACCESS);
    return text + std::string(denied ? " (run it as administrator)" : "");
}

std::string RegisterLibrary() {
    wchar_t path[kPathCapacity] = {};
    if (GetModuleFileNameW(nullptr, path, kPathCapacity) == 0) {
        return Reason("The program's path", GetLastError());
    }
    CComPointer<ITypeLib> library;
    const HRESULT result = LoadTypeLibEx(path, REGKIND_REGISTER, library.Receive());
    return FAILED(result) ? Reason("Registering the type library", static_cast<unsigned long>(result)) : "";
}

std::chrono::seconds RegisteredSeconds(const char* name, std::chrono::seconds otherwise) {
    DWORD seconds = 0;
    DWORD size = sizeof(seconds);
    const LSTATUS result = RegGetValueA(HKEY_CLASSES_ROOT, ServerClassKey().c_str(), name, RRF_RT_REG_DWORD,
                                        nullptr, &seconds, &size);
    return result == ERROR_SUCCESS ? std::chrono::seconds(seconds) : otherwise;
}

} // namespace

std::string RegisterServer(const std::string& substation) {
    const std::string file = FullPath(substation);
    // Refused here, where the user sees the reason, and not when a client asks for the server.
    if (std::string reason = WhyNotServed(file); !reason.empty()) {
        return reason;
    }
    if (std::string reason = RegisterLibrary(); !reason.empty()) {
        return reason;
    }
    const SKey keys[] = {
        {ServerClassKey(), nullptr, "Simulated comms server"},
        {ServerClassKey("LocalServer32"), nullptr, "\"" + ProgramPath() + "\""},
        {ServerClassKey("TypeLib"), nullptr, "{9A69E99D-E86F-455D-B971-355C1139963E}"},
        {ServerClassKey(), kSubstationValue, file},
    };
    for (const SKey& key : keys) {
        const LSTATUS result = RegSetKeyValueA(HKEY_CLASSES_ROOT, key.path.c_str(), key.name, REG_SZ,
                                               key.text.c_str(), static_cast<DWORD>(key.text.size() + 1));
        if (result != ERROR_SUCCESS) {
            return Reason("Writing the registry", static_cast<unsigned long>(result));
        }
    }
    return {};
}

std::string UnregisterServer() {
    BSTR path = nullptr;
    const bool registered = SUCCEEDED(QueryPathOfRegTypeLib(LIBID_P32LSLib, 1, 0, LOCALE_NEUTRAL, &path));
    SysFreeString(path);
    const HRESULT removed =
        registered ? UnRegisterTypeLib(LIBID_P32LSLib, 1, 0, LOCALE_NEUTRAL, kSystem) : S_OK;
    if (FAILED(removed)) {
        return Reason("Unregistering the type library", static_cast<unsigned long>(removed));
    }
    const LSTATUS result = RegDeleteTreeA(HKEY_CLASSES_ROOT, ServerClassKey().c_str());
    if (result != ERROR_SUCCESS && result != ERROR_FILE_NOT_FOUND) {
        return Reason("Writing the registry", static_cast<unsigned long>(result));
    }
    return {};
}

std::string RegisteredSubstation() {
    char path[kPathCapacity] = {};
    DWORD size = sizeof(path);
    const LSTATUS result = RegGetValueA(HKEY_CLASSES_ROOT, ServerClassKey().c_str(), kSubstationValue,
                                        RRF_RT_REG_SZ, nullptr, path, &size);
    return result == ERROR_SUCCESS ? path : SubstationPath();
}

std::chrono::seconds RegisteredReconnectLimit() {
    return RegisteredSeconds(kReconnectValue, kReconnectLimit);
}

std::chrono::seconds RegisteredIdleLimit() {
    return RegisteredSeconds(kIdleValue, kIdleLimit);
}

} // namespace ruvo::sim
