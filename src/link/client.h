// The client of the comms server. One object per process; every relay request goes through it.
#pragma once

#include "link/channel/command_events.h"
#include "link/channel/command_mutex.h"
#include "link/login/password_request.h"
#include "link/seam/cell_address.h"
#include "link/seam/link_status.h"
#include "link/seam/server_connection.h"
#include "model/values/parlane_data.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace ruvo {

class CP32lsSink_v2;
class CParlaneIEC870;
class CProgressMonitor;

/// Called with the facts of each write: user name, cell or pseudo-code, label, the tagged bytes of the time
/// stamp and of the value.
using SecurityEventFunction = void (*)(const char* userName, std::uint16_t code, const char* label,
                                       std::span<const std::uint8_t> timeStamp,
                                       std::span<const std::uint8_t> value);

/// Client of the comms server. Every operation that calls the server takes the caller's progress monitor
/// first (null for none; borrowed until the operation returns), returns a status (0 is success) and throws
/// nothing: what there is no memory for has status 255. At most one server call is in progress at a time; a
/// command runs to its end or until it is aborted. What a monitor or handler asks for out of a report gets
/// 255 where it would have to wait for the command that the report is about.
class CP32Wrap : public std::enable_shared_from_this<CP32Wrap> {
public:
    /// Starts the server and connects the event sink; 0, or 255 with no object left behind.
    static LinkStatus CreateInstance();
    /// Lets the server go. A running command is aborted first; a command that is still on its way out keeps
    /// the object alive until it is through, and gets status 255 for what it asks then. Out of a report on a
    /// running command it aborts that command and no more.
    static void DestroyInstance();
    /// The one object, or null.
    static CP32Wrap* GetInstance();

    static void SetGetPasswordCallback(GetPasswordFunction callback);
    static void SetPasswordAcceptedCallback(PasswordAcceptedFunction callback);
    static void SetUsernamePasswordCallback(UsernamePasswordFunction callback);
    static void SetSecondEditionLoginCallback(SecondEditionLoginFunction callback);
    static void SetLoginAcceptedCallback(LoginAcceptedFunction callback);
    static void SetLoginCancelledCallback(LoginCancelledFunction callback);
    static void SetSecurityEventCallback(SecurityEventFunction callback);
    /// Called when the server reports that the line was disconnected.
    void SetDisconnectHandler(void (*handler)());

    /// Objects come from CreateInstance alone: every operation relies on their being shared.
    class CKey {
        friend class CP32Wrap;
        CKey() = default;
    };
    explicit CP32Wrap(CKey key);
    CP32Wrap(const CP32Wrap&) = delete;
    CP32Wrap& operator=(const CP32Wrap&) = delete;
    ~CP32Wrap();

    // --- the link ---
    LinkStatus OpenPort(CProgressMonitor* monitor, const std::string& port, const std::string& parameters);
    LinkStatus ClosePort(CProgressMonitor* monitor);
    /// Each value is truncated to 16 bits.
    LinkStatus SetTransactionValues(CProgressMonitor* monitor, std::int32_t busyHoldoff,
                                    std::int32_t busyCount, std::int32_t resetResponse, std::int32_t response,
                                    std::int32_t tryCount, std::int32_t transmitDelay,
                                    std::int32_t globalTransmit);
    LinkStatus ModemConnect(CProgressMonitor* monitor, const std::string& modemName, std::int32_t lineAddress,
                            const std::string& countryCode, const std::string& areaCode,
                            const std::string& numberToDial, std::uint8_t useCountryAndAreaCodes);
    LinkStatus ModemHangUp(CProgressMonitor* monitor);
    /// Address of all later requests.
    void SetDeviceAddress(std::uint8_t address);
    /// Asks the running command, or else the next one, to end with status 18. From any thread.
    void RequestAbort();

    // --- reading; output containers are emptied first ---
    LinkStatus GetColumnHeadings(CProgressMonitor* monitor, CParlaneDataArray& first,
                                 CParlaneDataArray& second);
    LinkStatus GetColumnText(CProgressMonitor* monitor, std::uint8_t column, CParlaneDataArray& first,
                             CParlaneDataArray& second);
    LinkStatus GetColumnValues(CProgressMonitor* monitor, std::uint8_t column, CParlaneDataArray& first,
                               CParlaneDataArray& second);
    LinkStatus GetColumnTextAndValues(CProgressMonitor* monitor, std::uint8_t column,
                                      CParlaneDataArray& locations, CParlaneDataArray& texts,
                                      CParlaneDataArray& values);
    LinkStatus GetStrings(CProgressMonitor* monitor, CellAddress cell, CParlaneDataArray& strings);
    LinkStatus GetText(CProgressMonitor* monitor, CellAddress cell, std::unique_ptr<CParlaneData>& text);
    /// List form: every value of the cell; exactly one when its element size is 0.
    LinkStatus GetValue(CProgressMonitor* monitor, CellAddress cell, CParlaneDataArray& values);
    /// Single form: the first value (null when the bytes do not hold one) and the raw bytes of all.
    LinkStatus GetValue(CProgressMonitor* monitor, CellAddress cell, std::unique_ptr<CParlaneData>& value,
                        std::vector<std::uint8_t>& bytes);
    LinkStatus GetValues(CProgressMonitor* monitor, std::span<const CellAddress> cells,
                         CParlaneDataArray& values);
    LinkStatus GetSettingLimits(CProgressMonitor* monitor, CellAddress cell, CParlaneDataArray& limits);
    LinkStatus GetColumnSettingLimits(CProgressMonitor* monitor, std::uint8_t column,
                                      CParlaneDataArray& first, CParlaneDataArray& second);
    LinkStatus GetEvent(CProgressMonitor* monitor, std::uint8_t& kind, CParlaneDataArray& values,
                        std::uint8_t& moreEvents);
    /// True when the last GetEvent was answered with status 0: the relay has let go of that event, even when
    /// its reply could not be unpacked.
    bool IsEventHandedOver() const { return m_eventHandedOver; }
    /// Never enters a password; `statusByte` is set only by status 0.
    LinkStatus GetDeviceStatus(CProgressMonitor* monitor, std::uint8_t& statusByte);
    LinkStatus TestAvailableDisturbanceRecord(CProgressMonitor* monitor, std::uint8_t& available);
    LinkStatus GetCompressDisturbanceRecord(CProgressMonitor* monitor, const CParlaneData& which,
                                            CParlaneDataArray& values);
    LinkStatus GetDisturbanceRecordConfiguration(CProgressMonitor* monitor, const CParlaneData& which,
                                                 CParlaneDataArrayArray& lists);
    LinkStatus GetDisturbanceRecordValues(CProgressMonitor* monitor, CParlaneDataArray& first,
                                          CParlaneDataArray& second);

    // --- writing; the caller treats 0 and 1 as success ---
    LinkStatus ChangeSetting(CProgressMonitor* monitor, CellAddress cell, const CParlaneData& value);
    LinkStatus SetValue(CProgressMonitor* monitor, CellAddress cell, const CParlaneData& value);
    LinkStatus ResetCell(CProgressMonitor* monitor, CellAddress cell);
    LinkStatus SetBlockedValue(CProgressMonitor* monitor, CellAddress cell,
                               std::span<const std::uint8_t> bytes);
    LinkStatus SetRealTime(CProgressMonitor* monitor, const CParlaneIEC870& time);
    LinkStatus ChangeDeviceAddress(CProgressMonitor* monitor, std::uint8_t newAddress,
                                   const std::string& serialNumber);
    LinkStatus SelectSettingGroup(CProgressMonitor* monitor, std::uint8_t group);

    // --- password entry ---
    /// The password check after a pass of a request: when `status` asks for a password, enters it and puts
    /// the entry's result into `status`. `repeat` stays true only when the request is to run again.
    void ProcessPasswordRequest(CProgressMonitor* monitor, LinkStatus& status, bool& passwordEntered,
                                bool& repeat, const std::string& message, CellAddress cell);
    /// Logs in by the relay's own generation of access control. 0 or 1 when the relay accepted.
    LinkStatus EnterPassword(CProgressMonitor* monitor, bool passwordEntered);
    /// Gives the user a new password: names the user, then writes the password as a digest to `cell`, keyed
    /// by the user name when `flag` is 0, else of the password alone. 254 when it cannot be hashed.
    LinkStatus ChangeHashedPasswordSettingForCSEd3(CProgressMonitor* monitor, CellAddress cell,
                                                   const std::string& username, const std::string& password,
                                                   int flag);

    // --- what the relay says of its access control; 0, or 18 with the output as stated ---
    LinkStatus ExtractCSVersion(std::uint32_t& version);
    /// The number of users as the relay gives it; may be 0 or less, or more than it can have.
    LinkStatus ExtractCSUsernamesCount(std::int64_t& count);
    LinkStatus ExtractCSAvailableUsernames(std::vector<SUserName>& names);
    /// True where passwords of 32 characters are taken.
    bool ExtractCSEd3SATSupported();
    /// Characters of the longest password; 4 when the version cannot be read.
    LinkStatus DetermineCSPasswordMaxLength(std::uint32_t& length);
    LinkStatus DetermineCSUsernameMaxLength(std::uint32_t& length);
    LinkStatus DetermineCSSATSupported(bool& supported);

private:
    friend class CP32lsSink_v2;
    struct SCallbacks;
    class CLogin;
    class CUserLogin;
    class CMonitorScope;
    enum class EWriteSlot : std::uint8_t { ChangeSetting, SetValue };

    static SCallbacks& Callbacks();
    /// The one object kept alive for the time of a call, or null.
    static std::shared_ptr<CP32Wrap> HoldInstance();

    // The command discipline (request_pattern.h and client.cpp).
    bool Begin();
    void ResetCompletion();
    bool IsEntryAborted();
    void StoreMonitor(CProgressMonitor* monitor);
    void ReleaseMonitor(const CProgressMonitor* monitor);
    template <class Call>
    LinkStatus CallServer(Call call);
    template <class Call, class Unpack>
    LinkStatus RunPass(Call call, Unpack unpack);
    template <class Start, class Fetch, class Unpack>
    LinkStatus RunStartedPass(Start start, Fetch fetch, Unpack unpack);
    template <class Pass>
    LinkStatus RunRequest(CProgressMonitor* monitor, const char* name, Pass pass, CellAddress cell = 0);
    template <class Call>
    LinkStatus RunWrite(CProgressMonitor* monitor, const char* name, Call call, CellAddress cell = 0);
    template <class Start>
    LinkStatus StartAndAwait(Start start);
    template <class Pass>
    LinkStatus RunOnce(CProgressMonitor* monitor, Pass pass);
    template <class Call>
    LinkStatus RunCommand(CProgressMonitor* monitor, Call call);
    LinkStatus WaitForCommand();
    Variant Address() const;

    LinkStatus WriteWithSecurityEvents(CellAddress cell, const CParlaneData& value, EWriteSlot slot);
    using CommandLock = std::lock_guard<CCommandMutex>;
    LinkStatus WriteCredential(const CommandLock& held, CellAddress cell, const CParlaneData& value,
                               EWriteSlot slot);
    LinkStatus ReadValues(CProgressMonitor* monitor, CellAddress cell, CParlaneDataArray& values,
                          std::vector<std::uint8_t>* bytes);
    using StartColumn = EComResult (IP32ls::*)(const Variant& address, const Variant& column,
                                               Variant& status);
    using FetchTwo = EComResult (IP32ls::*)(Variant& first, Variant& second, Variant& status);
    LinkStatus ReadColumn(CProgressMonitor* monitor, const char* name, std::uint8_t column, StartColumn start,
                          FetchTwo fetch, CParlaneDataArray& first, CParlaneDataArray& second);

    // Security events (security_events.cpp).
    void LogWrite(CellAddress cell, const CParlaneIEC870& time, const CParlaneData& value) noexcept;
    void LogReply(CellAddress cell, const CParlaneIEC870& time, LinkStatus status) noexcept;
    void LogReset(CellAddress cell, const CParlaneIEC870& time) noexcept;
    void LogSecurityEvent(std::uint16_t code, const char* label, const CParlaneIEC870& time,
                          const CParlaneData& value) noexcept;
    void WriteSecurityEvent(std::uint16_t code, const char* label, const CParlaneIEC870& time,
                            const CParlaneData& value);

    // Password entry (password_entry.cpp) and the flows (password_login.cpp, user_login.cpp).
    LinkStatus EnterPasswordByGeneration(bool passwordEntered);
    void ClearPasswordGuard(std::unique_ptr<CParlaneData>& saved);
    void RestorePasswordGuard(const CParlaneData* saved) noexcept;
    SPasswordRequest BuildPasswordRequest(std::uint8_t securityColumn, std::uint32_t& version);
    LinkStatus EnterNonCyberSecurityPassword(const SPasswordRequest& request, bool passwordEntered);
    LinkStatus EnterCyberSecurityPassword(const SPasswordRequest& request, bool passwordEntered,
                                          std::uint8_t securityColumn);
    LinkStatus EnterCyberSecurityBrickIntegratedLoginAndPassword(const SPasswordRequest& request,
                                                                 bool passwordEntered,
                                                                 std::uint8_t securityColumn);
    LinkStatus EnterCyberSecurityBrickIntegratedLoginAndPasswordCSEd3(const SPasswordRequest& request,
                                                                      bool passwordEntered,
                                                                      std::uint8_t securityColumn);

    // Reads of a password entry (security_cells.cpp).
    std::unique_ptr<CParlaneData> ReadFirstValue(CellAddress cell, LinkStatus& status);
    std::optional<std::int64_t> ReadNumber(CellAddress cell, LinkStatus& status);
    std::optional<std::string> ReadText(CellAddress cell, LinkStatus& status);
    std::optional<std::uint32_t> ReadPasswordLength(CellAddress cell);
    enum class ENameTrace : bool { Silent, Traced };
    bool ReadUserNames(std::uint8_t securityColumn, std::int64_t count, std::vector<SUserName>& names,
                       ENameTrace trace);

    // What the sink reports, on any thread.
    template <class Tell>
    void TellMonitor(Tell tell);
    void ReportProgress(std::uint32_t done, std::uint32_t total);
    void ReportTransfer(std::int32_t value);
    void ReportLineStatus(LinkStatus status);

    std::unique_ptr<IServerConnection> m_connection;
    std::uint32_t m_adviseCookie = 0;
    bool m_settingChangeMode = true; ///< label of security events; nothing changes it
    char m_userName[17] = "                ";
    /// The sink reports on other threads while the command ends on its own. Held over a report, so that the
    /// monitor cannot go meanwhile; recursive, since the report may make a request itself.
    std::recursive_mutex m_monitorMutex;
    CProgressMonitor* m_monitor = nullptr;
    CCommandEvents m_events;
    CCommandMutex m_commandLock;
    bool m_isAwaiting = false; ///< a started command runs; under the command lock
    std::atomic<std::uint16_t> m_deviceAddress = 0xFFFF;
    std::atomic<void (*)()> m_disconnectHandler = nullptr;
    std::atomic<bool> m_eventHandedOver = false;
    std::atomic<bool> m_enteringPassword = false;
    std::atomic<bool> m_restoringGuard = false; ///< the one write of an entry that an abort does not stop
    CProgressMonitor* m_entryMonitor = nullptr; ///< of the requests that an entry makes
};

} // namespace ruvo
