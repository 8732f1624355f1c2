#include "tools/ini/diagnostics.h"

#include "tools/text_encoding.h"
#include "tools/text_output.h"

namespace ruvo {

void PrintDiagnostics(CTextOutput& out, const std::string& file, std::string_view prefix,
                      const std::vector<SDiagnostic>& diagnostics) {
    for (const SDiagnostic& diagnostic : diagnostics) {
        const std::string place = diagnostic.line > 0 ? file + ":" + std::to_string(diagnostic.line) : file;
        const std::string line = place + ": " + std::string(prefix) + diagnostic.text;
        out.Write(EscapeControls(SystemTextToUtf8(line)) + "\n");
    }
}

} // namespace ruvo
