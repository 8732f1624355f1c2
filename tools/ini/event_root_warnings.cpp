// Finds paths in an event root that a run refuses to write.
#include "tools/ini/diagnostics.h"

#include "paths/path_utilities.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "platform/full_path.h"

#include <algorithm>
#include <array>
#include <cstdio>

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

/// As in the names of the day files that a run writes.
std::string Today() {
    const SCalendarTime now = UtcTime();
    std::array<char, 40> text{};
    std::snprintf(text.data(), text.size(), "-%04d-%02d-%02d-", now.year, now.month, now.day);
    return text.data();
}

void FindDayFiles(const std::string& folder, const std::string& today,
                  std::vector<SDiagnostic>& diagnostics) {
    for (const SFolderEntry& entry : SortedEntries(folder)) {
        const std::string path = folder + "\\" + entry.name;
        if (!entry.isFile && entry.name.ends_with(kDayFileEnding)) {
            diagnostics.push_back(
                {0, DisplayPath(path) +
                        " is not a regular file: the relay with this day file keeps its events"});
        } else if (entry.name.find(today) != std::string::npos && IsMarkedReadOnly(path)) {
            diagnostics.push_back({0, DisplayPath(path) +
                                          " has the attribute \"read-only\": the relay with this day "
                                          "file keeps its events; attrib -r removes it"});
        }
    }
}

} // namespace

std::vector<SDiagnostic> FindUnwritablePlaces(std::string eventRoot) {
    std::vector<SDiagnostic> diagnostics;
    StripTrailingSeparators(eventRoot);
    const std::string today = Today();
    for (const SFolderEntry& entry : SortedEntries(eventRoot)) {
        const std::string path = eventRoot + "\\" + entry.name;
        if (entry.isFolder) {
            FindDayFiles(path, today, diagnostics);
        } else if (IsLink(path) && GetPathKind(path) != EPathKind::File) {
            diagnostics.push_back({0, DisplayPath(path) +
                                          " is a symbolic link: the relay with this folder keeps its events; "
                                          "move the whole event root, or mount the other folder here"});
        }
    }
    return diagnostics;
}

} // namespace ruvo
