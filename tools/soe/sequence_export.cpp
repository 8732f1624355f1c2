// A sequence of events for programs.
#include "base/json_writer.h"
#include "tools/events/event_fields.h"
#include "tools/soe/sequence_output.h"

namespace ruvo {

namespace {

constexpr std::string_view kColumns =
    "number,time,marks,delta_ms,zero_ms,site,relay,plant,event,value_text,value_number,value_unit,value_set,utc,"
    "relay_time,time_invalid,summer_time,utc_doubtful,file,offset";
constexpr std::uint64_t kSchema = 1;

/// Both forms have the same columns in the same order. A sink gets text of the relay (code page 1252), text
/// in UTF-8, and what may be missing.
template <class TSink>
void VisitColumns(const CEventSequence& sequence, const SSequenceEvent& event, std::uint64_t number,
                  TSink& sink) {
    const auto time = [&event](const CParlaneIEC870& stamp) {
        std::string text;
        if (event.hasTime) {
            AppendTime(text, stamp, 'T');
        }
        return text;
    };
    const bool hasUtc = sequence.Question().hasClocks && event.hasTime && event.source.clock != nullptr;
    std::string utc;
    if (hasUtc) {
        AppendUtc(utc, event.moment);
    }
    sink.Number("number", number);
    sink.TextOrNone("time", time(event.shownTime));
    sink.Text("marks", event.Marks());
    sink.Difference("delta_ms", event.sinceLast);
    sink.Difference("zero_ms", event.fromZero);
    sink.Text("site", event.source.site);
    sink.Text("relay", event.source.relay);
    sink.RelayText("plant", event.plant);
    sink.RelayText("event", event.event);
    sink.RelayText("value_text", event.value.text);
    sink.Decimal("value_number", event.value.number);
    sink.RelayText("value_unit", event.value.unit);
    sink.RelayText("value_set", event.value.set);
    sink.TextOrNone("utc", utc);
    sink.TextOrNone("relay_time", time(event.relayTime));
    sink.Flag("time_invalid", event.relayTime.IsInvalid());
    sink.Flag("summer_time", event.relayTime.IsSummerTime());
    sink.Flag("utc_doubtful", event.isDoubtful);
    sink.Text("file", event.source.file);
    sink.Number("offset", event.offset);
}

class CCsvSink {
public:
    CCsvSink(std::string& out, const SCsvForm& form) : m_row(out, form) {}
    void Number(std::string_view /*key*/, std::uint64_t number) { m_row.Number(number); }
    void Text(std::string_view /*key*/, std::string_view text) { m_row.Text(text); }
    void TextOrNone(std::string_view /*key*/, std::string_view text) { m_row.Ready(text); }
    void RelayText(std::string_view /*key*/, std::string_view text) { m_row.RelayText(text); }
    void Decimal(std::string_view /*key*/, std::string_view digits) { m_row.Decimal(digits); }
    void Flag(std::string_view /*key*/, bool flag) { m_row.Bool(flag); }
    void Difference(std::string_view /*key*/, const std::optional<std::int64_t>& difference) {
        difference ? m_row.Signed(*difference) : m_row.Empty();
    }
    void End() { m_row.End(); }

private:
    CCsvRow m_row;
};

class CJsonSink {
public:
    explicit CJsonSink(CJsonWriter& json) : m_json(json) {}
    void Number(std::string_view key, std::uint64_t number) { m_json.Key(key).Number(number); }
    void Text(std::string_view key, std::string_view text) { m_json.Key(key).Text(text); }
    void TextOrNone(std::string_view key, std::string_view text) {
        text.empty() ? m_json.Key(key).Null() : m_json.Key(key).Text(text);
    }
    void RelayText(std::string_view key, std::string_view text) { m_json.Key(key).RelayText(text); }
    void Decimal(std::string_view key, std::string_view digits) {
        m_json.Key(key).Ready(digits.empty() ? "null" : digits);
    }
    void Flag(std::string_view key, bool flag) { m_json.Key(key).Bool(flag); }
    void Difference(std::string_view key, const std::optional<std::int64_t>& difference) {
        difference ? m_json.Key(key).Signed(*difference) : m_json.Key(key).Null();
    }

private:
    CJsonWriter& m_json;
};

} // namespace

void PrintSequenceAsCsv(CTextOutput& out, const CEventSequence& sequence, const SCsvForm& form) {
    AppendCsvHead(out.Text(), kColumns, form);
    std::uint64_t number = 0;
    for (const SSequenceEvent& event : sequence.Events()) {
        CCsvSink sink(out.Text(), form);
        VisitColumns(sequence, event, ++number, sink);
        sink.End();
        out.FlushIfFull();
    }
}

void PrintSequenceAsJson(CTextOutput& out, const CEventSequence& sequence) {
    std::uint64_t number = 0;
    for (const SSequenceEvent& event : sequence.Events()) {
        CJsonWriter json(out.Text());
        json.Open('{');
        CJsonSink sink(json);
        VisitColumns(sequence, event, ++number, sink);
        json.Key("schema").Number(kSchema);
        json.Close('}');
        out.Write("\n");
    }
}

} // namespace ruvo
