// Reads the error log line by line with bounded memory, whatever else the file contains.
#pragma once

#include "platform/files.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace ruvo {

/// One problem. All texts are UTF-8; control characters are still in them.
struct SLogLine {
    std::uint64_t number = 0; ///< of the line in the file, from 1
    std::string time;         ///< local time as "2026-11-16T03:12:45"; empty if the line starts with none
    std::string message;      ///< the line without the other fields
    std::string
        connection;     ///< "COM Port: COM2, device address: 7.", or as the message says it; empty without
    std::string status; ///< the text of a comms-server status; empty without
};

/// Returns every line that is not empty, a damaged or foreign one as a message without a time. A line longer
/// than kLongestLine is returned in pieces with the same number.
class CLogReader {
public:
    static constexpr std::size_t kLongestLine = std::size_t{256} * 1024;

    CLogReader();

    /// Opens a log, by a path in Windows form or the system's own.
    SFileResult Open(const std::string& path);
    /// False at the end of the file or on a read error; see Result.
    [[nodiscard]] bool Next(SLogLine& line);
    /// The same with number and time alone, for callers who take few lines, by their time.
    [[nodiscard]] bool NextTime(SLogLine& line);
    /// Fills in the rest of the line that NextTime has returned last.
    void Complete(SLogLine& line) const;
    /// Good unless reading failed.
    [[nodiscard]] SFileResult Result() const { return m_result; }

private:
    [[nodiscard]] bool NextText(std::string_view& text);
    void Refill();

    CFile m_file;
    std::unique_ptr<std::uint8_t[]> m_buffer; ///< not zeroed: most logs are small
    std::size_t m_begin = 0;                  ///< of the bytes in the buffer that are still to come
    std::size_t m_end = 0;
    std::uint64_t m_number = 1; ///< of the line that the next bytes belong to
    std::string_view m_text;    ///< of the last line, without its time; in the buffer
    bool m_atEnd = false;
    SFileResult m_result;
};

/// Parses one line without its line end; the number stays 0.
[[nodiscard]] SLogLine ParseLogLine(std::string_view text);

/// "serial", "modem" or "ethernet" of connection details; empty for details of another form.
[[nodiscard]] std::string_view LinkOfConnection(std::string_view connection);

/// A short name for connection details: "COM2 device 7", "10.20.0.5 device 2 bus 1", "Acme 56k device 7".
/// Returns details of another form unchanged.
[[nodiscard]] std::string ShortConnectionName(std::string_view connection);

} // namespace ruvo
