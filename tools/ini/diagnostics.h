// Where in an INI file the cause of a result code is, and what is unusual in it beyond what the rules refuse.
#pragma once

#include "config/result_code.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace ruvo {

class CIniText;
class CTextOutput;

/// One diagnostic; line 0 means the file as a whole. The text may hold whatever the file holds.
struct SDiagnostic {
    std::size_t line = 0;
    std::string text;
};

/// The lines that a result code is about, with what is wanted there; empty for success. A text of the file is
/// shown unchanged, except for passwords.
[[nodiscard]] std::vector<SDiagnostic> ExplainResultCode(EResultCode code, const CIniText& ini);

/// The same for any file: "BaudRate: expected 1200 or 2400"; empty for success, and for a number that no rule
/// yields.
[[nodiscard]] std::string ExpectedInstead(EResultCode code);

/// What loading passes over in silence and its author will not have meant, in line order.
[[nodiscard]] std::vector<SDiagnostic> FindWarnings(const CIniText& ini);

/// Links in the place of a relay's folder in the event root, and what is no regular file in the place of a
/// day file: there a run refuses to store, and leaves the events where they are.
[[nodiscard]] std::vector<SDiagnostic> FindUnwritablePlaces(std::string eventRoot);

/// Writes a line each: the file with the diagnostic's line, the prefix, the text.
void PrintDiagnostics(CTextOutput& out, const std::string& file, std::string_view prefix,
                      const std::vector<SDiagnostic>& diagnostics);

} // namespace ruvo
