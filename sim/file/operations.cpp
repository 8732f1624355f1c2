#include "sim/file/operations.h"

#include <algorithm>

namespace ruvo::sim {

using enum EOperation;
using enum ETarget;

const std::array<SOperationRow, static_cast<std::size_t>(EOperation::Last) + 1> kOperationRows{{
    {OpenPort, "OpenPort", Link, false},
    {ClosePort, "ClosePort", Link, false},
    {SetTransactionValues, "SetTransactionValues", Link, false},
    {StartGetColumnHeadings, "StartGetColumnHeadings", Relay, true},
    {FetchColumnHeadings, "FetchColumnHeadings", Link, false},
    {StartGetColumnText, "StartGetColumnText", Column, true},
    {FetchColumnText, "FetchColumnText", Link, false},
    {StartGetColumnValues, "StartGetColumnValues", Column, true},
    {FetchColumnValues, "FetchColumnValues", Link, false},
    {StartGetColumnTextAndValues, "StartGetColumnTextAndValues", Column, true},
    {FetchColumnTextAndValues, "FetchColumnTextAndValues", Link, false},
    {StartGetStrings, "StartGetStrings", Cell, true},
    {FetchStrings, "FetchStrings", Link, false},
    {GetText, "GetText", Cell, false},
    {GetValue, "GetValue", Cell, false},
    {GetValues, "GetValues", Relay, false},
    {GetSettingLimits, "GetSettingLimits", Cell, false},
    {StartGetColumnSettingLimits, "StartGetColumnSettingLimits", Column, true},
    {FetchColumnSettingLimits, "FetchColumnSettingLimits", Link, false},
    {ChangeSetting, "ChangeSetting", Cell, false},
    {ResetCell, "ResetCell", Cell, false},
    {SetValue, "SetValue", Cell, false},
    {SetBlockedValue, "SetBlockedValue", Cell, false},
    {GetEvent, "GetEvent", Relay, false},
    {TestAvailableDisturbanceRecord, "TestAvailableDisturbanceRecord", Relay, false},
    {StartGetCompressDisturbanceRecord, "StartGetCompressDisturbanceRecord", Relay, true},
    {FetchCompressDisturbanceRecord, "FetchCompressDisturbanceRecord", Link, false},
    {StartGetDisturbanceRecordConfiguration, "StartGetDisturbanceRecordConfiguration", Relay, true},
    {StartGetDisturbanceRecordValues, "StartGetDisturbanceRecordValues", Relay, true},
    {FetchDisturbanceRecordValues, "FetchDisturbanceRecordValues", Link, false},
    {SetRealTime, "SetRealTime", Relay, false},
    {ChangeDeviceAddress, "ChangeDeviceAddress", Relay, false},
    {SelectSettingGroup, "SelectSettingGroup", Relay, false},
    {GetDeviceStatus, "GetDeviceStatus", Relay, false},
    {Abort, "Abort", Link, false},
    {FetchDisturbanceRecordConfiguration, "FetchDisturbanceRecordConfiguration", Link, false},
    {ModemConnect, "ModemConnect", Link, true},
    {ModemHangUp, "ModemHangUp", Link, false},
}};

const SOperationRow* FindOperation(std::string_view name) {
    const auto* row = std::find_if(kOperationRows.begin(), kOperationRows.end(),
                                   [name](const SOperationRow& candidate) { return candidate.name == name; });
    return row == kOperationRows.end() ? nullptr : &*row;
}

} // namespace ruvo::sim
