#include "link/client.h"

#include "link/channel/sink.h"

#include <atomic>
#include <mutex>

namespace ruvo {

namespace {

/// The one client, and what guards it: the sink looks it up on the server's threads. The sink has no state
/// and outlives every client.
struct SSingleton {
    CP32lsSink_v2 sink;
    std::mutex mutex;
    std::shared_ptr<CP32Wrap> wrap;
    std::atomic<CP32Wrap*> pointer = nullptr; ///< the same, for those who do not keep it alive
};

SSingleton& Singleton() {
    static SSingleton singleton;
    return singleton;
}

std::shared_ptr<CP32Wrap> HoldInstance() {
    const std::lock_guard guard(Singleton().mutex);
    return Singleton().wrap;
}

void StoreSingleton(std::shared_ptr<CP32Wrap> wrap) {
    const std::lock_guard guard(Singleton().mutex);
    Singleton().pointer = wrap.get();
    Singleton().wrap.swap(wrap);
} // the old client, if any, ends here: after the guard's scope it may take its time

} // namespace

std::shared_ptr<CChannel> HoldChannel() {
    const std::shared_ptr<CP32Wrap> wrap = HoldInstance();
    return wrap == nullptr ? nullptr : std::shared_ptr<CChannel>(wrap, &wrap->m_channel);
}

CP32Wrap::CP32Wrap(CKey /*key*/) {}
CP32Wrap::~CP32Wrap() = default;

CP32Wrap* CP32Wrap::GetInstance() {
    return Singleton().pointer;
}

LinkStatus CP32Wrap::CreateInstance() {
    if (GetInstance() != nullptr) {
        return kLinkGood;
    }
    try {
        const auto wrap = std::make_shared<CP32Wrap>(CKey());
        StoreSingleton(wrap); // before the server knows the sink, which looks the client up
        if (wrap->m_channel.Connect(Singleton().sink)) {
            return kLinkGood;
        }
    } catch (...) { // a server that fails in an unforeseen way has failed to start
    }
    StoreSingleton(nullptr);
    return kLinkComFailure;
}

void CP32Wrap::DestroyInstance() {
    const std::shared_ptr<CP32Wrap> wrap = HoldInstance();
    if (wrap != nullptr && wrap->m_channel.Disconnect()) {
        StoreSingleton(nullptr);
    }
}

void CP32Wrap::SetDisconnectHandler(void (*handler)()) {
    m_channel.SetDisconnectHandler(handler);
}

void CP32Wrap::SetDeviceAddress(std::uint8_t address) {
    m_channel.SetDeviceAddress(address);
}

void CP32Wrap::RequestAbort() {
    m_channel.RequestAbort();
}

LinkStatus CP32Wrap::OpenPort(CProgressMonitor* monitor, const std::string& port,
                              const std::string& parameters) {
    return Held()->m_line.OpenPort(monitor, port, parameters);
}

LinkStatus CP32Wrap::ClosePort(CProgressMonitor* monitor) {
    return Held()->m_line.ClosePort(monitor);
}

LinkStatus CP32Wrap::SetTransactionValues(CProgressMonitor* monitor, std::int32_t busyHoldoff,
                                          std::int32_t busyCount, std::int32_t resetResponse,
                                          std::int32_t response, std::int32_t tryCount,
                                          std::int32_t transmitDelay, std::int32_t globalTransmit) {
    return Held()->m_line.SetTransactionValues(monitor, busyHoldoff, busyCount, resetResponse, response,
                                               tryCount, transmitDelay, globalTransmit);
}

LinkStatus CP32Wrap::ModemConnect(CProgressMonitor* monitor, const std::string& modemName,
                                  std::int32_t lineAddress, const std::string& countryCode,
                                  const std::string& areaCode, const std::string& numberToDial,
                                  std::uint8_t useCountryAndAreaCodes) {
    return Held()->m_line.ModemConnect(monitor, modemName, lineAddress, countryCode, areaCode, numberToDial,
                                       useCountryAndAreaCodes);
}

LinkStatus CP32Wrap::ModemHangUp(CProgressMonitor* monitor) {
    return Held()->m_line.ModemHangUp(monitor);
}

LinkStatus CP32Wrap::GetColumnHeadings(CProgressMonitor* monitor, CParlaneDataArray& first,
                                       CParlaneDataArray& second) {
    return Held()->m_reads.GetColumnHeadings(monitor, first, second);
}

LinkStatus CP32Wrap::GetColumnText(CProgressMonitor* monitor, std::uint8_t column, CParlaneDataArray& first,
                                   CParlaneDataArray& second) {
    return Held()->m_reads.GetColumnText(monitor, column, first, second);
}

LinkStatus CP32Wrap::GetColumnValues(CProgressMonitor* monitor, std::uint8_t column, CParlaneDataArray& first,
                                     CParlaneDataArray& second) {
    return Held()->m_reads.GetColumnValues(monitor, column, first, second);
}

LinkStatus CP32Wrap::GetColumnTextAndValues(CProgressMonitor* monitor, std::uint8_t column,
                                            CParlaneDataArray& locations, CParlaneDataArray& texts,
                                            CParlaneDataArray& values) {
    return Held()->m_reads.GetColumnTextAndValues(monitor, column, locations, texts, values);
}

LinkStatus CP32Wrap::GetStrings(CProgressMonitor* monitor, CellAddress cell, CParlaneDataArray& strings) {
    return Held()->m_reads.GetStrings(monitor, cell, strings);
}

LinkStatus CP32Wrap::GetText(CProgressMonitor* monitor, CellAddress cell,
                             std::unique_ptr<CParlaneData>& text) {
    return Held()->m_reads.GetText(monitor, cell, text);
}

LinkStatus CP32Wrap::GetValue(CProgressMonitor* monitor, CellAddress cell, CParlaneDataArray& values) {
    return Held()->m_reads.GetValue(monitor, cell, values);
}

LinkStatus CP32Wrap::GetValue(CProgressMonitor* monitor, CellAddress cell,
                              std::unique_ptr<CParlaneData>& value, std::vector<std::uint8_t>& bytes) {
    return Held()->m_reads.GetValue(monitor, cell, value, bytes);
}

LinkStatus CP32Wrap::GetValues(CProgressMonitor* monitor, std::span<const CellAddress> cells,
                               CParlaneDataArray& values) {
    return Held()->m_reads.GetValues(monitor, cells, values);
}

LinkStatus CP32Wrap::GetSettingLimits(CProgressMonitor* monitor, CellAddress cell,
                                      CParlaneDataArray& limits) {
    return Held()->m_reads.GetSettingLimits(monitor, cell, limits);
}

LinkStatus CP32Wrap::GetColumnSettingLimits(CProgressMonitor* monitor, std::uint8_t column,
                                            CParlaneDataArray& first, CParlaneDataArray& second) {
    return Held()->m_reads.GetColumnSettingLimits(monitor, column, first, second);
}

LinkStatus CP32Wrap::GetEvent(CProgressMonitor* monitor, std::uint8_t& kind, CParlaneDataArray& values,
                              std::uint8_t& moreEvents) {
    return Held()->m_reads.GetEvent(monitor, kind, values, moreEvents);
}

LinkStatus CP32Wrap::GetDeviceStatus(CProgressMonitor* monitor, std::uint8_t& statusByte) {
    return Held()->m_reads.GetDeviceStatus(monitor, statusByte);
}

LinkStatus CP32Wrap::TestAvailableDisturbanceRecord(CProgressMonitor* monitor, std::uint8_t& available) {
    return Held()->m_disturbance.TestAvailableDisturbanceRecord(monitor, available);
}

LinkStatus CP32Wrap::GetCompressDisturbanceRecord(CProgressMonitor* monitor, const CParlaneData& which,
                                                  CParlaneDataArray& values) {
    return Held()->m_disturbance.GetCompressDisturbanceRecord(monitor, which, values);
}

LinkStatus CP32Wrap::GetDisturbanceRecordConfiguration(CProgressMonitor* monitor, const CParlaneData& which,
                                                       CParlaneDataArrayArray& lists) {
    return Held()->m_disturbance.GetDisturbanceRecordConfiguration(monitor, which, lists);
}

LinkStatus CP32Wrap::GetDisturbanceRecordValues(CProgressMonitor* monitor, CParlaneDataArray& first,
                                                CParlaneDataArray& second) {
    return Held()->m_disturbance.GetDisturbanceRecordValues(monitor, first, second);
}

LinkStatus CP32Wrap::ChangeSetting(CProgressMonitor* monitor, CellAddress cell, const CParlaneData& value) {
    return Held()->m_writes.ChangeSetting(monitor, cell, value);
}

LinkStatus CP32Wrap::SetValue(CProgressMonitor* monitor, CellAddress cell, const CParlaneData& value) {
    return Held()->m_writes.SetValue(monitor, cell, value);
}

LinkStatus CP32Wrap::ResetCell(CProgressMonitor* monitor, CellAddress cell) {
    return Held()->m_writes.ResetCell(monitor, cell);
}

LinkStatus CP32Wrap::SetBlockedValue(CProgressMonitor* monitor, CellAddress cell,
                                     std::span<const std::uint8_t> bytes) {
    return Held()->m_writes.SetBlockedValue(monitor, cell, bytes);
}

LinkStatus CP32Wrap::SetRealTime(CProgressMonitor* monitor, const CParlaneIEC870& time) {
    return Held()->m_writes.SetRealTime(monitor, time);
}

LinkStatus CP32Wrap::ChangeDeviceAddress(CProgressMonitor* monitor, std::uint8_t newAddress,
                                         const std::string& serialNumber) {
    return Held()->m_writes.ChangeDeviceAddress(monitor, newAddress, serialNumber);
}

LinkStatus CP32Wrap::SelectSettingGroup(CProgressMonitor* monitor, std::uint8_t group) {
    return Held()->m_writes.SelectSettingGroup(monitor, group);
}

void CP32Wrap::ProcessPasswordRequest(CProgressMonitor* monitor, LinkStatus& status, bool& passwordEntered,
                                      bool& repeat, const std::string& message, CellAddress cell) {
    Held()->m_entry.ProcessPasswordRequest(monitor, status, passwordEntered, repeat, message, cell);
}

LinkStatus CP32Wrap::EnterPassword(CProgressMonitor* monitor, bool passwordEntered) {
    return Held()->m_entry.EnterPassword(monitor, passwordEntered);
}

LinkStatus CP32Wrap::EnterNonCyberSecurityPassword(const SPasswordRequest& request, bool passwordEntered) {
    return Held()->m_entry.RunLogin(
        [&] { return m_passwordLogin.EnterNonCyberSecurityPassword(request, passwordEntered); });
}

LinkStatus CP32Wrap::EnterCyberSecurityPassword(const SPasswordRequest& request, bool passwordEntered,
                                                std::uint8_t securityColumn) {
    return Held()->m_entry.RunLogin(
        [&] { return m_passwordLogin.EnterCyberSecurityPassword(request, passwordEntered, securityColumn); });
}

LinkStatus CP32Wrap::EnterCyberSecurityBrickIntegratedLoginAndPassword(const SPasswordRequest& request,
                                                                       bool passwordEntered,
                                                                       std::uint8_t securityColumn) {
    return Held()->m_entry.RunLogin([&] {
        return m_userLogin.EnterCyberSecurityBrickIntegratedLoginAndPassword(request, passwordEntered,
                                                                             securityColumn);
    });
}

LinkStatus CP32Wrap::EnterCyberSecurityBrickIntegratedLoginAndPasswordCSEd3(const SPasswordRequest& request,
                                                                            bool passwordEntered,
                                                                            std::uint8_t securityColumn) {
    return Held()->m_entry.RunLogin([&] {
        return m_userLogin.EnterCyberSecurityBrickIntegratedLoginAndPasswordCSEd3(request, passwordEntered,
                                                                                  securityColumn);
    });
}

LinkStatus CP32Wrap::ChangeHashedPasswordSettingForCSEd3(CProgressMonitor* monitor, CellAddress cell,
                                                         const std::string& username,
                                                         const std::string& password, int flag) {
    return Held()->m_userLogin.ChangeHashedPasswordSettingForCSEd3(monitor, cell, username, password, flag);
}

LinkStatus CP32Wrap::ExtractCSVersion(std::uint32_t& version) {
    return Held()->m_cells.ExtractCSVersion(version);
}

LinkStatus CP32Wrap::ExtractCSUsernamesCount(std::int64_t& count) {
    return Held()->m_cells.ExtractCSUsernamesCount(count);
}

LinkStatus CP32Wrap::ExtractCSAvailableUsernames(std::vector<SUserName>& names) {
    return Held()->m_cells.ExtractCSAvailableUsernames(names);
}

bool CP32Wrap::ExtractCSEd3SATSupported() {
    return Held()->m_cells.ExtractCSEd3SATSupported();
}

LinkStatus CP32Wrap::DetermineCSPasswordMaxLength(std::uint32_t& length) {
    return Held()->m_cells.DetermineCSPasswordMaxLength(length);
}

LinkStatus CP32Wrap::DetermineCSUsernameMaxLength(std::uint32_t& length) {
    return Held()->m_cells.DetermineCSUsernameMaxLength(length);
}

LinkStatus CP32Wrap::DetermineCSSATSupported(bool& supported) {
    return Held()->m_cells.DetermineCSSATSupported(supported);
}

} // namespace ruvo
