// Records as comma-separated values by RFC 4180, one row each; damage is a row with the last two columns.
#include "tools/events/event_fields.h"
#include "tools/events/event_printer.h"
#include "tools/text_encoding.h"

#include <array>
#include <vector>

namespace ruvo {

namespace {

constexpr std::string_view kHeaderLine =
    "file,relay,offset,kind,record_number,unique_id,event_code,time,time_bytes,time_invalid,summer_time,"
    "location,"
    "event_text,event,text,value_code,value_bytes,aux1,aux2,aux3,format,values,cells,valid,length,error\r\n";

/// A spreadsheet takes a cell that begins so for a formula, which a relay's text must never become.
bool LooksLikeFormula(std::string_view cell) {
    return !cell.empty() && std::string_view("=+-@").find(cell.front()) != std::string_view::npos;
}

/// Fields of one row, in the order of the header line. A relay's text is readable: control characters but
/// line feeds are escaped.
class CCsvRow {
public:
    CCsvRow(std::string& out, ECsvCells cells) : m_out(out), m_cells(cells) {}

    void Text(std::string_view utf8) {
        Separate();
        std::string text = EscapeControls(utf8, ELineFeeds::Keep);
        if (m_cells == ECsvCells::ForSpreadsheets && LooksLikeFormula(text)) {
            text.insert(0, 1, '\'');
        }
        if (text.find_first_of("\",\n") == std::string::npos) {
            m_out += text;
            return;
        }
        m_out += '"';
        for (const char c : text) {
            m_out.append(c == '"' ? 2 : 1, c);
        }
        m_out += '"';
    }
    void RelayText(std::string_view cp1252) { Text(ReadableRelayText(cp1252, ELineFeeds::Keep)); }
    void Number(std::uint64_t number) {
        Separate();
        AppendNumber(m_out, number);
    }
    void Bool(bool value) { Text(value ? "true" : "false"); }
    void Empty(int count) {
        for (; count > 0; --count) {
            Separate();
        }
    }
    /// What `write` appends.
    template <class TWrite>
    void Plain(const TWrite& write) {
        std::string text;
        write(text);
        Text(text);
    }
    void End() { m_out += "\r\n"; }

private:
    void Separate() {
        if (!m_isFirst) {
            m_out += ',';
        }
        m_isFirst = false;
    }

    std::string& m_out;
    ECsvCells m_cells;
    bool m_isFirst = true;
};

class CCsvPrinter final : public IEventPrinter {
public:
    explicit CCsvPrinter(ECsvCells cells) : m_cells(cells) {}
    void PrintHead(std::string& out) override { out += kHeaderLine; }
    void PrintRecord(std::string& out, const SEventSource& source, const SDayFileItem& item) override;
    void PrintDamage(std::string& out, const SEventSource& source, const SDayFileDamage& damage) override;

private:
    ECsvCells m_cells;
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

void WriteCells(CCsvRow& row, const CCellList& cells) {
    std::string texts;
    for (const auto& cell : cells) {
        texts += texts.empty() ? "" : "; ";
        texts += cell->GetText();
    }
    row.RelayText(texts);
}

void CCsvPrinter::PrintRecord(std::string& out, const SEventSource& source, const SDayFileItem& item) {
    const CEventRecord& record = *item.record;
    CCsvRow row(out, m_cells);
    row.Text(source.file);
    row.Text(source.relay);
    row.Number(item.offset);
    row.Text(item.isExtended ? "extended" : "simple");
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
    const auto* simple = AsSimple(record);
    const auto* extended = AsExtended(record);
    row.RelayText(simple != nullptr ? simple->GetFormatText() : std::string());
    simple != nullptr ? WriteValues(row, simple->GetValues()) : row.Empty(1);
    extended != nullptr ? WriteCells(row, extended->GetCells()) : row.Empty(1);
    row.Bool(record.IsValid());
    row.Empty(2);
    row.End();
}

void CCsvPrinter::PrintDamage(std::string& out, const SEventSource& source, const SDayFileDamage& damage) {
    constexpr int kColumnsOfRecords = 21; // from kind to valid
    CCsvRow row(out, m_cells);
    row.Text(source.file);
    row.Text(source.relay);
    row.Number(damage.offset);
    row.Empty(kColumnsOfRecords);
    row.Number(damage.length);
    row.Text(DayFileFaultText(damage.fault));
    row.End();
}

} // namespace

std::unique_ptr<IEventPrinter> MakeCsvPrinter(ECsvCells cells) {
    return std::make_unique<CCsvPrinter>(cells);
}

} // namespace ruvo
