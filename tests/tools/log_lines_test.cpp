// The error log read back: what becomes of lines of every form, and of what never was one.
#include "support/scratch_folder.h"

#include "tools/log_lines.h"

#include <gtest/gtest.h>

namespace ruvo::test {

TEST(LogLines, TakesLinesApart) {
    struct SCase {
        const char* name;
        const char* text;
        const char* want; ///< time|message|connection|status
    };
    const SCase kCases[] = {
        {"plain", "2024/03/05 14:07:09 Too late.", "2024-03-05T14:07:09|Too late.||"},
        {"details", "2024/03/05 14:07:09 m. Connection details - COM Port: COM2, device address: 7.",
         "2024-03-05T14:07:09|m.|COM Port: COM2, device address: 7.|"},
        {"status", "2024/03/05 14:07:09 Failed. P32LS status: Cell data not available",
         "2024-03-05T14:07:09|Failed.||Cell data not available"},
        {"both", "2024/03/05 14:07:09 A. Connection details - device IP: 1.1.1.1. P32LS status: no port",
         "2024-03-05T14:07:09|A.|device IP: 1.1.1.1.|no port"},
        {"a relay's words that look like both",
         "2024/03/05 14:07:09 x Connection details - y P32LS status: z Connection details - COM Port: A.",
         "2024-03-05T14:07:09|x Connection details - y P32LS status: z|COM Port: A.|"},
        {"a path in the system's form",
         "2024/03/05 14:07:09 Day file /ev/A/a.evt is a link. Connection details - COM Port: A.",
         "2024-03-05T14:07:09|Day file /ev/A/a.evt is a link.|COM Port: A.|"},
        {"one of earlier runs",
         "2024/03/05 14:07:09 Day file C:\\ev\\A\\a.evt is a link. Connection details - COM Port: A.",
         "2024-03-05T14:07:09|Day file C:\\ev\\A\\a.evt is a link.|COM Port: A.|"},
        {"no such day", "2024/02/30 14:07:09 x", "|2024/02/30 14:07:09 x||"},
        {"half a stamp", "2024/03/05 14:0", "|2024/03/05 14:0||"},
        {"a clock out of order", "Invalid DateTime a b", "|Invalid DateTime a b||"},
        {"code page 1252", "Gesch\xE4lt", "|Geschält||"},
    };
    for (const SCase& row : kCases) {
        const SLogLine line = ParseLogLine(row.text);
        EXPECT_EQ(line.time + '|' + line.message + '|' + line.connection + '|' + line.status, row.want)
            << row.name;
    }
}

TEST(LogLines, ShortNames) {
    const std::pair<const char*, const char*> kCases[] = {
        {"COM Port: COM2, device address: 7.", "COM2 device 7"},
        {"IP address: 10.20.0.5, device address: 2, bus address: 1.", "10.20.0.5 device 2 bus 1"},
        {"IP address: 10.20.0.5, device address: 2, bus address: 0.", "10.20.0.5 device 2"},
        {"modem name: A, device address: 5, number to dial: 0, device address: 7.",
         "A, device address: 5 device 7"},
        {"modem name: , device address: -1.", ""},
        {"something else.", "something else."},
    };
    for (const auto& [details, want] : kCases)
        EXPECT_EQ(ShortConnectionName(details), want);
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
