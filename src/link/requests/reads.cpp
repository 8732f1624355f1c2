// The reading requests of the client.
#include "link/channel/request_pattern.h"

#include "link/requests/reply_values.h"

#include <algorithm>

namespace ruvo {

namespace {

bool UnpackTwoLists(const Variant (&outputs)[2], CParlaneDataArray& first, CParlaneDataArray& second) {
    return UnpackValueList(outputs[0], first) && UnpackValueList(outputs[1], second);
}

} // namespace

LinkStatus CP32Wrap::GetColumnHeadings(CProgressMonitor* monitor, CParlaneDataArray& first,
                                       CParlaneDataArray& second) {
    first.clear();
    second.clear();
    return RunRequest(monitor, "GetColumnHeadings", [&] {
        Variant lists[2];
        return RunStartedPass(
            [&](IP32ls& server, Variant& status) { return server.StartGetColumnHeadings(Address(), status); },
            [&](IP32ls& server, Variant& status) {
                return server.FetchColumnHeadings(lists[0], lists[1], status);
            },
            [&] { return UnpackTwoLists(lists, first, second); });
    });
}

LinkStatus CP32Wrap::ReadColumn(CProgressMonitor* monitor, const char* name, std::uint8_t column,
                                StartColumn start, FetchTwo fetch, CParlaneDataArray& first,
                                CParlaneDataArray& second) {
    first.clear();
    second.clear();
    return RunRequest(monitor, name, [&] {
        Variant lists[2];
        return RunStartedPass(
            [&](IP32ls& server, Variant& status) {
                return (server.*start)(Address(), Variant::FromUI1(column), status);
            },
            [&](IP32ls& server, Variant& status) { return (server.*fetch)(lists[0], lists[1], status); },
            [&] { return UnpackTwoLists(lists, first, second); });
    });
}

LinkStatus CP32Wrap::GetColumnText(CProgressMonitor* monitor, std::uint8_t column, CParlaneDataArray& first,
                                   CParlaneDataArray& second) {
    return ReadColumn(monitor, "GetColumnText", column, &IP32ls::StartGetColumnText, &IP32ls::FetchColumnText,
                      first, second);
}

LinkStatus CP32Wrap::GetColumnValues(CProgressMonitor* monitor, std::uint8_t column, CParlaneDataArray& first,
                                     CParlaneDataArray& second) {
    return ReadColumn(monitor, "GetColumnValues", column, &IP32ls::StartGetColumnValues,
                      &IP32ls::FetchColumnValues, first, second);
}

LinkStatus CP32Wrap::GetColumnSettingLimits(CProgressMonitor* monitor, std::uint8_t column,
                                            CParlaneDataArray& first, CParlaneDataArray& second) {
    return ReadColumn(monitor, "GetColumnSettingLimits", column, &IP32ls::StartGetColumnSettingLimits,
                      &IP32ls::FetchColumnSettingLimits, first, second);
}

LinkStatus CP32Wrap::GetColumnTextAndValues(CProgressMonitor* monitor, std::uint8_t column,
                                            CParlaneDataArray& locations, CParlaneDataArray& texts,
                                            CParlaneDataArray& values) {
    locations.clear();
    texts.clear();
    values.clear();
    return RunRequest(monitor, "GetColumnTextAndValues", [&] {
        Variant lists[3];
        return RunStartedPass(
            [&](IP32ls& server, Variant& status) {
                return server.StartGetColumnTextAndValues(Address(), Variant::FromUI1(column), status);
            },
            [&](IP32ls& server, Variant& status) {
                return server.FetchColumnTextAndValues(lists[0], lists[1], lists[2], status);
            },
            [&] {
                return UnpackValueList(lists[0], locations) && UnpackValueList(lists[1], texts) &&
                       UnpackValueList(lists[2], values);
            });
    });
}

LinkStatus CP32Wrap::GetStrings(CProgressMonitor* monitor, CellAddress cell, CParlaneDataArray& strings) {
    strings.clear();
    return RunRequest(monitor, "GetStrings", [&] {
        Variant list;
        return RunStartedPass(
            [&](IP32ls& server, Variant& status) {
                return server.StartGetStrings(Address(), CellVariant(cell), status);
            },
            [&](IP32ls& server, Variant& status) { return server.FetchStrings(list, status); },
            [&] { return UnpackValueList(list, strings); });
    });
}

LinkStatus CP32Wrap::GetText(CProgressMonitor* monitor, CellAddress cell,
                             std::unique_ptr<CParlaneData>& text) {
    text.reset();
    return RunRequest(monitor, "GetText", [&] {
        Variant value;
        return RunPass(
            [&](IP32ls& server, Variant& status) {
                return server.GetText(Address(), CellVariant(cell), value, status);
            },
            [&] { return UnpackValue(value, text); });
    });
}

/// Both forms of GetValue: `values` receives every value, and `bytes` (null for none) what they were made of.
LinkStatus CP32Wrap::ReadValues(CProgressMonitor* monitor, CellAddress cell, CParlaneDataArray& values,
                                std::vector<std::uint8_t>* bytes) {
    return RunRequest(monitor, "GetValue", [&] {
        Variant type;
        Variant size;
        Variant data;
        return RunPass(
            [&](IP32ls& server, Variant& status) {
                return server.GetValue(Address(), CellVariant(cell), type, size, data, status);
            },
            [&] {
                if (bytes != nullptr && data.AsBytes() != nullptr) {
                    *bytes = *data.AsBytes();
                }
                return UnpackPackedValues(type, size, data, values);
            });
    });
}

LinkStatus CP32Wrap::GetValue(CProgressMonitor* monitor, CellAddress cell, CParlaneDataArray& values) {
    values.clear();
    return ReadValues(monitor, cell, values, nullptr);
}

LinkStatus CP32Wrap::GetValue(CProgressMonitor* monitor, CellAddress cell,
                              std::unique_ptr<CParlaneData>& value, std::vector<std::uint8_t>& bytes) {
    value.reset();
    bytes.clear();
    CParlaneDataArray values;
    const LinkStatus status = ReadValues(monitor, cell, values, &bytes);
    if (status == kLinkGood && !values.empty()) {
        value = std::move(values.front());
    }
    return status;
}

LinkStatus CP32Wrap::GetValues(CProgressMonitor* monitor, std::span<const CellAddress> cells,
                               CParlaneDataArray& values) {
    values.clear();
    return RunRequest(monitor, "GetValues", [&] {
        Variant::Words words(cells.size());
        std::ranges::transform(cells, words.begin(),
                               [](CellAddress cell) { return static_cast<std::int16_t>(cell); });
        const Variant cellList = Variant::FromWords(std::move(words));
        Variant list;
        return RunPass([&](IP32ls& server,
                           Variant& status) { return server.GetValues(Address(), cellList, list, status); },
                       [&] { return UnpackValueList(list, values); });
    });
}

LinkStatus CP32Wrap::GetSettingLimits(CProgressMonitor* monitor, CellAddress cell,
                                      CParlaneDataArray& limits) {
    limits.clear();
    return RunRequest(monitor, "GetSettingLimits", [&] {
        Variant list;
        return RunPass(
            [&](IP32ls& server, Variant& status) {
                return server.GetSettingLimits(Address(), CellVariant(cell), list, status);
            },
            [&] { return UnpackValueList(list, limits); });
    });
}

LinkStatus CP32Wrap::GetEvent(CProgressMonitor* monitor, std::uint8_t& kind, CParlaneDataArray& values,
                              std::uint8_t& moreEvents) {
    kind = 0;
    moreEvents = 0;
    values.clear();
    m_eventHandedOver = false;
    return RunRequest(monitor, "GetEvent", [&] {
        Variant outputs[3];
        return RunPass(
            [&](IP32ls& server, Variant& status) {
                return server.GetEvent(Address(), outputs[0], outputs[1], outputs[2], status);
            },
            [&] {
                m_eventHandedOver = true;
                return outputs[0].ToUI1(kind) && outputs[2].ToUI1(moreEvents) &&
                       UnpackValueList(outputs[1], values);
            });
    });
}

LinkStatus CP32Wrap::GetDeviceStatus(CProgressMonitor* monitor, std::uint8_t& statusByte) {
    return RunOnce(monitor, [&] {
        Variant byte;
        return RunPass(
            [&](IP32ls& server, Variant& status) { return server.GetDeviceStatus(Address(), byte, status); },
            [&] { return byte.ToUI1(statusByte); });
    });
}

} // namespace ruvo
