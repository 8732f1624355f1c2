// Reads day files one after the other for a command, shows progress, and reports files that cannot be read.
#pragma once

#include "dayfile/day_file_reader.h"
#include "tools/events/event_files.h"
#include "tools/events/event_printer.h"
#include "tools/progress.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace ruvo {

/// Whether an item of the file is among what came in within the time that was asked for.
[[nodiscard]] bool Counts(const SFoundFile& file, const SDayFileItem& item);

class CDayFileWalk {
public:
    /// Handles an item; calls progress.GiveWayToOutput before it prints to the console.
    using ItemHandler =
        std::function<void(const SEventSource& source, const SDayFileItem& item, CProgress& progress)>;

    explicit CDayFileWalk(SConsole& console) : m_console(console) {}

    /// Handles every item of every file, in order, until writing to the console fails.
    void Read(const SFoundFiles& found, const ItemHandler& handle);
    /// What could not be read, with the reason; already reported on standard error.
    [[nodiscard]] const std::vector<std::string>& Failures() const { return m_failures; }

private:
    void ReadDayFile(const SFoundFile& file, const ItemHandler& handle, CProgress& progress,
                     std::size_t filesDone);
    void ReportFailure(const std::string& what);

    SConsole& m_console;
    CDayFileReader m_reader;
    std::uint64_t m_bytes = 0;
    std::vector<std::string> m_failures;
};

} // namespace ruvo
