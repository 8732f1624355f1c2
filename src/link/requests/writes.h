// The writing requests.
#pragma once

#include "link/channel/request_pattern.h"
#include "link/requests/security_events.h"
#include "model/values/parlane_data.h"
#include "model/values/parlane_time.h"

#include <span>
#include <string>

namespace ruvo {

/// Everything that is written to a relay; as `CP32Wrap` documents it. Settings, values and resets leave
/// security events; a login's writes leave none.
class CWrites {
public:
    /// The server's operation that writes a value: for a setting, or for any other cell.
    enum class EOperation : std::uint8_t { ChangeSetting, SetValue };

    /// Borrows both for its own life.
    CWrites(CRequestPattern& pattern, CSecurityEvents& events) : m_pattern(pattern), m_events(events) {}

    LinkStatus ChangeSetting(CProgressMonitor* monitor, CellAddress cell, const CParlaneData& value);
    LinkStatus SetValue(CProgressMonitor* monitor, CellAddress cell, const CParlaneData& value);
    LinkStatus ResetCell(CProgressMonitor* monitor, CellAddress cell);
    LinkStatus SetBlockedValue(CProgressMonitor* monitor, CellAddress cell,
                               std::span<const std::uint8_t> bytes);
    LinkStatus SetRealTime(CProgressMonitor* monitor, const CParlaneIEC870& time);
    LinkStatus ChangeDeviceAddress(CProgressMonitor* monitor, std::uint8_t newAddress,
                                   const std::string& serialNumber);
    LinkStatus SelectSettingGroup(CProgressMonitor* monitor, std::uint8_t group);

    /// A login's write: no security event and no repetition, so that no password ever reaches a trace. The
    /// caller holds the command lock, since several writes can make one login.
    LinkStatus WriteCredential(const CChannel::CommandLock& held, CellAddress cell, const CParlaneData& value,
                               EOperation operation);

private:
    LinkStatus WriteWithSecurityEvents(CellAddress cell, const CParlaneData& value, EOperation operation);
    LinkStatus CallWrite(EOperation operation, CellAddress cell, const Variant& packed);

    CRequestPattern& m_pattern;
    CSecurityEvents& m_events;
};

} // namespace ruvo
