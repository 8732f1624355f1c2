// The comms server's operations, called through COM.
#pragma once

#include "link/seam/ip32ls.h"
#include "link/windows/server_watch.h"
#include "link/windows/variant_conversion.h"

#include <tuple>

namespace ruvo {

/// An argument on its way through COM: converted, handed over, and given back.
template <class Native>
class CComArgument;

/// An input. It may be a password, so what was sent does not stay in memory.
template <>
class CComArgument<VARIANT> {
public:
    using Ours = const Variant&;
    explicit CComArgument(Ours value) { ToVariant(value, m_native); }
    CComArgument(const CComArgument&) = delete;
    CComArgument& operator=(const CComArgument&) = delete;
    ~CComArgument() { WipeArray(m_native.Get()); }
    VARIANT Pass() { return m_native.Get(); } // by value, yet it stays ours
    void Read() {}

private:
    COwnedVariant m_native;
};

/// An output.
template <>
class CComArgument<VARIANT*> {
public:
    using Ours = Variant&;
    explicit CComArgument(Ours value) : m_value(value) {}
    VARIANT* Pass() { return m_native.Receive(); }
    void Read() { m_value = FromVariant(m_native.Get()); }

private:
    COwnedVariant m_native;
    Variant& m_value;
};

/// Every operation is one call of Call or, when it runs on after it has returned, of Start.
class CComServer final : public IP32ls {
public:
    /// `commandLost` is called, on another thread, when the server has died during a started command.
    CComServer(CComPointer<::IP32ls> server, std::function<void()> commandLost)
        : m_server(std::move(server)), m_watch(m_server, std::move(commandLost)) {}

    /// Called on the completion of a started command, before the client is.
    void CommandEnded() { m_watch.CommandEnded(); }

    EComResult OpenPort(In port, In parameters, Out status) override {
        return Call(&Com::OpenPort, port, parameters, status);
    }
    EComResult ClosePort(Out status) override { return Call(&Com::ClosePort, status); }
    EComResult SetTransactionValues(In busyHoldoff, In busyCount, In resetResponse, In response, In tryCount,
                                    In transmitDelay, In globalTransmit, Out status) override {
        return Call(&Com::SetTransactionValues, busyHoldoff, busyCount, resetResponse, response, tryCount,
                    transmitDelay, globalTransmit, status);
    }
    EComResult StartGetColumnHeadings(In address, Out status) override {
        return Start(&Com::StartGetColumnHeadings, address, status);
    }
    EComResult FetchColumnHeadings(Out first, Out second, Out status) override {
        return Call(&Com::FetchColumnHeadings, first, second, status);
    }
    EComResult StartGetColumnText(In address, In column, Out status) override {
        return Start(&Com::StartGetColumnText, address, column, status);
    }
    EComResult FetchColumnText(Out first, Out second, Out status) override {
        return Call(&Com::FetchColumnText, first, second, status);
    }
    EComResult StartGetColumnValues(In address, In column, Out status) override {
        return Start(&Com::StartGetColumnValues, address, column, status);
    }
    EComResult FetchColumnValues(Out first, Out second, Out status) override {
        return Call(&Com::FetchColumnValues, first, second, status);
    }
    EComResult StartGetColumnTextAndValues(In address, In column, Out status) override {
        return Start(&Com::StartGetColumnTextAndValues, address, column, status);
    }
    EComResult FetchColumnTextAndValues(Out locations, Out texts, Out values, Out status) override {
        return Call(&Com::FetchColumnTextAndValues, locations, texts, values, status);
    }
    EComResult StartGetStrings(In address, In cell, Out status) override {
        return Start(&Com::StartGetStrings, address, cell, status);
    }
    EComResult FetchStrings(Out strings, Out status) override {
        return Call(&Com::FetchStrings, strings, status);
    }
    EComResult GetText(In address, In cell, Out text, Out status) override {
        return Call(&Com::GetText, address, cell, text, status);
    }
    EComResult GetValue(In address, In cell, Out type, Out size, Out data, Out status) override {
        return Call(&Com::GetValue, address, cell, type, size, data, status);
    }
    EComResult GetValues(In address, In cells, Out values, Out status) override {
        return Call(&Com::GetValues, address, cells, values, status);
    }
    EComResult GetSettingLimits(In address, In cell, Out limits, Out status) override {
        return Call(&Com::GetSettingLimits, address, cell, limits, status);
    }
    EComResult StartGetColumnSettingLimits(In address, In column, Out status) override {
        return Start(&Com::StartGetColumnSettingLimits, address, column, status);
    }
    EComResult FetchColumnSettingLimits(Out first, Out second, Out status) override {
        return Call(&Com::FetchColumnSettingLimits, first, second, status);
    }
    EComResult ChangeSetting(In address, In cell, In value, Out status) override {
        return Call(&Com::ChangeSetting, address, cell, value, status);
    }
    EComResult ResetCell(In address, In cell, Out status) override {
        return Call(&Com::ResetCell, address, cell, status);
    }
    EComResult SetValue(In address, In cell, In value, Out status) override {
        return Call(&Com::SetValue, address, cell, value, status);
    }
    EComResult SetBlockedValue(In address, In cell, In bytes, Out status) override {
        return Call(&Com::SetBlockedValue, address, cell, bytes, status);
    }
    EComResult GetEvent(In address, Out kind, Out values, Out moreEvents, Out status) override {
        return Call(&Com::GetEvent, address, kind, values, moreEvents, status);
    }
    EComResult TestAvailableDisturbanceRecord(In address, Out available, Out status) override {
        return Call(&Com::TestAvailableDisturbanceRecord, address, available, status);
    }
    EComResult StartGetCompressDisturbanceRecord(In address, In value, Out status) override {
        return Start(&Com::StartGetCompressDisturbanceRecord, address, value, status);
    }
    EComResult FetchCompressDisturbanceRecord(Out values, Out status) override {
        return Call(&Com::FetchCompressDisturbanceRecord, values, status);
    }
    EComResult StartGetDisturbanceRecordConfiguration(In address, In value, Out status) override {
        return Start(&Com::StartGetDisturbanceRecordConfiguration, address, value, status);
    }
    EComResult StartGetDisturbanceRecordValues(In address, Out status) override {
        return Start(&Com::StartGetDisturbanceRecordValues, address, status);
    }
    EComResult FetchDisturbanceRecordValues(Out first, Out second, Out status) override {
        return Call(&Com::FetchDisturbanceRecordValues, first, second, status);
    }
    EComResult SetRealTime(In address, In time, Out status) override {
        return Call(&Com::SetRealTime, address, time, status);
    }
    EComResult ChangeDeviceAddress(In address, In newAddress, In serialNumber, Out status) override {
        return Call(&Com::ChangeDeviceAddress, address, newAddress, serialNumber, status);
    }
    EComResult SelectSettingGroup(In address, In group, Out status) override {
        return Call(&Com::SelectSettingGroup, address, group, status);
    }
    EComResult GetDeviceStatus(In address, Out statusByte, Out status) override {
        return Call(&Com::GetDeviceStatus, address, statusByte, status);
    }
    EComResult Abort(Out status) override { return Call(&Com::Abort, status); }
    EComResult FetchDisturbanceRecordConfiguration(Out first, Out second, Out third, Out fourth,
                                                   Out status) override {
        return Call(&Com::FetchDisturbanceRecordConfiguration, first, second, third, fourth, status);
    }
    EComResult ModemConnect(In modemName, In lineAddress, In countryCode, In areaCode, In numberToDial,
                            In useCountryAndAreaCodes, Out status) override {
        return Start(&Com::ModemConnect, modemName, lineAddress, countryCode, areaCode, numberToDial,
                     useCountryAndAreaCodes, status);
    }
    EComResult ModemHangUp(Out status) override { return Call(&Com::ModemHangUp, status); }

private:
    using Com = ::IP32ls;
    template <class... Native>
    using Operation = HRESULT (STDMETHODCALLTYPE Com::*)(Native...);

    template <class... Native>
    EComResult Call(Operation<Native...> operation, typename CComArgument<Native>::Ours... values) {
        std::tuple<CComArgument<Native>...> arguments(values...);
        const auto call = [&](auto&... each) { return (m_server.Get()->*operation)(each.Pass()...); };
        if (FAILED(std::apply(call, arguments))) {
            return EComResult::Failed;
        }
        std::apply([](auto&... each) { (each.Read(), ...); }, arguments);
        return EComResult::Ok;
    }

    /// The completion may come before the call has returned, so the watch begins before it.
    template <class... Native>
    EComResult Start(Operation<Native...> operation, typename CComArgument<Native>::Ours... values) {
        m_watch.CommandStarts();
        const EComResult result = Call(operation, values...);
        std::int32_t status = 0;
        if (result != EComResult::Ok || !std::get<sizeof...(values) - 1>(std::tie(values...)).ToI4(status) ||
            status != 0) {
            m_watch.CommandEnded();
        }
        return result;
    }

    CComPointer<Com> m_server;
    CServerWatch m_watch;
};

} // namespace ruvo
