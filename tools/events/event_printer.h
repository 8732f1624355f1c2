// How records and damage are shown. Each format is one printer.
#pragma once

#include "dayfile/day_file_reader.h"
#include "tools/clocks/zone_rule.h"
#include "tools/events/csv_row.h"

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

namespace ruvo {

/// The day file that is being read: its path as typed or found, the relay that its name contains, and the
/// site. UTF-8.
struct SEventSource {
    std::string file;
    std::string relay;
    std::string site = {};            ///< empty where nothing names it
    const CZoneRule* clock = nullptr; ///< what the relay's clock shows; null where nothing says so
};

/// Appends UTF-8 without control characters other than line ends. Keeps nothing between calls, so that what
/// it appends may be put into another order.
class IEventPrinter {
public:
    virtual ~IEventPrinter() = default;
    /// What is printed before everything else.
    virtual void PrintHead(std::string& out) = 0;
    virtual void PrintRecord(std::string& out, const SEventSource& source, const SDayFileItem& item) = 0;
    virtual void PrintDamage(std::string& out, const SEventSource& source, const SDayFileDamage& damage) = 0;
};

/// For reading: columns within `width`, the relay's one being `relayWidth` wide.
std::unique_ptr<IEventPrinter> MakeTextPrinter(std::size_t width, std::size_t relayWidth);
/// One JSON object a line.
std::unique_ptr<IEventPrinter> MakeJsonPrinter();
/// RFC 4180 with a header line.
std::unique_ptr<IEventPrinter> MakeCsvPrinter(const SCsvForm& form);

} // namespace ruvo
