#include "ledger/root_folder.h"

#include "base/digest.h"
#include "base/text.h"
#include "platform/files.h"
#include "platform/full_path.h"
#include "platform/full_path_rules.h"
#include "platform/native_text.h"
#include "platform/state_folder.h"

#include <algorithm>
#include <cstdint>
#include <span>
#include <string_view>

namespace ruvo {

namespace {

constexpr std::string_view kNote = "\\event-root.txt";
constexpr std::string_view kLongForm = "\\\\?\\"; // of one system's resolved paths

/// A folder's name for people: what is no letter or digit becomes a dash.
std::string ReadableName(const std::string& path) {
    constexpr std::size_t kLongest = 40;
    std::string name = path.substr(path.find_last_of('\\') + 1).substr(0, kLongest);
    std::ranges::replace_if(
        name, [](char c) { return !IsDigit(c) && !IsLetter(c); }, '-');
    return name;
}

/// The same whichever program asks, and so for its bytes in a file that all of them read.
std::string FolderName(const std::string& resolvedRoot) {
    const std::string root = StoredText(resolvedRoot).value_or(resolvedRoot);
    return ReadableName(root) + "-" + DigestOf(root);
}

/// Where \\server\share ends; 0 for another path.
std::size_t EndOfShare(const std::string& path) {
    const std::size_t server = path.starts_with("\\\\") ? path.find('\\', 2) : std::string::npos;
    return server == std::string::npos ? 0 : std::min(path.find('\\', server + 1), path.size());
}

/// The full path with all links resolved, or, of a folder that is not there, the one that it would have if it
/// were made: the first visit makes it, and one that writes nothing into it removes it again. A share that
/// cannot be reached has the form that it has when it can.
std::string ResolvedOrMissing(const std::string& eventRoot) {
    std::string there = eventRoot;
    std::string resolved = ResolvedFolder(there);
    while (resolved.empty()) {
        if (const std::size_t share = EndOfShare(eventRoot); share != 0 && there.size() <= share) {
            return WithSmallShare(std::string(kLongForm) + "UNC" + eventRoot.substr(1));
        }
        const std::size_t separator = there.rfind('\\');
        if (separator == std::string::npos) {
            return {};
        }
        there.erase(separator);
        resolved = ResolvedFolder(there.ends_with(':') ? there + "\\" : there);
    }
    if (there.size() < eventRoot.size() && resolved.ends_with('\\')) {
        resolved.pop_back();
    }
    return WithSmallShare(resolved + eventRoot.substr(there.size()));
}

/// Links resolved, but as people write it.
std::string NoteFor(const std::string& eventRoot) {
    constexpr std::string_view kServerForm = "\\\\?\\UNC\\";
    const std::string root = ResolvedOrMissing(eventRoot);
    if (root.starts_with(kServerForm)) {
        return DisplayPath("\\\\" + root.substr(kServerForm.size()));
    }
    return DisplayPath(root.starts_with(kLongForm) ? root.substr(kLongForm.size()) : root);
}

bool HasRootFolderName(const std::string& name) {
    constexpr std::size_t kDigits = 16;
    const std::size_t dash = name.rfind('-');
    return dash != std::string::npos && name.size() - dash - 1 == kDigits &&
           std::ranges::all_of(name.substr(dash + 1), [](char c) { return HexDigitValue(c) >= 0; });
}

} // namespace

std::string FolderOfJournals(const std::string& eventRoot) {
    return FolderOfRoot(StateFolder(), eventRoot);
}

std::string FolderOfRoot(const std::string& state, const std::string& eventRoot) {
    const std::string root = ResolvedOrMissing(eventRoot);
    return state.empty() || root.empty() ? std::string() : state + "\\" + FolderName(root);
}

bool PrepareRootFolder(const std::string& folder, const std::string& eventRoot) {
    if (folder.empty() || !MakePrivateFolder(folder)) {
        return false;
    }
    const std::string root = NoteFor(eventRoot);
    if (EventRootOf(folder) != root) { // it only helps people: what comes of it does not matter
        CFile note;
        const std::string line = StoredText(root).value_or(root) + "\n";
        std::size_t count = 0;
        const SOpenMode mode{
            .write = true, .create = true, .truncate = true, .plain = true, .ownerOnly = true};
        static_cast<void>(
            note.Open(folder + std::string(kNote), mode).Good() &&
            note.Write({reinterpret_cast<const std::uint8_t*>(line.data()), line.size()}, count).Good() &&
            note.FlushToDisk().Good());
    }
    return true;
}

std::optional<std::string> EventRootOf(const std::string& folder) {
    constexpr std::size_t kLongest = 4096;
    const std::string path = folder + std::string(kNote);
    CFile note;
    std::vector<std::uint8_t> bytes(kLongest);
    std::size_t count = 0;
    if (!note.Open(path, {.read = true, .plain = true}).Good() || !note.Read(bytes, count).Good()) {
        return IsAbsent(path) ? std::optional(std::string()) : std::nullopt;
    }
    const std::string text(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(count));
    return text.ends_with('\n') ? TextOfStored(text.substr(0, text.size() - 1)) : std::string();
}

std::optional<std::vector<std::string>> RootFoldersIn(const std::string& stateFolder) {
    std::vector<SFolderEntry> entries;
    std::vector<std::string> folders;
    if (!stateFolder.empty() && !ListFolder(stateFolder, entries) && !IsAbsent(stateFolder)) {
        return std::nullopt;
    }
    for (const SFolderEntry& entry : entries) {
        if (entry.isFolder && HasRootFolderName(entry.name)) {
            folders.push_back(stateFolder + "\\" + entry.name);
        }
    }
    std::ranges::sort(folders);
    return folders;
}

std::optional<std::string> FindRootFolder(const std::string& stateFolder, const std::string& meant) {
    const auto folders = RootFoldersIn(stateFolder);
    if (!folders) {
        return std::nullopt;
    }
    const std::string full = FullPath(meant);
    const std::string resolved = ResolvedOrMissing(full);
    bool areNotesRead = true;
    for (const std::string& folder : *folders) {
        const std::string name = folder.substr(stateFolder.size() + 1);
        const auto noted = EventRootOf(folder);
        if (name == meant || folder == full || name == FolderName(full) || name == FolderName(resolved) ||
            (!full.empty() && noted == DisplayPath(full))) {
            return folder;
        }
        areNotesRead = areNotesRead && noted;
    }
    return areNotesRead ? std::optional(std::string()) : std::nullopt;
}

} // namespace ruvo
