#include "platform/end_requests.h"

#include "platform/windows/system.h"

#include <algorithm>
#include <array>
#include <atomic>

namespace ruvo {

namespace {

constexpr const char* kCloseRequest = "a close request";
constexpr const char* kSessionEnd = "the end of the session";
constexpr DWORD kAnswerTime = 4000; ///< the system takes a program that is silent for longer to hang

/// The words for the console's events.
constexpr std::array kConsoleEvents{"Ctrl+C", "Ctrl+Break", "the closing of its console"};

/// What the window, the console's thread and the waiting thread share. It stays to the end of the process.
struct SState {
    HANDLE stop = nullptr;
    HANDLE asked = nullptr;
    std::atomic<const char*> name = nullptr;

    void Ask(const char* word) {
        name = word;
        SetEvent(asked);
    }
};

SState& State() {
    static SState state;
    return state;
}

LRESULT CALLBACK OnMessage(HWND window, UINT message, WPARAM first, LPARAM second) {
    switch (message) {
    case WM_CLOSE:
        State().Ask(kCloseRequest);
        return 0;
    case WM_QUERYENDSESSION:
        State().Ask(kSessionEnd);
        return TRUE;
    case WM_ENDSESSION: // a program that returns from it may be ended
        if (first != 0) {
            WaitForSingleObject(State().stop, kAnswerTime);
        }
        return 0;
    default:
        return DefWindowProcW(window, message, first, second);
    }
}

/// On a thread of the system. Of the last events the process ends when this returns.
BOOL WINAPI OnConsoleEvent(DWORD event) {
    const bool isKnown = event < kConsoleEvents.size();
    State().Ask(isKnown ? kConsoleEvents[event] : kSessionEnd);
    if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) {
        WaitForSingleObject(State().stop, INFINITE);
    }
    return TRUE;
}

/// Never shown; a request to close the program's windows, or the session, reaches it. Its messages come to
/// the thread that makes it.
void MakeWindow() {
    WNDCLASSEXW kind{};
    kind.cbSize = sizeof kind;
    kind.lpfnWndProc = OnMessage;
    kind.hInstance = GetModuleHandleW(nullptr);
    kind.lpszClassName = L"RuvoEndRequests";
    if (RegisterClassExW(&kind) != 0) {
        CreateWindowExW(0, kind.lpszClassName, L"RUVO", WS_OVERLAPPED, 0, 0, 0, 0, nullptr, nullptr,
                        kind.hInstance, nullptr);
    }
}

class CWindowRequests final : public IEndRequests {
public:
    EWake Wait(std::chrono::milliseconds most, const char*& name) override {
        if (!m_hasWindow) {
            m_hasWindow = true;
            MakeWindow();
        }
        const auto begun = std::chrono::steady_clock::now();
        while (true) {
            if (const char* asked = State().name.exchange(nullptr)) {
                name = asked;
                return EWake::Request;
            }
            const std::array handles{State().stop, State().asked};
            constexpr DWORD kHandles = 2;
            const DWORD woken =
                MsgWaitForMultipleObjects(kHandles, handles.data(), FALSE, Rest(begun, most), QS_ALLINPUT);
            if (woken == WAIT_TIMEOUT) {
                return EWake::Timeout;
            }
            if (woken == WAIT_OBJECT_0 || woken > WAIT_OBJECT_0 + kHandles) {
                return EWake::Stopped;
            }
            for (MSG message; PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != 0;) {
                DispatchMessageW(&message);
            }
        }
    }

    bool Skip(std::chrono::milliseconds time) override {
        const auto end = std::chrono::steady_clock::now() + time;
        EWake wake = EWake::Request;
        for (const char* name = nullptr; wake == EWake::Request;) {
            const auto rest = end - std::chrono::steady_clock::now();
            wake = Wait(std::max(std::chrono::duration_cast<std::chrono::milliseconds>(rest),
                                 std::chrono::milliseconds(0)),
                        name);
        }
        return wake == EWake::Timeout;
    }

    void Stop() override { SetEvent(State().stop); }
    void Release() override { SetConsoleCtrlHandler(OnConsoleEvent, FALSE); }

private:
    static DWORD Rest(std::chrono::steady_clock::time_point begun, std::chrono::milliseconds most) {
        if (most == kForever) {
            return INFINITE;
        }
        const auto gone =
            std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - begun);
        return most > gone ? static_cast<DWORD>((most - gone).count()) : 0;
    }

    bool m_hasWindow = false;
};

} // namespace

// Requests arrive at windows and threads of the system's.
void RunUndisturbed(const std::function<void()>& code) {
    code();
}

std::unique_ptr<IEndRequests> HearEndRequests() {
    State().stop = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    State().asked = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    if (State().stop == nullptr || State().asked == nullptr) {
        return nullptr;
    }
    SetConsoleCtrlHandler(OnConsoleEvent, TRUE);
    return std::make_unique<CWindowRequests>();
}

void EndProcess() noexcept {
    TerminateProcess(GetCurrentProcess(), 0);
    while (true) { // it has ended
        Sleep(INFINITE);
    }
}

} // namespace ruvo
