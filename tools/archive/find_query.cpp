#include "tools/archive/find_query.h"

#include "base/text.h"
#include "dayfile/block_parser.h"

#include <algorithm>
#include <map>
#include <span>
#include <utility>

namespace ruvo {

namespace {

bool IsBlank(char c) {
    return kWhiteSpace.find(c) != std::string_view::npos;
}

bool IsSearchable(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return (byte >= '0' && byte <= '9') || ((byte | 0x20U) >= 'a' && (byte | 0x20U) <= 'z') || byte >= 0x80;
}

void AppendTerm(std::string& query, std::string_view word, std::string_view ending) {
    if (std::ranges::any_of(word, IsSearchable)) {
        query += query.empty() ? "\"" : " \"";
        query += word;
        query += '"';
        query += ending;
    }
}

/// Cuts a word, or what is in quotes, off the front of the text.
std::string_view CutPart(std::string_view& text, bool isPhrase) {
    const auto end =
        std::ranges::find_if(text, [&](char c) { return c == '"' || (!isPhrase && IsBlank(c)); });
    const std::string_view part = text.substr(0, static_cast<std::size_t>(end - text.begin()));
    text.remove_prefix(part.size());
    return part;
}

/// The time in the archive's full form. The last moment of a day is later than any timestamp of that day.
std::string LastMoment(const std::string& text) {
    constexpr std::string_view kFullForm = "0000-00-00T00:00:00.000";
    constexpr std::size_t kDateSize = 10;
    if (text.size() == kDateSize) {
        return text + "T99";
    }
    return text + std::string(kFullForm.substr(std::min(text.size(), kFullForm.size())));
}

/// The archive writes a "T" where users may write a blank.
std::string WithSeparator(std::string text) {
    std::ranges::replace(text, ' ', 'T');
    return text;
}

/// The relay's name or one of its texts, which are numbers of texts where they occur again.
std::string RelayCondition() {
    std::string text =
        "EXISTS (SELECT 1 FROM (SELECT lower(?) AS part) a WHERE instr(lower(l.name), a.part) > 0";
    for (const std::string_view column : {"r.plant", "r.description", "r.model"}) {
        text.append(" OR instr(lower(CASE typeof(").append(column);
        text.append(") WHEN 'integer' THEN (SELECT t.text FROM texts t WHERE t.id = ").append(column);
        text.append(") ELSE ").append(column).append(" END), a.part) > 0");
    }
    return text + ")";
}

std::string QueryText(const SFindQuery& query) {
    std::string text = "SELECT r.id, CASE WHEN r.time IS NULL THEN r.bytes END, r.file_id, r.byte_offset "
                       "FROM records r "
                       "JOIN files f ON f.id = r.file_id JOIN relays l ON l.id = f.relay_id WHERE 1";
    text +=
        query.text.empty() ? "" : " AND r.id IN (SELECT rowid FROM records_text WHERE records_text MATCH ?)";
    text += query.since.empty() ? "" : " AND (r.time IS NULL OR r.time >= ?)";
    text += query.until.empty() ? "" : " AND (r.time IS NULL OR r.time <= ?)";
    text += query.relay.empty() ? "" : " AND " + RelayCondition();
    text += query.site.empty() ? "" : " AND l.site_id IN (SELECT id FROM sites WHERE name = ?)";
    text += query.fetched ? " AND f.id IN (SELECT value FROM json_each(?))" : "";
    return text + " ORDER BY r.time NULLS LAST, l.name, r.id";
}

using CFetchedFiles = std::map<std::int64_t, SFetchedBytes>;

/// The day files in which something counts, by their ids.
CFetchedFiles FetchedFiles(CDatabase& database, const SFindQuery& query) {
    CFetchedFiles fetched;
    if (query.fetched) {
        CStatement files(database, "SELECT f.id, s.name, f.day_file FROM files f "
                                   "JOIN relays l ON l.id = f.relay_id JOIN sites s ON s.id = l.site_id");
        while (files.Step()) {
            if (SFetchedBytes bytes = query.fetched(files.TextAt(1), files.TextAt(2)); !bytes.IsEmpty()) {
                fetched.emplace(files.NumberAt(0), std::move(bytes));
            }
        }
    }
    return fetched;
}

std::string IdsAsJson(const CFetchedFiles& files) {
    std::string text;
    for (const auto& [id, bytes] : files) {
        text += (text.empty() ? "[" : ",") + std::to_string(id);
    }
    return text.empty() ? "[]" : text + "]";
}

} // namespace

std::string FullTextQuery(std::string_view text) {
    std::string query;
    while (!text.empty()) {
        const bool isPhrase = text.front() == '"';
        if (isPhrase || IsBlank(text.front())) {
            text.remove_prefix(1);
        }
        const std::string_view part = CutPart(text, isPhrase);
        AppendTerm(query, part, isPhrase ? "" : "*");
        if (isPhrase && !text.empty()) {
            text.remove_prefix(1); // the closing quote
        }
    }
    return query;
}

std::vector<std::int64_t> FindRecords(CDatabase& database, const SFindQuery& query) {
    const std::string match = FullTextQuery(query.text);
    const std::string since = WithSeparator(query.since);
    const std::string until = LastMoment(WithSeparator(query.until));
    const CFetchedFiles fetched = FetchedFiles(database, query);
    const std::string files = IdsAsJson(fetched); // outlives the statement, which does not copy it
    CStatement rows(database, QueryText(query));
    const std::pair<const std::string&, const std::string&> parts[] = {{query.text, match},
                                                                       {query.since, since},
                                                                       {query.until, until},
                                                                       {query.relay, query.relay},
                                                                       {query.site, query.site}};
    for (const auto& [given, value] : parts) {
        if (!given.empty()) {
            rows.Bind(value);
        }
    }
    if (query.fetched) {
        rows.Bind(files);
    }
    std::vector<std::int64_t> ids;
    while (rows.Step()) {
        const auto offset = static_cast<std::uint64_t>(rows.NumberAt(3));
        if (query.fetched && !fetched.at(rows.NumberAt(2)).Touches(offset, offset + 1)) {
            continue;
        }
        const std::span<const std::uint8_t> bytes = rows.BytesAt(1);
        const SParsedRecord parsed = bytes.empty() ? SParsedRecord() : ParseDayFileRecord(bytes);
        if (parsed.record == nullptr || query.filter.MatchesRecord(*parsed.record)) {
            ids.push_back(rows.NumberAt(0));
        }
    }
    return ids;
}

} // namespace ruvo
