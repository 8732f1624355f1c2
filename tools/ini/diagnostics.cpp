#include "tools/ini/diagnostics.h"

#include "tools/text_encoding.h"
#include "tools/text_output.h"

namespace ruvo {

void PrintDiagnostics(CTextOutput& out, const std::string& file, std::string_view prefix,
                      const std::vector<SDiagnostic>& diagnostics) {
    for (const SDiagnostic& diagnostic : diagnostics) {
        const std::string place = diagnostic.line > 0 ? file + ":" + std::to_string(diagnostic.line) : file;
        // Each by itself: the encoding of the file's texts is not always that of paths.
        const std::string line =
            SystemTextToUtf8(place) + ": " + std::string(prefix) + SystemTextToUtf8(diagnostic.text);
        out.Write(EscapeControls(line) + "\n");
    }
}

} // namespace ruvo
