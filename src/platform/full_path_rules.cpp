#include "platform/full_path_rules.h"

#include "base/text.h"

#include <algorithm>
#include <array>
#include <vector>

namespace ruvo {

namespace {

constexpr std::string_view kBlanksAndDots = " .";

// A path on its way to being full: the root that ".." cannot leave, and the names below it.
struct SForming {
    std::string root; // ends with a separator, except for a server without a share
    std::vector<std::string> names;
    bool endsWithSeparator = false;
    std::size_t folderNames = 0; // how many of the names are those of the current folder
};

std::string WithBackslashes(std::string_view path) {
    std::string text(path);
    std::ranges::replace(text, '/', '\\');
    return text;
}

bool HasDrive(std::string_view path) {
    return path.size() >= 2 && path[1] == ':' && IsLetter(path[0]);
}

bool IsSameDrive(std::string_view left, std::string_view right) {
    return HasDrive(left) && HasDrive(right) && ToUpper(left[0]) == ToUpper(right[0]);
}

// Takes one name off the front of `rest`; `separated` says whether a separator ended it.
std::string_view NextName(std::string_view& rest, bool& separated) {
    const std::size_t end = rest.find('\\');
    separated = end != std::string_view::npos;
    const std::string_view name = rest.substr(0, end);
    rest.remove_prefix(separated ? end + 1 : rest.size());
    return name;
}

// Network and device paths: "\\server\share\" or "\\?\" is the root.
SForming StartAtServer(std::string_view& rest) {
    SForming forming{"\\\\", {}};
    rest.remove_prefix(2);
    const bool device = rest.starts_with("?\\") || rest.starts_with(".\\");
    for (int part = 0; part < (device ? 1 : 2) && !rest.empty(); ++part) {
        bool separated = false;
        forming.root += NextName(rest, separated);
        forming.root += separated ? "\\" : "";
    }
    return forming;
}

SForming StartAtFolder(std::string_view folder) {
    SForming forming{std::string(folder.substr(0, 2)) + "\\", {}, false};
    std::string_view rest = folder.substr(std::min<std::size_t>(folder.size(), 3));
    while (!rest.empty()) {
        bool separated = false;
        const std::string_view name = NextName(rest, separated);
        if (!name.empty()) {
            forming.names.emplace_back(name);
        }
    }
    forming.folderNames = forming.names.size();
    return forming;
}

// Takes what names the starting point off the path. The current folder's names are taken as they are: they
// are a folder that exists, whatever they end with.
SForming TakeStart(std::string_view& path, std::string_view currentFolder) {
    if (path.starts_with("\\\\")) {
        return StartAtServer(path);
    }
    if (path.starts_with('\\')) {
        return SForming{std::string(currentFolder.substr(0, 2)) + "\\", {}, false};
    }
    if (!HasDrive(path)) {
        return StartAtFolder(currentFolder);
    }
    const std::string_view drive = path.substr(0, 2);
    path.remove_prefix(2);
    if (path.starts_with('\\') || !IsSameDrive(drive, currentFolder)) {
        return SForming{std::string(drive) + "\\", {}, false};
    }
    SForming forming = StartAtFolder(currentFolder);
    forming.endsWithSeparator = path.empty();
    return forming;
}

// A folder's name loses one dot at its end, the last name of a path all its dots and blanks. A folder's name
// of dots alone is kept: with one dot less it would climb.
std::string_view TrimName(std::string_view name, bool separated) {
    if (!separated) {
        return TrimEnd(name, kBlanksAndDots);
    }
    const bool dotsAlone = name.find_first_not_of('.') == std::string_view::npos;
    return name.ends_with('.') && !dotsAlone ? name.substr(0, name.size() - 1) : name;
}

void AddName(SForming& forming, std::string_view name, bool separated) {
    if (name == "..") {
        if (!forming.names.empty()) {
            forming.names.pop_back();
            forming.folderNames = std::min(forming.folderNames, forming.names.size());
        }
        forming.endsWithSeparator = separated;
    } else if (name == ".") {
        forming.endsWithSeparator = separated;
    } else if (const std::string_view trimmed = TrimName(name, separated); !trimmed.empty()) {
        forming.names.emplace_back(trimmed);
        forming.endsWithSeparator = separated;
    } else {
        forming.endsWithSeparator = true; // nothing is left of the name but the separator before it
    }
}

// What dots have made the last name is one that was given as a folder's, and is trimmed only now. A name of
// the current folder stays as it is.
void TrimLastName(SForming& forming) {
    if (forming.endsWithSeparator || forming.names.size() <= forming.folderNames) {
        return;
    }
    forming.names.back() = TrimName(forming.names.back(), false);
    if (forming.names.back().empty()) {
        forming.names.pop_back();
        forming.endsWithSeparator = true;
    }
}

std::string Join(const SForming& forming) {
    std::string path = forming.root;
    for (std::size_t i = 0; i < forming.names.size(); ++i) {
        path += (i == 0 ? "" : "\\") + forming.names[i];
    }
    return forming.endsWithSeparator && !forming.names.empty() ? path + "\\" : path;
}

} // namespace

std::string FormFullPath(std::string_view path, std::string_view currentFolder) {
    const std::string text = WithBackslashes(path);
    std::string_view rest = text;
    const bool needsCurrentFolder = !rest.starts_with("\\\\") && !HasDrive(rest);
    if (rest.find_first_not_of(' ') == std::string_view::npos ||
        (needsCurrentFolder && !HasDrive(currentFolder))) {
        return {};
    }
    SForming forming = TakeStart(rest, currentFolder);
    while (!rest.empty()) {
        bool separated = false;
        const std::string_view name = NextName(rest, separated);
        AddName(forming, name, separated);
    }
    TrimLastName(forming);
    return Join(forming);
}

std::string WithSmallShare(std::string path) {
    constexpr std::string_view kLongForm = R"(\\?\UNC\)";
    const bool isLong = path.starts_with(kLongForm);
    if (isLong || (path.starts_with(R"(\\)") && !path.starts_with(R"(\\?)") && !path.starts_with(R"(\\.)"))) {
        int separators = 0;
        for (std::size_t at = isLong ? kLongForm.size() : 2; at < path.size() && separators < 2; ++at) {
            path[at] = ToLower(path[at]);
            separators += path[at] == '\\' ? 1 : 0;
        }
    }
    return path;
}

// What follows a dot or a colon does not count, nor do blanks before them.
bool HasDeviceName(std::string_view path) {
    constexpr std::array<std::string_view, 6> kAlone{"CON", "PRN", "AUX", "NUL", "CONIN$", "CONOUT$"};
    constexpr std::array<std::string_view, 2> kNumbered{"COM", "LPT"};
    constexpr std::array<std::string_view, 3> kHighDigits{"\xC2\xB9", "\xC2\xB2", "\xC2\xB3"};
    const std::string text = ToUpperText(WithBackslashes(path));
    std::string_view rest = text;
    bool isDevice = rest.starts_with(R"(\\.\)");
    for (bool separated = true; separated && !isDevice;) {
        std::string_view name = NextName(rest, separated);
        name = TrimEnd(name.substr(0, name.find_first_of(".:")), " ");
        const std::string_view number = name.substr(std::min<std::size_t>(name.size(), 3));
        const bool isNumber = (number.size() == 1 && number >= "1" && number <= "9") ||
                              std::ranges::find(kHighDigits, number) != kHighDigits.end();
        isDevice = std::ranges::find(kAlone, name) != kAlone.end() ||
                   (isNumber && std::ranges::find(kNumbered, name.substr(0, 3)) != kNumbered.end());
    }
    return isDevice;
}

} // namespace ruvo
