#include "tools/ini/site_environment.h"

#include "paths/path_utilities.h"
#include "platform/environment.h"
#include "platform/file_trust.h"
#include "platform/full_path.h"
#include "platform/ini_text.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace ruvo {

namespace {

constexpr const char* kSetByVisit = "RUVO_SITE";
/// With these a site could be visited twice at the same time, or its visits recorded as those of another.
constexpr std::array kRefusedNames{std::string_view("RUVO_LOCK_DIR"), std::string_view("RUVO_STATE_DIR"),
                                   std::string_view(kSetByVisit), std::string_view("XDG_STATE_HOME"),
                                   std::string_view("RUVO_INI_NAME")};
constexpr std::string_view kRefused =
    "ignored; expected NAME=value with a permitted name"; // it may hold a secret
constexpr std::string_view kForLoader =
    ": takes effect only when a program starts; use ruvoctl visit --check to test it";

bool IsName(std::string_view name) {
    const auto isLetter = [](char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_'; };
    const auto isLetterOrDigit = [&](char c) { return isLetter(c) || (c >= '0' && c <= '9'); };
    return !name.empty() && isLetter(name.front()) && std::ranges::all_of(name, isLetterOrDigit) &&
           std::ranges::find(kRefusedNames, name) == kRefusedNames.end();
}

void ApplyLine(const std::string& line, std::size_t number, EEnvironmentOf use,
               SSiteEnvironment& environment) {
    const std::size_t equals = line.find('=');
    const std::string name = line.substr(0, equals);
    if (equals == std::string::npos || !IsName(name) || line.find('\0') != std::string::npos) {
        environment.diagnostics.push_back({number, std::string(kRefused)});
        return;
    }
    environment.before.emplace(name, EnvironmentValue(name.c_str())); // of several lines, before the first
    SetEnvironmentValue(name, line.substr(equals + 1));
    if (use == EEnvironmentOf::ThisProgram && name.starts_with("LD_")) {
        environment.diagnostics.push_back({number, name + std::string(kForLoader)});
    }
}

void ApplyLines(const std::string& text, EEnvironmentOf use, SSiteEnvironment& environment) {
    std::size_t number = 0;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = std::min(text.find('\n', at), text.size());
        std::string line = text.substr(at, end - at);
        if (line.ends_with('\r')) { // of an editor on Windows
            line.pop_back();
        }
        ++number;
        if (!line.empty() && !line.starts_with('#')) {
            ApplyLine(line, number, use, environment);
        }
        at = end + 1;
    }
}

} // namespace

SSiteEnvironment ApplySiteEnvironment(const std::string& iniPath, EEnvironmentOf use) {
    constexpr std::string_view kIniExtension = ".ini";
    const std::string own = OwnSpelling(iniPath);
    const SPathParts parts = SplitPath(own);
    SSiteEnvironment environment{
        .path = own.substr(0, own.size() - parts.extension.size()) + ".env", .diagnostics = {}, .before = {}};
    const std::string path = FullPath(environment.path);
    if (!EqualIniNames(parts.extension, kIniExtension) || path.empty() ||
        EnvironmentValue(kSetByVisit) == parts.name) {
        return environment;
    }
    std::string text;
    switch (ReadTrustedFile(path, text)) {
    case ETrustedRead::Read:
        ApplyLines(text, use, environment);
        break;
    case ETrustedRead::Unreadable:
        environment.diagnostics.push_back({0, "cannot read the file; expected a small, readable text file"});
        break;
    case ETrustedRead::Untrusted:
        environment.diagnostics.push_back(
            {0,
             "ignored, because another user may have written it; expected a file that is owned by root (on "
             "Windows, the administrators) or by you, and that nobody else can write"});
        break;
    case ETrustedRead::Missing:
        break;
    }
    return environment;
}

void LeaveSiteEnvironment(const SSiteEnvironment& environment) {
    for (const auto& [name, value] : environment.before) {
        value ? SetEnvironmentValue(name, *value) : ClearEnvironmentValue(name);
    }
}

} // namespace ruvo
