#include "dayfile/header_parser.h"

#include "dayfile/text_file_header.h"

#include <algorithm>
#include <string>
#include <string_view>

namespace ruvo {

namespace {

/// A header's byte that is no line end: anything printable, and the tab.
bool IsTextByte(std::uint8_t byte) {
    return byte >= 0x20 || byte == '\t';
}

/// True when each line ends in CR LF and one of them says that an event list follows.
bool IsEventListHeader(std::string_view lines) {
    constexpr std::string_view kLineEnd = "\r\n";
    constexpr std::string_view kTypeLine = "TYPE: EventList";
    bool isEventList = false;
    while (!lines.empty()) {
        const std::size_t end = lines.find_first_of(kLineEnd);
        if (end == std::string_view::npos || lines.substr(end, kLineEnd.size()) != kLineEnd) {
            return false;
        }
        isEventList = isEventList || lines.substr(0, end) == kTypeLine;
        lines.remove_prefix(end + kLineEnd.size());
    }
    return isEventList;
}

} // namespace

SParsedHeader ParseDayFileHeader(std::span<const std::uint8_t> bytes) {
    const std::span<const std::uint8_t> searched = bytes.first(std::min(bytes.size(), kMaxHeaderSize));
    const auto end = std::ranges::find_if(
        searched, [](std::uint8_t byte) { return !IsTextByte(byte) && byte != '\r' && byte != '\n'; });
    if (end == searched.end() || *end != kEndOfHeader) {
        return {EDayFileFault::NoHeaderEnd, 0};
    }
    if (!IsEventListHeader(std::string(searched.begin(), end))) {
        return {EDayFileFault::BadHeader, 0};
    }
    return {std::nullopt, static_cast<std::size_t>(end - searched.begin()) + 1};
}

} // namespace ruvo
