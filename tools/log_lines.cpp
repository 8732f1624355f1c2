#include "tools/log_lines.h"

#include "tools/events/event_filter.h"
#include "tools/text_encoding.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace ruvo {

namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF"; // of an editor
/// What stands between the digits of "2026/11/16 03:12:45".
struct STimeMark {
    std::size_t at;
    char logged;
    char iso;
};
constexpr std::array kTimeMarks{STimeMark{4, '/', '-'}, STimeMark{7, '/', '-'}, STimeMark{10, ' ', 'T'},
                                STimeMark{13, ':', ':'}, STimeMark{16, ':', ':'}};
constexpr std::size_t kTimeSize = 19;
constexpr std::string_view kDetails = " Connection details - ";
constexpr std::string_view kStatus = " P32LS status: ";

struct SDetailsForm {
    std::string_view start;
    std::string_view link;
};
constexpr std::array kDetailsForms{
    SDetailsForm{"IP address: ", "ethernet"}, SDetailsForm{"device IP: ", "ethernet"},
    SDetailsForm{"COM Port: ", "serial"}, SDetailsForm{"modem name: ", "modem"}};

const SDetailsForm* FindDetails(std::string_view connection) {
    return std::ranges::find_if(
        kDetailsForms, [connection](const SDetailsForm& form) { return connection.starts_with(form.start); });
}

/// Takes the timestamp off the start of the line, in ISO 8601 form; none leaves `time` empty.
void TakeTimeStamp(std::string_view& text, std::string& time) {
    time.clear();
    if (text.size() <= kTimeSize || text[kTimeSize] != ' ' ||
        std::ranges::any_of(kTimeMarks,
                            [&](const STimeMark& mark) { return text[mark.at] != mark.logged; })) {
        return;
    }
    time = text.substr(0, kTimeSize);
    for (const STimeMark& mark : kTimeMarks) {
        time[mark.at] = mark.iso;
    }
    if (!ParseTimeKey(time, EDayEdge::Start)) {
        time.clear();
        return;
    }
    text.remove_prefix(kTimeSize + 1);
}

/// A line has many of the blanks with which a mark begins, but few of the capital letters that follow:
/// searching for the blanks, or for whole marks, was the largest part of reading a log.
std::size_t FindLast(std::string_view text, std::string_view mark) {
    std::size_t found = std::string_view::npos;
    for (std::size_t at = text.find(mark[1], 1); at != std::string_view::npos;
         at = text.find(mark[1], at + 1)) {
        found = text.substr(at - 1).starts_with(mark) ? at - 1 : found;
    }
    return found;
}

/// Truncates the text before the mark that begins at `at`, and returns the rest after the mark; nothing where
/// there is none.
std::string_view CutAt(std::string_view& text, std::size_t at, std::string_view mark) {
    if (at == std::string_view::npos) {
        return {};
    }
    const std::string_view after = text.substr(at + mark.size());
    text = text.substr(0, at);
    return after;
}

/// The text between `mark` and the next comma or full stop.
std::string_view FieldAfter(std::string_view text, std::string_view mark) {
    const std::size_t at = FindLast(text, mark);
    if (at == std::string_view::npos) {
        return {};
    }
    const std::string_view after = text.substr(at + mark.size());
    return after.substr(0, after.find_first_of(",."));
}

/// The next text between quotes; moves behind it.
std::string_view TakeQuoted(std::string_view& text) {
    const auto takeUntilQuote = [&text] {
        const std::string_view before = text.substr(0, text.find('"'));
        text.remove_prefix(std::min(before.size() + 1, text.size()));
        return before;
    };
    takeUntilQuote();
    return takeUntilQuote();
}

/// The details of a line about a relay's own link, which names the relay within the message alone.
std::string ConnectionInMessage(std::string_view message) {
    constexpr std::string_view kTunnel = "Failed to open ethernet connection. Connection string: TNLC=";
    constexpr std::string_view kPlace = "There were problems with setting transaction values. Device IP: ";
    if (message.starts_with(kPlace)) {
        return "device IP: " + std::string(message.substr(kPlace.size()));
    }
    if (!message.starts_with(kTunnel)) {
        return {};
    }
    std::string_view rest = message.substr(kTunnel.size());
    TakeQuoted(rest); // the library
    const std::string ip(TakeQuoted(rest));
    const std::string bus(TakeQuoted(rest));
    const std::string device(TakeQuoted(rest));
    return ip.empty() ? ip
                      : "device IP: " + ip + ", device address: " + device + ", bus address: " + bus + ".";
}

/// Keeps the line's number and time.
void ParseAfterTime(std::string_view text, SLogLine& line) {
    const std::string converted = IsUtf8(text) ? std::string() : SystemTextToUtf8(text);
    std::string_view rest = converted.empty() ? text : converted;
    // A relay's own words come before the details: only what follows the last details is a status.
    const std::size_t details = FindLast(rest, kDetails);
    const std::size_t status = FindLast(rest, kStatus);
    const bool isLast = details == std::string_view::npos || status > details;
    line.status = isLast ? CutAt(rest, status, kStatus) : std::string_view();
    line.connection = CutAt(rest, FindLast(rest, kDetails), kDetails);
    line.message = rest;
    if (line.connection.empty()) {
        line.connection = ConnectionInMessage(rest);
    }
}

} // namespace

CLogReader::CLogReader() : m_buffer(std::make_unique_for_overwrite<std::uint8_t[]>(kLongestLine)) {}

SFileResult CLogReader::Open(const std::string& path) {
    m_begin = m_end = 0;
    m_number = 1;
    m_result = m_file.Open(path, {.read = true});
    m_atEnd = !m_result.Good(); // reading on would put another failure over the true one
    if (m_result.Good()) {
        Refill();
        if (std::string_view(reinterpret_cast<const char*>(m_buffer.get()), m_end)
                .starts_with(kByteOrderMark)) {
            m_begin = kByteOrderMark.size();
        }
    }
    return m_result;
}

bool CLogReader::Next(SLogLine& line) {
    const bool isThere = NextTime(line);
    if (isThere) {
        Complete(line);
    }
    return isThere;
}

bool CLogReader::NextTime(SLogLine& line) {
    do {
        line.number = m_number;
        if (!NextText(m_text)) {
            return false;
        }
    } while (m_text.empty());
    TakeTimeStamp(m_text, line.time);
    return true;
}

void CLogReader::Complete(SLogLine& line) const {
    ParseAfterTime(m_text, line);
}

/// The next line without its end, or as much of it as the buffer holds.
bool CLogReader::NextText(std::string_view& text) {
    const auto findEnd = [this] {
        const std::uint8_t* const buffer = m_buffer.get();
        const void* const found = std::memchr(buffer + m_begin, '\n', m_end - m_begin);
        return found == nullptr ? m_end
                                : static_cast<std::size_t>(static_cast<const std::uint8_t*>(found) - buffer);
    };
    std::size_t end = findEnd();
    if (end == m_end && !m_atEnd) {
        Refill();
        end = findEnd();
    }
    text = std::string_view(reinterpret_cast<const char*>(m_buffer.get()), end).substr(m_begin);
    const bool isEnded = end < m_end;
    m_begin = end + (isEnded ? 1 : 0);
    m_number += isEnded ? 1 : 0;
    const bool isThere = isEnded || !text.empty();
    if (text.ends_with('\r')) {
        text.remove_suffix(1);
    }
    return isThere;
}

void CLogReader::Refill() {
    std::memmove(m_buffer.get(), m_buffer.get() + m_begin, m_end - m_begin);
    m_end -= m_begin;
    m_begin = 0;
    while (!m_atEnd && m_end < kLongestLine) {
        std::size_t count = 0;
        m_result = m_file.Read(std::span(m_buffer.get() + m_end, kLongestLine - m_end), count);
        m_atEnd = !m_result.Good() || count == 0;
        m_end += count;
    }
}

SLogLine ParseLogLine(std::string_view text) {
    SLogLine line;
    TakeTimeStamp(text, line.time);
    ParseAfterTime(text, line);
    return line;
}

std::string_view LinkOfConnection(std::string_view connection) {
    const auto* const form = FindDetails(connection);
    return form == kDetailsForms.end() ? std::string_view() : form->link;
}

std::string ShortConnectionName(std::string_view connection) {
    const auto* const link = FindDetails(connection);
    constexpr std::string_view kDevice = ", device address: ";
    const std::size_t device = connection.rfind(kDevice);
    if (link == kDetailsForms.end() || device == std::string_view::npos) {
        return std::string(connection);
    }
    std::string name(connection.substr(link->start.size(), device - link->start.size()));
    name.resize(std::min(name.size(), name.rfind(", number to dial: ")));
    const auto add = [&name, connection](std::string_view word, std::string_view mark) {
        const std::string_view address = FieldAfter(connection, mark);
        if (!address.empty() && address != "0" && !address.starts_with('-')) { // what is not known is these
            name += word;
            name += address;
        }
    };
    add(" device ", kDevice);
    add(" bus ", ", bus address: ");
    return name;
}

} // namespace ruvo
