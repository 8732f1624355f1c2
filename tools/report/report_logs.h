// The error logs that a report shows: those of its sites, with what their mutes and records say of a line,
// and others.
#pragma once

#include "tools/events/event_filter.h"
#include "tools/report/report_data.h"
#include "tools/sites/shared_logs.h"
#include "tools/sites/site.h"
#include "tools/sites/site_visits.h"
#include "tools/text_output.h"

#include <memory>
#include <string>
#include <vector>

namespace ruvo {

class CReportLogs {
public:
    /// Of the INI file, if it can be read, and the relays that are muted there.
    void AddSite(const std::string& iniPath, CReportData& data);
    /// In the system's form.
    void AddLog(const std::string& path) { m_logs.push_back({path, {}}); }

    /// The paths, UTF-8.
    [[nodiscard]] std::vector<std::string> Names() const;
    /// Adds the lines within the filter's time, which with a zone is the zone's, each log's after those of
    /// the one before. Reports what cannot be read and returns false. A missing log in an existing folder has
    /// no lines: the first problem creates it.
    [[nodiscard]] bool Read(const SEventFilter& filter, const CZoneRule* zone, CReportData& data,
                            SConsole& console);

private:
    struct SSiteLines {
        std::unique_ptr<SSiteVisits> visits;
        COwnLines own;
        std::size_t firstMute = 0; ///< in the report, of those of the site
    };
    struct SLog {
        std::string path;
        std::vector<SSiteLines> sites; ///< whose log it is; none for one that was given by its path
    };
    [[nodiscard]] static bool ReadLog(SLog& log, const SEventFilter& filter, const CZoneRule* zone,
                                      std::size_t index, CReportData& data, SConsole& console);
    /// False for a line of a site that the report is not of. Sets the mute that the line falls under.
    [[nodiscard]] static bool Belongs(SLog& log, const SLogLine& line, std::optional<std::size_t>& mute);

    CLogUsers m_users;
    std::vector<SLog> m_logs;
};

} // namespace ruvo
