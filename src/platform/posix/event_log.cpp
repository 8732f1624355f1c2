#include "platform/event_log.h"

namespace ruvo {

void WriteSystemEvent(ESystemEventKind /*kind*/, std::uint16_t /*number*/, const std::string& /*utf8*/) {}

} // namespace ruvo
