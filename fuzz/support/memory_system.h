// An operating system in memory: files and folders, a clock that stands, no registry, no debug output.
// Linking it takes the place of the platform's own, so that nothing a target does leaves the process, and
// what it did can be looked at.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace ruvo::fuzz {

using FileBytes = std::vector<std::uint8_t>;

/// Paths are full, in Windows form, without a separator at their end; the one drive is "C:".
struct SMemorySystem {
    std::map<std::string, std::shared_ptr<FileBytes>> files;
    std::set<std::string> folders{"C:"};
    std::string currentFolder = "C:\\";
    std::int64_t unixSeconds = 1'700'000'000;
    /// Every path text, as it was given, of a file opened, or of a file or folder made, changed or removed.
    std::vector<std::string> touched;

    void AddFolder(const std::string& path);
    void AddFile(const std::string& path, FileBytes bytes);
    /// The file's bytes; null when there is no such file.
    const FileBytes* Find(const std::string& path) const;
};

/// The one system of the process.
SMemorySystem& MemorySystem();

} // namespace ruvo::fuzz
