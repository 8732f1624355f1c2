#include "link/recording/masking.h"

#include "link/seam/known_cells.h"
#include "model/values/type_codes.h"

#include <algorithm>
#include <array>

namespace ruvo {

namespace {

using enum EOperation;

// Under a key that is known, the enciphered password is the password.
constexpr std::array kSecretCells{cells::kPassword, cells::kSecurityPassword, cells::kSalt,
                                  cells::kEncryptionKey};
constexpr std::array kSecretTypes{kTypePassword, kTypeEncryptedPassword};
constexpr std::size_t kHead = 2; // type code and length of a tagged value

enum class ELength : std::uint8_t { Kept, Dropped };

bool IsSecret(CellAddress cell) {
    return std::ranges::find(kSecretCells, cell) != kSecretCells.end();
}

bool IsSecretType(std::uint32_t type) {
    return std::ranges::find(kSecretTypes, type) != kSecretTypes.end();
}

bool IsNumber(const SRecordedValue& value) {
    return value.kind == EValueKind::UI1 || value.kind == EValueKind::I2 || value.kind == EValueKind::I4;
}

/// The cell, or the column, that an input names; none when it names none.
std::optional<CellAddress> TargetOf(EOperation operation, CMasking::Inputs inputs) {
    const ETarget target = OperationRow(operation).target;
    if ((target != ETarget::Cell && target != ETarget::Column) || inputs.size() < 2) {
        return std::nullopt;
    }
    const Variant& named = *inputs.begin()[1];
    std::int16_t cell = 0;
    std::uint8_t column = 0;
    if (target == ETarget::Cell) {
        return named.ToI2(cell) ? std::optional(static_cast<CellAddress>(cell)) : std::nullopt;
    }
    return named.ToUI1(column) ? std::optional(MakeCellAddress(column, 0)) : std::nullopt;
}

void Mask(SRecordedValue& value, ELength length) {
    SRecordedValue masked;
    masked.kind = EValueKind::Masked;
    const bool isTagged = value.kind == EValueKind::Bytes && value.bytes.size() >= kHead &&
                          value.bytes[1] == value.bytes.size() - kHead;
    if (value.kind == EValueKind::List) {
        std::ranges::for_each(value.items, [&](SRecordedValue& item) { Mask(item, length); });
        return;
    }
    if (value.kind == EValueKind::Empty || value.kind == EValueKind::Masked) {
        return;
    }
    if (isTagged) {
        masked.form = EMaskedForm::Tagged;
        masked.type = value.bytes[0];
    } else if (value.kind == EValueKind::Bytes) {
        masked.form = EMaskedForm::Bytes;
    } else if (value.kind == EValueKind::Text) {
        masked.form = EMaskedForm::Text;
    }
    if (length == ELength::Kept && masked.form != EMaskedForm::Other) {
        masked.length = value.bytes.size();
    }
    value = std::move(masked);
}

/// Masks tagged values of a password's type, also where they do not hold what they say.
void MaskByType(SRecordedValue& value, ELength length) {
    if (value.kind == EValueKind::List) {
        std::ranges::for_each(value.items, [&](SRecordedValue& item) { MaskByType(item, length); });
    } else if (value.kind == EValueKind::Bytes && !value.bytes.empty() && IsSecretType(value.bytes.front())) {
        Mask(value, length);
    }
}

/// Type, size and data. The data has no type code of its own.
void MaskPacked(std::vector<SRecordedValue>& outputs, const Variant& type, bool isSecret) {
    std::uint8_t code = 0;
    const bool isMasked = isSecret || !type.ToUI1(code) || IsSecretType(code);
    for (SRecordedValue& output : outputs) {
        const bool isData = &output == &outputs.back();
        if (isMasked && (isData || !IsNumber(output))) {
            Mask(output, ELength::Kept);
        }
    }
    if (isMasked && outputs.back().kind == EValueKind::Masked && outputs.back().form == EMaskedForm::Tagged) {
        outputs.back().form = EMaskedForm::Bytes; // by chance: it looks like a tagged value
        outputs.back().type = 0;
    }
}

/// A list of one value for each of the cells that were asked for.
void MaskValueList(SRecordedValue& list, const Variant::Words* cells) {
    if (list.kind != EValueKind::List) {
        Mask(list, ELength::Kept);
    }
    for (std::size_t i = 0; i < list.items.size(); ++i) {
        const bool isKnown = cells != nullptr && i < cells->size();
        if (!isKnown || IsSecret(static_cast<CellAddress>((*cells)[i]))) {
            Mask(list.items[i], ELength::Kept);
        }
    }
}

bool IsListing(EOperation fetch) {
    return fetch == FetchColumnText || fetch == FetchColumnValues || fetch == FetchColumnTextAndValues ||
           fetch == FetchColumnSettingLimits;
}

} // namespace

std::vector<SRecordedValue> CMasking::MaskInputs(EOperation operation, Inputs inputs) {
    std::vector<SRecordedValue> masked;
    masked.reserve(inputs.size());
    for (const Variant* input : inputs) {
        masked.push_back(RecordedValue(*input));
    }
    const std::optional<CellAddress> target = TargetOf(operation, inputs);
    if (OperationRow(operation).runsOn) {
        m_target = target;
    }
    constexpr std::size_t kWritten = 2;
    if (OperationRow(operation).target == ETarget::Cell && masked.size() > kWritten) {
        if (!target || IsSecret(*target)) {
            Mask(masked[kWritten], ELength::Dropped);
        } else if (operation != SetBlockedValue) { // whose bytes have no type code
            MaskByType(masked[kWritten], ELength::Dropped);
        }
    } else {
        std::ranges::for_each(masked, [](SRecordedValue& value) { MaskByType(value, ELength::Dropped); });
    }
    return masked;
}

std::vector<SRecordedValue> CMasking::MaskOutputs(EOperation operation, Inputs inputs,
                                                  Outputs outputs) const {
    std::vector<SRecordedValue> masked;
    masked.reserve(outputs.size());
    for (const Variant* output : outputs) {
        masked.push_back(RecordedValue(*output));
    }
    const bool isOfCell = OperationRow(operation).target == ETarget::Cell;
    const std::optional<CellAddress> target =
        operation == FetchStrings ? m_target : TargetOf(operation, inputs);
    const bool isSecret = (isOfCell || operation == FetchStrings) && (!target || IsSecret(*target));
    if (operation == GetValue && !masked.empty()) {
        MaskPacked(masked, **outputs.begin(), isSecret);
        return masked;
    }
    if (isSecret) {
        std::ranges::for_each(masked, [](SRecordedValue& value) { Mask(value, ELength::Kept); });
    } else if (IsListing(operation)) {
        MaskListing(masked);
    } else if (operation == GetValues && !masked.empty() && inputs.size() > 1) {
        MaskValueList(masked.front(), inputs.begin()[1]->AsWords());
    }
    std::ranges::for_each(masked, [](SRecordedValue& value) { MaskByType(value, ELength::Kept); });
    return masked;
}

/// Locations, and lists of what is at them.
void CMasking::MaskListing(std::vector<SRecordedValue>& outputs) const {
    const std::vector<SRecordedValue> locations =
        outputs.empty() ? std::vector<SRecordedValue>() : outputs.front().items;
    for (std::size_t list = 1; list < outputs.size(); ++list) {
        if (outputs[list].kind != EValueKind::List && IsSecretPlace(nullptr)) {
            Mask(outputs[list], ELength::Kept);
        }
        for (std::size_t i = 0; i < outputs[list].items.size(); ++i) {
            if (IsSecretPlace(i < locations.size() ? &locations[i] : nullptr)) {
                Mask(outputs[list].items[i], ELength::Kept);
            }
        }
    }
}

/// A location is a menu location or a number, whose lowest byte is the row. In a column that has secrets, one
/// that is neither may be theirs.
bool CMasking::IsSecretPlace(const SRecordedValue* location) const {
    if (!m_target) {
        return true;
    }
    const std::uint8_t column = ColumnOf(*m_target);
    const bool hasSecrets = std::ranges::any_of(
        kSecretCells, [column](CellAddress secret) { return ColumnOf(secret) == column; });
    const auto isPlace = [](const SRecordedValue& value) {
        return value.kind == EValueKind::Bytes && value.bytes.size() > kHead &&
               value.bytes[1] == value.bytes.size() - kHead &&
               (value.bytes[0] == kTypeMenu || value.bytes[0] == kTypeUint);
    };
    if (location == nullptr || !isPlace(*location)) {
        return hasSecrets;
    }
    const std::uint8_t row = location->bytes[kHead];
    const bool hasColumn = location->bytes.size() > kHead + 1;
    return IsSecret(MakeCellAddress(column, row)) ||
           (hasColumn && IsSecret(MakeCellAddress(location->bytes[kHead + 1], row)));
}

} // namespace ruvo
