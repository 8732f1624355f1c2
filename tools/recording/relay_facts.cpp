#include "tools/recording/relay_facts.h"

#include "link/seam/known_cells.h"
#include "model/values/type_codes.h"

#include <algorithm>
#include <array>

namespace ruvo {

namespace {

using enum EOperation;

constexpr std::size_t kHead = 2; // type code and length of a tagged value

Variant::Bytes Encoded(const SRecordedValue& value) {
    Variant::Bytes bytes;
    AppendValue(bytes, value);
    return bytes;
}

std::string NameOf(CellAddress cell) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    std::string name;
    for (const unsigned part : {ColumnOf(cell), RowOf(cell)}) {
        name += name.empty() ? "" : ".";
        name += kDigits[part >> 4U];
        name += kDigits[part & 0xFU];
    }
    return name;
}

/// The outputs of a listing, in their order.
struct SListingRow {
    EOperation operation;
    std::array<std::string_view, 3> lists;
};
constexpr std::array kListingRows{
    SListingRow{StartGetColumnText, {"locations", "texts"}},
    SListingRow{StartGetColumnValues, {"locations", "values"}},
    SListingRow{StartGetColumnSettingLimits, {"locations", "limits"}},
    SListingRow{StartGetColumnTextAndValues, {"locations", "texts", "values"}},
};

std::optional<CellAddress> TargetOf(const SWholeCall& call) {
    if (call.operation->target == ETarget::Cell) {
        const auto cell = call.NumberAt(1, EValueKind::I2);
        return cell ? std::optional(static_cast<CellAddress>(*cell)) : std::nullopt;
    }
    if (call.operation->target == ETarget::Column) {
        const auto column = call.NumberAt(1, EValueKind::UI1);
        return column ? std::optional(MakeCellAddress(static_cast<std::uint8_t>(*column), 0)) : std::nullopt;
    }
    return std::nullopt;
}

bool IsWrite(EOperation operation) {
    return operation == ChangeSetting || operation == SetValue || operation == SetBlockedValue;
}

} // namespace

std::optional<std::size_t> UselessOutput(const std::vector<SRecordedValue>& outputs) {
    constexpr std::size_t kMostOutputs = 4; // of any operation
    const auto first = std::span(outputs).first(std::min(outputs.size(), kMostOutputs));
    const auto found = std::ranges::find(first, EValueKind::Other, &SRecordedValue::kind);
    return found == first.end() ? std::nullopt
                                : std::optional(static_cast<std::size_t>(found - first.begin()) + 1);
}

bool IsLoginCell(CellAddress cell) {
    return cell == cells::kPassword || cell == cells::kSecurityPassword || cell == cells::kSalt ||
           cell == cells::kUserName;
}

RecordNumber CRelayFacts::SelectedIn(CellAddress cell) const {
    const auto selected = m_selected.find(ColumnOf(cell));
    const bool isSelector = RowOf(cell) == rows::kSelectRecord;
    return selected == m_selected.end() || isSelector ? std::nullopt : RecordNumber(selected->second);
}

SCellFacts& CRelayFacts::FactsOf(CellAddress cell) {
    return cells[{ColumnOf(cell), SelectedIn(cell), cell}];
}

void CRelayFacts::SetOnce(std::optional<SRecordedValue>& fact, const SRecordedValue& value,
                          CellAddress cell) {
    if (fact && Encoded(*fact) != Encoded(value)) {
        changed.insert(NameOf(cell));
    }
    fact = fact ? fact : value;
}

SNotedCall CRelayFacts::Note(const SWholeCall& call) const {
    SNotedCall noted;
    noted.operation = call.operation;
    noted.cell = TargetOf(call);
    noted.record = noted.cell ? SelectedIn(*noted.cell) : std::nullopt;
    noted.isOfServer = call.operation->runsOn && call.status && *call.status != kLinkGood;
    noted.status = call.completion && !noted.isOfServer ? call.completion : call.status;
    noted.isLoggedIn = m_isLoggedIn;
    noted.isLogin = noted.cell && IsWrite(call.operation->operation) && IsLoginCell(*noted.cell);
    if (!call.operation->runsOn) { // else its outputs are those of another call
        noted.uselessOutput = UselessOutput(call.outputs);
    }
    return noted;
}

void CRelayFacts::Take(const SWholeCall& call) {
    const SNotedCall noted = Note(call);
    calls.push_back(noted);
    if (!noted.status) {
        return;
    }
    hasAnswered = hasAnswered || IsWriteGood(*noted.status) || IsReply(*noted.status);
    if (noted.isLogin) {
        TakeLogin(*noted.cell, *noted.status);
    } else if (call.operation->operation == ResetCell && noted.cell == cells::kPassword) {
        m_isLoggedIn = m_isLoggedIn && !IsWriteGood(*noted.status);
    } else if (noted.cell && IsWrite(call.operation->operation)) {
        TakeWrite(call, *noted.cell, *noted.status);
    } else if (*noted.status == kLinkGood) {
        TakeOutputs(call, noted.cell);
    }
    TakeRefusal(noted);
}

void CRelayFacts::TakeOutputs(const SWholeCall& call, std::optional<CellAddress> cell) {
    if (call.operation->operation == GetEvent) {
        TakeEvent(call);
    } else if (call.operation->operation == GetDeviceStatus && !call.outputs.empty()) {
        const auto byte = static_cast<std::uint8_t>(call.outputs.front().number);
        hasMoreEvents = (byte & kEventsPending) != 0;
        statusByte = byte & static_cast<std::uint8_t>(~kEventsPending);
    } else if (cell) {
        TakeAnswer(call, *cell);
    }
}

void CRelayFacts::TakeRefusal(const SNotedCall& noted) {
    if (!IsReply(*noted.status) || noted.isLogin) {
        return;
    }
    if (IsPasswordRequest(*noted.status)) {
        passwordReply = passwordReply == 0 ? ReplyCodeOf(*noted.status) : passwordReply;
        protectsEvents = protectsEvents || noted.operation->operation == GetEvent;
        if (noted.cell) {
            protectedCells.insert(*noted.cell);
        }
    } else if (noted.cell && noted.operation->target == ETarget::Cell) {
        FactsOf(*noted.cell).refusal = ReplyCodeOf(*noted.status);
    }
}

void CRelayFacts::TakeAnswer(const SWholeCall& call, CellAddress cell) {
    const std::vector<SRecordedValue>& outputs = call.outputs;
    const EOperation operation = call.operation->operation;
    if (call.operation->target == ETarget::Column) {
        TakeListing(call, ColumnOf(cell));
        return;
    }
    constexpr std::size_t kPackedOutputs = 3;
    SCellFacts& facts = FactsOf(cell);
    if (operation == GetValue && outputs.size() == kPackedOutputs) {
        if (facts.packed && Encoded(facts.packed->back()) != Encoded(outputs.back())) {
            changed.insert(NameOf(cell));
        }
        facts.packed = facts.packed ? facts.packed : outputs;
    } else if (operation == GetText && !outputs.empty()) {
        SetOnce(facts.label, outputs.front(), cell);
    } else if (operation == GetSettingLimits && !outputs.empty()) {
        SetOnce(facts.limits, outputs.front(), cell);
    } else if (operation == StartGetStrings && !outputs.empty()) {
        SetOnce(facts.strings, outputs.front(), cell);
    } else if (operation == ResetCell) {
        facts.isWritable = true;
    }
}

void CRelayFacts::TakeListing(const SWholeCall& call, std::uint8_t column) {
    const auto* const row =
        std::ranges::find(kListingRows, call.operation->operation, &SListingRow::operation);
    if (row == kListingRows.end() || call.fetchStatus != kLinkGood) {
        return;
    }
    SListingFacts& listing = listings[{column, SelectedIn(MakeCellAddress(column, 0))}];
    for (std::size_t i = 0; i < call.outputs.size() && i < row->lists.size(); ++i) {
        listing.try_emplace(std::string(row->lists[i]), call.outputs[i]);
    }
}

void CRelayFacts::TakeLogin(CellAddress cell, LinkStatus status) {
    if (cell == cells::kPassword || cell == cells::kSecurityPassword) {
        m_isLoggedIn = m_isLoggedIn || IsWriteGood(status);
        hasAccepted = hasAccepted || IsWriteGood(status);
        hasRejected = hasRejected || status == kReplyRejected;
    }
}

void CRelayFacts::TakeWrite(const SWholeCall& call, CellAddress cell, LinkStatus status) {
    constexpr std::size_t kValue = 2;
    if (!IsWriteGood(status) || call.inputs.size() <= kValue) {
        return;
    }
    const SRecordedValue& value = call.inputs[kValue];
    SCellFacts& facts = FactsOf(cell);
    facts.isWritable = true;
    facts.tagged = facts.tagged || facts.packed ? facts.tagged : value;
    if (RowOf(cell) == rows::kSelectRecord && ColumnOf(cell) != 0) {
        TakeSelection(value, ColumnOf(cell));
    }
}

/// A number that is written to row 01 of a column may select a record: if it does not, nothing comes of it.
void CRelayFacts::TakeSelection(const SRecordedValue& value, std::uint8_t column) {
    const bool isNumber = value.kind == EValueKind::Bytes && value.bytes.size() > kHead &&
                          (value.bytes[0] == kTypeUint || value.bytes[0] == kTypeStringIndex);
    if (!isNumber) {
        return;
    }
    std::uint32_t number = 0;
    for (std::size_t i = kHead; i < value.bytes.size() && i < kHead + sizeof number; ++i) {
        number |= static_cast<std::uint32_t>(value.bytes[i]) << (8U * (i - kHead));
    }
    m_selected[column] = number;
    records.insert({column, number});
}

void CRelayFacts::TakeEvent(const SWholeCall& call) {
    constexpr std::size_t kEventOutputs = 3;
    if (call.outputs.size() == kEventOutputs) {
        events.push_back({call.outputs[0].number, call.outputs[1], call.outputs[2].number != 0});
        hasMoreEvents = call.outputs[2].number != 0;
    }
}

} // namespace ruvo
