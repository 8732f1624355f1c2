// A record as the archive stores it: the same columns in the database and in a line of JSON. docs/archive.md
// documents them.
#pragma once

#include "dayfile/day_file_reader.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace ruvo {

/// All texts are UTF-8 and free of control characters but line feeds.
struct SArchiveRow {
    std::uint64_t offset = 0;
    bool isExtended = false;
    std::uint32_t uniqueId = 0;
    std::uint8_t eventCode = 0;
    std::optional<std::string> time; ///< none for a timestamp that is not a real date
    bool isTimeInvalid = false;
    bool isSummerTime = false;
    std::string location;
    std::string event;
    std::string text;
    std::string value;
    std::string plant;
    std::string description;
    std::string model;
    std::optional<std::string> cells; ///< JSON; none for a simple record
    std::span<const std::uint8_t> bytes;
};

/// The row of an item with a record; its bytes live as long as the item's.
[[nodiscard]] SArchiveRow MakeArchiveRow(const SDayFileItem& item);

/// Passes every column to the sink, in documented order.
template <class TSink>
void VisitColumns(const SArchiveRow& row, TSink& sink) {
    sink.Number("byte_offset", row.offset);
    sink.Text("kind", row.isExtended ? "extended" : "simple");
    sink.Number("unique_id", row.uniqueId);
    sink.Number("event_code", row.eventCode);
    sink.OptionalText("time", row.time);
    sink.Flag("time_invalid", row.isTimeInvalid);
    sink.Flag("summer_time", row.isSummerTime);
    sink.Text("location", row.location);
    sink.Text("event", row.event);
    sink.Text("text", row.text);
    sink.Text("value", row.value);
    sink.Text("plant", row.plant);
    sink.Text("description", row.description);
    sink.Text("model", row.model);
    sink.Json("cells", row.cells);
    sink.Bytes("bytes", row.bytes);
}

/// Appends the row as one line of JSON, after the names of its relay and day file.
void AppendJsonLine(std::string& out, const std::string& relay, const std::string& dayFile,
                    const SArchiveRow& row);

} // namespace ruvo
