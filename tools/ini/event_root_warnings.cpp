// What stands in an event root where a run would put its events, and would refuse to.
#include "tools/ini/diagnostics.h"

#include "paths/path_utilities.h"
#include "platform/files.h"
#include "platform/full_path.h"

#include <algorithm>

namespace ruvo {

namespace {

constexpr std::string_view kDayFileEnding = ".evt";

/// The folder's entries in the order of their names; none when it cannot be read.
std::vector<SFolderEntry> SortedEntries(const std::string& folder) {
    std::vector<SFolderEntry> entries;
    if (!ListFolder(folder, entries)) {
        entries.clear();
    }
    std::ranges::sort(entries, {}, &SFolderEntry::name);
    return entries;
}

void FindDayFiles(const std::string& folder, std::vector<SDiagnostic>& diagnostics) {
    for (const SFolderEntry& entry : SortedEntries(folder)) {
        if (!entry.isFile && entry.name.ends_with(kDayFileEnding)) {
            diagnostics.push_back({0, DisplayPath(folder + "\\" + entry.name) +
                                          " is not a regular file: a relay whose day file this is keeps its "
                                          "events"});
        }
    }
}

} // namespace

std::vector<SDiagnostic> FindUnwritablePlaces(std::string eventRoot) {
    std::vector<SDiagnostic> diagnostics;
    StripTrailingSeparators(eventRoot);
    for (const SFolderEntry& entry : SortedEntries(eventRoot)) {
        const std::string path = eventRoot + "\\" + entry.name;
        if (entry.isFolder) {
            FindDayFiles(path, diagnostics);
        } else if (IsLink(path) && GetPathKind(path) != EPathKind::File) {
            diagnostics.push_back(
                {0, DisplayPath(path) + " is a link: a relay whose folder this is keeps its events; move the "
                                        "event root as a whole, or mount the other folder here"});
        }
    }
    return diagnostics;
}

} // namespace ruvo
