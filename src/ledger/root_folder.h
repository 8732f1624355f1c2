// The folders of the state folder: one for each event root, with its journals and set-aside files.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace ruvo {

/// The folder of an event root, which may be missing; empty when there is no state folder.
[[nodiscard]] std::string FolderOfJournals(const std::string& eventRoot);
/// The same, in a state folder that is only read.
[[nodiscard]] std::string FolderOfRoot(const std::string& state, const std::string& eventRoot);

/// Creates the folder if it is missing, and notes in it to which event root it belongs. False when it cannot
/// be used.
[[nodiscard]] bool PrepareRootFolder(const std::string& folder, const std::string& eventRoot);
/// The full path of the event root to which the folder belongs, links resolved, in the system's own form;
/// empty when it is not noted there, nullopt when the note cannot be read.
[[nodiscard]] std::optional<std::string> EventRootOf(const std::string& folder);

/// The folders of all event roots, by name; none where there is no state folder, nullopt when it cannot be
/// read.
[[nodiscard]] std::optional<std::vector<std::string>> RootFoldersIn(const std::string& stateFolder);
/// The one that a person means by an event root's path, which may be gone, or by the folder's name; empty for
/// none, nullopt when the state folder, or a note in it, cannot be read.
[[nodiscard]] std::optional<std::string> FindRootFolder(const std::string& stateFolder,
                                                        const std::string& meant);

} // namespace ruvo
