#include "link/seam/operations.h"

#include <algorithm>

namespace ruvo {

using enum EOperation;
using enum ETarget;

const std::array<SOperationRow, static_cast<std::size_t>(EOperation::Last) + 1> kOperationRows{{
    {OpenPort, "OpenPort", Link, false, 7},
    {ClosePort, "ClosePort", Link, false, 8},
    {SetTransactionValues, "SetTransactionValues", Link, false, 9},
    {StartGetColumnHeadings, "StartGetColumnHeadings", Relay, true, 13},
    {FetchColumnHeadings, "FetchColumnHeadings", Link, false, 14},
    {StartGetColumnText, "StartGetColumnText", Column, true, 15},
    {FetchColumnText, "FetchColumnText", Link, false, 16},
    {StartGetColumnValues, "StartGetColumnValues", Column, true, 17},
    {FetchColumnValues, "FetchColumnValues", Link, false, 18},
    {StartGetColumnTextAndValues, "StartGetColumnTextAndValues", Column, true, 19},
    {FetchColumnTextAndValues, "FetchColumnTextAndValues", Link, false, 20},
    {StartGetStrings, "StartGetStrings", Cell, true, 21},
    {FetchStrings, "FetchStrings", Link, false, 22},
    {GetText, "GetText", Cell, false, 23},
    {GetValue, "GetValue", Cell, false, 24},
    {GetValues, "GetValues", Relay, false, 25},
    {GetSettingLimits, "GetSettingLimits", Cell, false, 26},
    {StartGetColumnSettingLimits, "StartGetColumnSettingLimits", Column, true, 27},
    {FetchColumnSettingLimits, "FetchColumnSettingLimits", Link, false, 28},
    {ChangeSetting, "ChangeSetting", Cell, false, 29},
    {ResetCell, "ResetCell", Cell, false, 30},
    {SetValue, "SetValue", Cell, false, 31},
    {SetBlockedValue, "SetBlockedValue", Cell, false, 34},
    {GetEvent, "GetEvent", Relay, false, 36},
    {TestAvailableDisturbanceRecord, "TestAvailableDisturbanceRecord", Relay, false, 37},
    {StartGetCompressDisturbanceRecord, "StartGetCompressDisturbanceRecord", Relay, true, 38},
    {FetchCompressDisturbanceRecord, "FetchCompressDisturbanceRecord", Link, false, 39},
    {StartGetDisturbanceRecordConfiguration, "StartGetDisturbanceRecordConfiguration", Relay, true, 40},
    {StartGetDisturbanceRecordValues, "StartGetDisturbanceRecordValues", Relay, true, 41},
    {FetchDisturbanceRecordValues, "FetchDisturbanceRecordValues", Link, false, 42},
    {SetRealTime, "SetRealTime", Relay, false, 43},
    {ChangeDeviceAddress, "ChangeDeviceAddress", Relay, false, 44},
    {SelectSettingGroup, "SelectSettingGroup", Relay, false, 47},
    {GetDeviceStatus, "GetDeviceStatus", Relay, false, 50},
    {Abort, "Abort", Link, false, 51},
    {FetchDisturbanceRecordConfiguration, "FetchDisturbanceRecordConfiguration", Link, false, 53},
    {ModemConnect, "ModemConnect", Link, true, 54},
    {ModemHangUp, "ModemHangUp", Link, false, 55},
}};

namespace {

template <class Member>
const SOperationRow* FindRow(Member SOperationRow::*member, Member wanted) {
    const auto* row = std::ranges::find(kOperationRows, wanted, member);
    return row == kOperationRows.end() ? nullptr : row;
}

} // namespace

const SOperationRow* FindOperation(std::string_view name) {
    return FindRow(&SOperationRow::name, name);
}

const SOperationRow* FindOperationInSlot(std::uint8_t slot) {
    return FindRow(&SOperationRow::slot, slot);
}

} // namespace ruvo
