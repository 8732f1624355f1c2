// The server's operations on the link itself.
#include "sim/server/simulated_server.h"

#include <algorithm>
#include <array>

namespace ruvo::sim {
namespace {

SCall LinkCall(EOperation operation) {
    SCall call;
    call.operation = operation;
    return call;
}

bool AreTexts(std::initializer_list<const Variant*> values) {
    return std::all_of(values.begin(), values.end(),
                       [](const Variant* value) { return value->AsText() != nullptr; });
}

} // namespace

EComResult CSimulatedServer::OpenPort(In port, In parameters, Out status) {
    SCall call = LinkCall(EOperation::OpenPort);
    call.wellFormed = AreTexts({&port, &parameters});
    if (call.wellFormed) {
        call.detail = *port.AsText() + " " + *parameters.AsText();
    }
    return m_core.Answer(
        call, [&] { return StatusAnswer(m_core.Link().Open(*port.AsText(), *parameters.AsText())); }, {},
        status);
}

EComResult CSimulatedServer::ClosePort(Out status) {
    return m_core.Answer(
        LinkCall(EOperation::ClosePort), [&] { return StatusAnswer(m_core.Link().Close()); }, {}, status);
}

EComResult CSimulatedServer::SetTransactionValues(In busyHoldoff, In busyCount, In resetResponse, In response,
                                                  In tryCount, In transmitDelay, In globalTransmit,
                                                  Out status) {
    SCall call = LinkCall(EOperation::SetTransactionValues);
    const std::array values{&busyHoldoff, &busyCount,     &resetResponse, &response,
                            &tryCount,    &transmitDelay, &globalTransmit};
    for (const Variant* value : values) {
        std::int16_t number = 0;
        call.wellFormed = IsI2(*value) && value->ToI2(number) && call.wellFormed;
        call.detail += (call.detail.empty() ? "" : ",") + std::to_string(number);
    }
    return m_core.Answer(
        call, [&] { return StatusAnswer(m_core.Link().IsOpen() ? kLinkGood : kLinkNoPortOpen); }, {}, status);
}

EComResult CSimulatedServer::Abort(Out status) {
    return m_core.Answer(
        LinkCall(EOperation::Abort), [&] { return StatusAnswer(m_core.AbortRunning()); }, {}, status);
}

EComResult CSimulatedServer::ModemConnect(In modemName, In lineAddress, In countryCode, In areaCode,
                                          In numberToDial, In useCountryAndAreaCodes, Out status) {
    SCall call = LinkCall(EOperation::ModemConnect);
    call.wellFormed = AreTexts({&modemName, &countryCode, &areaCode, &numberToDial}) && IsI4(lineAddress) &&
                      IsUI1(useCountryAndAreaCodes);
    if (call.wellFormed) {
        call.detail = *modemName.AsText() + " " + *numberToDial.AsText();
    }
    const auto dial = [&] {
        SAnswer answer = StatusAnswer(m_core.Link().CheckModem(*modemName.AsText()));
        if (answer.status == kLinkGood) {
            answer.completion = m_core.Link().Dial(*numberToDial.AsText());
        }
        return answer;
    };
    return m_core.Answer(call, dial, {}, status);
}

EComResult CSimulatedServer::ModemHangUp(Out status) {
    return m_core.Answer(
        LinkCall(EOperation::ModemHangUp), [&] { return StatusAnswer(m_core.Link().HangUp()); }, {}, status);
}

EComResult CSimulatedServer::Fetch(EOperation fetch, EOperation start, const CServerCore::Outputs& outputs,
                                   Out status) {
    return m_core.Answer(
        LinkCall(fetch), [&] { return m_core.FetchResults(start); }, outputs, status);
}

EComResult CSimulatedServer::FetchColumnHeadings(Out first, Out second, Out status) {
    return Fetch(EOperation::FetchColumnHeadings, EOperation::StartGetColumnHeadings, {&first, &second},
                 status);
}

EComResult CSimulatedServer::FetchColumnText(Out first, Out second, Out status) {
    return Fetch(EOperation::FetchColumnText, EOperation::StartGetColumnText, {&first, &second}, status);
}

EComResult CSimulatedServer::FetchColumnValues(Out first, Out second, Out status) {
    return Fetch(EOperation::FetchColumnValues, EOperation::StartGetColumnValues, {&first, &second}, status);
}

EComResult CSimulatedServer::FetchColumnTextAndValues(Out locations, Out texts, Out values, Out status) {
    return Fetch(EOperation::FetchColumnTextAndValues, EOperation::StartGetColumnTextAndValues,
                 {&locations, &texts, &values}, status);
}

EComResult CSimulatedServer::FetchStrings(Out strings, Out status) {
    return Fetch(EOperation::FetchStrings, EOperation::StartGetStrings, {&strings}, status);
}

EComResult CSimulatedServer::FetchColumnSettingLimits(Out first, Out second, Out status) {
    return Fetch(EOperation::FetchColumnSettingLimits, EOperation::StartGetColumnSettingLimits,
                 {&first, &second}, status);
}

EComResult CSimulatedServer::FetchCompressDisturbanceRecord(Out values, Out status) {
    return Fetch(EOperation::FetchCompressDisturbanceRecord, EOperation::StartGetCompressDisturbanceRecord,
                 {&values}, status);
}

EComResult CSimulatedServer::FetchDisturbanceRecordValues(Out first, Out second, Out status) {
    return Fetch(EOperation::FetchDisturbanceRecordValues, EOperation::StartGetDisturbanceRecordValues,
                 {&first, &second}, status);
}

EComResult CSimulatedServer::FetchDisturbanceRecordConfiguration(Out first, Out second, Out third, Out fourth,
                                                                 Out status) {
    return Fetch(EOperation::FetchDisturbanceRecordConfiguration,
                 EOperation::StartGetDisturbanceRecordConfiguration, {&first, &second, &third, &fourth},
                 status);
}

} // namespace ruvo::sim
