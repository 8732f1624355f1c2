// The proofs that a folder or a file can be written, which leave the disk as they found it.
#include "paths/path_utilities.h"

#include "platform/files.h"

namespace ruvo {

namespace {

constexpr const char* kProbePrefix = "RWT";

// Makes a folder for the length of a proof; whatever was made for it goes again at the end.
class CTrialFolder {
public:
    explicit CTrialFolder(const std::string& folder) : m_ready(CreateDirectoryPath(folder, m_firstCreated)) {}
    CTrialFolder(const CTrialFolder&) = delete;
    CTrialFolder& operator=(const CTrialFolder&) = delete;
    ~CTrialFolder() {
        if (!m_firstCreated.empty()) {
            RemoveFolderTree(m_firstCreated);
        }
    }

    bool IsReady() const { return m_ready; }

private:
    std::string m_firstCreated; // before m_ready, whose making fills it
    bool m_ready;
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

bool ProveFile(const std::string& filePath, bool existed) {
    if (!OpensForWriting(filePath, {.write = true, .create = true})) {
        return false;
    }
    if (!existed && !IsLink(filePath)) { // a link is somebody's, even while it leads nowhere
        RemoveFile(filePath);
    }
    return true;
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
    const CTrialFolder trial(stripped);
    const std::string probe = trial.IsReady() ? MakeUniqueFile(stripped, kProbePrefix) : std::string();
    if (probe.empty()) {
        return false;
    }
    const bool proven = OpensForWriting(probe, {.write = true});
    RemoveFile(probe);
    return proven;
}

bool CanCreateFile(const std::string& filePath) {
    if (!IsFilePathUsable(filePath)) {
        return false;
    }
    if (IsExistingFile(filePath)) {
        return ProveFile(filePath, true);
    }
    const CTrialFolder trial(FolderOfFile(filePath));
    return trial.IsReady() && ProveFile(filePath, false);
}

} // namespace ruvo
