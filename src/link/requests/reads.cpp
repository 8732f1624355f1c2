#include "link/requests/reads.h"

#include "link/requests/reply_values.h"

#include <algorithm>

namespace ruvo {

namespace {

bool UnpackTwoLists(const Variant (&outputs)[2], CParlaneDataArray& first, CParlaneDataArray& second) {
    return UnpackValueList(outputs[0], first) && UnpackValueList(outputs[1], second);
}

} // namespace

LinkStatus CReads::GetColumnHeadings(CProgressMonitor* monitor, CParlaneDataArray& first,
                                     CParlaneDataArray& second) {
    first.clear();
    second.clear();
    return m_pattern.RunRequest(monitor, "GetColumnHeadings", [&] {
        Variant lists[2];
        return m_pattern.RunStartedPass(
            [&](IP32ls& server, Variant& status) {
                return server.StartGetColumnHeadings(m_pattern.Address(), status);
            },
            [&](IP32ls& server, Variant& status) {
                return server.FetchColumnHeadings(lists[0], lists[1], status);
            },
            [&] { return UnpackTwoLists(lists, first, second); });
    });
}

LinkStatus CReads::ReadColumn(CProgressMonitor* monitor, const char* name, std::uint8_t column,
                              StartColumn start, FetchTwo fetch, CParlaneDataArray& first,
                              CParlaneDataArray& second) {
    first.clear();
    second.clear();
    return m_pattern.RunRequest(monitor, name, [&] {
        Variant lists[2];
        return m_pattern.RunStartedPass(
            [&](IP32ls& server, Variant& status) {
                return (server.*start)(m_pattern.Address(), Variant::FromUI1(column), status);
            },
            [&](IP32ls& server, Variant& status) { return (server.*fetch)(lists[0], lists[1], status); },
            [&] { return UnpackTwoLists(lists, first, second); });
    });
}

LinkStatus CReads::GetColumnText(CProgressMonitor* monitor, std::uint8_t column, CParlaneDataArray& first,
                                 CParlaneDataArray& second) {
    return ReadColumn(monitor, "GetColumnText", column, &IP32ls::StartGetColumnText, &IP32ls::FetchColumnText,
                      first, second);
}

LinkStatus CReads::GetColumnValues(CProgressMonitor* monitor, std::uint8_t column, CParlaneDataArray& first,
                                   CParlaneDataArray& second) {
    return ReadColumn(monitor, "GetColumnValues", column, &IP32ls::StartGetColumnValues,
                      &IP32ls::FetchColumnValues, first, second);
}

LinkStatus CReads::GetColumnSettingLimits(CProgressMonitor* monitor, std::uint8_t column,
                                          CParlaneDataArray& first, CParlaneDataArray& second) {
    return ReadColumn(monitor, "GetColumnSettingLimits", column, &IP32ls::StartGetColumnSettingLimits,
                      &IP32ls::FetchColumnSettingLimits, first, second);
}

LinkStatus CReads::GetColumnTextAndValues(CProgressMonitor* monitor, std::uint8_t column,
                                          CParlaneDataArray& locations, CParlaneDataArray& texts,
                                          CParlaneDataArray& values) {
    locations.clear();
    texts.clear();
    values.clear();
    return m_pattern.RunRequest(monitor, "GetColumnTextAndValues", [&] {
        Variant lists[3];
        return m_pattern.RunStartedPass(
            [&](IP32ls& server, Variant& status) {
                return server.StartGetColumnTextAndValues(m_pattern.Address(), Variant::FromUI1(column),
                                                          status);
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

LinkStatus CReads::GetStrings(CProgressMonitor* monitor, CellAddress cell, CParlaneDataArray& strings) {
    strings.clear();
    return m_pattern.RunRequest(monitor, "GetStrings", [&] {
        Variant list;
        return m_pattern.RunStartedPass(
            [&](IP32ls& server, Variant& status) {
                return server.StartGetStrings(m_pattern.Address(), CellVariant(cell), status);
            },
            [&](IP32ls& server, Variant& status) { return server.FetchStrings(list, status); },
            [&] { return UnpackValueList(list, strings); });
    });
}

LinkStatus CReads::GetText(CProgressMonitor* monitor, CellAddress cell, std::unique_ptr<CParlaneData>& text) {
    text.reset();
    return m_pattern.RunRequest(monitor, "GetText", [&] {
        Variant value;
        return m_pattern.RunPass(
            [&](IP32ls& server, Variant& status) {
                return server.GetText(m_pattern.Address(), CellVariant(cell), value, status);
            },
            [&] { return UnpackValue(value, text); });
    });
}

/// Both forms of GetValue: `values` receives every value, and `bytes` (null for none) what they were made of.
LinkStatus CReads::ReadValues(CProgressMonitor* monitor, CellAddress cell, CParlaneDataArray& values,
                              std::vector<std::uint8_t>* bytes) {
    return m_pattern.RunRequest(monitor, "GetValue", [&] {
        Variant type;
        Variant size;
        Variant data;
        return m_pattern.RunPass(
            [&](IP32ls& server, Variant& status) {
                return server.GetValue(m_pattern.Address(), CellVariant(cell), type, size, data, status);
            },
            [&] {
                if (bytes != nullptr && data.AsBytes() != nullptr) {
                    *bytes = *data.AsBytes();
                }
                return UnpackPackedValues(type, size, data, values);
            });
    });
}

LinkStatus CReads::GetValue(CProgressMonitor* monitor, CellAddress cell, CParlaneDataArray& values) {
    values.clear();
    return ReadValues(monitor, cell, values, nullptr);
}

LinkStatus CReads::GetValue(CProgressMonitor* monitor, CellAddress cell, std::unique_ptr<CParlaneData>& value,
                            std::vector<std::uint8_t>& bytes) {
    value.reset();
    bytes.clear();
    CParlaneDataArray values;
    const LinkStatus status = ReadValues(monitor, cell, values, &bytes);
    if (status == kLinkGood && !values.empty()) {
        value = std::move(values.front());
    }
    return status;
}

LinkStatus CReads::GetValues(CProgressMonitor* monitor, std::span<const CellAddress> cells,
                             CParlaneDataArray& values) {
    values.clear();
    return m_pattern.RunRequest(monitor, "GetValues", [&] {
        Variant::Words words(cells.size());
        std::ranges::transform(cells, words.begin(),
                               [](CellAddress cell) { return static_cast<std::int16_t>(cell); });
        const Variant cellList = Variant::FromWords(std::move(words));
        Variant list;
        return m_pattern.RunPass(
            [&](IP32ls& server, Variant& status) {
                return server.GetValues(m_pattern.Address(), cellList, list, status);
            },
            [&] { return UnpackValueList(list, values); });
    });
}

LinkStatus CReads::GetSettingLimits(CProgressMonitor* monitor, CellAddress cell, CParlaneDataArray& limits) {
    limits.clear();
    return m_pattern.RunRequest(monitor, "GetSettingLimits", [&] {
        Variant list;
        return m_pattern.RunPass(
            [&](IP32ls& server, Variant& status) {
                return server.GetSettingLimits(m_pattern.Address(), CellVariant(cell), list, status);
            },
            [&] { return UnpackValueList(list, limits); });
    });
}

LinkStatus CReads::GetEvent(CProgressMonitor* monitor, std::uint8_t& kind, CParlaneDataArray& values,
                            std::uint8_t& moreEvents) {
    kind = 0;
    moreEvents = 0;
    values.clear();
    m_eventHandedOver = false;
    return m_pattern.RunRequest(monitor, "GetEvent", [&] {
        Variant outputs[3];
        return m_pattern.RunPass(
            [&](IP32ls& server, Variant& status) {
                return server.GetEvent(m_pattern.Address(), outputs[0], outputs[1], outputs[2], status);
            },
            [&] {
                m_eventHandedOver = true;
                return outputs[0].ToUI1(kind) && outputs[2].ToUI1(moreEvents) &&
                       UnpackValueList(outputs[1], values);
            });
    });
}

LinkStatus CReads::GetDeviceStatus(CProgressMonitor* monitor, std::uint8_t& statusByte) {
    return m_pattern.RunOnce(monitor, [&] {
        Variant byte;
        return m_pattern.RunPass(
            [&](IP32ls& server, Variant& status) {
                return server.GetDeviceStatus(m_pattern.Address(), byte, status);
            },
            [&] { return byte.ToUI1(statusByte); });
    });
}

} // namespace ruvo
