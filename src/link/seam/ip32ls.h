// The comms server's interfaces, as the client sees them. They have two connectors: a loadable module
// called directly, and the out-of-process COM server.
#pragma once

#include "link/seam/variant.h"

#include <cstdint>

namespace ruvo {

/// Whether a call reached the server at all (the HRESULT of the COM interface). The status of the command
/// itself is the last output of every operation.
enum class [[nodiscard]] EComResult : std::uint8_t{Ok, Failed};

/// The events of the server, implemented by the client. The server calls them on any of its threads, or
/// inside an operation that is being called. Nothing may be thrown.
class IP32lsSink_v2 {
public:
    virtual ~IP32lsSink_v2() = default;

    virtual void OnProgress(const Variant& done, const Variant& total) noexcept = 0; // slot 7
    virtual void OnCommandComplete(const Variant& status) noexcept = 0;              // slot 8
    virtual void OnCommandCompleteAlt(const Variant& status) noexcept = 0;           // slot 9
    virtual void OnLineStatus(const Variant& status) noexcept = 0;                   // slot 10
    virtual void OnTransferProgress(const Variant& value) noexcept = 0;              // slot 11
};

/// The server's operations that the client calls, in the order of their slots (gaps are slots that the client
/// never calls). Inputs first, then outputs; the command's status is the last output (I4).
/// `address` is the device address (UI1), `cell` a cell address, column in the high byte (I2), `column` a
/// column number (UI1). A value is a tagged value [type code][length][data] as a byte array; a value list is
/// a list of those. Operations named Start... run on after they return: their results are fetched by the
/// operation Fetch... after the completion was reported to the sink.
class IP32ls {
public:
    using In = const Variant&;
    using Out = Variant&;

    virtual EComResult OpenPort(In port, In parameters, Out status) = 0; // slot 7
    virtual EComResult ClosePort(Out status) = 0;                        // slot 8
    virtual EComResult SetTransactionValues(In busyHoldoff, In busyCount, In resetResponse, In response,
                                            In tryCount, In transmitDelay, In globalTransmit,
                                            Out status) = 0;                               // slot 9
    virtual EComResult StartGetColumnHeadings(In address, Out status) = 0;                 // slot 13
    virtual EComResult FetchColumnHeadings(Out first, Out second, Out status) = 0;         // slot 14
    virtual EComResult StartGetColumnText(In address, In column, Out status) = 0;          // slot 15
    virtual EComResult FetchColumnText(Out first, Out second, Out status) = 0;             // slot 16
    virtual EComResult StartGetColumnValues(In address, In column, Out status) = 0;        // slot 17
    virtual EComResult FetchColumnValues(Out first, Out second, Out status) = 0;           // slot 18
    virtual EComResult StartGetColumnTextAndValues(In address, In column, Out status) = 0; // slot 19
    virtual EComResult FetchColumnTextAndValues(Out locations, Out texts, Out values,
                                                Out status) = 0;                                    // slot 20
    virtual EComResult StartGetStrings(In address, In cell, Out status) = 0;                        // slot 21
    virtual EComResult FetchStrings(Out strings, Out status) = 0;                                   // slot 22
    virtual EComResult GetText(In address, In cell, Out text, Out status) = 0;                      // slot 23
    virtual EComResult GetValue(In address, In cell, Out type, Out size, Out data, Out status) = 0; // slot 24
    virtual EComResult GetValues(In address, In cells, Out values, Out status) = 0;                 // slot 25
    virtual EComResult GetSettingLimits(In address, In cell, Out limits, Out status) = 0;           // slot 26
    virtual EComResult StartGetColumnSettingLimits(In address, In column, Out status) = 0;          // slot 27
    virtual EComResult FetchColumnSettingLimits(Out first, Out second, Out status) = 0;             // slot 28
    virtual EComResult ChangeSetting(In address, In cell, In value, Out status) = 0;                // slot 29
    virtual EComResult ResetCell(In address, In cell, Out status) = 0;                              // slot 30
    virtual EComResult SetValue(In address, In cell, In value, Out status) = 0;                     // slot 31
    virtual EComResult SetBlockedValue(In address, In cell, In bytes, Out status) = 0;              // slot 34
    virtual EComResult GetEvent(In address, Out kind, Out values, Out moreEvents, Out status) = 0;  // slot 36
    virtual EComResult TestAvailableDisturbanceRecord(In address, Out available, Out status) = 0;   // slot 37
    virtual EComResult StartGetCompressDisturbanceRecord(In address, In value, Out status) = 0;     // slot 38
    virtual EComResult FetchCompressDisturbanceRecord(Out values, Out status) = 0;                  // slot 39
    virtual EComResult StartGetDisturbanceRecordConfiguration(In address, In value,
                                                              Out status) = 0;              // slot 40
    virtual EComResult StartGetDisturbanceRecordValues(In address, Out status) = 0;         // slot 41
    virtual EComResult FetchDisturbanceRecordValues(Out first, Out second, Out status) = 0; // slot 42
    virtual EComResult SetRealTime(In address, In time, Out status) = 0;                    // slot 43
    virtual EComResult ChangeDeviceAddress(In address, In newAddress, In serialNumber,
                                           Out status) = 0;                         // slot 44
    virtual EComResult SelectSettingGroup(In address, In group, Out status) = 0;    // slot 47
    virtual EComResult GetDeviceStatus(In address, Out statusByte, Out status) = 0; // slot 50
    virtual EComResult Abort(Out status) = 0;                                       // slot 51
    virtual EComResult FetchDisturbanceRecordConfiguration(Out first, Out second, Out third, Out fourth,
                                                           Out status) = 0; // slot 53
    virtual EComResult ModemConnect(In modemName, In lineAddress, In countryCode, In areaCode,
                                    In numberToDial, In useCountryAndAreaCodes, Out status) = 0; // slot 54
    virtual EComResult ModemHangUp(Out status) = 0;                                              // slot 55

protected:
    ~IP32ls() = default; // the connection owns the server, which is never deleted through this interface
};

} // namespace ruvo
