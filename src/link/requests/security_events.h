// The security event trace: one line for every write to a relay, and the application's callback.
#pragma once

#include "link/seam/known_cells.h"
#include "link/seam/link_status.h"
#include "model/values/parlane_data.h"
#include "model/values/parlane_time.h"

namespace ruvo {

/// The time stamp of a write attempt: the local time now, to the second. Marked invalid when it cannot be
/// had, summer time while daylight time is observed.
CParlaneIEC870 SecurityTimeStamp();

/// Records the writes of one client. A failure to report a write, or in the callback, must not affect the
/// write itself, so nothing is thrown.
class CSecurityEvents {
public:
    /// Before a value is written.
    void LogWrite(CellAddress cell, const CParlaneIEC870& time, const CParlaneData& value) noexcept;
    /// After it, with the status that the server answered.
    void LogReply(CellAddress cell, const CParlaneIEC870& time, LinkStatus status) noexcept;
    /// Before a cell is reset; nothing for the password cell, whose reset is a logout.
    void LogReset(CellAddress cell, const CParlaneIEC870& time) noexcept;

private:
    void LogEvent(std::uint16_t code, const char* label, const CParlaneIEC870& time,
                  const CParlaneData& value) noexcept;
    void WriteEvent(std::uint16_t code, const char* label, const CParlaneIEC870& time,
                    const CParlaneData& value);

    bool m_settingChangeMode = true;                           ///< label of the events; nothing changes it
    char m_userName[kUserNameLength + 1] = "                "; ///< blanks: no login is known here
};

} // namespace ruvo
