#include "tools/clocks/relay_clocks.h"

#include "base/text.h"
#include "tools/file_path.h"
#include "tools/text_encoding.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace ruvo {

namespace {

/// Where systems keep their zones; a system without it knows none by name.
constexpr std::string_view kZoneFolder = "/usr/share/zoneinfo/";
constexpr std::size_t kLargestZoneFile = std::size_t{256} * 1024;

/// A name, and no way out of the folder.
bool IsZoneName(std::string_view text) {
    return !text.empty() && IsLetter(text.front()) && std::ranges::all_of(text, [](char c) {
        return IsLetter(c) || IsDigit(c) || c == '/' || c == '_' || c == '-' || c == '+';
    });
}

/// The last line of the zone's file is its present rule.
std::string RuleOfZoneFile(std::string_view name) {
    std::ifstream file(std::string(kZoneFolder) + std::string(name), std::ios::binary);
    std::string bytes(kLargestZoneFile, '\0');
    file.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    bytes.resize(static_cast<std::size_t>(file.gcount()));
    if (!bytes.starts_with("TZif") || !bytes.ends_with('\n')) {
        return {};
    }
    bytes.pop_back();
    return bytes.substr(bytes.rfind('\n') + 1);
}

} // namespace

std::optional<CZoneRule> ReadZone(std::string_view text) {
    if (const auto rule = CZoneRule::Parse(text)) {
        return rule;
    }
    return IsZoneName(text) ? CZoneRule::Parse(RuleOfZoneFile(text)) : std::nullopt;
}

bool FitsPattern(std::string_view name, std::string_view pattern) {
    std::size_t at = 0;
    std::size_t inPattern = 0;
    std::size_t star = std::string_view::npos; // the last "*", and what it stands for begins at `taken`
    std::size_t taken = 0;
    while (at < name.size()) {
        const bool isMore = inPattern < pattern.size();
        if (isMore && pattern[inPattern] == '*') {
            star = inPattern++;
            taken = at;
        } else if (isMore &&
                   (pattern[inPattern] == '?' || ToLower(pattern[inPattern]) == ToLower(name[at]))) {
            ++inPattern;
            ++at;
        } else if (star != std::string_view::npos) {
            inPattern = star + 1;
            at = ++taken;
        } else {
            return false;
        }
    }
    return pattern.find_first_not_of('*', inPattern) == std::string_view::npos;
}

std::string CRelayClocks::ReadLine(std::string_view line) {
    constexpr std::string_view kBlanks = " \t";
    line = Trim(line.substr(0, line.find('#')), kWhiteSpace);
    if (line.empty()) {
        return {};
    }
    const std::size_t gap = line.find_last_of(kBlanks);
    const std::string_view clock = line.substr(gap == std::string_view::npos ? 0 : gap + 1);
    std::string_view relay =
        gap == std::string_view::npos ? std::string_view() : TrimEnd(line.substr(0, gap), kBlanks);
    if (relay.empty()) {
        return "expected a relay, or * for all, and its clock";
    }
    const auto rule = ReadZone(clock);
    if (!rule) {
        return std::string(clock) +
               ": expected UTC, an offset such as +01:00, a rule such as "
               "CET-1CEST,M3.5.0,M10.5.0/3, or the name of a zone that this system knows";
    }
    std::string site = "*";
    if (const std::size_t slash = relay.find('/'); slash != std::string_view::npos) {
        site = relay.substr(0, slash);
        relay.remove_prefix(slash + 1);
    }
    m_lines.push_back({std::move(site), std::string(relay), *rule});
    return {};
}

std::string CRelayClocks::Read(const std::string& path) {
    std::ifstream file{FilePath(path), std::ios::binary};
    std::size_t number = 0;
    const auto where = [&] { return SystemTextToUtf8(path) + ":" + std::to_string(number) + ": "; };
    for (std::string text; std::getline(file, text);) {
        ++number;
        constexpr std::string_view kMark = "\xEF\xBB\xBF";
        const bool isMarked = number == 1 && text.starts_with(kMark);
        const std::string line = SystemTextToUtf8(std::string_view(text).substr(isMarked ? kMark.size() : 0));
        if (const std::string failure = ReadLine(line); !failure.empty()) {
            return where() + failure;
        }
    }
    return file.eof() ? std::string() : SystemTextToUtf8(path) + ": cannot read the file";
}

const CZoneRule* CRelayClocks::ClockOf(std::string_view site, std::string_view relay) const {
    const auto line = std::ranges::find_if(m_lines, [&](const SLine& candidate) {
        return FitsPattern(site, candidate.site) && FitsPattern(relay, candidate.relay);
    });
    return line == m_lines.end() ? nullptr : &line->rule;
}

} // namespace ruvo
