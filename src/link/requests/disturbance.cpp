#include "link/requests/disturbance.h"

#include "link/requests/reply_values.h"

#include <array>

namespace ruvo {

LinkStatus CDisturbanceReads::TestAvailableDisturbanceRecord(CProgressMonitor* monitor,
                                                             std::uint8_t& available) {
    available = 0;
    return m_pattern.RunRequest(monitor, "TestAvailableDisturbanceRecord", [&] {
        Variant byte;
        return m_pattern.RunPass(
            [&](IP32ls& server, Variant& status) {
                return server.TestAvailableDisturbanceRecord(m_pattern.Address(), byte, status);
            },
            [&] { return byte.ToUI1(available); });
    });
}

LinkStatus CDisturbanceReads::GetCompressDisturbanceRecord(CProgressMonitor* monitor,
                                                           const CParlaneData& which,
                                                           CParlaneDataArray& values) {
    values.clear();
    Variant record;
    return m_pattern.RunRequest(monitor, "GetCompressDisturbanceRecord", [&] {
        if (!PackValue(which, record)) {
            return kLinkBadReply;
        }
        Variant list;
        return m_pattern.RunStartedPass(
            [&](IP32ls& server, Variant& status) {
                return server.StartGetCompressDisturbanceRecord(m_pattern.Address(), record, status);
            },
            [&](IP32ls& server, Variant& status) {
                return server.FetchCompressDisturbanceRecord(list, status);
            },
            [&] { return UnpackValueList(list, values); });
    });
}

LinkStatus CDisturbanceReads::GetDisturbanceRecordConfiguration(CProgressMonitor* monitor,
                                                                const CParlaneData& which,
                                                                CParlaneDataArrayArray& lists) {
    lists.clear();
    Variant record;
    return m_pattern.RunRequest(monitor, "GetDisturbanceRecordConfiguration", [&] {
        if (!PackValue(which, record)) {
            return kLinkBadReply;
        }
        std::array<Variant, 4> outputs;
        return m_pattern.RunStartedPass(
            [&](IP32ls& server, Variant& status) {
                return server.StartGetDisturbanceRecordConfiguration(m_pattern.Address(), record, status);
            },
            [&](IP32ls& server, Variant& status) {
                return server.FetchDisturbanceRecordConfiguration(outputs[0], outputs[1], outputs[2],
                                                                  outputs[3], status);
            },
            [&] {
                for (const Variant& output : outputs) {
                    if (!UnpackValueList(output, lists.emplace_back())) {
                        return false;
                    }
                }
                return true;
            });
    });
}

LinkStatus CDisturbanceReads::GetDisturbanceRecordValues(CProgressMonitor* monitor, CParlaneDataArray& first,
                                                         CParlaneDataArray& second) {
    first.clear();
    second.clear();
    return m_pattern.RunRequest(monitor, "GetDisturbanceRecordValues", [&] {
        Variant lists[2];
        return m_pattern.RunStartedPass(
            [&](IP32ls& server, Variant& status) {
                return server.StartGetDisturbanceRecordValues(m_pattern.Address(), status);
            },
            [&](IP32ls& server, Variant& status) {
                return server.FetchDisturbanceRecordValues(lists[0], lists[1], status);
            },
            [&] { return UnpackValueList(lists[0], first) && UnpackValueList(lists[1], second); });
    });
}

} // namespace ruvo
