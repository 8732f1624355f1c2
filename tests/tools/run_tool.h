// The companion program inside a test.
#pragma once

#include "support/contains.h"
#include "support/scratch_folder.h"
#include "tools/command_line.h"

#include "platform/clock.h"

#include <cstdio>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

namespace ruvo::test {

/// Of "2026-11-25 06:00", with seconds or without.
inline SCalendarTime CalendarTime(const std::string& text) {
    SCalendarTime time;
    EXPECT_GE(std::sscanf(text.c_str(), "%d-%d-%d %d:%d:%d", &time.year, &time.month, &time.day, &time.hour,
                          &time.minute, &time.second),
              5)
        << text;
    return time;
}

struct SOutcome {
    int status = 0;
    std::string out;
    std::string error;
};

inline SOutcome RunTool(const std::vector<std::string>& arguments, std::size_t width = 100,
                        const std::string& input = "") {
    std::istringstream in(input);
    std::ostringstream out, error;
    int status = -1;
    {
        CTextOutput outText(out), errorText(error);
        SConsole console{.in = in, .out = outText, .error = errorText, .width = width};
        status = RunCommandLine(arguments, console);
    }
    return {status, out.str(), error.str()};
}

/// With all that it says on one stream; its status.
inline int RunOn(std::ostream& stream, const std::vector<std::string>& arguments, bool isAtTerminal = false) {
    CTextOutput text(stream);
    SConsole console{.in = std::cin, .out = text, .error = text, .inIsTerminal = isAtTerminal};
    return RunCommandLine(arguments, console);
}

/// Every `part` of the text becomes something else.
inline std::string Replaced(std::string text, const std::string& part, const std::string& by) {
    for (std::size_t at = 0; (at = text.find(part, at)) != std::string::npos; at += by.size())
        text.replace(at, part.size(), by);
    return text;
}

/// The words of a line as arguments, `name` in them replaced by what it stands for.
inline SOutcome RunWords(const std::string& line, const std::string& name, const std::string& meant,
                         const std::string& input = "") {
    std::vector<std::string> arguments;
    std::istringstream words(line);
    for (std::string word; words >> word;)
        arguments.push_back(Replaced(word, name, meant));
    return RunTool(arguments, 100, input);
}

/// The same with a folder, which is called "@".
inline SOutcome RunIn(const CScratchFolder& folder, const std::string& line) {
    return RunWords(line, "@", folder.Native());
}

} // namespace ruvo::test
