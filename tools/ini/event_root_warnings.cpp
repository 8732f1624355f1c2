// Finds paths in an event root that a run refuses to write.
#include "tools/ini/diagnostics.h"

#include "paths/path_utilities.h"
#include "platform/files.h"
#include "platform/full_path.h"

#include <algorithm>

namespace ruvo {

namespace {

constexpr std::string_view kDayFileEnding = ".evt";

/// The folder's entries, sorted by name; none if it cannot be read.
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
            diagnostics.push_back(
                {0, DisplayPath(folder + "\\" + entry.name) +
                        " is not a regular file: the relay with this day file keeps its events"});
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
            diagnostics.push_back({0, DisplayPath(path) +
                                          " is a symbolic link: the relay with this folder keeps its events; "
                                          "move the whole event root, or mount the other folder here"});
        }
    }
    return diagnostics;
}

} // namespace ruvo
