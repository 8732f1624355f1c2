// The header that the text files of the tool family share: lines, an empty line, one line of free text.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace ruvo {

/// The lines of a header in file order, without line ends.
struct CTextFileHeader {
    std::vector<std::string> lines;
};

/// Ends a header on disk; what follows is the body.
inline constexpr std::uint8_t kEndOfHeader = 0x1A;

/// The header of an event list. `nextExtended` is the number that the next extended record would get.
CTextFileHeader MakeEventListHeader(std::uint32_t nextExtended, const std::string& freeText);

} // namespace ruvo
