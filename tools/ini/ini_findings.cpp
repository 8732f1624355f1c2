#include "tools/ini/ini_findings.h"

#include "tools/text_encoding.h"
#include "tools/text_output.h"

namespace ruvo {

void PrintFindings(CTextOutput& out, const std::string& file, std::string_view prefix,
                   const std::vector<SIniFinding>& findings) {
    for (const SIniFinding& finding : findings) {
        const std::string place = finding.line > 0 ? file + ":" + std::to_string(finding.line) : file;
        const std::string line = place + ": " + std::string(prefix) + finding.text;
        out.Write(EscapeControls(SystemTextToUtf8(line)) + "\n");
    }
}

} // namespace ruvo
