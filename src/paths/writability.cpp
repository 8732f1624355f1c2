// The proofs that a folder or a file can be written, which leave the disk as they found it.
#include "paths/path_utilities.h"

#include "platform/files.h"

#include <algorithm>
#include <cstdint>
#include <new>

namespace ruvo {

namespace {

constexpr const char* kProbePrefix = "RWT";

constexpr int kAttempts = 4; // the first, and three when others remove what was just found

/// Disturbed: others, among them proofs, have made or removed at the same time what it was about.
enum class EProof : std::uint8_t { Given, Disturbed, Refuted };

// Makes a folder for the length of a proof. Only what was made for it goes again, and only while nothing is
// in it: what others have put there meanwhile is theirs.
class CTrialFolder {
public:
    CTrialFolder() = default;
    CTrialFolder(const CTrialFolder&) = delete;
    CTrialFolder& operator=(const CTrialFolder&) = delete;
    ~CTrialFolder() {
        try { // a level that others removed meanwhile was made again, and is listed twice
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

EProof ProveFolder(const std::string& folder) {
    CTrialFolder trial;
    if (!trial.Make(folder)) {
        return EProof::Refuted;
    }
    const std::string probe = MakeUniqueFile(folder, kProbePrefix);
    if (probe.empty()) { // the folder may be gone, or be there again already
        return CanMakeEntryIn(folder, EPathKind::File).failure == EFileFailure::AccessDenied
                   ? EProof::Refuted
                   : EProof::Disturbed;
    }
    const bool opens = OpensForWriting(probe, {.write = true});
    const bool wasThere = RemoveFile(probe);
    return opens ? EProof::Given : wasThere ? EProof::Refuted : EProof::Disturbed;
}

// A log that another process begins to write during the test must not be removed: that process takes the lock
// before it writes, and then checks that the file still exists.
EProof MakeAndRemoveFile(const std::string& filePath) {
    using enum EFileFailure;
    CFile file;
    const SOpenMode mode{.write = true, .create = true, .exclusive = true, .removable = true};
    const SFileResult made = file.Open(filePath, mode);
    if (!made.Good()) { // the folder was removed, or another process created the file
        const bool isDisturbed =
            made.failure == NotFound || made.failure == BadPath || made.failure == Exists;
        return isDisturbed ? EProof::Disturbed : EProof::Refuted;
    }
    if (file.TryLock() != EFileLock::HeldByAnother) {
        file.RemoveIfEmpty();
    }
    return file.Close().Good() ? EProof::Given : EProof::Refuted;
}

EProof ProveFile(const std::string& filePath) {
    CFile file;
    const SFileResult found = file.Open(filePath, {.write = true, .removable = true});
    if (found.Good()) {
        return file.Close().Good() ? EProof::Given : EProof::Refuted;
    }
    if (found.failure != EFileFailure::NotFound && found.failure != EFileFailure::BadPath) {
        // A file that is being removed, which some systems hide, refuses access for a moment.
        const bool isGoing =
            found.failure == EFileFailure::AccessDenied && GetPathKind(filePath) == EPathKind::Missing;
        return isGoing ? EProof::Disturbed : EProof::Refuted;
    }
    CTrialFolder trial;
    return trial.Make(FolderOfFile(filePath)) ? MakeAndRemoveFile(filePath) : EProof::Refuted;
}

bool Succeeds(EProof (*prove)(const std::string&), const std::string& path) {
    EProof proof = EProof::Disturbed;
    for (int attempt = 0; attempt < kAttempts && proof == EProof::Disturbed; ++attempt) {
        proof = prove(path);
    }
    return proof == EProof::Given;
}

} // namespace

bool EnsureFolderOfFile(const std::string& filePath) {
    if (!IsFilePathUsable(filePath)) {
        return false;
    }
    std::string firstCreated;
    return IsExistingFile(filePath) || CreateDirectoryPath(FolderOfFile(filePath), firstCreated);
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
