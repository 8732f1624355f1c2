// The compiler's check that every operation is in its slot: a wrong vtable would call something else.
#define CINTERFACE // the interfaces as tables of functions, whose offsets can be asked for
#include "link/windows/com_headers.h"

#include <cstddef>

namespace {

constexpr std::size_t kSlot = sizeof(void*);

static_assert(offsetof(IP32lsVtbl, OpenPort) == 7 * kSlot);
static_assert(offsetof(IP32lsVtbl, ClosePort) == 8 * kSlot);
static_assert(offsetof(IP32lsVtbl, SetTransactionValues) == 9 * kSlot);
static_assert(offsetof(IP32lsVtbl, Unused10) == 10 * kSlot);
static_assert(offsetof(IP32lsVtbl, Unused11) == 11 * kSlot);
static_assert(offsetof(IP32lsVtbl, Unused12) == 12 * kSlot);
static_assert(offsetof(IP32lsVtbl, StartGetColumnHeadings) == 13 * kSlot);
static_assert(offsetof(IP32lsVtbl, FetchColumnHeadings) == 14 * kSlot);
static_assert(offsetof(IP32lsVtbl, StartGetColumnText) == 15 * kSlot);
static_assert(offsetof(IP32lsVtbl, FetchColumnText) == 16 * kSlot);
static_assert(offsetof(IP32lsVtbl, StartGetColumnValues) == 17 * kSlot);
static_assert(offsetof(IP32lsVtbl, FetchColumnValues) == 18 * kSlot);
static_assert(offsetof(IP32lsVtbl, StartGetColumnTextAndValues) == 19 * kSlot);
static_assert(offsetof(IP32lsVtbl, FetchColumnTextAndValues) == 20 * kSlot);
static_assert(offsetof(IP32lsVtbl, StartGetStrings) == 21 * kSlot);
static_assert(offsetof(IP32lsVtbl, FetchStrings) == 22 * kSlot);
static_assert(offsetof(IP32lsVtbl, GetText) == 23 * kSlot);
static_assert(offsetof(IP32lsVtbl, GetValue) == 24 * kSlot);
static_assert(offsetof(IP32lsVtbl, GetValues) == 25 * kSlot);
static_assert(offsetof(IP32lsVtbl, GetSettingLimits) == 26 * kSlot);
static_assert(offsetof(IP32lsVtbl, StartGetColumnSettingLimits) == 27 * kSlot);
static_assert(offsetof(IP32lsVtbl, FetchColumnSettingLimits) == 28 * kSlot);
static_assert(offsetof(IP32lsVtbl, ChangeSetting) == 29 * kSlot);
static_assert(offsetof(IP32lsVtbl, ResetCell) == 30 * kSlot);
static_assert(offsetof(IP32lsVtbl, SetValue) == 31 * kSlot);
static_assert(offsetof(IP32lsVtbl, Unused32) == 32 * kSlot);
static_assert(offsetof(IP32lsVtbl, Unused33) == 33 * kSlot);
static_assert(offsetof(IP32lsVtbl, SetBlockedValue) == 34 * kSlot);
static_assert(offsetof(IP32lsVtbl, Unused35) == 35 * kSlot);
static_assert(offsetof(IP32lsVtbl, GetEvent) == 36 * kSlot);
static_assert(offsetof(IP32lsVtbl, TestAvailableDisturbanceRecord) == 37 * kSlot);
static_assert(offsetof(IP32lsVtbl, StartGetCompressDisturbanceRecord) == 38 * kSlot);
static_assert(offsetof(IP32lsVtbl, FetchCompressDisturbanceRecord) == 39 * kSlot);
static_assert(offsetof(IP32lsVtbl, StartGetDisturbanceRecordConfiguration) == 40 * kSlot);
static_assert(offsetof(IP32lsVtbl, StartGetDisturbanceRecordValues) == 41 * kSlot);
static_assert(offsetof(IP32lsVtbl, FetchDisturbanceRecordValues) == 42 * kSlot);
static_assert(offsetof(IP32lsVtbl, SetRealTime) == 43 * kSlot);
static_assert(offsetof(IP32lsVtbl, ChangeDeviceAddress) == 44 * kSlot);
static_assert(offsetof(IP32lsVtbl, Unused45) == 45 * kSlot);
static_assert(offsetof(IP32lsVtbl, Unused46) == 46 * kSlot);
static_assert(offsetof(IP32lsVtbl, SelectSettingGroup) == 47 * kSlot);
static_assert(offsetof(IP32lsVtbl, Unused48) == 48 * kSlot);
static_assert(offsetof(IP32lsVtbl, Unused49) == 49 * kSlot);
static_assert(offsetof(IP32lsVtbl, GetDeviceStatus) == 50 * kSlot);
static_assert(offsetof(IP32lsVtbl, Abort) == 51 * kSlot);
static_assert(offsetof(IP32lsVtbl, Unused52) == 52 * kSlot);
static_assert(offsetof(IP32lsVtbl, FetchDisturbanceRecordConfiguration) == 53 * kSlot);
static_assert(offsetof(IP32lsVtbl, ModemConnect) == 54 * kSlot);
static_assert(offsetof(IP32lsVtbl, ModemHangUp) == 55 * kSlot);
static_assert(offsetof(IP32lsVtbl, Unused56) == 56 * kSlot);
static_assert(offsetof(IP32lsSink_v2Vtbl, OnProgress) == 7 * kSlot);
static_assert(offsetof(IP32lsSink_v2Vtbl, OnCommandComplete) == 8 * kSlot);
static_assert(offsetof(IP32lsSink_v2Vtbl, OnCommandCompleteAlt) == 9 * kSlot);
static_assert(offsetof(IP32lsSink_v2Vtbl, OnLineStatus) == 10 * kSlot);
static_assert(offsetof(IP32lsSink_v2Vtbl, OnTransferProgress) == 11 * kSlot);
static_assert(sizeof(IP32lsVtbl) == 57 * kSlot);
static_assert(sizeof(IP32lsSink_v2Vtbl) == 12 * kSlot);

} // namespace
