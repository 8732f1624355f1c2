#include "tools/sites/fetched_bytes.h"

#include "tools/events/event_files.h"
#include "tools/file_path.h"
#include "tools/sites/site_visits.h"
#include "tools/text_encoding.h"

#include <algorithm>
#include <filesystem>
#include <iterator>

namespace ruvo {

namespace {

constexpr std::int64_t kDaySeconds = std::int64_t{24} * 3600;

/// When the entry's events were stored: at the end of its visit, as far as that is known.
std::optional<std::int64_t> TimeOf(const SVisitEntry& entry, const SVisitLine& run) {
    for (const std::string* time : {&entry.end, &entry.begin, &run.end, &run.begin}) {
        if (const auto seconds = SecondsOfRecord(*time)) {
            return seconds;
        }
    }
    return std::nullopt;
}

} // namespace

bool SFetchedBytes::Touches(std::uint64_t from, std::uint64_t to) const {
    return isWhole || std::ranges::any_of(ranges, [from, to](const auto& range) {
               return from < range.second && to > range.first;
           });
}

void CFetchedBytes::Add(const SVisitLine& run) {
    for (const SVisitEntry& entry : run.entries) {
        const auto time = TimeOf(entry, run);
        AddEntry(entry, !m_period || (time && m_period->Contains(*time)));
    }
}

void CFetchedBytes::AddOther(const SVisitLine& run) {
    for (const SVisitEntry& entry : run.entries) {
        AddEntry(entry, false);
    }
}

void CFetchedBytes::AddEntry(const SVisitEntry& entry, bool counts) {
    const SStoredBytes own{entry.dayFile, entry.from, entry.to};
    if (SFileBytes* const file = FileOf(own)) {
        file->visited.emplace_back(own.from, own.to);
        if (counts) {
            file->counted.emplace_back(own.from, own.to);
        }
    }
    SFileBytes* const file = entry.recoveredIn ? FileOf(*entry.recoveredIn) : nullptr;
    if (file != nullptr && counts) {
        file->recovered.emplace_back(entry.recoveredIn->from, entry.recoveredIn->to);
    }
}

CFetchedBytes::SFileBytes* CFetchedBytes::FileOf(const SStoredBytes& bytes) {
    if (bytes.dayFile.empty() || bytes.from >= bytes.to) {
        return nullptr;
    }
    m_byName[bytes.dayFile.substr(bytes.dayFile.find('/') + 1)] = bytes.dayFile;
    return &m_files[bytes.dayFile];
}

SFetchedBytes CFetchedBytes::Of(const std::string& path) const {
    const std::filesystem::path native = FilePath(path);
    const std::string name = native.filename().string();
    return OfKey(SystemTextToUtf8(native.parent_path().filename().string() + "/" + name), name);
}

SFetchedBytes CFetchedBytes::OfName(const std::string& name) const {
    const auto known = m_byName.find(name);
    return OfKey(known == m_byName.end() ? std::string() : known->second, name);
}

SFetchedBytes CFetchedBytes::OfKey(const std::string& dayFile, const std::string& name) const {
    const auto known = m_files.find(dayFile);
    if (known == m_files.end()) {
        return {.isWhole = IsOfPeriod(name)};
    }
    const SFileBytes& file = known->second;
    SFetchedBytes fetched{.ranges = file.counted};
    std::ranges::copy_if(file.recovered, std::back_inserter(fetched.ranges), [&file](const auto& recovered) {
        return std::ranges::none_of(file.visited, [&recovered](const auto& visited) {
            return visited.first <= recovered.first && recovered.second <= visited.second;
        });
    });
    return fetched;
}

bool CFetchedBytes::IsOfPeriod(const std::string& name) const {
    const auto day = DayNumber(DayOfFileName(name));
    return m_period && day && *day * kDaySeconds < m_period->end &&
           (*day + 1) * kDaySeconds > m_period->begin;
}

} // namespace ruvo
