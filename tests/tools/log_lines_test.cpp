// The error log read back: what becomes of lines of every form, and of what never was one.
#include "support/case_table.h"
#include "support/scratch_folder.h"

#include "tools/log_lines.h"

#include <gtest/gtest.h>

namespace ruvo::test {

TEST(LogLines, TakesLinesApart) {
    ForEachCase<5>("tools/log_lines.txt",
                   [](auto& text, auto& time, auto& message, auto& connection, auto& status) {
                       const SLogLine line = ParseLogLine(text);
                       EXPECT_EQ(line.time, time);
                       EXPECT_EQ(line.message, message);
                       EXPECT_EQ(line.connection, connection);
                       EXPECT_EQ(line.status, status);
                   });
}

TEST(LogLines, ShortNames) {
    ForEachCase<2>("tools/connection_names.txt",
                   [](auto& details, auto& want) { EXPECT_EQ(ShortConnectionName(details), want); });
}

// Lines at and over the edges of the reader's buffer, odd line ends, no end at all.
TEST(LogLines, NoLineIsLost) {
    const CScratchFolder folder;
    std::string text = "\xEF\xBB\xBFone\r\n\r\ntwo\n";
    std::string want = "1:one 3:two ";
    for (std::size_t number = 4; text.size() < 3 * CLogReader::kLongestLine; ++number) {
        const std::string word(number % 977 + 1, 'x');
        text += word + (number % 2 == 0 ? "\r\n" : "\n");
        want += std::to_string(number) + ':' + word + ' ';
    }
    const auto read = [&folder](const std::string& bytes) {
        CLogReader reader;
        EXPECT_TRUE(reader.Open(folder.Write("run.log", bytes)).Good());
        std::string got;
        for (SLogLine line; reader.Next(line);)
            got += std::to_string(line.number) + ':' + line.message + ' ';
        EXPECT_TRUE(reader.Result().Good());
        return got;
    };
    EXPECT_EQ(read(text + "last"), want + std::to_string(std::ranges::count(text, '\n') + 1) + ":last ");
    const std::string whole(CLogReader::kLongestLine, 'y');
    EXPECT_EQ(read(whole + "z\nend"), "1:" + whole + " 1:z 2:end ") << "pieces of a line that never ends";
    EXPECT_EQ(read(""), "");
    CLogReader reader;
    SLogLine line;
    EXPECT_EQ(reader.Open(folder.Path("none.log")).failure, EFileFailure::NotFound);
    EXPECT_FALSE(reader.Next(line));
    EXPECT_EQ(reader.Result().failure, EFileFailure::NotFound) << "the cause stays the true one";
}

} // namespace ruvo::test
