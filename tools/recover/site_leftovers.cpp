#include "tools/recover/site_leftovers.h"

#include "ledger/root_folder.h"
#include "ledger/visit_history.h"
#include "ledger/visit_record.h"
#include "platform/full_path.h"
#include "platform/state_folder.h"

#include <algorithm>

namespace ruvo {

namespace {

SRootLeftovers Read(const std::string& folder, const std::string& eventRoot) {
    SRootLeftovers root;
    root.eventRoot = eventRoot.empty() ? EventRootOf(folder).value_or("") : DisplayPath(eventRoot);
    const std::string place = eventRoot.empty() ? FullPath(root.eventRoot) : eventRoot;
    root.isThere = !place.empty() && GetPathKind(place) == EPathKind::Folder;
    root.found = ReadLeftovers(folder);
    return root;
}

bool MayHoldEvents(const SRootLeftovers& root) {
    return !root.found.IsEmpty() || !root.found.isRead;
}

SRootLeftovers ReadOther(const std::string& folder) {
    SRootLeftovers root = Read(folder, "");
    if (MayHoldEvents(root) && !root.eventRoot.empty()) {
        root.areRunsKnown = CVisitHistory(FullPath(root.eventRoot))
                                .ForEach([&root](const SVisitLine& line, ERunState /*state*/) {
                                    root.iniPaths.insert(line.iniPath);
                                });
    }
    return root;
}

/// Whether the status of another site reports what is left there.
bool IsOfAnotherSite(const SRootLeftovers& root) {
    return std::ranges::any_of(root.iniPaths, [](const std::string& iniPath) {
        return GetPathKind(FullPath(iniPath)) == EPathKind::File;
    });
}

bool IsFormerRootOf(const std::string& iniPath, const SRootLeftovers& root) {
    return !root.areRunsKnown || (!iniPath.empty() && root.iniPaths.contains(RecordedIniPath(iniPath))) ||
           (!root.isThere && !IsOfAnotherSite(root));
}

} // namespace

bool SSiteLeftovers::IsRead() const {
    return !roots.empty() &&
           std::ranges::all_of(roots, [](const SRootLeftovers& root) { return root.found.isRead; });
}

std::string SSiteLeftovers::UnreadFolder() const {
    const auto unread =
        std::ranges::find_if(roots, [](const SRootLeftovers& root) { return !root.found.isRead; });
    if (unread != roots.end()) {
        return DisplayPath(unread->found.folder);
    }
    return roots.empty() ? "the state folder" : "";
}

std::optional<std::uint64_t> SSiteLeftovers::OrUnknown(std::uint64_t events) const {
    return events > 0 || IsRead() ? std::optional(events) : std::nullopt;
}

std::optional<std::uint64_t> SSiteLeftovers::EventsWaiting() const {
    std::uint64_t events = 0;
    for (const SRootLeftovers& root : roots) {
        for (const SWaitingVisit& visit : root.found.waiting) {
            events += visit.events;
        }
    }
    return OrUnknown(events);
}

std::optional<std::uint64_t> SSiteLeftovers::EventsSetAside() const {
    std::uint64_t events = 0;
    for (const SRootLeftovers& root : roots) {
        for (const SSetAsideFile& file : root.found.setAside) {
            events += file.events;
        }
    }
    return OrUnknown(events);
}

const std::optional<std::vector<std::string>>& CRootLeftovers::FoldersIn(const std::string& stateFolder) {
    auto folders = m_folders.find(stateFolder);
    if (folders == m_folders.end()) {
        folders = m_folders.emplace(stateFolder, RootFoldersIn(stateFolder)).first;
    }
    return folders->second;
}

const SRootLeftovers& CRootLeftovers::Of(const std::string& folder) {
    auto root = m_roots.find(folder);
    if (root == m_roots.end()) {
        root = m_roots.emplace(folder, ReadOther(folder)).first;
    }
    return root->second;
}

SSiteLeftovers FindLeftovers(const std::string& eventRoot, const std::string& iniPath, EOtherRoots others,
                             CRootLeftovers& known) {
    SSiteLeftovers leftovers;
    std::string own;
    for (const std::string& state :
         StateFoldersToRead()) { // where there are several, one has the event root's
        const std::string folder = FolderOfRoot(state, eventRoot);
        SRootLeftovers root = Read(folder.empty() ? state : folder, eventRoot);
        const bool isHere = !folder.empty() && root.found.isRead && GetPathKind(folder) == EPathKind::Folder;
        if (leftovers.roots.empty() || isHere) {
            own = folder;
            leftovers.stateFolder = state;
            leftovers.roots.clear();
            leftovers.roots.push_back(std::move(root));
        }
        if (isHere) {
            break;
        }
    }
    const auto& folders = known.FoldersIn(leftovers.stateFolder);
    if (!folders && leftovers.IsRead()) {
        SRootLeftovers& unknown = leftovers.roots.emplace_back();
        unknown.found.folder = leftovers.stateFolder;
        unknown.found.isRead = false;
    }
    for (const std::string& folder : folders.value_or(std::vector<std::string>())) {
        if (folder == own) {
            continue;
        }
        const SRootLeftovers& root = known.Of(folder);
        if (MayHoldEvents(root) && (others == EOtherRoots::All || IsFormerRootOf(iniPath, root))) {
            leftovers.roots.push_back(root);
        }
    }
    return leftovers;
}

} // namespace ruvo
