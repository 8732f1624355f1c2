#include "tools/mutes/mute_file.h"

#include "base/text.h"
#include "paths/path_utilities.h"
#include "platform/files.h"
#include "platform/full_path.h"
#include "platform/ini_text.h"
#include "platform/text_file.h"
#include "tools/sites/site_visits.h"
#include "tools/text_encoding.h"
#include "tools/whole_file.h"

#include <array>
#include <chrono>
#include <cstdio>
#include <optional>

namespace ruvo {

namespace {

constexpr std::string_view kHeading =
    "; Muted relays, made by \"ruvoctl mute\" and \"ruvoctl unmute\". Times are UTC. A mute changes verdicts\n"
    "; and colours, never a visit. It ends at its time, or with the next visit that reaches the relay.\n";

struct SField {
    std::string_view name;
    std::string SMute::*text;
};
constexpr std::array kFields{
    SField{"Address", &SMute::address}, SField{"Relay", &SMute::relay}, SField{"Since", &SMute::since},
    SField{"Until", &SMute::until},     SField{"Why", &SMute::why},
};

} // namespace

std::string MutesPath(const std::string& fullIniPath) {
    const SPathParts parts = SplitPath(fullIniPath);
    return parts.drive + parts.folder + parts.name + ".mutes";
}

SMutes ReadMutes(const std::string& fullIniPath) {
    SMutes result;
    const std::string path = MutesPath(fullIniPath);
    std::string text;
    if (!ReadTextFile(path, text)) {
        if (GetPathKind(path) != EPathKind::Missing) {
            result.failure = SystemTextToUtf8(DisplayPath(path)) + ": cannot read the file of muted relays";
        }
        return result;
    }
    const CIniText ini = CIniText::Parse(text);
    for (const SIniSection& section : ini.Sections()) {
        if (section.name.empty()) {
            continue;
        }
        SMute mute;
        mute.key = SystemTextToUtf8(ToUpperText(section.name));
        for (const SIniEntry& entry : section.entries) {
            for (const SField& field : kFields) {
                if (EqualIniNames(entry.key, field.name) && entry.value) {
                    mute.*field.text = SystemTextToUtf8(*entry.value);
                }
            }
        }
        result.mutes.push_back(std::move(mute));
    }
    return result;
}

std::string WriteMutes(const std::string& fullIniPath, const std::vector<SMute>& mutes) {
    std::string text(kHeading);
    for (const SMute& mute : mutes) {
        text += "\n[" + mute.key + "]\n";
        for (const SField& field : kFields) { // in quotes, which reading takes off, any text stays what it is
            text += std::string(field.name) + "=\"" + BlankControlCharacters(mute.*field.text) + "\"\n";
        }
    }
    return ReplaceWholeFile(SystemPath(MutesPath(fullIniPath)), text);
}

std::string WhyVoid(const SMute& mute, const SMutedRelay& relay, std::int64_t now) {
    const auto since = SecondsOfRecord(mute.since);
    const auto until = SecondsOfRecord(mute.until);
    if (!since || !until || *until - *since > kLongestMute) {
        return "its times are none, or too far apart";
    }
    if (now >= *until) {
        return "it ended on " + RecordTimeForPeople(mute.until);
    }
    if (mute.address != relay.address) {
        return "the relay's address was " + mute.address + " then";
    }
    if (const auto reached = SecondsOfRecord(relay.lastReached); reached && *reached >= *since) {
        return "the relay was reached on " + RecordTimeForPeople(relay.lastReached);
    }
    return {};
}

std::string RecordTime(std::int64_t unixSeconds) {
    using namespace std::chrono;
    const sys_seconds moment{seconds(unixSeconds)};
    const sys_days date = floor<days>(moment);
    const year_month_day ymd(date);
    const hh_mm_ss time(moment - date);
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%04d-%02u-%02uT%02d:%02d:%02dZ", static_cast<int>(ymd.year()),
                  static_cast<unsigned>(ymd.month()), static_cast<unsigned>(ymd.day()),
                  static_cast<int>(time.hours().count()), static_cast<int>(time.minutes().count()),
                  static_cast<int>(time.seconds().count()));
    return text.data();
}

} // namespace ruvo
