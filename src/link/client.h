// The client of the comms server. One object per process; every relay request goes through it.
#pragma once

#include "link/channel/line_commands.h"
#include "link/login/password_entry.h"
#include "link/requests/disturbance.h"

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace ruvo {

/// Client of the comms server: a facade, which holds its parts and adds nothing. Every operation that calls
/// the server takes the caller's progress monitor first (null for none; borrowed until the operation
/// returns), returns a status (0 is success) and throws nothing: what there is no memory for has status 255.
/// At most one server call is in progress at a time; a command runs to its end or until it is aborted. An
/// operation keeps the object alive until it returns, though DestroyInstance may run meanwhile. What a
/// monitor or handler asks for out of a report gets 255 where it would have to wait for the command that the
/// report is about.
class CP32Wrap : public std::enable_shared_from_this<CP32Wrap> {
public:
    /// Starts the server and connects the event sink; 0, or 255 with no object left.
    static LinkStatus CreateInstance();
    /// Lets the server go. A running command is aborted first; a command that is still on its way out keeps
    /// the object alive until it is through, and gets status 255 for what it asks then. Out of a report on a
    /// running command it aborts that command and no more.
    static void DestroyInstance();
    /// The one object, or null.
    static CP32Wrap* GetInstance();

    static void SetGetPasswordCallback(GetPasswordFunction callback) {
        LinkCallbacks().getPassword = callback;
    }
    static void SetPasswordAcceptedCallback(PasswordAcceptedFunction callback) {
        LinkCallbacks().passwordAccepted = callback;
    }
    static void SetUsernamePasswordCallback(UsernamePasswordFunction callback) {
        LinkCallbacks().usernamePassword = callback;
    }
    static void SetSecondEditionLoginCallback(SecondEditionLoginFunction callback) {
        LinkCallbacks().secondEditionLogin = callback;
    }
    static void SetLoginAcceptedCallback(LoginAcceptedFunction callback) {
        LinkCallbacks().loginAccepted = callback;
    }
    static void SetLoginCancelledCallback(LoginCancelledFunction callback) {
        LinkCallbacks().loginCancelled = callback;
    }
    static void SetSecurityEventCallback(SecurityEventFunction callback) {
        LinkCallbacks().securityEvent = callback;
    }
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
    /// Whether a command was aborted because the program itself is to end: that command did not fail.
    bool HasCutShort() const { return m_channel.HasCutShort(); }
    /// What has come of the requests since it was last taken.
    SRequestAccount TakeAccount() { return m_pattern.TakeAccount(); }

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
    /// True when the last GetEvent was answered with status 0: the relay has deleted that event, even when
    /// its reply could not be unpacked.
    bool IsEventHandedOver() const { return m_reads.IsEventHandedOver(); }
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
    /// One login of the given generation, which EnterPassword chooses; `securityColumn` is the column of the
    /// relay's cyber-security cells.
    LinkStatus EnterNonCyberSecurityPassword(const SPasswordRequest& request, bool passwordEntered);
    LinkStatus EnterCyberSecurityPassword(const SPasswordRequest& request, bool passwordEntered,
                                          std::uint8_t securityColumn);
    LinkStatus EnterCyberSecurityBrickIntegratedLoginAndPassword(const SPasswordRequest& request,
                                                                 bool passwordEntered,
                                                                 std::uint8_t securityColumn);
    LinkStatus EnterCyberSecurityBrickIntegratedLoginAndPasswordCSEd3(const SPasswordRequest& request,
                                                                      bool passwordEntered,
                                                                      std::uint8_t securityColumn);
    /// Gives the user a new password: names the user, then writes the password as a digest to `cell`, keyed
    /// by the user name when `flag` is 0, else of the password alone. 254 when it cannot be hashed.
    LinkStatus ChangeHashedPasswordSettingForCSEd3(CProgressMonitor* monitor, CellAddress cell,
                                                   const std::string& username, const std::string& password,
                                                   int flag);

    // --- what the relay says of its access control; 0, or 18 with the output as stated ---
    LinkStatus ExtractCSVersion(std::uint32_t& version);
    /// The number of users as the relay states it; may be 0 or less, or more than it can have.
    LinkStatus ExtractCSUsernamesCount(std::int64_t& count);
    LinkStatus ExtractCSAvailableUsernames(std::vector<SUserName>& names);
    /// True where passwords of 32 characters are taken.
    bool ExtractCSEd3SATSupported();
    /// Characters of the longest password; 4 when the version cannot be read.
    LinkStatus DetermineCSPasswordMaxLength(std::uint32_t& length);
    LinkStatus DetermineCSUsernameMaxLength(std::uint32_t& length);
    LinkStatus DetermineCSSATSupported(bool& supported);

private:
    friend std::shared_ptr<CChannel> HoldChannel();

    /// The object, kept alive for the time of an expression: every operation begins with it.
    std::shared_ptr<CP32Wrap> Held() { return shared_from_this(); }

    // The parts know each other by reference. Requests and the password entry need one another; the entry
    // comes first, since the requests know it by its interface, which exists from its construction on.
    CChannel m_channel;
    CPasswordEntry m_entry{SLoginParts{m_channel, m_writes, m_cells}, m_passwordLogin, m_userLogin};
    CRequestPattern m_pattern{m_channel, m_entry};
    CLineCommands m_line{m_pattern};
    CReads m_reads{m_pattern};
    CDisturbanceReads m_disturbance{m_pattern};
    CSecurityEvents m_securityEvents;
    CWrites m_writes{m_pattern, m_securityEvents};
    CSecurityCells m_cells{m_channel, m_reads};
    CPasswordLogin m_passwordLogin{SLoginParts{m_channel, m_writes, m_cells}};
    CUserLogin m_userLogin{SLoginParts{m_channel, m_writes, m_cells}, m_pattern};
};

} // namespace ruvo
