// A record as the archive stores it: the same columns in the database and in a line of JSON. docs/archive.md
// documents them.
#pragma once

#include "dayfile/day_file_reader.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace ruvo {

/// Where a record is from. UTF-8.
struct SArchivePlace {
    std::string_view site;
    std::string_view relay;
    std::string_view dayFile; ///< without its folder
};

/// All texts are UTF-8 and free of control characters but line feeds.
struct SArchiveRow {
    std::uint64_t offset = 0;
    std::uint32_t uniqueId = 0;
    std::uint8_t eventCode = 0;
    std::optional<std::string> time; ///< none for a timestamp that is not a real date
    bool isTimeInvalid = false;
    bool isSummerTime = false;
    std::uint16_t location = 0;
    std::string event;
    std::string text;
    std::string value;
    std::string plant;
    std::string description;
    std::string model;
    const CCellList* cells = nullptr; ///< null for a simple record
    std::span<const std::uint8_t> bytes;
};

/// The row of an item with a record; its cells and bytes live as long as the item's.
[[nodiscard]] SArchiveRow MakeArchiveRow(const SDayFileItem& item);

/// The JSON of column `cells`; the cells must not be null.
[[nodiscard]] std::string CellsAsJson(const CCellList& cells);
/// Some databases reject NUL in text, even escaped: it becomes U+FFFD.
void ReplaceEscapedNuls(std::string& json);

/// Passes every column to the sink, in documented order.
template <class TSink>
void VisitColumns(const SArchivePlace& place, const SArchiveRow& row, TSink& sink) {
    sink.Text("relay", place.relay);
    sink.Text("day_file", place.dayFile);
    sink.Number("byte_offset", row.offset);
    sink.Text("kind", row.cells != nullptr ? "extended" : "simple");
    sink.Number("unique_id", row.uniqueId);
    sink.Number("event_code", row.eventCode);
    sink.OptionalText("time", row.time);
    sink.Flag("time_invalid", row.isTimeInvalid);
    sink.Flag("summer_time", row.isSummerTime);
    sink.Location("location", row.location);
    sink.Text("event", row.event);
    sink.Text("text", row.text);
    sink.Text("value", row.value);
    sink.Text("plant", row.plant);
    sink.Text("description", row.description);
    sink.Text("model", row.model);
    sink.Cells("cells", row.cells);
    sink.Bytes("bytes", row.bytes);
    sink.Text("site", place.site);
}

/// Appends the row as one line of JSON.
void AppendJsonLine(std::string& out, const SArchivePlace& place, const SArchiveRow& row);

} // namespace ruvo
