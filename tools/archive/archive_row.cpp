#include "tools/archive/archive_row.h"

#include "base/json_writer.h"
#include "tools/events/event_fields.h"
#include "tools/events/event_json.h"
#include "tools/events/event_values.h"
#include "tools/text_encoding.h"

namespace ruvo {

namespace {

std::string Readable(std::string_view cp1252) {
    return ReadableRelayText(cp1252, ELineFeeds::Keep);
}

class CJsonSink {
public:
    explicit CJsonSink(CJsonWriter& json) : m_json(json) {}

    void Number(std::string_view name, std::uint64_t number) { m_json.Key(name).Number(number); }
    void Flag(std::string_view name, bool flag) { m_json.Key(name).Bool(flag); }
    void Text(std::string_view name, std::string_view text) { m_json.Key(name).Text(text); }
    void OptionalText(std::string_view name, const std::optional<std::string>& text) {
        m_json.Key(name);
        text ? m_json.Text(*text) : m_json.Null();
    }
    void Location(std::string_view name, std::uint16_t location) {
        m_json.Key(name).PlainText([location](std::string& out) { AppendLocation(out, location); });
    }
    void Cells(std::string_view name, const CCellList* cells) {
        m_json.Key(name);
        cells != nullptr ? m_json.Ready(CellsAsJson(*cells)) : m_json.Null();
    }
    void Bytes(std::string_view name, std::span<const std::uint8_t> bytes) {
        m_json.Key(name).PlainText([bytes](std::string& out) { AppendHex(out, bytes); });
    }

private:
    CJsonWriter& m_json;
};

} // namespace

SArchiveRow MakeArchiveRow(const SDayFileItem& item) {
    const CEventRecord& record = *item.record;
    const CParlaneIEC870& time = record.GetTimeStamp();
    SArchiveRow row;
    row.offset = item.offset;
    row.uniqueId = record.GetUniqueId();
    row.eventCode = record.GetEventCode();
    if (IsRealTime(time)) {
        AppendTime(row.time.emplace(), time, 'T');
    }
    row.isTimeInvalid = time.IsInvalid();
    row.isSummerTime = time.IsSummerTime();
    row.location = record.GetEventLocation();
    row.event = ReadableRelayLine(EventLine(record));
    row.text = Readable(record.GetText());
    row.value = ReadableRelayLine(EventValueText(record));
    row.plant = Readable(record.GetAuxText1());
    row.description = Readable(record.GetAuxText2());
    row.model = Readable(record.GetAuxText3());
    if (const auto* const extended = AsExtended(record)) {
        row.cells = &extended->GetCells();
    }
    row.bytes = item.bytes;
    return row;
}

std::string CellsAsJson(const CCellList& cells) {
    std::string text;
    CJsonWriter json(text);
    WriteJsonCells(json, cells);
    ReplaceEscapedNuls(text);
    return text;
}

void ReplaceEscapedNuls(std::string& json) {
    constexpr std::string_view kNul = "\\u0000";
    for (std::size_t at = 0; (at = json.find('\\', at)) != std::string::npos;) {
        const bool isNul = json.compare(at, kNul.size(), kNul) == 0;
        json.replace(at, isNul ? kNul.size() : 0, isNul ? "\\uFFFD" : "");
        at += isNul ? kNul.size() : 2; // an escaped backslash starts no escape
    }
}

void AppendJsonLine(std::string& out, const SArchivePlace& place, const SArchiveRow& row) {
    CJsonWriter json(out);
    json.Open('{');
    CJsonSink sink(json);
    VisitColumns(place, row, sink);
    json.Close('}');
    out += '\n';
}

} // namespace ruvo
