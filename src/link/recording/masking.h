// What of a call may stand in a recording: a password must not, in no form in which it crosses the seam.
#pragma once

#include "link/recording/recorded_value.h"
#include "link/seam/cell_address.h"
#include "link/seam/operations.h"

#include <initializer_list>
#include <optional>
#include <vector>

namespace ruvo {

/// Masks what is written to or read from the cells of a login (passwords, salts and digests, the key that
/// enciphers), and every value whose type code is a password's. Where it cannot be told what a value belongs
/// to, the value is masked. Sees every call in its order: what is fetched belongs to what was started.
class CMasking {
public:
    using Inputs = std::initializer_list<const Variant*>;
    using Outputs = std::initializer_list<Variant*>;

    /// Of what is written not even the length is kept.
    [[nodiscard]] std::vector<SRecordedValue> MaskInputs(EOperation operation, Inputs inputs);
    /// Of what is read the length stays: the client looks at it.
    [[nodiscard]] std::vector<SRecordedValue> MaskOutputs(EOperation operation, Inputs inputs,
                                                          Outputs outputs) const;

private:
    void MaskListing(std::vector<SRecordedValue>& outputs) const;
    [[nodiscard]] bool IsSecretPlace(const SRecordedValue* location) const;

    /// The cell, or the column as row 00, of the last operation that ran on.
    std::optional<CellAddress> m_target;
};

} // namespace ruvo
