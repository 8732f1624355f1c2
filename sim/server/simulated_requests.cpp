// The server's operations on relays.
#include "base/text.h"
#include "link/seam/known_cells.h"
#include "model/values/type_codes.h"
#include "sim/server/simulated_server.h"

namespace ruvo::sim {
namespace {

// Blanks at the end of a relay's text are padding.
std::string TrimmedText(const Variant::Bytes& bytes) {
    std::string text(bytes.begin(), bytes.end());
    EraseTrailingBlanks(text);
    return text;
}

bool HasSerialNumber(const CSimulatedRelay& relay, const std::string& serialNumber) {
    const SAnswer answer = relay.Value(cells::kSerialNumber);
    return answer.status == kLinkGood && TrimmedText(*answer.outputs.back().AsBytes()) ==
                                             TrimmedText({serialNumber.begin(), serialNumber.end()});
}

} // namespace

EComResult CSimulatedServer::GetValue(In address, In cell, Out type, Out size, Out data, Out status) {
    const SCall call = CellCall(EOperation::GetValue, address, cell);
    return m_core.AnswerRelay(
        call, [&](CSimulatedRelay& relay) { return relay.Value(*call.cell); }, {&type, &size, &data}, status);
}

EComResult CSimulatedServer::GetText(In address, In cell, Out text, Out status) {
    const SCall call = CellCall(EOperation::GetText, address, cell);
    return m_core.AnswerRelay(
        call, [&](CSimulatedRelay& relay) { return relay.Text(*call.cell); }, {&text}, status);
}

EComResult CSimulatedServer::GetSettingLimits(In address, In cell, Out limits, Out status) {
    const SCall call = CellCall(EOperation::GetSettingLimits, address, cell);
    return m_core.AnswerRelay(
        call, [&](CSimulatedRelay& relay) { return relay.Limits(*call.cell); }, {&limits}, status);
}

EComResult CSimulatedServer::GetValues(In address, In cells, Out values, Out status) {
    SCall call = RelayCall(EOperation::GetValues, address);
    call.wellFormed = call.wellFormed && cells.AsWords() != nullptr;
    return m_core.AnswerRelay(
        call, [&](CSimulatedRelay& relay) { return relay.Values(*cells.AsWords()); }, {&values}, status);
}

EComResult CSimulatedServer::StartGetStrings(In address, In cell, Out status) {
    const SCall call = CellCall(EOperation::StartGetStrings, address, cell);
    return m_core.AnswerRelay(
        call, [&](CSimulatedRelay& relay) { return relay.Strings(*call.cell); }, {}, status);
}

EComResult CSimulatedServer::StartGetColumnHeadings(In address, Out status) {
    const SCall call = RelayCall(EOperation::StartGetColumnHeadings, address);
    return m_core.AnswerRelay(
        call, [](CSimulatedRelay& relay) { return relay.Headings(); }, {}, status);
}

EComResult CSimulatedServer::StartColumn(EOperation start, In address, In column,
                                         CSimulatedRelay::EListing listing, Out status) {
    const SCall call = ColumnCall(start, address, column);
    return m_core.AnswerRelay(
        call, [&](CSimulatedRelay& relay) { return relay.Column(ColumnOf(*call.cell), listing); }, {},
        status);
}

EComResult CSimulatedServer::StartGetColumnText(In address, In column, Out status) {
    return StartColumn(EOperation::StartGetColumnText, address, column, CSimulatedRelay::EListing::Text,
                       status);
}

EComResult CSimulatedServer::StartGetColumnValues(In address, In column, Out status) {
    return StartColumn(EOperation::StartGetColumnValues, address, column, CSimulatedRelay::EListing::Values,
                       status);
}

EComResult CSimulatedServer::StartGetColumnTextAndValues(In address, In column, Out status) {
    return StartColumn(EOperation::StartGetColumnTextAndValues, address, column,
                       CSimulatedRelay::EListing::TextAndValues, status);
}

EComResult CSimulatedServer::StartGetColumnSettingLimits(In address, In column, Out status) {
    return StartColumn(EOperation::StartGetColumnSettingLimits, address, column,
                       CSimulatedRelay::EListing::Limits, status);
}

EComResult CSimulatedServer::Write(EOperation operation, In address, In cell, In value, Out status) {
    SCall call = CellCall(operation, address, cell);
    AddBytes(call, value);
    return m_core.AnswerRelay(
        call, [&](CSimulatedRelay& relay) { return relay.Change(*call.cell, *value.AsBytes()); }, {}, status);
}

EComResult CSimulatedServer::ChangeSetting(In address, In cell, In value, Out status) {
    return Write(EOperation::ChangeSetting, address, cell, value, status);
}

EComResult CSimulatedServer::SetValue(In address, In cell, In value, Out status) {
    return Write(EOperation::SetValue, address, cell, value, status);
}

EComResult CSimulatedServer::SetBlockedValue(In address, In cell, In bytes, Out status) {
    SCall call = CellCall(EOperation::SetBlockedValue, address, cell);
    AddBytes(call, bytes);
    return m_core.AnswerRelay(
        call, [&](CSimulatedRelay& relay) { return relay.ChangeBytes(*call.cell, *bytes.AsBytes()); }, {},
        status);
}

EComResult CSimulatedServer::ResetCell(In address, In cell, Out status) {
    const SCall call = CellCall(EOperation::ResetCell, address, cell);
    return m_core.AnswerRelay(
        call, [&](CSimulatedRelay& relay) { return relay.Reset(*call.cell); }, {}, status);
}

EComResult CSimulatedServer::GetEvent(In address, Out kind, Out values, Out moreEvents, Out status) {
    return m_core.AnswerRelay(
        RelayCall(EOperation::GetEvent, address), [](CSimulatedRelay& relay) { return relay.NextEvent(); },
        {&kind, &values, &moreEvents}, status);
}

EComResult CSimulatedServer::GetDeviceStatus(In address, Out statusByte, Out status) {
    return m_core.AnswerRelay(
        RelayCall(EOperation::GetDeviceStatus, address),
        [](CSimulatedRelay& relay) { return relay.StatusByte(); }, {&statusByte}, status);
}

EComResult CSimulatedServer::SetRealTime(In address, In time, Out status) {
    SCall call = RelayCall(EOperation::SetRealTime, address);
    AddBytes(call, time);
    const auto set = [&](CSimulatedRelay&) {
        constexpr std::size_t kTaggedTime = 2 + 7;
        const Variant::Bytes& bytes = *time.AsBytes();
        return StatusAnswer(bytes.size() == kTaggedTime && bytes[0] == kTypeIEC870 ? kLinkGood
                                                                                   : kReplyRejected);
    };
    return m_core.AnswerRelay(call, set, {}, status);
}

EComResult CSimulatedServer::SelectSettingGroup(In address, In group, Out status) {
    SCall call = RelayCall(EOperation::SelectSettingGroup, address);
    call.wellFormed = call.wellFormed && IsUI1(group);
    const auto select = [&](CSimulatedRelay&) {
        constexpr std::uint8_t kLastGroup = 4;
        std::uint8_t number = 0;
        return StatusAnswer(group.ToUI1(number) && number >= 1 && number <= kLastGroup ? kLinkGood
                                                                                       : kReplyRejected);
    };
    return m_core.AnswerRelay(call, select, {}, status);
}

EComResult CSimulatedServer::ChangeDeviceAddress(In address, In newAddress, In serialNumber, Out status) {
    SCall call = RelayCall(EOperation::ChangeDeviceAddress, address);
    std::uint8_t target = 0;
    call.wellFormed =
        call.wellFormed && IsUI1(newAddress) && newAddress.ToUI1(target) && serialNumber.AsText() != nullptr;
    const auto move = [&](CSimulatedRelay& relay) {
        if (target == *call.address) {
            return StatusAnswer(kLinkSameAddress);
        }
        if (!HasSerialNumber(relay, *serialNumber.AsText())) {
            return StatusAnswer(kLinkWrongSerialNumber);
        }
        if (m_core.Link().Find(target) != nullptr) {
            return StatusAnswer(kLinkAddressTaken);
        }
        m_core.Link().Move(relay, target);
        return StatusAnswer(kLinkGood);
    };
    return m_core.AnswerRelay(call, move, {}, status);
}

// Simulated relays keep no disturbance records; they say so as a relay without any would.
EComResult CSimulatedServer::TestAvailableDisturbanceRecord(In address, Out available, Out status) {
    return m_core.AnswerRelay(
        RelayCall(EOperation::TestAvailableDisturbanceRecord, address),
        [](CSimulatedRelay&) { return OutputAnswer({Variant::FromUI1(0)}); }, {&available}, status);
}

EComResult CSimulatedServer::RefuseByRelay(const SCall& call, LinkStatus refusal, Out status) {
    return m_core.AnswerRelay(
        call, [refusal](CSimulatedRelay&) { return StatusAnswer(refusal); }, {}, status);
}

EComResult CSimulatedServer::StartGetCompressDisturbanceRecord(In address, In value, Out status) {
    SCall call = RelayCall(EOperation::StartGetCompressDisturbanceRecord, address);
    AddBytes(call, value);
    return RefuseByRelay(call, kLinkNoCompressedRecord, status);
}

EComResult CSimulatedServer::StartGetDisturbanceRecordConfiguration(In address, In value, Out status) {
    SCall call = RelayCall(EOperation::StartGetDisturbanceRecordConfiguration, address);
    AddBytes(call, value);
    return RefuseByRelay(call, kLinkNoDisturbanceRecord, status);
}

EComResult CSimulatedServer::StartGetDisturbanceRecordValues(In address, Out status) {
    return RefuseByRelay(RelayCall(EOperation::StartGetDisturbanceRecordValues, address),
                         kLinkNoDisturbanceConfiguration, status);
}

} // namespace ruvo::sim
