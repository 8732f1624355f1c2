#include "platform/full_path.h"

#include "platform/files.h"
#include "platform/full_path_text.h"

namespace ruvo {

std::string FullPath(const std::string& path) {
    std::string full = FormFullPath(path, CurrentFolder());
    return full.size() < kMaxPath ? full : std::string();
}

} // namespace ruvo
