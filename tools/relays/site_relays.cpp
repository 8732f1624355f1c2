#include "tools/relays/site_relays.h"

#include "ledger/visit_record.h"
#include "platform/files.h"
#include "platform/full_path.h"
#include "tools/events/day_file_walk.h"
#include "tools/events/event_fields.h"
#include "tools/file_path.h"
#include "tools/text_encoding.h"

#include <algorithm>
#include <filesystem>
#include <map>

namespace ruvo {

namespace {

std::string NameOf(const std::string& path) {
    return FilePath(path).filename().string();
}

/// The newest day file of each relay, by the date in its name.
std::map<std::string, SFoundFile> NewestFiles(const SFoundFiles& found) {
    std::map<std::string, SFoundFile> newest;
    for (const SFoundFile& file : found.files) {
        const auto [at, isFirst] = newest.try_emplace(file.relay, file);
        if (!isFirst && DayOfFileName(NameOf(file.path)) >= DayOfFileName(NameOf(at->second.path))) {
            at->second = file;
        }
    }
    return newest;
}

void TakeRecord(SSiteRelay& relay, const CEventRecord& record) {
    relay.visit.plant =
        relay.visit.plant.empty() ? ReadableRelayLine(record.GetAuxText1()) : relay.visit.plant;
    relay.description = ReadableRelayLine(record.GetAuxText2());
    relay.model = ReadableRelayLine(record.GetAuxText3());
    if (const CParlaneIEC870& time = record.GetTimeStamp(); IsRealTime(time)) {
        std::string text;
        AppendTime(text, time, 'T');
        relay.lastEvent = std::max(relay.lastEvent, text);
    }
}

void ReadDayFiles(const std::string& events, SSiteRelays& all, SConsole& console) {
    if (GetPathKind(events) == EPathKind::Missing) { // the first visit that stores something makes it
        return;
    }
    SFoundFiles found = FindDayFiles({SystemPath(events)});
    const auto newest = NewestFiles(found);
    std::map<std::string, SSiteRelay*> byName;
    found.files.clear();
    for (SSiteRelay& relay : all.relays) {
        const auto file = std::ranges::find_if(
            newest, [&relay](const auto& entry) { return relay.visit.HasFilesOf(entry.first); });
        if (file != newest.end()) {
            relay.lastFile = SystemTextToUtf8(NameOf(file->second.path));
            byName[file->first] = &relay;
            found.files.push_back(file->second);
        }
    }
    CDayFileWalk walk(console);
    walk.Read(found, [&](const SEventSource& source, const SDayFileItem& item, CProgress& /*progress*/) {
        if (item.record != nullptr) {
            TakeRecord(*byName.at(source.relay), *item.record);
        }
        all.isWhole = all.isWhole && !item.IsReadFailure();
    });
    all.isWhole = all.isWhole && walk.Failures().empty();
}

/// What keeps the relays' names from being known.
void CheckRecords(const SVisitSummary& summary, SSiteRelays& all) {
    std::string where;
    for (const std::string& folder : summary.folders) {
        where += (where.empty() ? "" : " and ") + folder;
    }
    if (summary.history == EHistory::None) {
        all.failures.push_back("no visit is recorded, so that no relay has a name; looked in " + where);
    } else if (summary.history == EHistory::NotReadable || !summary.isWhole) {
        all.failures.push_back("the records of visits cannot be read: " + where);
        all.isWhole = false;
    }
}

} // namespace

bool SSiteRelay::Matches(std::string_view text) const {
    const std::string* const names[] = {&visit.key,   &visit.address, &visit.link, &visit.name,
                                        &visit.plant, &description,   &model};
    return std::ranges::any_of(names, [text](const std::string* name) { return ContainsText(*name, text); });
}

SSiteRelays ReadSiteRelays(const CSite& site, SConsole& console) {
    SSiteRelays all;
    all.site = site.Name();
    if (!site.Places()) {
        all.failures.push_back(site.Failure());
        all.isWhole = false;
        return all;
    }
    const SSiteVisits visits =
        ReadSiteVisits(site.IniPath(), *site.Places(), SecondsOfRecord(RecordedNow()).value_or(0));
    for (const SRelayVisit& visit : visits.relays) {
        all.relays.emplace_back().visit = visit;
    }
    CheckRecords(visits.summary, all);
    ReadDayFiles(site.Places()->events, all, console);
    return all;
}

} // namespace ruvo
