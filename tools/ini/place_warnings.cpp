#include "tools/ini/place_warnings.h"

#include "extraction/relay_visit.h"
#include "ledger/root_folder.h"
#include "paths/path_utilities.h"
#include "platform/full_path.h"
#include "platform/state_folder.h"
#include "tools/recover/site_leftovers.h"

#include <array>
#include <string_view>

namespace ruvo {

namespace {

/// The folder of the root's journals; the state folder while there is none.
std::string JournalPlace(const std::string& eventRoot) {
    const std::string folder = FolderOfJournals(eventRoot);
    return GetPathKind(folder) == EPathKind::Folder ? folder : StateFolder();
}

bool CanHoldJournals(const std::string& folder) {
    std::string nearest = NearestExisting(folder);
    const bool isThere = nearest == folder;
    nearest += nearest.ends_with(':') ? "\\" : "";
    return GetPathKind(nearest) == EPathKind::Folder &&
           CanMakeEntryIn(nearest, isThere ? EPathKind::File : EPathKind::Folder).Good() &&
           (!isThere || MakePrivateFolder(folder)); // which makes none then
}

} // namespace

std::vector<SDiagnostic> FindUnusableStateFolder(const std::string& eventRoot) {
    constexpr std::string_view kConsequence =
        "; a run could make no journal, and if it were killed, the events of its visit would be lost";
    const std::string folder = JournalPlace(eventRoot);
    if (folder.empty()) {
        return {{0, "there is no state folder" + std::string(kConsequence)}};
    }
    if (CanHoldJournals(folder)) {
        return {};
    }
    return {{0, "the state folder " + DisplayPath(folder) + " cannot be used" + std::string(kConsequence)}};
}

std::vector<SDiagnostic> FindMissingLocks(const std::string& eventRoot) {
    const std::string path =
        GetPathKind(eventRoot) == EPathKind::Folder ? MakeUniqueFile(eventRoot, "RWT") : std::string();
    if (path.empty()) {
        return {};
    }
    CFile file;
    const bool hasLocks =
        !file.Open(path, {.read = true, .write = true}).Good() || file.TryLock() != EFileLock::Unknown;
    static_cast<void>(file.Close());
    RemoveFile(path);
    if (hasLocks) {
        return {};
    }
    return {{0, "the file system of " + DisplayPath(eventRoot) +
                    " has no file locks; two runs at the same time could overwrite each other's events"}};
}

std::vector<SDiagnostic> FindFullDisks(const std::string& eventRoot, const std::string& logPath,
                                       const std::function<SFreeSpace(const std::string& path)>& roomAt) {
    struct SPlaceRow {
        std::string path;
        std::string_view consequence;
    };
    const std::array places{
        SPlaceRow{eventRoot, "; the relays keep their events"},
        SPlaceRow{logPath, "; lines of the error log would be lost"},
        SPlaceRow{JournalPlace(eventRoot), "; a run could make no journal"},
    };
    std::vector<SDiagnostic> diagnostics;
    for (const SPlaceRow& place : places) {
        const SFreeSpace room = place.path.empty() ? SFreeSpace() : roomAt(place.path);
        const bool isFull = room.bytes.value_or(kLeastFreeSpace) < kLeastFreeSpace;
        if (isFull || room.files.value_or(kLeastFreeFiles) < kLeastFreeFiles) {
            diagnostics.push_back({0, "the disk of " + DisplayPath(place.path) +
                                          (isFull ? " is full" : " can take no more files") +
                                          std::string(place.consequence)});
        }
    }
    return diagnostics;
}

std::vector<SDiagnostic> FindLeftoverEvents(const std::string& eventRoot, const std::string& iniPath) {
    CRootLeftovers known;
    const SSiteLeftovers leftovers = FindLeftovers(eventRoot, iniPath, EOtherRoots::Former, known);
    std::vector<SDiagnostic> diagnostics;
    for (const std::string& line : DescribeLeftovers(leftovers)) {
        diagnostics.push_back({0, line + "; see \"ruvoctl recover\""});
    }
    if (!leftovers.IsRead()) {
        diagnostics.push_back({0, "this user cannot read " + leftovers.UnreadFolder() +
                                      ", so events that are there and in no day file may not be reported"});
    }
    return diagnostics;
}

} // namespace ruvo
