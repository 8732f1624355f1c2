#include "paths/path_utilities.h"

#include "base/text.h"
#include "platform/files.h"
#include "platform/full_path.h"
#include "platform/modules.h"

#include <algorithm>
#include <cstdint>

namespace ruvo {

namespace {

constexpr const char* kForbidden = "/*?\"<>|";
constexpr const char* kSeparators = "\\/";
constexpr int kAttempts = 4; // the first, and three when others remove what was just found

bool StartsWithDriveRoot(const std::string& path) {
    return IsLetter(path[0]) && path[1] == ':' && path[2] == '\\';
}

// Where the folders that can be made begin: after server and share of a network path, which no program can
// create.
std::size_t EndOfShare(const std::string& folder) {
    if (!folder.starts_with("\\\\")) {
        return 0;
    }
    const std::size_t server = folder.find('\\', 2);
    const std::size_t share = server == std::string::npos ? server : folder.find('\\', server + 1);
    return std::min(share, folder.size());
}

enum class EWalk : std::uint8_t { Done, Disturbed, Refused };

// One walk from the top to the folder itself. What counts is that each level is there; only those that this
// call has made are its own. Disturbed when a level is gone that this walk has found, or that was in the way
// of making it: another walk may fare better. What else fails would fail again, and cost the wait for a
// server that does not answer again.
EWalk MakeMissingLevels(const std::string& folder, std::vector<std::string>& made) {
    bool isFirst = true;
    for (std::size_t end = EndOfShare(folder); end != std::string::npos; isFirst = false) {
        end = folder.find('\\', end + 1);
        const std::string level = folder.substr(0, end);
        if (DirectoryExists(level)) {
            continue;
        }
        const SFileResult result = MakeFolder(level);
        if (result.Good()) {
            made.push_back(level);
        } else if (!DirectoryExists(level)) { // nor has another process made it at the same moment
            const bool isParentGone =
                result.failure == EFileFailure::NotFound || result.failure == EFileFailure::BadPath;
            const bool isLevelGone =
                result.failure == EFileFailure::Exists && GetPathKind(level) == EPathKind::Missing;
            return (isParentGone && !isFirst) || isLevelGone ? EWalk::Disturbed : EWalk::Refused;
        }
    }
    return EWalk::Done;
}

} // namespace

SPathParts SplitPath(const std::string& path) {
    const std::size_t drive = path.size() >= 2 && path[1] == ':' ? 2 : 0;
    const std::size_t separator = path.find_last_of(kSeparators);
    const std::size_t name = separator == std::string::npos ? drive : separator + 1;
    const std::size_t dot = path.find_last_of('.');
    const std::size_t extension = dot == std::string::npos || dot < name ? path.size() : dot;
    return {path.substr(0, drive), path.substr(drive, name - drive), path.substr(name, extension - name),
            path.substr(extension)};
}

std::string ParentFolder(const std::string& path) {
    const std::size_t end = path.rfind('\\');
    return end == std::string::npos ? std::string() : path.substr(0, end);
}

bool HasForbiddenCharacter(const std::string& path) {
    return path.find_first_of(kForbidden) != std::string::npos;
}

void StripTrailingSeparators(std::string& path) {
    path.erase(path.find_last_not_of(kSeparators) + 1);
}

std::string FullFolderPath(const std::string& folder) {
    std::string full = FullPath(folder);
    StripTrailingSeparators(full);
    return full;
}

bool DirectoryExists(const std::string& path) {
    std::string folder = path;
    StripTrailingSeparators(folder);
    const EPathKind kind = GetPathKind(folder);
    return kind == EPathKind::Missing ? IsDriveRoot(folder) : kind == EPathKind::Folder;
}

bool IsExistingFile(const std::string& path) {
    return GetPathKind(path) == EPathKind::File;
}

std::string NearestExisting(const std::string& path) {
    const std::size_t given = EndOfShare(path);
    std::string nearest = path;
    for (std::size_t end = nearest.rfind('\\');
         end != std::string::npos && end > 0 && end >= given && GetPathKind(nearest) == EPathKind::Missing &&
         !IsLink(nearest);
         end = nearest.rfind('\\')) {
        nearest.erase(end);
    }
    return nearest;
}

bool MakeDirectory(const std::string& path) {
    std::string folder = path;
    StripTrailingSeparators(folder);
    if (folder.empty()) {
        return false;
    }
    // What counts is that the folder is there: another process may make it at the same moment.
    return DirectoryExists(folder) || MakeFolder(folder).Good() || DirectoryExists(folder);
}

bool CreateDirectoryPath(const std::string& path, std::string& firstCreated) {
    std::vector<std::string> made;
    const bool isThere = MakeFolderChain(path, made);
    firstCreated = made.empty() ? firstCreated : made.front();
    return isThere;
}

bool MakeFolderChain(const std::string& path, std::vector<std::string>& made) {
    std::string folder = path;
    StripTrailingSeparators(folder);
    // On a share out of reach each question may wait for minutes: none is asked twice.
    const EPathKind kind = GetPathKind(folder);
    if (kind == EPathKind::Folder || (kind == EPathKind::Missing && IsDriveRoot(folder))) {
        return true;
    }
    if (folder.empty() || HasForbiddenCharacter(path) || kind == EPathKind::File) {
        return false;
    }
    if (MakeFolder(folder).Good()) { // nearly always it alone is missing
        made.push_back(folder);
        return true;
    }
    EWalk walk = EWalk::Disturbed;
    for (int attempt = 0; attempt < kAttempts && walk == EWalk::Disturbed; ++attempt) {
        walk = MakeMissingLevels(folder, made);
    }
    return walk == EWalk::Done;
}

bool RemoveFolderTree(const std::string& folder) {
    std::vector<SFolderEntry> entries;
    if (!ListFolder(folder, entries)) {
        return false;
    }
    for (const SFolderEntry& entry : entries) {
        if (entry.isFolder && !RemoveFolderTree(folder + "\\" + entry.name)) {
            return false;
        }
    }
    return RemoveEmptyFolder(folder);
}

bool CopyFileStrict(const std::string& source, const std::string& destination) {
    return CopyToNewFile(source, destination) && IsExistingFile(destination);
}

std::string TempFolder() {
    return TemporaryFolder();
}

std::string AbsoluteFromProgramFolder(const std::string& path) {
    if (path.size() >= 3 && (path.starts_with("\\\\") || StartsWithDriveRoot(path))) {
        return path;
    }
    const std::string program = ProgramPath();
    return program.substr(0, program.find_last_of('\\')) + "\\" + path;
}

} // namespace ruvo
