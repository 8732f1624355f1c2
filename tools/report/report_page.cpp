#include "tools/report/report_page.h"

#include "base/text.h"
#include "tools/text_encoding.h"

namespace ruvo {

namespace {

/// U+2028 and U+2029, which end a line of script, without their last byte.
constexpr std::string_view kSeparatorLead = "\xE2\x80";

bool IsSeparatorAt(std::string_view text, std::size_t at) {
    return text.substr(at).starts_with(kSeparatorLead) && at + 2 < text.size() &&
           (text[at + 2] == '\xA8' || text[at + 2] == '\xA9');
}

} // namespace

// The characters occur only inside JSON's strings, so that each can simply be replaced by its escape.
void AppendScriptJson(std::string& out, std::string_view json) {
    constexpr std::string_view kSuspects = "<>&\xE2";
    std::size_t done = 0;
    for (std::size_t at = json.find_first_of(kSuspects); at != std::string_view::npos;
         at = json.find_first_of(kSuspects, at + 1)) {
        const bool isSeparator = IsSeparatorAt(json, at);
        if (json[at] == '\xE2' && !isSeparator) {
            continue;
        }
        out += json.substr(done, at - done);
        if (isSeparator) {
            out += json[at + 2] == '\xA8' ? "\\u2028" : "\\u2029";
        } else {
            out += "\\u00";
            AppendHexByte(out, static_cast<unsigned char>(json[at]));
        }
        done = at + (isSeparator ? kSeparatorLead.size() + 1 : 1);
    }
    out += json.substr(done);
}

std::string MakePage(std::string_view json) {
    std::string page;
    page.reserve(json.size() + json.size() / 8);
    for (const std::string_view piece : PageBeforeData()) {
        page += piece;
    }
    AppendScriptJson(page, json);
    for (const std::string_view piece : PageAfterData()) {
        page += piece;
    }
    return page;
}

} // namespace ruvo
