// The server's COM object: the simulated server with a COM interface.
#pragma once

#include "link/windows/dual_interface.h"
#include "link/windows/variant_conversion.h"
#include "sim/server/served_connection.h"
#include "sim/windows/server_lifetime.h"
#include "sim/windows/sink_fan_out.h"

#include <memory>
#include <new>
#include <tuple>

namespace ruvo::sim {

/// The one connection point of an object, which it lives and dies with.
class CSinkPoint final : public IConnectionPoint {
public:
    /// Borrows both.
    CSinkPoint(IConnectionPointContainer& owner, CSinkFanOut& sinks) : m_owner(owner), m_sinks(sinks) {}

    STDMETHODIMP QueryInterface(REFIID id, void** result) override;
    STDMETHODIMP_(ULONG) AddRef() override { return m_owner.AddRef(); }
    STDMETHODIMP_(ULONG) Release() override { return m_owner.Release(); }
    STDMETHODIMP GetConnectionInterface(IID* id) override;
    STDMETHODIMP GetConnectionPointContainer(IConnectionPointContainer** container) override;
    STDMETHODIMP Advise(IUnknown* sink, DWORD* cookie) override;
    STDMETHODIMP Unadvise(DWORD cookie) override;
    STDMETHODIMP EnumConnections(IEnumConnections** /*connections*/) override { return E_NOTIMPL; }

private:
    IConnectionPointContainer& m_owner;
    CSinkFanOut& m_sinks;
};

template <class T>
struct SReceived {
    T native;
    UINT codePage; ///< of the texts in here
};

/// An argument as the client passes it: an input is converted, an output is kept until all can be delivered.
template <class Ours>
class CReceivedArgument;

template <>
class CReceivedArgument<const Variant&> {
public:
    using Native = VARIANT;
    explicit CReceivedArgument(const SReceived<VARIANT>& received)
        : m_value(FromVariant(received.native, received.codePage)) {}
    const Variant& Pass() { return m_value; }
    void Convert() {}
    void Deliver() {}

private:
    Variant m_value;
};

template <>
class CReceivedArgument<Variant&> {
public:
    using Native = VARIANT*;
    explicit CReceivedArgument(const SReceived<VARIANT*>& received)
        : m_target(received.native), m_codePage(received.codePage) {}
    Variant& Pass() { return m_value; }
    void Convert() { ToVariant(m_value, m_native, m_codePage); }
    void Deliver() { *m_target = m_native.Release(); }

private:
    VARIANT* m_target;
    UINT m_codePage;
    Variant m_value;
    COwnedVariant m_native;
};

/// Serves one client, with a substation or a playback of its own. Every operation is one call of Answer.
class CServerObject final : public CDualInterface<::IP32ls>, public IConnectionPointContainer {
public:
    using Ours = ruvo::IP32ls; // the plain name is the COM interface's here

    CServerObject(SServed served, CComPointer<ITypeInfo> description);

    STDMETHODIMP QueryInterface(REFIID id, void** result) override;
    STDMETHODIMP_(ULONG) AddRef() override { return CDualInterface::AddRef(); }
    STDMETHODIMP_(ULONG) Release() override { return CDualInterface::Release(); }
    STDMETHODIMP EnumConnectionPoints(IEnumConnectionPoints** /*points*/) override { return E_NOTIMPL; }
    STDMETHODIMP FindConnectionPoint(REFIID id, IConnectionPoint** point) override;

    STDMETHODIMP OpenPort(VARIANT port, VARIANT params, VARIANT* status) override {
        return Answer(&Ours::OpenPort, port, params, status);
    }
    STDMETHODIMP ClosePort(VARIANT* status) override { return Answer(&Ours::ClosePort, status); }
    STDMETHODIMP SetTransactionValues(VARIANT busyHoldoff, VARIANT busyCount, VARIANT resetResponse,
                                      VARIANT response, VARIANT tryCount, VARIANT transmitDelay,
                                      VARIANT globalTransmit, VARIANT* status) override {
        return Answer(&Ours::SetTransactionValues, busyHoldoff, busyCount, resetResponse, response, tryCount,
                      transmitDelay, globalTransmit, status);
    }
    STDMETHODIMP Unused10(VARIANT a, VARIANT b, VARIANT c, VARIANT* r, VARIANT* status) override {
        return NotImplemented(a, b, c, r, status);
    }
    STDMETHODIMP Unused11(VARIANT* r, VARIANT* status) override { return NotImplemented(r, status); }
    STDMETHODIMP Unused12(VARIANT a, VARIANT* status) override { return NotImplemented(a, status); }
    STDMETHODIMP StartGetColumnHeadings(VARIANT address, VARIANT* status) override {
        return Answer(&Ours::StartGetColumnHeadings, address, status);
    }
    STDMETHODIMP FetchColumnHeadings(VARIANT* list1, VARIANT* list2, VARIANT* status) override {
        return Answer(&Ours::FetchColumnHeadings, list1, list2, status);
    }
    STDMETHODIMP StartGetColumnText(VARIANT address, VARIANT column, VARIANT* status) override {
        return Answer(&Ours::StartGetColumnText, address, column, status);
    }
    STDMETHODIMP FetchColumnText(VARIANT* list1, VARIANT* list2, VARIANT* status) override {
        return Answer(&Ours::FetchColumnText, list1, list2, status);
    }
    STDMETHODIMP StartGetColumnValues(VARIANT address, VARIANT column, VARIANT* status) override {
        return Answer(&Ours::StartGetColumnValues, address, column, status);
    }
    STDMETHODIMP FetchColumnValues(VARIANT* list1, VARIANT* list2, VARIANT* status) override {
        return Answer(&Ours::FetchColumnValues, list1, list2, status);
    }
    STDMETHODIMP StartGetColumnTextAndValues(VARIANT address, VARIANT column, VARIANT* status) override {
        return Answer(&Ours::StartGetColumnTextAndValues, address, column, status);
    }
    STDMETHODIMP FetchColumnTextAndValues(VARIANT* list1, VARIANT* list2, VARIANT* list3,
                                          VARIANT* status) override {
        return Answer(&Ours::FetchColumnTextAndValues, list1, list2, list3, status);
    }
    STDMETHODIMP StartGetStrings(VARIANT address, VARIANT cell, VARIANT* status) override {
        return Answer(&Ours::StartGetStrings, address, cell, status);
    }
    STDMETHODIMP FetchStrings(VARIANT* list, VARIANT* status) override {
        return Answer(&Ours::FetchStrings, list, status);
    }
    STDMETHODIMP GetText(VARIANT address, VARIANT cell, VARIANT* text, VARIANT* status) override {
        return Answer(&Ours::GetText, address, cell, text, status);
    }
    STDMETHODIMP GetValue(VARIANT address, VARIANT cell, VARIANT* type, VARIANT* size, VARIANT* data,
                          VARIANT* status) override {
        return Answer(&Ours::GetValue, address, cell, type, size, data, status);
    }
    STDMETHODIMP GetValues(VARIANT address, VARIANT cells, VARIANT* list, VARIANT* status) override {
        return Answer(&Ours::GetValues, address, cells, list, status);
    }
    STDMETHODIMP GetSettingLimits(VARIANT address, VARIANT cell, VARIANT* list, VARIANT* status) override {
        return Answer(&Ours::GetSettingLimits, address, cell, list, status);
    }
    STDMETHODIMP StartGetColumnSettingLimits(VARIANT address, VARIANT column, VARIANT* status) override {
        return Answer(&Ours::StartGetColumnSettingLimits, address, column, status);
    }
    STDMETHODIMP FetchColumnSettingLimits(VARIANT* list1, VARIANT* list2, VARIANT* status) override {
        return Answer(&Ours::FetchColumnSettingLimits, list1, list2, status);
    }
    STDMETHODIMP ChangeSetting(VARIANT address, VARIANT cell, VARIANT value, VARIANT* status) override {
        return Answer(&Ours::ChangeSetting, address, cell, value, status);
    }
    STDMETHODIMP ResetCell(VARIANT address, VARIANT cell, VARIANT* status) override {
        return Answer(&Ours::ResetCell, address, cell, status);
    }
    STDMETHODIMP SetValue(VARIANT address, VARIANT cell, VARIANT value, VARIANT* status) override {
        return Answer(&Ours::SetValue, address, cell, value, status);
    }
    STDMETHODIMP Unused32(VARIANT a, VARIANT b, VARIANT c, VARIANT* status) override {
        return NotImplemented(a, b, c, status);
    }
    STDMETHODIMP Unused33(VARIANT* r, VARIANT* status) override { return NotImplemented(r, status); }
    STDMETHODIMP SetBlockedValue(VARIANT address, VARIANT cell, VARIANT bytes, VARIANT* status) override {
        return Answer(&Ours::SetBlockedValue, address, cell, bytes, status);
    }
    STDMETHODIMP Unused35(VARIANT* status) override { return NotImplemented(status); }
    STDMETHODIMP GetEvent(VARIANT address, VARIANT* kind, VARIANT* values, VARIANT* moreEvents,
                          VARIANT* status) override {
        return Answer(&Ours::GetEvent, address, kind, values, moreEvents, status);
    }
    STDMETHODIMP TestAvailableDisturbanceRecord(VARIANT address, VARIANT* available,
                                                VARIANT* status) override {
        return Answer(&Ours::TestAvailableDisturbanceRecord, address, available, status);
    }
    STDMETHODIMP StartGetCompressDisturbanceRecord(VARIANT address, VARIANT value, VARIANT* status) override {
        return Answer(&Ours::StartGetCompressDisturbanceRecord, address, value, status);
    }
    STDMETHODIMP FetchCompressDisturbanceRecord(VARIANT* list, VARIANT* status) override {
        return Answer(&Ours::FetchCompressDisturbanceRecord, list, status);
    }
    STDMETHODIMP StartGetDisturbanceRecordConfiguration(VARIANT address, VARIANT value,
                                                        VARIANT* status) override {
        return Answer(&Ours::StartGetDisturbanceRecordConfiguration, address, value, status);
    }
    STDMETHODIMP StartGetDisturbanceRecordValues(VARIANT address, VARIANT* status) override {
        return Answer(&Ours::StartGetDisturbanceRecordValues, address, status);
    }
    STDMETHODIMP FetchDisturbanceRecordValues(VARIANT* list1, VARIANT* list2, VARIANT* status) override {
        return Answer(&Ours::FetchDisturbanceRecordValues, list1, list2, status);
    }
    STDMETHODIMP SetRealTime(VARIANT address, VARIANT time, VARIANT* status) override {
        return Answer(&Ours::SetRealTime, address, time, status);
    }
    STDMETHODIMP ChangeDeviceAddress(VARIANT address, VARIANT newAddress, VARIANT serialNumber,
                                     VARIANT* status) override {
        return Answer(&Ours::ChangeDeviceAddress, address, newAddress, serialNumber, status);
    }
    STDMETHODIMP Unused45(VARIANT* status) override { return NotImplemented(status); }
    STDMETHODIMP Unused46(VARIANT* status) override { return NotImplemented(status); }
    STDMETHODIMP SelectSettingGroup(VARIANT address, VARIANT group, VARIANT* status) override {
        return Answer(&Ours::SelectSettingGroup, address, group, status);
    }
    STDMETHODIMP Unused48(VARIANT a, VARIANT b, VARIANT* status) override {
        return NotImplemented(a, b, status);
    }
    STDMETHODIMP Unused49(VARIANT* r, VARIANT* status) override { return NotImplemented(r, status); }
    STDMETHODIMP GetDeviceStatus(VARIANT address, VARIANT* deviceStatus, VARIANT* status) override {
        return Answer(&Ours::GetDeviceStatus, address, deviceStatus, status);
    }
    STDMETHODIMP Abort(VARIANT* status) override { return Answer(&Ours::Abort, status); }
    STDMETHODIMP Unused52(VARIANT* r, VARIANT* status) override { return NotImplemented(r, status); }
    STDMETHODIMP FetchDisturbanceRecordConfiguration(VARIANT* list1, VARIANT* list2, VARIANT* list3,
                                                     VARIANT* list4, VARIANT* status) override {
        return Answer(&Ours::FetchDisturbanceRecordConfiguration, list1, list2, list3, list4, status);
    }
    STDMETHODIMP ModemConnect(VARIANT modem, VARIANT lineAddress, VARIANT countryCode, VARIANT areaCode,
                              VARIANT number, VARIANT useCodes, VARIANT* status) override {
        return Answer(&Ours::ModemConnect, modem, lineAddress, countryCode, areaCode, number, useCodes,
                      status);
    }
    STDMETHODIMP ModemHangUp(VARIANT* status) override { return Answer(&Ours::ModemHangUp, status); }
    STDMETHODIMP Unused56(VARIANT a, VARIANT b, VARIANT* r, VARIANT* status) override {
        return NotImplemented(a, b, r, status);
    }

private:
    ~CServerObject() override { CServerLifetime::Get().RemoveSinks(m_sinks); }

    static bool IsMissing(const VARIANT& /*input*/) { return false; }
    static bool IsMissing(const VARIANT* output) { return output == nullptr; }
    static void ClearOutput(const VARIANT& /*input*/) {}
    static void ClearOutput(VARIANT* output) { VariantInit(output); }

    template <class... Each>
    HRESULT Answer(EComResult (Ours::*operation)(Each...),
                   typename CReceivedArgument<Each>::Native... values) noexcept;
    template <class... Native>
    static HRESULT NotImplemented(Native... values) noexcept;

    struct SReference {
        SReference() { CServerLifetime::Get().AddReference(); }
        SReference(const SReference&) = delete;
        SReference& operator=(const SReference&) = delete;
        ~SReference() { CServerLifetime::Get().ReleaseReference(); }
    };
    SReference m_reference; ///< first: the process must see the end of all the others
    CSinkFanOut m_sinks;
    CSinkPoint m_point;
    /// Substation files are in UTF-8, a recording has the texts of the program that made it.
    const UINT m_codePage;
    std::unique_ptr<IServerConnection> m_connection; // last: its commands use the sinks
};

/// Outputs are delivered all or none.
template <class... Each>
HRESULT CServerObject::Answer(EComResult (Ours::*operation)(Each...),
                              typename CReceivedArgument<Each>::Native... values) noexcept {
    struct SCallScope {
        SCallScope() { CServerLifetime::Get().BeginCall(); }
        ~SCallScope() { CServerLifetime::Get().EndCall(); }
    } const scope;
    if ((IsMissing(values) || ...)) {
        return E_POINTER;
    }
    (ClearOutput(values), ...);
    try {
        std::tuple<CReceivedArgument<Each>...> arguments(
            SReceived<typename CReceivedArgument<Each>::Native>{values, m_codePage}...);
        const auto call = [&](auto&... each) { return (m_connection->Server().*operation)(each.Pass()...); };
        if (std::apply(call, arguments) != EComResult::Ok) {
            return E_FAIL;
        }
        std::apply([](auto&... each) { (each.Convert(), ...); }, arguments);
        std::apply([](auto&... each) { (each.Deliver(), ...); }, arguments);
        return S_OK;
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    } catch (...) {
        return E_UNEXPECTED;
    }
}

/// For the slots that no client of ours calls.
template <class... Native>
HRESULT CServerObject::NotImplemented(Native... values) noexcept {
    if ((IsMissing(values) || ...)) {
        return E_POINTER;
    }
    (ClearOutput(values), ...);
    return E_NOTIMPL;
}

} // namespace ruvo::sim
