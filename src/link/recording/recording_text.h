// Recorded calls in words.
#pragma once

#include "link/recording/recorded_value.h"
#include "link/seam/operations.h"

#include <string>
#include <vector>

namespace ruvo {

/// A value with its kind, on one line and in ASCII: UI1(5), I2(7), "text", bytes and words as hexadecimal
/// digits, a list in brackets.
[[nodiscard]] std::string ValueText(const SRecordedValue& value);
/// The operation and its inputs; a cell or a column is shown as one.
[[nodiscard]] std::string CallText(const SOperationRow& operation, const std::vector<SRecordedValue>& inputs);
/// The status of a reply, for example 0x0611.
[[nodiscard]] std::string StatusText(const SRecordedValue& status);

} // namespace ruvo
