// The seam's values as the system's variants, and back.
#pragma once

#include "link/seam/variant.h"
#include "link/windows/com_owners.h"

namespace ruvo {

/// A value in the system's form. Other becomes a null, which no conversion takes for a number. Texts are
/// in the code page, by default the system's narrow encoding. Throws std::bad_alloc.
void ToVariant(const Variant& value, COwnedVariant& result, UINT codePage = CP_ACP);

/// A value of the system's; what the interface has no use for becomes Other: other types, arrays of more than
/// one dimension, numbers beyond 32 bits.
Variant FromVariant(const VARIANT& value, UINT codePage = CP_ACP);

/// Overwrites a byte array, which may have been a password.
void WipeArray(const VARIANT& value) noexcept;

} // namespace ruvo
