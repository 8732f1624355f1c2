// The proofs that a folder or a file can be written, which leave the disk as they found it.
#include "paths/path_utilities.h"

#include "platform/files.h"

#include <algorithm>
#include <new>

namespace ruvo {

namespace {

constexpr const char* kProbePrefix = "RWT";

// Others make and remove folders at the same time, among them proofs: one that fails is tried again.
constexpr int kAttempts = 4;

// Makes a folder for the length of a proof. Only what was made for it goes again, and only while nothing is
// in it: what others have put there meanwhile is theirs.
class CTrialFolder {
public:
    CTrialFolder() = default;
    CTrialFolder(const CTrialFolder&) = delete;
    CTrialFolder& operator=(const CTrialFolder&) = delete;
    ~CTrialFolder() {
        try { // a level that others took away meanwhile was made again, and stands here twice
            std::for_each(m_made.rbegin(), m_made.rend(), RemoveEmptyFolder);
        } catch (const std::bad_alloc&) { // NOLINT(bugprone-empty-catch): an empty folder stays
        }
    }

    bool Make(const std::string& folder) { return MakeFolderChain(folder, m_made); }

private:
    std::vector<std::string> m_made;
};

bool IsFilePathUsable(const std::string& filePath) {
    return !filePath.empty() && !HasForbiddenCharacter(filePath) && !filePath.ends_with('\\');
}

std::string FolderOfFile(const std::string& filePath) {
    const SPathParts parts = SplitPath(filePath);
    return parts.drive + parts.folder;
}

bool OpensForWriting(const std::string& path, SOpenMode mode) {
    CFile file;
    return file.Open(path, mode).Good() && file.Close().Good();
}

bool ProveFolder(const std::string& folder) {
    CTrialFolder trial;
    const std::string probe = trial.Make(folder) ? MakeUniqueFile(folder, kProbePrefix) : std::string();
    if (probe.empty()) {
        return false;
    }
    const bool proven = OpensForWriting(probe, {.write = true});
    RemoveFile(probe);
    return proven;
}

// A log that somebody begins to write while it is being proven must not be taken from him: he asks for its
// lock before he writes, and looks then whether the file is still there.
bool MakeAndRemoveFile(const std::string& filePath) {
    CFile file;
    const SOpenMode mode{.write = true, .create = true, .exclusive = true, .removable = true};
    if (!file.Open(filePath, mode).Good()) {
        return false;
    }
    if (file.TryLock() != EFileLock::HeldByAnother) {
        file.RemoveIfEmpty();
    }
    return file.Close().Good();
}

bool ProveFile(const std::string& filePath) {
    CFile file;
    const SFileResult found = file.Open(filePath, {.write = true, .removable = true});
    if (found.Good()) {
        return file.Close().Good();
    }
    if (found.failure != EFileFailure::NotFound && found.failure != EFileFailure::BadPath) {
        return false;
    }
    CTrialFolder trial;
    return trial.Make(FolderOfFile(filePath)) && MakeAndRemoveFile(filePath);
}

bool Succeeds(bool (*proof)(const std::string&), const std::string& path) {
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        if (proof(path)) {
            return true;
        }
    }
    return false;
}

} // namespace

void EnsureFolderOfFile(const std::string& filePath) {
    if (!IsFilePathUsable(filePath) || IsExistingFile(filePath)) {
        return;
    }
    std::string firstCreated;
    CreateDirectoryPath(FolderOfFile(filePath), firstCreated);
}

bool CanWriteInFolder(const std::string& folder) {
    std::string stripped = folder;
    StripTrailingSeparators(stripped);
    if (stripped.empty() || HasForbiddenCharacter(folder)) {
        return false;
    }
    return Succeeds(ProveFolder, stripped);
}

bool CanCreateFile(const std::string& filePath) {
    return IsFilePathUsable(filePath) && Succeeds(ProveFile, filePath);
}

} // namespace ruvo
