// Writes the string table as a resource script. Runs on the building system.
#include "model/status/string_table.h"

#include <cstdio>
#include <string>

namespace {

/// The text between quotes; empty when it holds what the resource compiler could read in another way.
std::string Quoted(const char* text) {
    std::string quoted = "\"";
    for (; *text != '\0'; ++text) {
        if (*text == '\n') {
            quoted += "\\n";
        } else if (*text < ' ' || *text > '~' || *text == '\\') {
            return {};
        } else {
            quoted += *text == '"' ? "\"\"" : std::string(1, *text);
        }
    }
    return quoted + "\"";
}

} // namespace

int main() {
    std::printf("#pragma code_page(1252)\nLANGUAGE 9, 1\n\nSTRINGTABLE\nBEGIN\n");
    for (const ruvo::SStringRow& row : ruvo::StringTable()) {
        const std::string quoted = Quoted(row.text);
        if (quoted.empty()) {
            std::fprintf(stderr, "text %u holds a character that the resource script cannot\n", row.id);
            return 1;
        }
        if (*row.text != '\0') { // an empty text is an absent one
            std::printf(" %u, %s\n", row.id, quoted.c_str());
        }
    }
    std::printf("END\n");
}
