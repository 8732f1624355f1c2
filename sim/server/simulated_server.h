// The simulated comms server: every operation of the interface, answered from a substation.
#pragma once

#include "link/seam/ip32ls.h"
#include "sim/server/server_core.h"

namespace ruvo::sim {

/// Safe for use by several threads.
class CSimulatedServer final : public IP32ls {
public:
    /// Borrows the core.
    explicit CSimulatedServer(CServerCore& core) : m_core(core) {}
    virtual ~CSimulatedServer() = default;

    EComResult OpenPort(In port, In parameters, Out status) override;
    EComResult ClosePort(Out status) override;
    EComResult SetTransactionValues(In busyHoldoff, In busyCount, In resetResponse, In response, In tryCount,
                                    In transmitDelay, In globalTransmit, Out status) override;
    EComResult StartGetColumnHeadings(In address, Out status) override;
    EComResult FetchColumnHeadings(Out first, Out second, Out status) override;
    EComResult StartGetColumnText(In address, In column, Out status) override;
    EComResult FetchColumnText(Out first, Out second, Out status) override;
    EComResult StartGetColumnValues(In address, In column, Out status) override;
    EComResult FetchColumnValues(Out first, Out second, Out status) override;
    EComResult StartGetColumnTextAndValues(In address, In column, Out status) override;
    EComResult FetchColumnTextAndValues(Out locations, Out texts, Out values, Out status) override;
    EComResult StartGetStrings(In address, In cell, Out status) override;
    EComResult FetchStrings(Out strings, Out status) override;
    EComResult GetText(In address, In cell, Out text, Out status) override;
    EComResult GetValue(In address, In cell, Out type, Out size, Out data, Out status) override;
    EComResult GetValues(In address, In cells, Out values, Out status) override;
    EComResult GetSettingLimits(In address, In cell, Out limits, Out status) override;
    EComResult StartGetColumnSettingLimits(In address, In column, Out status) override;
    EComResult FetchColumnSettingLimits(Out first, Out second, Out status) override;
    EComResult ChangeSetting(In address, In cell, In value, Out status) override;
    EComResult ResetCell(In address, In cell, Out status) override;
    EComResult SetValue(In address, In cell, In value, Out status) override;
    EComResult SetBlockedValue(In address, In cell, In bytes, Out status) override;
    EComResult GetEvent(In address, Out kind, Out values, Out moreEvents, Out status) override;
    EComResult TestAvailableDisturbanceRecord(In address, Out available, Out status) override;
    EComResult StartGetCompressDisturbanceRecord(In address, In value, Out status) override;
    EComResult FetchCompressDisturbanceRecord(Out values, Out status) override;
    EComResult StartGetDisturbanceRecordConfiguration(In address, In value, Out status) override;
    EComResult StartGetDisturbanceRecordValues(In address, Out status) override;
    EComResult FetchDisturbanceRecordValues(Out first, Out second, Out status) override;
    EComResult SetRealTime(In address, In time, Out status) override;
    EComResult ChangeDeviceAddress(In address, In newAddress, In serialNumber, Out status) override;
    EComResult SelectSettingGroup(In address, In group, Out status) override;
    EComResult GetDeviceStatus(In address, Out statusByte, Out status) override;
    EComResult Abort(Out status) override;
    EComResult FetchDisturbanceRecordConfiguration(Out first, Out second, Out third, Out fourth,
                                                   Out status) override;
    EComResult ModemConnect(In modemName, In lineAddress, In countryCode, In areaCode, In numberToDial,
                            In useCountryAndAreaCodes, Out status) override;
    EComResult ModemHangUp(Out status) override;

private:
    EComResult Fetch(EOperation fetch, EOperation start, const CServerCore::Outputs& outputs, Out status);
    EComResult StartColumn(EOperation start, In address, In column, CSimulatedRelay::EListing listing,
                           Out status);
    EComResult Write(EOperation operation, In address, In cell, In value, Out status);
    EComResult RefuseByRelay(const SCall& call, LinkStatus refusal, Out status);

    CServerCore& m_core;
};

} // namespace ruvo::sim
