#include "platform/standard_error.h"

namespace ruvo {

void WriteStandardError(std::string_view /*line*/) noexcept {}

} // namespace ruvo
