// Records as JSON, one object a line. Scripts rely on the names, their order and on what is null;
// docs/exports.md documents them.
#include "tools/events/event_json.h"

#include "base/text.h"
#include "tools/events/event_fields.h"
#include "tools/events/event_printer.h"
#include "tools/events/event_values.h"
#include "tools/events/measured_value.h"

namespace ruvo {

namespace {

/// Grows with every change of what a name means; a new name is no such change.
constexpr std::uint64_t kSchema = 2;

class CJsonPrinter final : public IEventPrinter {
public:
    void PrintHead(std::string& /*out*/) override {}
    void PrintRecord(std::string& out, const SEventSource& source, const SDayFileItem& item) override;
    void PrintDamage(std::string& out, const SEventSource& source, const SDayFileDamage& damage) override;
};

void WriteValue(CJsonWriter& json, const CParlaneData* value) {
    if (!IsValue(value)) {
        json.Null();
        return;
    }
    json.Open('{');
    json.Key("code").Number(value->GetTypeCode());
    json.Key("bytes").PlainText([value](std::string& out) { AppendWireHex(out, *value); });
    json.Close('}');
}

void WriteTime(CJsonWriter& json, const CParlaneIEC870& time) {
    json.Key("time");
    if (IsRealTime(time)) {
        json.PlainText([&time](std::string& out) { AppendTime(out, time, 'T'); });
    } else {
        json.Null();
    }
    json.Key("time_bytes").PlainText([&time](std::string& out) { AppendHex(out, time.GetOctets()); });
    json.Key("time_invalid").Bool(time.IsInvalid());
    json.Key("summer_time").Bool(time.IsSummerTime());
}

void WriteTexts(CJsonWriter& json, const CEventRecord& record) {
    json.Key("event_text").RelayText(record.GetEventFormat());
    json.Key("event").RelayText(record.GetEventText());
    json.Key("text").RelayText(record.GetText());
    json.Key("value");
    WriteValue(json, record.GetEventValue());
    json.Key("aux").Open('[');
    for (const std::string* text : {&record.GetAuxText1(), &record.GetAuxText2(), &record.GetAuxText3()}) {
        json.RelayText(*text);
    }
    json.Close(']');
}

void WriteSimple(CJsonWriter& json, const CSimpleEventRecord& record) {
    json.Key("format").RelayText(record.GetFormatText());
    json.Key("values").Open('[');
    for (const auto& value : record.GetValues()) {
        WriteValue(json, value.get());
    }
    json.Close(']');
}

void WriteCell(CJsonWriter& json, const CCell& cell) {
    json.Open('{');
    json.Key("template").RelayText(cell.GetLabelTemplate());
    json.Key("text").RelayText(cell.GetText());
    json.Key("value");
    WriteValue(json, cell.GetValue());
    json.Key("bits").Open('[');
    for (const std::string& name : BitNamesOf(cell)) {
        json.RelayText(name);
    }
    json.Close(']');
    json.Close('}');
}

void WriteUtc(CJsonWriter& json, const SEventSource& source, const CParlaneIEC870& time) {
    if (source.clock == nullptr || !IsRealTime(time)) {
        json.Key("utc").Null();
        json.Key("utc_doubtful").Null();
        return;
    }
    const SMoment moment = source.clock->ToUtc(MillisecondsOf(time), time.IsSummerTime());
    json.Key("utc").PlainText([&moment](std::string& out) { AppendUtc(out, moment.utc); });
    json.Key("utc_doubtful").Bool(moment.isDoubtful);
}

/// The relay's own words, and the value as people and programs read it.
void WriteReadings(CJsonWriter& json, const SEventSource& source, const CEventRecord& record) {
    json.Key("site").Text(source.site);
    json.Key("plant").RelayText(record.GetAuxText1());
    json.Key("description").RelayText(record.GetAuxText2());
    json.Key("model").RelayText(record.GetAuxText3());
    WriteUtc(json, source, record.GetTimeStamp());
    const SMeasuredValue value = MeasuredValueOf(record);
    json.Key("value_text").RelayText(value.text);
    json.Key("value_number").Ready(value.number.empty() ? "null" : value.number);
    json.Key("value_unit").RelayText(value.unit);
    json.Key("value_set").RelayText(value.set);
    json.Key("cell_values");
    if (const auto* extended = AsExtended(record)) {
        WriteJsonCellValues(json, extended->GetCells());
    } else {
        json.Null();
    }
}

void CJsonPrinter::PrintRecord(std::string& out, const SEventSource& source, const SDayFileItem& item) {
    const CEventRecord& record = *item.record;
    CJsonWriter json(out);
    json.Open('{');
    json.Key("file").Text(source.file);
    json.Key("relay").Text(source.relay);
    json.Key("offset").Number(item.offset);
    json.Key("kind").Text(item.isExtended ? "extended" : "simple");
    json.Key("record_number").Number(record.GetRecordNumber());
    json.Key("unique_id").Number(record.GetUniqueId());
    json.Key("event_code").Number(record.GetEventCode());
    WriteTime(json, record.GetTimeStamp());
    json.Key("location").PlainText([&](std::string& text) {
        AppendLocation(text, record.GetEventLocation());
    });
    WriteTexts(json, record);
    if (const auto* simple = AsSimple(record)) {
        WriteSimple(json, *simple);
    } else if (const auto* extended = AsExtended(record)) {
        json.Key("cells");
        WriteJsonCells(json, extended->GetCells());
    }
    json.Key("valid").Bool(record.IsValid());
    WriteReadings(json, source, record);
    json.Key("schema").Number(kSchema);
    json.Close('}');
    out += '\n';
}

void CJsonPrinter::PrintDamage(std::string& out, const SEventSource& source, const SDayFileDamage& damage) {
    CJsonWriter json(out);
    json.Open('{');
    json.Key("file").Text(source.file);
    json.Key("offset").Number(damage.offset);
    json.Key("length").Number(damage.length);
    json.Key("error").Text(DayFileFaultText(damage.fault));
    json.Key("site").Text(source.site);
    json.Key("schema").Number(kSchema);
    json.Close('}');
    out += '\n';
}

} // namespace

void WriteJsonCells(CJsonWriter& json, const CCellList& cells) {
    json.Open('[');
    for (const auto& cell : cells) {
        WriteCell(json, *cell);
    }
    json.Close(']');
}

void WriteJsonCellValues(CJsonWriter& json, const CCellList& cells) {
    json.Open('[');
    for (const auto& cell : cells) {
        const SCellTexts texts = CellTexts(*cell);
        json.Open('{');
        json.Key("label").RelayText(Trim(texts.label, kBlank));
        json.Key("value").RelayText(Trim(texts.value, kBlank));
        json.Key("set").Open('[');
        ForEachSetBit(*cell, [&json](const std::string& name) { json.RelayText(name); });
        json.Close(']');
        json.Close('}');
    }
    json.Close(']');
}

std::unique_ptr<IEventPrinter> MakeJsonPrinter() {
    return std::make_unique<CJsonPrinter>();
}

} // namespace ruvo
