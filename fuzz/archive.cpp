// Records as the archive keeps them: rows, and lines of JSON. Input: a day file's bytes.
#include "fuzz/support/memory_system.h"
#include "fuzz/support/require.h"
#include "fuzz/support/text_checks.h"

#include "dayfile/day_file_reader.h"
#include "tools/archive/archive_cells.h"
#include "tools/archive/archive_row.h"
#include "tools/events/event_fields.h"
#include "tools/events/event_filter.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdlib>

namespace ruvo::fuzz {

namespace {

using Json = nlohmann::json;

constexpr SArchivePlace kPlace{
    .site = "no\"rth", .relay = "AB12-\xE2\x82\xAC", .dayFile = "AB\"12\\-2026-11-16-DEV.evt"};

/// Texts of any depth without a NUL, which no database keeps.
bool HasNoNul(const Json& json) {
    return json.is_structured()
               ? std::ranges::all_of(json, HasNoNul)
               : !json.is_string() || json.get_ref<const std::string&>().find('\0') == std::string::npos;
}

/// What a reader of the archive makes of the cells.
std::string CellsFromStore(const CCellList& list) {
    const SStoredCells stored = StoreCells(list);
    std::string cells;
    for (const Json& piece : Json::parse(stored.pieces)) {
        if (piece.is_string()) {
            cells += piece.get_ref<const std::string&>();
            continue;
        }
        const auto number = static_cast<std::uint64_t>(std::abs(piece.get<std::int64_t>()));
        const std::size_t begin = number >> 16U;
        const std::size_t size = number & 0xFFFFU;
        Require(begin + size <= stored.bytes.size(), "the bytes are there");
        const auto bytes = std::span(stored.bytes).subspan(begin, size);
        piece.get<std::int64_t>() < 0 ? AppendHex(cells, bytes)
                                      : static_cast<void>(cells.append(bytes.begin(), bytes.end()));
    }
    return cells;
}

/// Compares every column with the line of JSON, read by another library.
class CComparer {
public:
    explicit CComparer(const Json& line) : m_line(line) {}

    void Number(std::string_view name, std::uint64_t number) { Compare(name, number); }
    void Flag(std::string_view name, bool flag) { Compare(name, flag); }
    void Text(std::string_view name, std::string_view text) {
        Require(IsUtf8Text(text) && HasNoControls(text) && text.find('\r') == std::string_view::npos,
                "a column's text is readable");
        Compare(name, text);
    }
    void OptionalText(std::string_view name, const std::optional<std::string>& text) {
        text ? Text(name, *text) : Compare(name, nullptr);
    }
    void Location(std::string_view name, std::uint16_t location) {
        std::string text;
        AppendLocation(text, location);
        Compare(name, text);
    }
    void Cells(std::string_view name, const CCellList* list) {
        if (list == nullptr) {
            Compare(name, nullptr);
            return;
        }
        const std::string text = CellsAsJson(*list);
        Require(text == CellsFromStore(*list), "the stored pieces are the cells");
        const Json cells = Json::parse(text);
        Require(cells.is_array() && HasNoNul(cells), "cells are a list");
        Compare(name, cells);
    }
    void Bytes(std::string_view name, std::span<const std::uint8_t> bytes) {
        std::string hex;
        AppendHex(hex, bytes);
        Compare(name, hex);
    }
    [[nodiscard]] std::size_t Count() const { return m_count; }

private:
    void Compare(std::string_view name, const Json& wanted) {
        ++m_count;
        const auto found = m_line.find(name);
        Require(found != m_line.end() && *found == wanted, "a line of JSON holds what the row holds");
    }

    const Json& m_line;
    std::size_t m_count = 0;
};

std::string LineOf(const SArchiveRow& row) {
    std::string line;
    AppendJsonLine(line, kPlace, row);
    return line;
}

void CheckTime(const SArchiveRow& row, const CParlaneIEC870& time) {
    Require(row.time.has_value() == IsRealTime(time), "a real time is told, and no other");
    Require(!row.time || ParseTimeKey(*row.time, EDayEdge::Start) == TimeKeyOf(time), "it is the stamp's");
}

void CheckRow(const SDayFileItem& item) {
    const SArchiveRow row = MakeArchiveRow(item);
    CheckTime(row, item.record->GetTimeStamp());
    const std::string line = LineOf(row);
    Require(line.ends_with('\n') && std::ranges::count(line, '\n') == 1 && IsUtf8Text(line) &&
                HasNoControls(line),
            "a row is one line of text");
    const Json json = Json::parse(line, nullptr, false);
    Require(json.is_object(), "a line is an object");
    CComparer comparer(json);
    VisitColumns(kPlace, row, comparer);
    Require(json.size() == comparer.Count(), "a line holds the columns and nothing else");
    // The bytes are all that is needed to make the row again.
    SParsedRecord parsed = ParseDayFileRecord(row.bytes);
    Require(parsed.record != nullptr && parsed.size == row.bytes.size(), "the bytes are the record");
    SDayFileItem again;
    again.offset = item.offset;
    again.isExtended = parsed.isExtended;
    again.record = std::move(parsed.record);
    again.bytes = row.bytes;
    Require(LineOf(MakeArchiveRow(again)) == line, "the archived bytes give the same row");
}

void Check(std::span<const std::uint8_t> bytes) {
    static CDayFileReader reader; // its buffer is large, and every file starts it over
    MemorySystem().touched.clear();
    MemorySystem().AddFile("C:\\day.evt", {bytes.begin(), bytes.end()});
    Require(reader.Open("C:\\day.evt").Good(), "the file opens");
    for (SDayFileItem item; reader.Next(item);) {
        if (item.record != nullptr) {
            CheckRow(item);
        }
    }
}

} // namespace

} // namespace ruvo::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    ruvo::fuzz::Check({data, size});
    return 0;
}
