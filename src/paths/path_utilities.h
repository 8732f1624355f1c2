// File-name and path utilities on Windows-form path texts. Nothing here throws; each function reports by its
// result.
#pragma once

#include <string>
#include <vector>

namespace ruvo {

/// A path cut as the C runtime cuts it; the four parts in a row are the path again.
struct SPathParts {
    std::string drive;     ///< "C:" or empty
    std::string folder;    ///< with its separator at the end, or empty
    std::string name;      ///< up to the last dot of the file name
    std::string extension; ///< from that dot on, or empty
};

/// Cuts a path into drive, folder, name and extension; both separators count.
SPathParts SplitPath(const std::string& path);
/// The folder of a full path, without a separator at its end; empty for a drive.
std::string ParentFolder(const std::string& path);

/// True when the path holds one of / * ? " < > | and so is refused as a whole.
bool HasForbiddenCharacter(const std::string& path);

/// Removes "\" and "/" from the end of the path.
void StripTrailingSeparators(std::string& path);

/// The full path of a folder, without separators at its end; empty when it cannot be formed. Callers that
/// append to it must check that first: "\name" would be a file in the root of the current drive.
[[nodiscard]] std::string FullFolderPath(const std::string& folder);

/// True when the path, without trailing separators, is a folder or the root of a drive.
bool DirectoryExists(const std::string& path);

/// True when the path exists and is no folder.
bool IsExistingFile(const std::string& path);

/// The path itself when something stands there, be it a link that leads nowhere, else the nearest folder
/// above it that exists. Drive, or server and share, are not looked at: they are the answer when nothing
/// below is.
std::string NearestExisting(const std::string& path);

/// Makes one folder; true when it exists afterwards, no matter which process made it. False for an empty
/// path.
bool MakeDirectory(const std::string& path);

/// Makes a folder and every missing one above it, and begins again, three times at most, when one of them is
/// removed meanwhile; what fails otherwise is not tried again. `firstCreated` receives the topmost folder
/// made and stays as it was when none was made. On failure the folders already made stay.
bool CreateDirectoryPath(const std::string& path, std::string& firstCreated);

/// The same; `made` receives every folder that this call has made, none that others made at the same moment.
bool MakeFolderChain(const std::string& path, std::vector<std::string>& made);

/// Makes the folder of a file that does not exist yet. An empty or invalid path, or one that ends with "\",
/// is left alone. True when the folder or the file is there.
bool EnsureFolderOfFile(const std::string& filePath);

/// Proves by a temporary file that the folder can be written. A folder made for the proof is removed again,
/// unless others have put something into it meanwhile.
bool CanWriteInFolder(const std::string& folder);

/// Proves that the file can be opened for writing, or made. An existing file is left unchanged; a file or
/// folder made for the proof is removed again, unless others have put something into it meanwhile.
bool CanCreateFile(const std::string& filePath);

/// Removes a folder and the folders in it, depth first. Files stay where they are, so a folder that holds one
/// (or holds a folder that does) stays too and the result is false.
bool RemoveFolderTree(const std::string& folder);

/// Copies a file to a destination that must not exist; true when it is there as a file afterwards.
bool CopyFileStrict(const std::string& source, const std::string& destination);

/// The folder for temporary files, ending in a backslash; empty when it cannot be had.
std::string TempFolder();

/// A UNC path or one that begins with a letter and ":\" as it is; any other path below the folder of the
/// running program.
std::string AbsoluteFromProgramFolder(const std::string& path);

} // namespace ruvo
