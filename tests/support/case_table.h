// Tables of cases in files of their own: a row a line, its name first, then its fields, bars between them.
// A field in quotes keeps its blanks and knows \n, \r, \t, \\, \" and \xHH; others are taken as they are. A
// line that begins with "#" is a comment.
#pragma once

#include <gtest/gtest.h>

#include <array>
#include <fstream>
#include <string>
#include <tuple>

namespace ruvo::test {

/// Takes the next field of a line off its front.
inline std::string TakeField(std::string& line) {
    static constexpr std::string_view kLetters = "nrt", kMeant = "\n\r\t";
    std::string field;
    std::size_t at = line.find_first_not_of(' ');
    if (at < line.size() && line[at] == '"') {
        for (++at; at < line.size() && line[at] != '"'; ++at) {
            if (line[at] != '\\') {
                field += line[at];
            } else if (line[++at] == 'x') {
                field += static_cast<char>(std::stoi(line.substr(at + 1, 2), nullptr, 16));
                at += 2;
            } else {
                const std::size_t letter = kLetters.find(line[at]);
                field += letter == std::string_view::npos ? line[at] : kMeant[letter];
            }
        }
        at = line.find('|', at);
    } else if (at < line.size()) {
        const std::size_t start = at;
        at = line.find('|', at);
        field = line.substr(start, at == std::string::npos ? at : at - start);
        field.erase(field.find_last_not_of(' ') + 1);
    }
    line.erase(0, at == std::string::npos ? at : at + 1);
    return field;
}

/// Calls `check` with the fields of each row of a file below tests; a failure tells the row's place and name.
template <std::size_t kFields, class TCheck>
void ForEachCase(const std::string& file, TCheck check) {
    std::ifstream lines(RUVO_TEST_DATA "/" + file);
    int number = 0, rows = 0;
    for (std::string line; std::getline(lines, line);) {
        ++number;
        if (line.empty() || line[0] == '#')
            continue;
        SCOPED_TRACE(file + ":" + std::to_string(number) + ": " + TakeField(line));
        std::array<std::string, kFields> fields;
        for (std::string& field : fields)
            field = TakeField(line);
        EXPECT_EQ(line, "") << "more fields than " << kFields;
        std::apply(check, fields);
        ++rows;
    }
    EXPECT_GT(rows, 1) << file;
}

} // namespace ruvo::test
