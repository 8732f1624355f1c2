// Cells: template, texts, checks. Input: a byte of what follows (bits 0 to 2: minimum, maximum, step of the
// input's own, bit 3: a scale, bit 4: the limits do not apply, bits 5 to 7: count of names), the value and
// those of the others as tagged values, the names, and the label template.
#include "fuzz/support/input.h"
#include "fuzz/support/require.h"

#include "model/cells/binary_cell.h"
#include "model/cells/cell_checks.h"
#include "model/cells/cell_factory.h"
#include "model/cells/integer_cells.h"
#include "model/cells/number_cells.h"
#include "model/values/character_set.h"

#include <cmath>

namespace ruvo::fuzz {

namespace {

using Value = std::unique_ptr<CParlaneData>;

void GiveNames(CCell& cell, CInput& input, unsigned count) {
    std::vector<std::string> names;
    for (; count > 0; --count) {
        names.push_back(input.TakeText());
    }
    if (auto* binary = dynamic_cast<CBinaryCell*>(&cell)) {
        binary->SetBitNames(names);
    } else if (auto* indexed = dynamic_cast<CIndexedCell*>(&cell)) {
        indexed->SetTexts(names);
    }
}

std::unique_ptr<CCell> TakeCell(CInput input) {
    const unsigned parts = input.TakeByte();
    const Value value = input.TakeValue();
    if (value == nullptr) {
        return nullptr;
    }
    Value minimum = (parts & 1U) != 0 ? input.TakeValue() : value->CreateMinimum();
    Value maximum = (parts & 2U) != 0 ? input.TakeValue() : value->CreateMaximum();
    Value step = (parts & 4U) != 0 ? input.TakeValue() : value->CreateStep();
    const Value scale = (parts & 8U) != 0 ? input.TakeValue() : nullptr;
    CInput names = input;
    for (unsigned count = parts >> 5U; count > 0; --count) {
        input.TakeText();
    }
    std::string label(input.Rest().begin(), input.Rest().end());
    auto cell = CCellFactory::Create(CCellID(1, 2), value.get(), minimum.get(), maximum.get(), step.get(),
                                     scale.get(), std::move(label), 0, 1, (parts & 16U) != 0 ? 0 : 1);
    if (cell != nullptr) {
        GiveNames(*cell, names, parts >> 5U);
    }
    return cell;
}

bool IsClean(const std::string& text) {
    return std::ranges::none_of(text, [](char c) { return static_cast<unsigned char>(c) < ' '; }) &&
           !text.starts_with(' ') && !text.ends_with(' ');
}

void CheckTexts(const CCell& cell) {
    Require(std::string(cell.GetLabelPart()) + std::string(cell.GetFormatPart()) == cell.GetLabelTemplate(),
            "the template is its two parts");
    Require(cell.HasFormat() == !cell.GetFormatPart().empty(), "a format part is there or not");
    Require(IsClean(cell.GetLabelText()) && IsClean(cell.GetValueText()), "texts for reading are clean");
    constexpr std::size_t kMost = 255;
    Require(cell.GetValueText().size() <= kMost, "a value's text is bounded");
    Require(cell.GetText().size() <= 2 * kMost + cell.GetLabelTemplate().size() + 1, "so is the cell's");
    std::string text;
    for (const std::string_view format : {std::string_view("%s"), cell.GetFormatPart()}) {
        cell.Format(text, format, EFormatMode::Value);
        Require(text.size() <= kMost, "what is formatted as a value has a limit");
    }
    if (const auto* binary = dynamic_cast<const CBinaryCell*>(&cell)) {
        binary->GetBitListText(text, 1);
    }
}

std::vector<std::uint8_t> ValueBytes(const CCell& cell) {
    return cell.GetValue() != nullptr ? WireBytes(*cell.GetValue()) : std::vector<std::uint8_t>();
}

void CheckClone(const CCell& cell) {
    const auto clone = cell.Clone();
    Require(clone->GetKind() == cell.GetKind() && clone->GetID() == cell.GetID() &&
                clone->GetRawText() == cell.GetRawText() && ValueBytes(*clone) == ValueBytes(cell),
            "a clone is equal");
    Require(clone->IsCompatible(cell) == cell.IsCompatible(*clone), "a clone and its cell suit each other");
}

unsigned MessageOf(const IError& error) {
    const auto* const finding = dynamic_cast<const CCellError*>(&error);
    Require(finding != nullptr, "a check reports cell errors");
    std::string text;
    finding->GetMessageText(text);
    finding->GetLogText(text);
    return finding->GetMessageId();
}

/// Kinds whose limits bound the value, so that a sound value suits them.
bool IsBounded(const CCell& cell) {
    static constexpr std::array kKinds{ECellKind::UInt, ECellKind::Int,    ECellKind::Indexed,
                                       ECellKind::Text, ECellKind::Binary, ECellKind::Numeric,
                                       ECellKind::Float};
    return cell.GetMinimum() != nullptr && cell.GetMaximum() != nullptr && cell.GetStep() != nullptr &&
           std::ranges::find(kKinds, cell.GetKind()) != kKinds.end();
}

/// Ends of a text's range are device codes; a code without a character is one that no text can be brought to.
bool IsCharacter(const CParlaneData& limit) {
    const auto code = static_cast<char>(limit.GetUnsigned());
    return limit.GetUnsigned() <= 0xFF && EncodeDeviceChar(DecodeDeviceChar(code)) == code;
}

/// True for a limit that the value, or the maximum, has no bytes for: no correction can reach it.
bool IsLimitOutOfReach(const CCell& cell) {
    if (cell.GetKind() == ECellKind::Text) {
        return !IsCharacter(*cell.GetMinimum()) || !IsCharacter(*cell.GetMaximum());
    }
    const auto fits = [&](const CParlaneData& minimum, std::size_t size) {
        if (const auto* number = dynamic_cast<const CParlaneInt*>(&minimum)) {
            return CParlaneInt(WireBytes(CParlaneInt(number->GetValue(), size))).GetValue() ==
                   number->GetValue();
        }
        return size >= 4 || minimum.GetUnsigned() >> (8 * size) == 0;
    };
    if (cell.GetKind() != ECellKind::UInt && cell.GetKind() != ECellKind::Int &&
        cell.GetKind() != ECellKind::Indexed) {
        return false;
    }
    return !fits(*cell.GetMinimum(), std::min<std::size_t>(cell.GetValue()->GetSize(), 4)) ||
           !fits(*cell.GetMinimum(), std::min<std::size_t>(cell.GetMaximum()->GetSize(), 4));
}

/// What is no number lies neither within limits nor outside.
bool HoldsNumbers(const CCell& cell) {
    const auto values = {cell.GetValue(), cell.GetMinimum(), cell.GetMaximum()};
    return std::ranges::none_of(values, [](const CParlaneData* v) { return std::isnan(v->GetFloat()); });
}

bool Holds(const CErrorList& errors, ECellMessage message) {
    return std::ranges::any_of(
        errors, [message](const auto& error) { return MessageOf(*error) == static_cast<unsigned>(message); });
}

void CheckValidation(CCell& cell) {
    CErrorList errors;
    const bool sound = cell.Validate(errors);
    Require(sound == errors.empty(), "a check fails with findings and only then");
    for (const auto& error : errors) {
        MessageOf(*error);
    }
    if (sound && cell.LimitsApply() && IsBounded(cell) && HoldsNumbers(cell)) {
        Require(cell.IsCompatible(cell), "a sound value lies within its limits");
    }
    if (sound || (IsBounded(cell) && IsLimitOutOfReach(cell))) {
        return;
    }
    // A maximum that is not aligned is no fault of a number with a fraction, but a value brought to it is
    // one.
    const bool mayAlign = (cell.GetKind() == ECellKind::Numeric || cell.GetKind() == ECellKind::Float) &&
                          Holds(errors, ECellMessage::ValueAboveMaximum);
    CErrorList further;
    cell.Validate(further);
    if (mayAlign && Holds(further, ECellMessage::ValueNotAligned)) {
        further.clear();
        cell.Validate(further);
    }
    for (const auto& error : further) { // a step below 0 stays what it is
        Require(MessageOf(*error) == static_cast<unsigned>(ECellMessage::NegativeStep),
                "a corrected value is not corrected again");
    }
}

void Check(CCell& cell) {
    CheckTexts(cell);
    CheckClone(cell);
    CheckValidation(cell);
    CheckTexts(cell);
}

} // namespace

} // namespace ruvo::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (const auto cell = ruvo::fuzz::TakeCell(ruvo::fuzz::CInput({data, size}))) {
        ruvo::fuzz::Check(*cell);
    }
    return 0;
}
