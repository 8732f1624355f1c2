#include "dayfile/text_file_header.h"

#include <cstdio>

namespace ruvo {

CTextFileHeader MakeEventListHeader(std::uint32_t nextExtended, const std::string& freeText) {
    char number[32];
    std::snprintf(number, sizeof number, "NEXTEXTENDED: %06u", nextExtended);
    return {{"APP: Parlane", "TYPE: EventList", "FORMAT: 1.0", number, "", freeText}};
}

} // namespace ruvo
