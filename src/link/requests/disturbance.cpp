// The disturbance-record requests of the client.
#include "link/channel/request_pattern.h"

#include "link/requests/reply_values.h"

#include <array>

namespace ruvo {

LinkStatus CP32Wrap::TestAvailableDisturbanceRecord(CProgressMonitor* monitor, std::uint8_t& available) {
    available = 0;
    return RunRequest(monitor, "TestAvailableDisturbanceRecord", [&] {
        Variant byte;
        return RunPass(
            [&](IP32ls& server, Variant& status) {
                return server.TestAvailableDisturbanceRecord(Address(), byte, status);
            },
            [&] { return byte.ToUI1(available); });
    });
}

LinkStatus CP32Wrap::GetCompressDisturbanceRecord(CProgressMonitor* monitor, const CParlaneData& which,
                                                  CParlaneDataArray& values) {
    values.clear();
    Variant record;
    return RunRequest(monitor, "GetCompressDisturbanceRecord", [&] {
        if (!PackValue(which, record)) {
            return kLinkBadReply;
        }
        Variant list;
        return RunStartedPass(
            [&](IP32ls& server, Variant& status) {
                return server.StartGetCompressDisturbanceRecord(Address(), record, status);
            },
            [&](IP32ls& server, Variant& status) {
                return server.FetchCompressDisturbanceRecord(list, status);
            },
            [&] { return UnpackValueList(list, values); });
    });
}

LinkStatus CP32Wrap::GetDisturbanceRecordConfiguration(CProgressMonitor* monitor, const CParlaneData& which,
                                                       CParlaneDataArrayArray& lists) {
    lists.clear();
    Variant record;
    return RunRequest(monitor, "GetDisturbanceRecordConfiguration", [&] {
        if (!PackValue(which, record)) {
            return kLinkBadReply;
        }
        std::array<Variant, 4> outputs;
        return RunStartedPass(
            [&](IP32ls& server, Variant& status) {
                return server.StartGetDisturbanceRecordConfiguration(Address(), record, status);
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

LinkStatus CP32Wrap::GetDisturbanceRecordValues(CProgressMonitor* monitor, CParlaneDataArray& first,
                                                CParlaneDataArray& second) {
    first.clear();
    second.clear();
    return RunRequest(monitor, "GetDisturbanceRecordValues", [&] {
        Variant lists[2];
        return RunStartedPass(
            [&](IP32ls& server, Variant& status) {
                return server.StartGetDisturbanceRecordValues(Address(), status);
            },
            [&](IP32ls& server, Variant& status) {
                return server.FetchDisturbanceRecordValues(lists[0], lists[1], status);
            },
            [&] { return UnpackValueList(lists[0], first) && UnpackValueList(lists[1], second); });
    });
}

} // namespace ruvo
