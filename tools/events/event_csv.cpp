// Records as comma-separated values by RFC 4180, one row each; damage is a row with the columns length and
// error. docs/exports.md documents the columns. New ones come last: people count columns.
#include "tools/events/csv_row.h"
#include "tools/events/event_fields.h"
#include "tools/events/event_json.h"
#include "tools/events/event_printer.h"
#include "tools/events/measured_value.h"

namespace ruvo {

namespace {

constexpr std::string_view kColumns =
    "file,relay,offset,kind,record_number,unique_id,event_code,time,time_bytes,time_invalid,summer_time,"
    "location,event_text,event,text,value_code,value_bytes,aux1,aux2,aux3,format,values,cells,valid,length,"
    "error,site,plant,description,model,utc,utc_doubtful,value_text,value_number,value_unit,value_set,cell_values";

class CCsvPrinter final : public IEventPrinter {
public:
    explicit CCsvPrinter(const SCsvForm& form) : m_form(form) {}
    void PrintHead(std::string& out) override { AppendCsvHead(out, kColumns, m_form); }
    void PrintRecord(std::string& out, const SEventSource& source, const SDayFileItem& item) override;
    void PrintDamage(std::string& out, const SEventSource& source, const SDayFileDamage& damage) override;

private:
    SCsvForm m_form;
};

void WriteTime(CCsvRow& row, const CParlaneIEC870& time) {
    row.Plain([&time](std::string& out) {
        if (IsRealTime(time)) {
            AppendTime(out, time, 'T');
        }
    });
    row.Plain([&time](std::string& out) { AppendHex(out, time.GetOctets()); });
    row.Bool(time.IsInvalid());
    row.Bool(time.IsSummerTime());
}

void WriteValue(CCsvRow& row, const CParlaneData* value) {
    if (!IsValue(value)) {
        row.Empty(2);
        return;
    }
    row.Number(value->GetTypeCode());
    row.Plain([value](std::string& out) { AppendWireHex(out, *value); });
}

void WriteUtc(CCsvRow& row, const SEventSource& source, const CParlaneIEC870& time) {
    if (source.clock == nullptr || !IsRealTime(time)) {
        row.Empty(2);
        return;
    }
    const SMoment moment = source.clock->ToUtc(MillisecondsOf(time), time.IsSummerTime());
    row.Plain([&moment](std::string& out) { AppendUtc(out, moment.utc); });
    row.Bool(moment.isDoubtful);
}

/// The relay's own words, the value as people and programs read it, and the cells.
void WriteReadings(CCsvRow& row, const SEventSource& source, const CEventRecord& record) {
    row.Text(source.site);
    row.RelayText(record.GetAuxText1());
    row.RelayText(record.GetAuxText2());
    row.RelayText(record.GetAuxText3());
    WriteUtc(row, source, record.GetTimeStamp());
    const SMeasuredValue value = MeasuredValueOf(record);
    row.RelayText(value.text);
    row.Decimal(value.number);
    row.RelayText(value.unit);
    row.RelayText(value.set);
    std::string cells;
    if (const auto* extended = AsExtended(record)) {
        CJsonWriter json(cells);
        WriteJsonCellValues(json, extended->GetCells());
    }
    row.Text(cells);
}

/// "36:0500 -": each value's type code and bytes, "-" for none.
void WriteValues(CCsvRow& row, const CParlaneDataList& values) {
    row.Plain([&values](std::string& out) {
        std::string_view separator;
        for (const auto& value : values) {
            out += separator;
            separator = " ";
            if (!IsValue(value.get())) {
                out += '-';
                continue;
            }
            AppendNumber(out, value->GetTypeCode());
            out += ':';
            AppendWireHex(out, *value);
        }
    });
}

void WriteCells(CCsvRow& row, const CExtendedEventRecord* extended) {
    if (extended == nullptr) {
        row.Empty();
        return;
    }
    std::string texts;
    for (const auto& cell : extended->GetCells()) {
        texts += texts.empty() ? "" : "; ";
        texts += cell->GetText();
    }
    row.RelayText(texts);
}

void CCsvPrinter::PrintRecord(std::string& out, const SEventSource& source, const SDayFileItem& item) {
    const CEventRecord& record = *item.record;
    CCsvRow row(out, m_form);
    row.Text(source.file);
    row.Text(source.relay);
    row.Number(item.offset);
    row.Ready(item.isExtended ? "extended" : "simple");
    row.Number(record.GetRecordNumber());
    row.Number(record.GetUniqueId());
    row.Number(record.GetEventCode());
    WriteTime(row, record.GetTimeStamp());
    row.Plain([&record](std::string& text) { AppendLocation(text, record.GetEventLocation()); });
    row.RelayText(record.GetEventFormat());
    row.RelayText(record.GetEventText());
    row.RelayText(record.GetText());
    WriteValue(row, record.GetEventValue());
    row.RelayText(record.GetAuxText1());
    row.RelayText(record.GetAuxText2());
    row.RelayText(record.GetAuxText3());
    if (const auto* simple = AsSimple(record)) {
        row.RelayText(simple->GetFormatText());
        WriteValues(row, simple->GetValues());
    } else {
        row.Empty(2);
    }
    WriteCells(row, AsExtended(record));
    row.Bool(record.IsValid());
    row.Empty(2);
    WriteReadings(row, source, record);
    row.End();
}

void CCsvPrinter::PrintDamage(std::string& out, const SEventSource& source, const SDayFileDamage& damage) {
    constexpr int kColumnsOfRecords = 21; // from kind to valid
    constexpr int kReadings = 10;         // from plant to cell_values
    CCsvRow row(out, m_form);
    row.Text(source.file);
    row.Text(source.relay);
    row.Number(damage.offset);
    row.Empty(kColumnsOfRecords);
    row.Number(damage.length);
    row.Text(DayFileFaultText(damage.fault));
    row.Text(source.site);
    row.Empty(kReadings);
    row.End();
}

} // namespace

std::unique_ptr<IEventPrinter> MakeCsvPrinter(const SCsvForm& form) {
    return std::make_unique<CCsvPrinter>(form);
}

} // namespace ruvo
