#include "tools/pages/key_chapter.h"

#include "config/ini_keys.h"
#include "tools/pages/markdown.h"

namespace ruvo {

namespace {

std::string Code(std::string_view text) {
    return text.empty() ? std::string() : "`" + std::string(text) + "`";
}

std::string SectionHeading(std::string_view section) {
    return "\n## The section " + Escaped("[" + std::string(section) + "]") + "\n\n";
}

} // namespace

std::string KeyChapter() {
    std::string out =
        SectionHeading(kGeneralSection) + "| key | default | expected | meaning |\n|---|---|---|---|\n";
    for (const SGeneralKey& key : kGeneralKeys) {
        out += "| " + Code(key.name) + " | " + Code(key.defaultText) + " | " +
               Escaped(Expectation(key.rule)) + " | " + Escaped(key.meaning) + " |\n";
    }
    out += "\n## The sections of the relays\n\n| section | visited with | entries such as |\n|---|---|---|\n";
    for (const SLinkRow& link : kLinks) {
        const std::string switches = link.useEthernet == "1"
                                         ? "`UseEthernet=1`"
                                         : "`UseEthernet=0`, `UseModem=" + std::string(link.useModem) + "`";
        out += "| " + Code("[" + std::string(link.section) + "]") + " | " + switches + " | " +
               Escaped(link.entryExpected) + " |\n";
    }
    return out + "\n";
}

} // namespace ruvo
