// Records for reading: aligned columns, with what else a record holds below it.
#include "tools/events/event_fields.h"
#include "tools/events/event_printer.h"
#include "tools/events/event_values.h"
#include "tools/text_columns.h"
#include "tools/text_encoding.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace ruvo {

namespace {

constexpr std::size_t kTimeWidth = 24; ///< and a mark after it
constexpr std::size_t kIndent = 6;
constexpr std::size_t kNarrowestColumn = 8;
constexpr std::size_t kGap = 2;

std::string TimeColumn(const CParlaneIEC870& time) {
    std::string text;
    if (IsRealTime(time)) {
        AppendTime(text, time, ' ');
    } else {
        text += "no time ";
        AppendHex(text, time.GetOctets());
    }
    return text + (time.IsInvalid() ? "?" : time.IsSummerTime() ? "s" : "");
}

/// What is shown below the record's line, in code page 1252.
std::vector<std::string> FurtherLines(const CEventRecord& record) {
    if (const auto* const simple = AsSimple(record)) {
        return SplitLines(simple->GetText());
    }
    std::vector<std::string> lines;
    const CCell* const valueCell = ValueCell(record);
    for (const auto& cell : AsExtended(record)->GetCells()) {
        if (cell.get() != valueCell) {
            const SCellTexts texts = CellTexts(*cell);
            lines.push_back(texts.label + ' ' + texts.value);
        }
        if (const std::string bits = SetBitsText(*cell); !bits.empty()) {
            lines.push_back("set: " + bits);
        }
    }
    return lines;
}

class CTextPrinter final : public IEventPrinter {
public:
    CTextPrinter(std::size_t width, std::size_t relayWidth) : m_width(width), m_relayWidth(relayWidth) {
        const std::size_t taken = kTimeWidth + m_relayWidth + 3 * kGap;
        const std::size_t rest = std::max(width > taken ? width - taken : 0, 2 * kNarrowestColumn);
        m_valueWidth = std::max(rest * 2 / 5, kNarrowestColumn);
        m_eventWidth = rest - m_valueWidth;
    }

    void PrintHead(std::string& out) override { PrintColumns(out, "time", "relay", "event", "value"); }

    void PrintRecord(std::string& out, const SEventSource& source, const SDayFileItem& item) override {
        const CEventRecord& record = *item.record;
        PrintColumns(out, TimeColumn(record.GetTimeStamp()), EscapeControls(source.relay),
                     ReadableRelayLine(EventLine(record)), ReadableRelayLine(EventValueText(record)));
        for (const std::string& line : FurtherLines(record)) {
            PrintIndented(out, ReadableRelayLine(line));
        }
    }

    void PrintDamage(std::string& out, const SEventSource& source, const SDayFileDamage& damage) override {
        const std::string text = "! " + EscapeControls(source.file) + ": damage at byte " +
                                 std::to_string(damage.offset) + ", " + std::to_string(damage.length) +
                                 " bytes: " + std::string(DayFileFaultText(damage.fault));
        for (const std::string& line : WrapText(text, m_width)) {
            out += line;
            out += '\n';
        }
    }

private:
    void PrintColumns(std::string& out, std::string time, std::string relay, std::string event,
                      std::string value) const {
        const STextColumn columns[] = {{std::move(time), kTimeWidth},
                                       {std::move(relay), m_relayWidth},
                                       {std::move(event), m_eventWidth},
                                       {std::move(value), m_valueWidth}};
        AppendColumns(out, columns);
    }

    void PrintIndented(std::string& out, std::string_view text) const {
        if (text.empty()) {
            return;
        }
        for (const std::string& line : WrapText(text, m_width - kIndent)) {
            out.append(kIndent, ' ');
            out += line;
            out += '\n';
        }
    }

    std::size_t m_width;
    std::size_t m_relayWidth;
    std::size_t m_eventWidth;
    std::size_t m_valueWidth;
};

} // namespace

std::unique_ptr<IEventPrinter> MakeTextPrinter(std::size_t width, std::size_t relayWidth) {
    return std::make_unique<CTextPrinter>(width, relayWidth);
}

} // namespace ruvo
