#include "platform/single_instance.h"

#include "platform/files.h"
#include "platform/windows/system.h"

#include <utility>

namespace ruvo {

namespace {

// The program has no window yet; a later version may have one of this class.
void BringForward(const std::string& className) {
    const HWND found = FindWindowA(className.c_str(), nullptr);
    if (found == nullptr) {
        return;
    }
    const HWND window = GetLastActivePopup(found);
    ShowWindow(window, IsIconic(window) != FALSE ? SW_RESTORE : SW_SHOWNA);
    BringWindowToTop(window);
    SetForegroundWindow(window);
}

bool RegisterInstanceClass(const std::string& className) {
    WNDCLASSA windowClass = {};
    windowClass.style = CS_DBLCLKS;
    windowClass.lpfnWndProc = DefWindowProcA;
    windowClass.hInstance = GetModuleHandleA(nullptr);
    windowClass.hCursor = LoadCursorA(nullptr, MAKEINTRESOURCEA(32512)); // the standard arrow
    windowClass.lpszClassName = className.c_str();
    return RegisterClassA(&windowClass) != 0;
}

} // namespace

struct CInstanceMarker::SHandle {
    SHandle() = default;
    SHandle(const SHandle&) = delete;
    SHandle& operator=(const SHandle&) = delete;
    ~SHandle() { Release(); }

    void Release() {
        if (!className.empty()) {
            UnregisterClassA(std::exchange(className, {}).c_str(), GetModuleHandleA(nullptr));
        }
        if (const HANDLE held = std::exchange(mutex, nullptr)) {
            CloseHandle(held);
        }
    }

    HANDLE mutex = nullptr;
    std::string className; ///< of the registered class; empty when there is none
};

// A marker is no file here. The folder is the user's own.
std::string InstanceFolder() {
    std::string folder = TemporaryFolder();
    folder.resize(folder.size() - (folder.ends_with('\\') ? 1 : 0));
    return folder;
}

CInstanceMarker::CInstanceMarker() : m_handle(std::make_unique<SHandle>()) {}

CInstanceMarker::~CInstanceMarker() = default;

// The mutex is a marker alone: it is never waited for. The system removes it with its last handle.
EInstanceClaim CInstanceMarker::Claim(const std::string& name) {
    m_handle->Release();
    m_handle->mutex = CreateMutexA(nullptr, FALSE, name.c_str());
    const DWORD code = GetLastError(); // at once: "already exists" comes with a valid handle
    if (m_handle->mutex == nullptr) {
        return EInstanceClaim::MarkerFailed;
    }
    if (code == ERROR_ALREADY_EXISTS) {
        m_handle->Release();
        BringForward(name);
        return EInstanceClaim::AlreadyRunning;
    }
    if (!RegisterInstanceClass(name)) {
        return EInstanceClaim::WindowClassFailed;
    }
    m_handle->className = name;
    return EInstanceClaim::Claimed;
}

} // namespace ruvo
