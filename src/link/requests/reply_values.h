// From the variants of a reply to data values and back.
#pragma once

#include "link/seam/variant.h"
#include "model/values/parlane_data.h"

#include <cstdint>
#include <memory>

namespace ruvo {

/// A tagged value; an empty variant is the invalid value. False when the variant holds no value; nothing is
/// thrown.
[[nodiscard]] bool UnpackValue(const Variant& variant, std::unique_ptr<CParlaneData>& value);

/// A value list, appended in order. The first element that is no value stops it: false, with what came before
/// in the list.
[[nodiscard]] bool UnpackValueList(const Variant& variant, CParlaneDataArray& values);

/// Packed values: all of one type and size, back to back. Size 0 means exactly one value without bytes;
/// bytes that do not fill an element are left out.
[[nodiscard]] bool UnpackPackedValues(const Variant& type, const Variant& size, const Variant& data,
                                      CParlaneDataArray& values);

/// A value as a tagged byte array; false when it is too long to be packed.
[[nodiscard]] bool PackValue(const CParlaneData& value, Variant& variant);

} // namespace ruvo
