// The requests about disturbance records.
#pragma once

#include "link/channel/request_pattern.h"
#include "model/values/parlane_data.h"

namespace ruvo {

/// Reads disturbance records; as `CP32Wrap` documents it.
class CDisturbanceReads {
public:
    /// Borrows the pattern for its own life.
    explicit CDisturbanceReads(CRequestPattern& pattern) : m_pattern(pattern) {}

    LinkStatus TestAvailableDisturbanceRecord(CProgressMonitor* monitor, std::uint8_t& available);
    LinkStatus GetCompressDisturbanceRecord(CProgressMonitor* monitor, const CParlaneData& which,
                                            CParlaneDataArray& values);
    LinkStatus GetDisturbanceRecordConfiguration(CProgressMonitor* monitor, const CParlaneData& which,
                                                 CParlaneDataArrayArray& lists);
    LinkStatus GetDisturbanceRecordValues(CProgressMonitor* monitor, CParlaneDataArray& first,
                                          CParlaneDataArray& second);

private:
    CRequestPattern& m_pattern;
};

} // namespace ruvo
