// What people ask an archive for, against the same records read one by one. Input: a byte (bits 0 to 2:
// since, until and a relay's name are given), those texts, and the words.
#include "fuzz/support/input.h"
#include "fuzz/support/require.h"

#include "dayfile/block_parser.h"
#include "support/scratch_folder.h"
#include "tools/archive/archive_store.h"
#include "tools/archive/find_query.h"
#include "tools/day_files.h"
#include "tools/events/event_fields.h"
#include "tools/text_encoding.h"

#include <algorithm>
#include <array>
#include <deque>
#include <optional>

namespace ruvo::fuzz {

namespace {

using Words = std::vector<std::string>;

/// A record of the archive, and the words of its searched columns.
struct SArchived {
    std::int64_t id = 0;
    std::array<std::string, 4> names; ///< of the relay: its own and the texts that the record carries
    std::unique_ptr<CEventRecord> record;
    std::array<Words, 4> columns;
};

char LowerOf(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool IsWordChar(char c) {
    return (c >= '0' && c <= '9') || (LowerOf(c) >= 'a' && LowerOf(c) <= 'z');
}

/// Letters without their accents, of those that the records hold.
std::string WithoutAccents(std::string text) {
    for (const auto& [accented, plain] : {std::pair("\xC3\xA9", "e"), {"\xC3\xBC", "u"}}) {
        for (std::size_t at = 0; (at = text.find(accented, at)) != std::string::npos;) {
            text.replace(at, 2, plain);
        }
    }
    return text;
}

Words WordsOf(std::string_view text) {
    Words words;
    bool isInside = false;
    for (const char c : text) {
        if (!IsWordChar(c)) {
            isInside = false;
            continue;
        }
        if (!isInside) {
            words.emplace_back();
        }
        isInside = true;
        words.back() += LowerOf(c);
    }
    return words;
}

/// Words that must stand side by side; the last one may be the beginning of a longer one.
struct STerm {
    Words words;
    bool isPrefix = false;
};

std::vector<STerm> TermsOf(std::string_view text) {
    std::vector<STerm> terms;
    std::string part;
    bool isQuoted = false;
    const auto end = [&](bool isPrefix) {
        if (Words words = WordsOf(part); !words.empty()) {
            terms.push_back({std::move(words), isPrefix});
        }
        part.clear();
    };
    for (const char c : text) {
        if (c == '"') {
            end(!isQuoted);
            isQuoted = !isQuoted;
        } else if (!isQuoted && std::string_view(" \t\n\v\f\r").find(c) != std::string_view::npos) {
            end(true);
        } else {
            part += c;
        }
    }
    end(!isQuoted);
    return terms;
}

bool StandsAt(const Words& column, std::size_t at, const STerm& term) {
    for (std::size_t i = 0; i < term.words.size(); ++i) {
        const bool mayGoOn = term.isPrefix && i + 1 == term.words.size();
        const std::string& word = column[at + i];
        if (mayGoOn ? !word.starts_with(term.words[i]) : word != term.words[i]) {
            return false;
        }
    }
    return true;
}

bool Holds(const Words& column, const STerm& term) {
    for (std::size_t at = 0; at + term.words.size() <= column.size(); ++at) {
        if (StandsAt(column, at, term)) {
            return true;
        }
    }
    return false;
}

/// An archive of a few records, made once.
class CArchive {
public:
    CArchive() : m_database(Fill(m_folder), EDatabaseAccess::Read) {
        CStatement rows(m_database, "SELECT e.id, e.relay, e.event, e.text, e.value, e.plant, r.bytes, "
                                    "e.plant, e.description, e.model "
                                    "FROM events e JOIN records r ON r.id = e.id");
        while (rows.Step()) {
            SArchived archived{rows.NumberAt(0),
                               {rows.TextAt(1), rows.TextAt(7), rows.TextAt(8), rows.TextAt(9)},
                               ParseDayFileRecord(rows.BytesAt(6)).record,
                               {}};
            for (std::size_t column = 0; column < archived.columns.size(); ++column) {
                archived.columns.at(column) =
                    WordsOf(WithoutAccents(rows.TextAt(static_cast<int>(column) + 2)));
            }
            m_records.push_back(std::move(archived));
        }
    }

    CDatabase& Database() { return m_database; }
    [[nodiscard]] const std::deque<SArchived>& Records() const { return m_records; }

private:
    static std::string Fill(const CScratchFolder& folder) {
        using test::At;
        using test::Extended;
        using test::Simple;
        const CParlaneIEC870 noDay(CParlaneIEC870::Octets{0xD2, 4, 12, 3, 31, 2, 26}); // the 31st of February
        const std::string path = folder.Native("a.sqlite");
        CArchiveStore store(path);
        store.BeginSite("north", {});
        Put(store, "FEED-7",
            {Simple(At(16, 3), "Trip L1 earth-fault"), Simple(At(16, 4), "trip coil failed"),
             Simple(noDay, "Trip of no day"), Extended(At(17, 3), "Earth fault"),
             Extended(At(18, 23), "D\xE9"
                                  "part: 110%, start")});
        Put(store, "Bay \xC3\xBC_2",
            {Simple(At(16, 3), "CB open 2026"), Extended(noDay, "and or not near"),
             Simple(At(15, 0), "A-B C"), Extended(At(16, 3), "tripped; a b c")});
        store.Finish();
        return path;
    }
    static void Put(CArchiveStore& store, const std::string& relay, const std::vector<std::string>& images) {
        store.BeginFile({relay + ".evt", relay, "2026-11-16", 1, 1});
        SDayFileItem item;
        for (const std::string& image : images) {
            const std::vector<std::uint8_t> bytes(image.begin(), image.end());
            SParsedRecord parsed = ParseDayFileRecord(bytes);
            item.record = std::move(parsed.record);
            item.isExtended = parsed.isExtended;
            item.bytes = bytes;
            store.AddRecord(item);
            item.offset += bytes.size();
        }
        Require(store.EndFile(true).added == images.size(), "every record is archived");
    }

    CScratchFolder m_folder; // before the database in it
    CDatabase m_database;
    std::deque<SArchived> m_records;
};

std::string TakeArgument(CInput& input) {
    std::string text = input.TakeText();
    return text.substr(0, text.find('\0'));
}

SFindQuery TakeQuery(CInput input) {
    const unsigned given = input.TakeByte();
    SFindQuery query;
    query.since = (given & 1U) != 0 ? TakeArgument(input) : "";
    query.until = (given & 2U) != 0 ? TakeArgument(input) : "";
    query.relay = (given & 4U) != 0 ? SystemTextToUtf8(TakeArgument(input)) : "";
    const std::string words(input.Rest().begin(), input.Rest().end());
    query.text = SystemTextToUtf8(words.substr(0, words.find('\0')));
    query.filter.since = ParseTimeKey(query.since, EDayEdge::Start);
    query.filter.until = ParseTimeKey(query.until, EDayEdge::End);
    query.since = query.filter.since ? query.since : ""; // what is no time is refused before
    query.until = query.filter.until ? query.until : "";
    return query;
}

bool IsAscii(std::string_view text) {
    return std::ranges::all_of(text, [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

bool IsWanted(const SArchived& archived, const SFindQuery& query, const std::vector<STerm>& terms) {
    return query.filter.MatchesRecord(*archived.record) &&
           std::ranges::any_of(archived.names,
                               [&](const std::string& name) { return ContainsText(name, query.relay); }) &&
           std::ranges::all_of(terms, [&](const STerm& term) {
               return std::ranges::any_of(archived.columns,
                                          [&](const Words& column) { return Holds(column, term); });
           });
}

void CheckOrder(const CArchive& archive, const std::vector<std::int64_t>& found) {
    std::optional<TimeKey> last = 0;
    for (const std::int64_t id : found) {
        const auto archived = std::ranges::find(archive.Records(), id, &SArchived::id);
        Require(archived != archive.Records().end(), "what is found is in the archive");
        const CParlaneIEC870& time = archived->record->GetTimeStamp();
        Require(!IsRealTime(time) || (last && *last <= TimeKeyOf(time)),
                "events come by time, those without last");
        last = IsRealTime(time) ? std::optional(TimeKeyOf(time)) : std::nullopt;
    }
}

void Check(const CInput& input) {
    static CArchive archive;
    const SFindQuery query = TakeQuery(input);
    if (!query.text.empty() && FullTextQuery(query.text).empty()) {
        return; // nothing to look for: the command says so
    }
    std::vector<std::int64_t> found;
    try {
        found = FindRecords(archive.Database(), query);
    } catch (const CDatabaseError& failure) {
        Require(false, failure.what());
    }
    CheckOrder(archive, found);
    if (!IsAscii(query.text)) {
        return; // which characters make words is the database's knowledge
    }
    const std::vector<STerm> terms = TermsOf(query.text);
    std::vector<std::int64_t> wanted;
    for (const SArchived& archived : archive.Records()) {
        if (IsWanted(archived, query, terms)) {
            wanted.push_back(archived.id);
        }
    }
    std::ranges::sort(found);
    std::ranges::sort(wanted);
    Require(found == wanted, "found is what a person would find by reading");
}

} // namespace

} // namespace ruvo::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    ruvo::fuzz::Check(ruvo::fuzz::CInput({data, size}));
    return 0;
}
