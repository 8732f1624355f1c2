#include "tools/events/event_files.h"

#include "base/text.h"
#include "paths/path_utilities.h"
#include "platform/full_path.h"
#include "platform/ini_text.h"
#include "platform/state_folder.h"
#include "tools/file_path.h"
#include "tools/sites/site.h"
#include "tools/text_encoding.h"
#include "tools/typed_path.h"

#include <algorithm>
#include <filesystem>
#include <set>
#include <string_view>
#include <system_error>

namespace ruvo {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view kDatePattern = "-0000-00-00";

bool IsDate(std::string_view text) {
    return text.size() == kDatePattern.size() &&
           std::ranges::equal(text, kDatePattern, [](char c, char pattern) {
               return pattern == '0' ? IsDigit(c) : c == pattern;
           });
}

/// Where the last date of a name without its ending begins; npos for none.
std::size_t FindDate(std::string_view stem) {
    for (std::size_t at = stem.size(); at-- > 0;) {
        if (IsDate(stem.substr(at, kDatePattern.size()))) {
            return at;
        }
    }
    return std::string_view::npos;
}

bool HasDayFileEnding(const fs::path& path) {
    const std::string ending = path.extension().string();
    return ending.size() == 4 && ContainsText(ending, ".evt");
}

void Fail(SFoundFiles& found, const std::string& path, const std::string& reason) {
    found.failures.push_back(path + ": " + reason);
}

/// One folder's entries; folders in it are put on the list of those still to be read.
void ReadFolder(const fs::path& folder, std::vector<fs::path>& folders, std::vector<std::string>& paths,
                SFoundFiles& found) {
    std::error_code error;
    fs::directory_iterator entry(folder, error);
    for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
        std::error_code
            unknown; // these questions need the system only where the listing leaves the kind open
        if (entry->is_symlink(unknown)) {
            continue;
        }
        if (entry->is_directory(unknown)) {
            folders.push_back(entry->path());
        } else if (HasDayFileEnding(entry->path()) && entry->is_regular_file(unknown)) {
            paths.push_back(entry->path().string());
        }
    }
    if (error) {
        Fail(found, folder.string(), error.message());
    }
}

void AddFile(const std::string& path, const std::string& site, SFoundFiles& found) {
    found.files.push_back({path, RelayOfFileName(FilePath(path).filename().string()), site});
}

/// "north" for "/var/lib/ruvo/north/".
std::string NameOfFolder(const std::string& path) {
    std::error_code ignored;
    const fs::path folder = fs::weakly_canonical(FilePath(OwnSpelling(path)), ignored);
    return SystemTextToUtf8((folder.has_filename() ? folder : folder.parent_path()).filename().string());
}

void AddFolder(const std::string& path, const std::string& site, SFoundFiles& found) {
    std::vector<fs::path> folders{FilePath(path)};
    std::vector<std::string> paths;
    while (!folders.empty()) {
        const fs::path folder = std::move(folders.back());
        folders.pop_back();
        ReadFolder(folder, folders, paths, found);
    }
    std::ranges::sort(paths);
    for (const std::string& file : paths) {
        AddFile(file, site, found);
    }
}

/// The event root of an INI file, in the environment of its visits. One of several INI files is taken once.
void AddSite(const std::string& ini, std::set<std::string>& roots, SFoundFiles& found) {
    const CSite site(TypedPath(ini));
    if (!site.Places()) {
        found.failures.push_back(site.Failure());
        return;
    }
    const std::string root = SystemPath(site.Places()->events);
    const std::string resolved = ResolvedFolder(site.Places()->events);
    if (!roots.insert(resolved.empty() ? root : resolved).second) {
        return;
    }
    std::error_code error;
    if (fs::is_directory(FilePath(root), error)) {
        AddFolder(root, site.Name(), found);
    } else {
        Fail(found, root, "no such folder: no visit has stored an event yet, or the path is wrong");
    }
}

} // namespace

SFoundFiles FindDayFiles(const std::vector<std::string>& paths) {
    SFoundFiles found;
    std::set<std::string> roots;
    for (const std::string& path : paths) {
        std::error_code error;
        const fs::file_status status = fs::status(FilePath(path), error);
        if (!fs::exists(status)) {
            Fail(found, path, error ? error.message() : "no such file or folder");
        } else if (fs::is_directory(status)) {
            AddFolder(path, NameOfFolder(path), found);
        } else if (EqualIniNames(SplitPath(path).extension, ".ini")) {
            AddSite(path, roots, found);
        } else {
            AddFile(OwnSpelling(path), {}, found); // its name is the relay's and the day's
        }
    }
    return found;
}

std::string RelayOfFileName(const std::string& name) {
    const std::string_view stem = std::string_view(name).substr(0, name.rfind('.'));
    return SystemTextToUtf8(stem.substr(0, FindDate(stem)));
}

std::string DayOfFileName(const std::string& name) {
    const std::string_view stem = std::string_view(name).substr(0, name.rfind('.'));
    const std::size_t date = FindDate(stem);
    return date == std::string_view::npos ? std::string()
                                          : std::string(stem.substr(date + 1, kDatePattern.size() - 1));
}

} // namespace ruvo
