// No state folder: what is fuzzed makes no journal, and leaves nothing on this machine's disk.
#include "platform/state_folder.h"

namespace ruvo {

std::string StateFolder() {
    return {};
}

std::vector<std::string> StateFoldersToRead() {
    return {};
}

bool MakePrivateFolder(const std::string& /*folder*/) {
    return false;
}

std::string ResolvedFolder(const std::string& folder) {
    return folder;
}

} // namespace ruvo
