#include "app/connection_test.h"

#include "app/call_recording.h"
#include "app/comms_server.h"
#include "app/load_and_check.h"
#include "app/worker_thread.h"
#include "base/secret.h"
#include "base/text.h"
#include "config/configuration.h"
#include "config/ethernet_entry.h"
#include "config/ini_keys.h"
#include "extraction/password_state.h"
#include "link/client.h"
#include "log/error_log.h"
#include "platform/com_runtime.h"
#include "platform/full_path.h"
#include "run/link_control.h"
#include "run/login_probe.h"
#include "run/password_callbacks.h"

#include <optional>
#include <string>

namespace ruvo {

namespace {

using enum EConnectionTestResult;

/// One test, on its worker thread. A step returns a result when the test ends with it.
class CConnectionTest {
public:
    CConnectionTest(const char* iniPath, const char* deviceKey)
        : m_iniPath(iniPath == nullptr ? "" : iniPath),
          m_key(ToUpperText(deviceKey == nullptr ? "" : deviceKey)) {}
    CConnectionTest(const CConnectionTest&) = delete;
    CConnectionTest& operator=(const CConnectionTest&) = delete;
    ~CConnectionTest() { WipePasswords(); }

    EConnectionTestResult Run() {
        SetErrorLogDisabled(true); // the caller gets a code; lines in the log would look like a failed run
        if (!StartComRuntime()) {
            return ComRuntimeFailed;
        }
        const EConnectionTestResult result = RunWithClient();
        StopComRuntime();
        return result;
    }

private:
    /// Everything between starting the comms server and letting it go.
    EConnectionTestResult RunWithClient() {
        CCommsServer server; // with its own hold on the runtime, as in a run
        EConnectionTestResult result = NoResult;
        try {
            PlanTheRecording();
            result = server.Start() ? RunSteps() : CommsServerFailed;
        } catch (...) { // what is unforeseen delivers no result, but is cleaned up after all the same
        }
        try {
            CloseLink(m_context);
        } catch (...) { // out of memory: letting the server go closes it
        }
        return result;
    }

    /// The server is started before the INI file is read, which is read for this once more.
    void PlanTheRecording() const {
        CRuvoConfig config;
        if (!AskedRecording().empty()) {
            LoadConfiguration(FullPath(m_iniPath), config);
            config.WipePasswords();
        }
        PlanRecording(config.EventRoot());
    }

    EConnectionTestResult RunSteps() {
        if (LoadAndCheck(m_context, m_iniPath, true) != EResultCode::Success) {
            return IniFileRefused;
        }
        const std::optional<std::int32_t> address = FindDeviceAddress();
        if (!address) {
            return UnknownKey;
        }
        CP32Wrap::GetInstance()->SetDeviceAddress(static_cast<std::uint8_t>(*address & 0xFF));
        return OpenLink(*address) ? Probe(*CP32Wrap::GetInstance()) : LinkNotOpened;
    }

    /// The relay's address, when the key is in the section of the configured link type.
    std::optional<std::int32_t> FindDeviceAddress() const {
        const CRuvoConfig& config = m_context.Config();
        const ELink link = SelectedLink(config);
        if (link == ELink::Ethernet) {
            const auto entry = config.EthernetEntries().find(m_key);
            return entry == config.EthernetEntries().end()
                       ? std::nullopt
                       : std::optional(ParseEthernetDeviceAddress(entry->second));
        }
        const AddressEntries& entries = link == ELink::Modem ? config.ModemEntries() : config.SerialEntries();
        const auto entry = entries.find(m_key);
        return entry == entries.end() ? std::nullopt : std::optional(entry->second);
    }

    /// Ethernet has a tunnel per relay, the other links one for all.
    bool OpenLink(std::int32_t address) {
        const CRuvoConfig& config = m_context.Config();
        if (SelectedLink(config) != ELink::Ethernet) {
            return OpenSerialOrModemLink(m_context);
        }
        const std::string& entry = config.EthernetEntries().at(m_key);
        return OpenEthernetLink(m_context, ParseEthernetIp(entry), address, ParseEthernetBusAddress(entry));
    }

    /// The probe of a run, which only distinguishes good from bad; here each cause has its result.
    EConnectionTestResult Probe(CP32Wrap& link) {
        PrepareLogin(m_context.Config(), m_key);
        CP32Wrap::SetGetPasswordCallback(&PasswordCallback);
        CP32Wrap::SetPasswordAcceptedCallback(&PasswordAcceptedCallback);
        switch (ProbeLogin(link)) {
        case ELoginProbe::Accepted:
            return Good;
        case ELoginProbe::NotAsked:
            return PasswordState().currentPassword.empty() ? Good : PasswordNotAskedFor;
        case ELoginProbe::NotResponding:
            return RelayNotResponding;
        case ELoginProbe::ReadFailed:
            return ReadFailed;
        case ELoginProbe::ResetFailed:
            return ResetFailed;
        case ELoginProbe::Refused:
            return ReasonOfRefusal(PasswordState());
        }
        return NoResult;
    }

    /// A missing password explains every refusal, whatever the relay said.
    static EConnectionTestResult ReasonOfRefusal(const SPasswordState& state) {
        if (state.currentPassword.empty()) {
            return PasswordMissing;
        }
        if (state.insufficientLevel) {
            return LevelInsufficient;
        }
        return state.blocked ? PasswordBlocked : PasswordRefused;
    }

    void WipePasswords() {
        WipeText(PasswordState().currentPassword);
        m_context.Config().WipePasswords();
    }

    CRunContext m_context;
    std::string m_iniPath;
    std::string m_key;
};

} // namespace

EConnectionTestResult TestConnection(const char* iniPath, const char* deviceKey) noexcept {
    EConnectionTestResult result = NoResult;
    const auto work = [&]() noexcept {
        try {
            result = CConnectionTest(iniPath, deviceKey).Run();
        } catch (...) { // out of memory before the test began
        }
    };
    try {
        return RunOnWorkerThread(work) ? result : NoResult;
    } catch (...) { // no memory to name the work
        return NoResult;
    }
}

} // namespace ruvo
