// The server's operations by name and by slot: who speaks of a call, and does not make it, knows it by these.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace ruvo {

enum class EOperation : std::uint8_t {
    OpenPort,
    ClosePort,
    SetTransactionValues,
    StartGetColumnHeadings,
    FetchColumnHeadings,
    StartGetColumnText,
    FetchColumnText,
    StartGetColumnValues,
    FetchColumnValues,
    StartGetColumnTextAndValues,
    FetchColumnTextAndValues,
    StartGetStrings,
    FetchStrings,
    GetText,
    GetValue,
    GetValues,
    GetSettingLimits,
    StartGetColumnSettingLimits,
    FetchColumnSettingLimits,
    ChangeSetting,
    ResetCell,
    SetValue,
    SetBlockedValue,
    GetEvent,
    TestAvailableDisturbanceRecord,
    StartGetCompressDisturbanceRecord,
    FetchCompressDisturbanceRecord,
    StartGetDisturbanceRecordConfiguration,
    StartGetDisturbanceRecordValues,
    FetchDisturbanceRecordValues,
    SetRealTime,
    ChangeDeviceAddress,
    SelectSettingGroup,
    GetDeviceStatus,
    Abort,
    FetchDisturbanceRecordConfiguration,
    ModemConnect,
    ModemHangUp,
    Last = ModemHangUp
};

/// What an operation is aimed at; a cell or a column is always one of a relay.
enum class ETarget : std::uint8_t { Link, Relay, Cell, Column };

struct SOperationRow {
    EOperation operation;
    std::string_view name;
    ETarget target;
    bool runsOn;       ///< goes on after its call has returned, and ends with a notification of the sink
    std::uint8_t slot; ///< of the interface's table
};

/// One row per operation, in order.
extern const std::array<SOperationRow, static_cast<std::size_t>(EOperation::Last) + 1> kOperationRows;

inline const SOperationRow& OperationRow(EOperation operation) {
    return kOperationRows[static_cast<std::size_t>(operation)];
}

/// The row of that name, or of that slot, or null.
const SOperationRow* FindOperation(std::string_view name);
const SOperationRow* FindOperationInSlot(std::uint8_t slot);

} // namespace ruvo
