// Reads day files one after the other for a command: with progress for people, and a word about every file
// that cannot be read.
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

class CDayFileWalk {
public:
    /// Takes an item; what it prints on the console it announces to the progress.
    using Taker =
        std::function<void(const SEventSource& source, const SDayFileItem& item, CProgress& progress)>;

    explicit CDayFileWalk(SConsole& console) : m_console(console) {}

    /// Every item of every file, in the files' order, as long as the console's output takes more.
    void Read(const SFoundFiles& found, const Taker& take);
    /// What could not be read, and why; it has been said on the error output already.
    [[nodiscard]] const std::vector<std::string>& Failures() const { return m_failures; }

private:
    void ReadDayFile(const SFoundFile& file, const Taker& take, CProgress& progress, std::size_t filesDone);
    void Complain(const std::string& what);

    SConsole& m_console;
    CDayFileReader m_reader;
    std::uint64_t m_bytes = 0;
    std::vector<std::string> m_failures;
};

} // namespace ruvo
