#include "sim/relay/simulated_relay.h"

#include "link/seam/known_cells.h"
#include "model/values/type_codes.h"
#include "sim/file/tagged_value.h"

#include <algorithm>

namespace ruvo::sim {
namespace {

bool IsInteger(std::uint8_t type) {
    return type == kTypeUint || type == kTypeStringIndex;
}

// Minimum and maximum as far as they are unsigned numbers; other kinds of limits are for the client to check.
bool IsWithinLimits(const SCell& cell, const Variant::Bytes& data) {
    const auto limit = [&](std::size_t index) -> std::optional<std::uint32_t> {
        const Variant::Bytes* bytes = index < cell.limits.size() ? cell.limits[index].AsBytes() : nullptr;
        if (bytes == nullptr || bytes->size() < 2) {
            return std::nullopt;
        }
        return NumberOf(Variant::Bytes(bytes->begin() + 2, bytes->end()));
    };
    if (!IsInteger(cell.type) || cell.limits.size() < 2) {
        return true;
    }
    const std::uint32_t value = NumberOf(data);
    return value >= limit(0).value_or(0) && value <= limit(1).value_or(UINT32_MAX);
}

} // namespace

CSimulatedRelay::CSimulatedRelay(const SRelay& model)
    : m_model(model), m_serial(model.serial), m_modem(model.modem), m_ethernet(model.ethernet),
      m_cells(model.cells), m_access(model.access) {}

void CSimulatedRelay::SkipEvents(std::size_t count) {
    m_nextEvent = m_model.endless ? count : std::min(count, m_model.events.size());
}

bool CSimulatedRelay::HasEvents() const {
    return m_nextEvent < m_model.events.size() || (m_model.endless && !m_model.events.empty());
}

const SRecord* CSimulatedRelay::SelectedRecord(std::uint8_t column) const {
    const auto selector = m_cells.find(MakeCellAddress(column, rows::kSelectRecord));
    if (selector == m_cells.end()) {
        return nullptr;
    }
    const std::uint32_t number = NumberOf(selector->second.data);
    const auto record =
        std::find_if(m_model.records.begin(), m_model.records.end(), [&](const SRecord& candidate) {
            return candidate.column == column && candidate.number == number;
        });
    return record == m_model.records.end() ? nullptr : &*record;
}

std::optional<SCell> CSimulatedRelay::FindUnchecked(CellAddress cell) const {
    // While a record is selected, its cells hide those of its column.
    if (const SRecord* record = SelectedRecord(ColumnOf(cell))) {
        if (const auto found = record->cells.find(cell); found != record->cells.end()) {
            return found->second;
        }
    }
    if (const auto found = m_cells.find(cell); found != m_cells.end()) {
        return found->second;
    }
    return m_access.FindCell(cell);
}

CSimulatedRelay::SFound CSimulatedRelay::Find(CellAddress cell, EAccess access) const {
    std::optional<SCell> found = FindUnchecked(cell);
    if (!found) {
        return {kReplyNoSuchCell, {}};
    }
    if (found->replyCode != 0) {
        return {ReplyStatus(found->replyCode), {}};
    }
    if (const LinkStatus status = m_access.Check(access, cell); status != kLinkGood) {
        return {status, {}};
    }
    return {kLinkGood, std::move(*found)};
}

SAnswer CSimulatedRelay::Value(CellAddress cell) const {
    SFound found = Find(cell, EAccess::Read);
    if (found.status != kLinkGood) {
        return StatusAnswer(found.status);
    }
    return OutputAnswer({Variant::FromUI1(found.cell.type), Variant::FromUI1(found.cell.size),
                         Variant::FromBytes(std::move(found.cell.data))});
}

SAnswer CSimulatedRelay::Text(CellAddress cell) const {
    const SFound found = Find(cell, EAccess::Read);
    if (found.status != kLinkGood) {
        return StatusAnswer(found.status);
    }
    if (found.cell.label) {
        return OutputAnswer({*found.cell.label});
    }
    return found.cell.type == kTypeText ? OutputAnswer({FirstValueOf(found.cell)})
                                        : StatusAnswer(kReplyNoData);
}

SAnswer CSimulatedRelay::Limits(CellAddress cell) const {
    SFound found = Find(cell, EAccess::Read);
    if (found.status != kLinkGood) {
        return StatusAnswer(found.status);
    }
    return OutputAnswer({Variant::FromList(std::move(found.cell.limits))});
}

SAnswer CSimulatedRelay::Strings(CellAddress cell) const {
    SFound found = Find(cell, EAccess::Read);
    if (found.status != kLinkGood) {
        return StatusAnswer(found.status);
    }
    return OutputAnswer({Variant::FromList(std::move(found.cell.strings))});
}

SAnswer CSimulatedRelay::Values(const Variant::Words& wanted) const {
    Variant::List values;
    for (const std::int16_t word : wanted) {
        const SFound found = Find(static_cast<CellAddress>(word), EAccess::Read);
        if (found.status != kLinkGood) {
            return StatusAnswer(found.status);
        }
        values.push_back(FirstValueOf(found.cell));
    }
    return OutputAnswer({Variant::FromList(std::move(values))});
}

void CSimulatedRelay::AddToListing(CellAddress address, const SCell& cell, bool unsignedLocations,
                                   SListing& listing) const {
    if (!cell.listed) {
        return;
    }
    listing.locations.push_back(unsignedLocations ? TaggedUnsigned(address, 2) : TaggedMenu(address));
    listing.texts.push_back(cell.label.value_or(TaggedValue(kTypeText, {})));
    listing.values.push_back(FirstValueOf(cell));
    listing.limits.emplace_back();
    if (!cell.limits.empty()) {
        listing.limits.back() = cell.limits.front();
    }
}

SListing CSimulatedRelay::MakeListing(std::uint8_t column) const {
    const auto model = m_model.columns.find(column);
    const SRecord* record = SelectedRecord(column);
    if (record != nullptr && record->listing) {
        return *record->listing;
    }
    if (record == nullptr && model != m_model.columns.end() && model->second.listing) {
        return *model->second.listing;
    }
    const bool unsignedLocations = model != m_model.columns.end() && model->second.unsignedLocations;
    SListing listing;
    const CellMap& cells = record != nullptr ? record->cells : m_cells;
    for (const auto& [address, cell] : cells) {
        if (ColumnOf(address) == column) {
            AddToListing(address, cell, unsignedLocations, listing);
        }
    }
    return listing;
}

SAnswer CSimulatedRelay::Column(std::uint8_t column, EListing wanted) const {
    if (const LinkStatus status = m_access.Check(EAccess::Read, MakeCellAddress(column, 0));
        status != kLinkGood) {
        return StatusAnswer(status);
    }
    SListing listing = MakeListing(column);
    if (listing.locations.empty() && m_model.columns.count(column) == 0) {
        return StatusAnswer(kReplyNoSuchCell);
    }
    SAnswer answer = OutputAnswer({Variant::FromList(listing.locations)});
    if (wanted == EListing::TextAndValues || wanted == EListing::Text) {
        answer.outputs.push_back(Variant::FromList(std::move(listing.texts)));
    }
    if (wanted == EListing::TextAndValues || wanted == EListing::Values) {
        answer.outputs.push_back(Variant::FromList(std::move(listing.values)));
    }
    if (wanted == EListing::Limits) {
        answer.outputs.push_back(Variant::FromList(std::move(listing.limits)));
    }
    return answer;
}

SAnswer CSimulatedRelay::Headings() const {
    SListing listing;
    for (const auto& [address, cell] : m_cells) {
        if (RowOf(address) == 0) {
            AddToListing(address, cell, false, listing);
        }
    }
    return OutputAnswer(
        {Variant::FromList(std::move(listing.locations)), Variant::FromList(std::move(listing.texts))});
}

SAnswer CSimulatedRelay::Change(CellAddress cell, const Variant::Bytes& tagged) {
    if (tagged.size() < 2 || tagged[1] != tagged.size() - 2) {
        return StatusAnswer(kLinkWrongParameters);
    }
    const Variant::Bytes data(tagged.begin() + 2, tagged.end());
    if (m_access.IsLoginCell(cell)) {
        SAnswer answer = StatusAnswer(m_access.WriteLoginCell(cell, tagged[0], data));
        answer.remark = answer.status == kReplyCommandRejected ? "no crypto provider" : "";
        return answer;
    }
    const SFound found = Find(cell, EAccess::Write);
    if (found.status != kLinkGood) {
        return StatusAnswer(found.status);
    }
    // A client selects a record with the number from the event, whose type and size may differ from the
    // cell's: the number alone counts.
    const bool selects = RowOf(cell) == rows::kSelectRecord && found.cell.type == kTypeUint;
    if (found.cell.writable && found.cell.type != tagged[0] && !selects) {
        return StatusAnswer(kReplyRejected);
    }
    return StatusAnswer(
        Store(cell, found.cell, selects ? LittleEndian(NumberOf(data), found.cell.size) : data));
}

// Bytes without a type code are no login: the type is part of what a login cell checks.
SAnswer CSimulatedRelay::ChangeBytes(CellAddress cell, const Variant::Bytes& data) {
    if (m_access.IsLoginCell(cell)) {
        return StatusAnswer(kReplyNotSettable);
    }
    const SFound found = Find(cell, EAccess::Write);
    return StatusAnswer(found.status != kLinkGood ? found.status : Store(cell, found.cell, data));
}

SAnswer CSimulatedRelay::Reset(CellAddress cell) {
    if (cell == cells::kPassword) {
        m_access.Logout();
        return {};
    }
    const SFound found = Find(cell, EAccess::Write);
    if (found.status != kLinkGood) {
        return StatusAnswer(found.status);
    }
    return StatusAnswer(Store(cell, found.cell, Variant::Bytes(found.cell.data.size(), 0)));
}

bool CSimulatedRelay::IsUnknownRecord(CellAddress cell, const Variant::Bytes& data) const {
    const auto inColumn = [&](const SRecord& record) { return record.column == ColumnOf(cell); };
    const auto wanted = [&](const SRecord& record) {
        return inColumn(record) && record.number == NumberOf(data);
    };
    return RowOf(cell) == rows::kSelectRecord &&
           std::any_of(m_model.records.begin(), m_model.records.end(), inColumn) &&
           std::none_of(m_model.records.begin(), m_model.records.end(), wanted);
}

LinkStatus CSimulatedRelay::Store(CellAddress cell, const SCell& before, const Variant::Bytes& data) {
    const auto own = m_cells.find(cell);
    if (!before.writable || own == m_cells.end()) {
        return kReplyNotSettable;
    }
    if (data.size() != before.data.size() || !IsWithinLimits(before, data) || IsUnknownRecord(cell, data)) {
        return kReplyRejected;
    }
    own->second.data = data;
    return kLinkGood;
}

SAnswer CSimulatedRelay::NextEvent() {
    if (const LinkStatus status = m_access.Check(EAccess::Event, 0); status != kLinkGood) {
        return StatusAnswer(status);
    }
    if (!HasEvents()) {
        return StatusAnswer(kReplyNoData);
    }
    const SEvent& event = m_model.events[m_nextEvent % m_model.events.size()];
    // Deleted from here on, even when the answer is lost.
    ++m_nextEvent;
    const bool more = event.more.value_or(HasEvents());
    return OutputAnswer(
        {Variant::FromUI1(event.kind), Variant::FromList(event.values), Variant::FromUI1(more ? 1 : 0)});
}

SAnswer CSimulatedRelay::StatusByte() const {
    return OutputAnswer({Variant::FromUI1(
        static_cast<std::uint8_t>(m_model.statusByte | (HasEvents() ? kEventsPending : 0)))});
}

} // namespace ruvo::sim
