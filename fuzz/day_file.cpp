// A whole day file through the reader and every printer. Input: the file's bytes.
#include "fuzz/support/memory_system.h"
#include "fuzz/support/require.h"
#include "fuzz/support/text_checks.h"

#include "dayfile/day_file_reader.h"
#include "tools/events/event_filter.h"
#include "tools/events/event_printer.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>

namespace ruvo::fuzz {

namespace {

const SEventSource kSource{"C\xC3\xB6\"d\\e,.evt", "AB12-\xE2\x82\xAC"};

/// What one item adds to each of the outputs, checked for form.
class CPrinters {
public:
    CPrinters() {
        for (const auto& printer : m_printers) {
            std::string head;
            printer->PrintHead(head);
            CheckOutput(head);
        }
        std::string head;
        m_printers[kCsv]->PrintHead(head);
        m_csvColumns = CsvFieldCount(head);
    }
    void Print(const SDayFileItem& item) {
        for (std::size_t i = 0; i < m_printers.size(); ++i) {
            std::string out;
            if (item.record != nullptr) {
                m_printers[i]->PrintRecord(out, kSource, item);
                Check(i, out);
            }
            if (item.damage) {
                out.clear();
                m_printers[i]->PrintDamage(out, kSource, *item.damage);
                Check(i, out);
            }
        }
    }

private:
    static constexpr std::size_t kJson = 0;
    static constexpr std::size_t kCsv = 1;

    static void CheckOutput(const std::string& out) {
        Require(IsUtf8Text(out), "what is printed is UTF-8");
        Require(HasNoControls(out), "no control character but line ends is printed");
    }
    void Check(std::size_t printer, const std::string& out) const {
        CheckOutput(out);
        Require(out.ends_with('\n'), "what is printed ends its line");
        if (printer == kJson) {
            Require(std::ranges::count(out, '\n') == 1 && nlohmann::json::accept(out),
                    "JSON is one object a line");
        } else if (printer == kCsv) {
            Require(CsvFieldCount(out) == m_csvColumns, "every CSV row has the columns of the head");
        }
    }

    std::array<std::unique_ptr<IEventPrinter>, 4> m_printers{
        MakeJsonPrinter(), MakeCsvPrinter({.forSpreadsheets = true}), MakeTextPrinter(100, 20),
        MakeTextPrinter(46, 1)};
    std::size_t m_csvColumns = 0;
};

/// Items come in file order; ranges of damage and records do not overlap, but for unknown values in a record.
void CheckPlace(const SDayFileItem& item, std::uint64_t& passed, std::uint64_t position) {
    Require(item.record != nullptr || item.damage, "an item is a record or damage");
    Require(item.offset >= passed && position <= MemorySystem().Find("C:\\day.evt")->size(),
            "items come in file order");
    if (item.record == nullptr) {
        Require(item.damage->offset == item.offset && item.damage->offset + item.damage->length == position,
                "damage reaches up to where reading goes on");
    } else {
        Require(position > item.offset && item.bytes.size() == position - item.offset, "a record has bytes");
        const SParsedRecord alone = ParseDayFileRecord(item.bytes);
        Require(alone.record != nullptr && alone.size == item.bytes.size() &&
                    alone.isExtended == item.isExtended && alone.record->GetText() == item.record->GetText(),
                "a record's bytes alone are that record");
        Require(!item.damage ||
                    (item.damage->fault == EDayFileFault::UnknownValue && item.damage->offset > item.offset &&
                     item.damage->offset + item.damage->length <= position),
                "a record's own damage lies within it");
        Require(item.record->IsValid(), "a record that is given is valid");
    }
    passed = position;
}

void Check(std::span<const std::uint8_t> bytes) {
    static CPrinters printers;
    static CDayFileReader reader; // its buffer is large, and every file starts it over
    static const SEventFilter kFilter{
        .since = TimeKey{1}, .until = {}, .sinceText = {}, .untilText = {}, .relay = {}, .match = "TriP"};
    MemorySystem().touched.clear();
    MemorySystem().AddFile("C:\\day.evt", {bytes.begin(), bytes.end()});
    Require(reader.Open("C:\\day.evt").Good(), "the file opens");
    SDayFileItem item;
    std::uint64_t passed = 0;
    std::size_t gaps = 0;
    std::uint64_t end = 0;
    while (reader.Next(item)) {
        gaps += item.offset > end ? 1 : 0;
        CheckPlace(item, passed, reader.Position());
        end = passed;
        printers.Print(item);
        static_cast<void>(item.record != nullptr && kFilter.MatchesRecord(*item.record));
    }
    Require(gaps <= 1, "nothing but the header is passed over in silence");
    Require(reader.Position() == bytes.size(), "the file is read to its end");
}

} // namespace

} // namespace ruvo::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    ruvo::fuzz::Check({data, size});
    return 0;
}
