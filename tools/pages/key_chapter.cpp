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

// (A fourth column for what is expected would not fit a terminal of 80 columns.)
std::string Meaning(const SGeneralKey& key) {
    const std::string expected =
        Expectation(key.rule).empty() ? "" : " Expected: " + std::string(Expectation(key.rule)) + ".";
    return Escaped(std::string(key.meaning) + expected);
}

} // namespace

std::string KeyChapter() {
    std::string out = SectionHeading(kGeneralSection) + "| key | default | meaning |\n|---|---|---|\n";
    for (const SGeneralKey& key : kGeneralKeys) {
        out += "| " + Code(key.name) + " | " + Code(key.defaultText) + " | " + Meaning(key) + " |\n";
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
