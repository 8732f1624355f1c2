// The reading requests.
#pragma once

#include "link/channel/request_pattern.h"
#include "model/values/parlane_data.h"

#include <atomic>
#include <memory>
#include <span>
#include <vector>

namespace ruvo {

/// Everything that is read of a relay but disturbance records; as `CP32Wrap` documents it. Output containers
/// are emptied first, before anything can fail.
class CReads {
public:
    /// Borrows the pattern for its own life.
    explicit CReads(CRequestPattern& pattern) : m_pattern(pattern) {}

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
    LinkStatus GetValue(CProgressMonitor* monitor, CellAddress cell, CParlaneDataArray& values);
    LinkStatus GetValue(CProgressMonitor* monitor, CellAddress cell, std::unique_ptr<CParlaneData>& value,
                        std::vector<std::uint8_t>& bytes);
    LinkStatus GetValues(CProgressMonitor* monitor, std::span<const CellAddress> cells,
                         CParlaneDataArray& values);
    LinkStatus GetSettingLimits(CProgressMonitor* monitor, CellAddress cell, CParlaneDataArray& limits);
    LinkStatus GetColumnSettingLimits(CProgressMonitor* monitor, std::uint8_t column,
                                      CParlaneDataArray& first, CParlaneDataArray& second);
    LinkStatus GetEvent(CProgressMonitor* monitor, std::uint8_t& kind, CParlaneDataArray& values,
                        std::uint8_t& moreEvents);
    bool IsEventHandedOver() const { return m_eventHandedOver; }
    LinkStatus GetDeviceStatus(CProgressMonitor* monitor, std::uint8_t& statusByte);

private:
    LinkStatus ReadValues(CProgressMonitor* monitor, CellAddress cell, CParlaneDataArray& values,
                          std::vector<std::uint8_t>* bytes);
    using StartColumn = EComResult (IP32ls::*)(const Variant& address, const Variant& column,
                                               Variant& status);
    using FetchTwo = EComResult (IP32ls::*)(Variant& first, Variant& second, Variant& status);
    LinkStatus ReadColumn(CProgressMonitor* monitor, const char* name, std::uint8_t column, StartColumn start,
                          FetchTwo fetch, CParlaneDataArray& first, CParlaneDataArray& second);

    CRequestPattern& m_pattern;
    std::atomic<bool> m_eventHandedOver = false;
};

} // namespace ruvo
