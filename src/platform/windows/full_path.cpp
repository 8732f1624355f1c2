#include "platform/full_path.h"

#include "base/text.h"
#include "platform/full_path_rules.h"
#include "platform/native_text.h"
#include "platform/windows/wide_text.h"

#include <algorithm>
#include <array>

namespace ruvo {

namespace {

/// Of a full path: where its names begin. 0 when it has another form, such as a device's.
std::size_t EndOfRoot(const std::string& path) {
    constexpr std::size_t kDriveRoot = 3;
    if (path.size() >= kDriveRoot && path[1] == ':') {
        return kDriveRoot;
    }
    const std::size_t server = path.starts_with(R"(\\)") ? path.find('\\', 2) : std::string::npos;
    const std::size_t share = server == std::string::npos ? server : path.find('\\', server + 1);
    const bool isDevice = path.starts_with(R"(\\?\)") || path.starts_with(R"(\\.\)");
    return share == std::string::npos || isDevice ? 0 : share + 1;
}

std::string WithCapitalDrive(std::string root) {
    root.replace(0, root.empty() ? 0 : 1, 1, ToUpper(root[0]));
    return root;
}

/// A folder that cannot be listed leaves the name as it is, and so does one that lacks it.
std::wstring NameOnDisk(const std::wstring& folder, const std::wstring& name) {
    WIN32_FIND_DATAW found = {};
    const HANDLE search = name.empty() || name.find_first_of(L"*?") != std::wstring::npos
                              ? INVALID_HANDLE_VALUE
                              : FindFirstFileW((folder + name).c_str(), &found);
    if (search == INVALID_HANDLE_VALUE) {
        return name;
    }
    FindClose(search);
    return found.cFileName;
}

} // namespace

std::string FullPath(const std::string& path) {
    std::array<wchar_t, kMaxPath> full{};
    const DWORD length = GetFullPathNameW(Wide(path).c_str(), kMaxPath, full.data(), nullptr);
    // Where the text does not fit, the result is the size needed, on some systems 0.
    return length < kMaxPath ? Narrow({full.data(), length}) : std::string();
}

// The system's own function for long names leaves the letter case as it is.
std::string OwnSpelling(const std::string& path) {
    const std::string full = FullPath(path);
    const std::size_t root = EndOfRoot(full);
    std::wstring spelled = Wide(WithCapitalDrive(full.substr(0, root)));
    for (std::size_t at = root; at < full.size();) {
        const std::size_t end = std::min(full.find('\\', at), full.size());
        spelled += NameOnDisk(spelled, Wide(full.substr(at, end - at)));
        spelled += end < full.size() ? L"\\" : L"";
        at = end + 1;
    }
    const std::string own = Narrow(spelled);
    return root > 0 && own.size() < kMaxPath && StoredText(own) ? own : path;
}

bool NamesDevice(const std::string& path) {
    return HasDeviceName(path);
}

std::string SystemPath(const std::string& fullPath) {
    return fullPath;
}

std::string DisplayPath(const std::string& path) {
    return path;
}

} // namespace ruvo
