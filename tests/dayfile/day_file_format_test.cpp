// The page about day files says what the program does: its tables are read and compared.
#include "dayfile/block_parser.h"
#include "dayfile/block_walk.h"
#include "model/values/data_factory.h"
#include "support/hex.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

namespace ruvo::test {

/// The first cells of the rows of the page's tables that have this head, each row joined by ", ".
static std::string PageTable(const std::string& head, std::size_t cells) {
    std::ifstream page(RUVO_TEST_DATA "/../docs/day-file-format.md");
    std::string rows;
    bool isInside = false;
    for (std::string line; std::getline(page, line);) {
        if (isInside && line.starts_with("|---"))
            continue;
        if (isInside && line.starts_with('|')) {
            std::istringstream row(line.substr(1));
            std::string cell;
            for (std::size_t i = 0; i < cells && std::getline(row, cell, '|'); ++i)
                rows += (i > 0 ? ", " : "") + cell.substr(1, cell.size() - 2);
            rows += "\n";
        }
        isInside = line == head || (isInside && line.starts_with('|'));
    }
    return rows;
}

static std::string Row(const SBlockItem& item) {
    static constexpr const char* kEncodings[] = {"byte, 1",    "16 bits, 2",         "32 bits, 4",
                                                 "text, 1 + ", "short number, 1 + ", "tagged value, 2 + "};
    const std::string data = item.dataSize > 0 ? std::to_string(item.dataSize) : "n";
    const std::string row =
        std::string(item.name) + ", " + kEncodings[static_cast<std::size_t>(item.encoding)];
    return row + (row.ends_with(' ') ? data : "") + "\n";
}

TEST(DayFilePage, HasTheItemsOfEachBlock) {
    std::string rows;
    std::size_t size = 0;
    for (const SBlockItem& item : kEventItems)
        rows += Row(item);
    for (const SBlockItem& item : kCellItems)
        rows += Row(item);
    EXPECT_EQ(PageTable("| item | written as | bytes | contents |", 3), rows);
    EXPECT_EQ(PageTable("| tag | block |", 2), "`" + HexDigits(std::array{EBlockTag::Event}) + "`, event\n`" +
                                                   HexDigits(std::array{EBlockTag::Cells}) + "`, cells\n");
    std::istringstream page(PageTable("| item | written as | bytes | contents |", 3));
    for (std::string line; std::getline(page, line);) {
        // "2 + 7" is 9 bytes, "1 + n" at least 1
        std::istringstream bytes(line.substr(line.rfind(", ") + 2));
        char plus = 0;
        for (std::size_t part = 0; bytes >> part; bytes >> plus)
            size += part;
    }
    EXPECT_EQ(size, kMinEventSize + kMinCellSize) << "the page's own sums";
}

TEST(DayFilePage, HasTheTypesAndTheSizesThatKeepEveryByte) {
    std::string rows;
    for (unsigned code = 0; code <= 0xFF; ++code) {
        std::string sizes;
        std::size_t count = 0;
        for (std::size_t size = 0; size <= kMaxStoredData; ++size) {
            std::vector<std::uint8_t> bytes(kValueHeadSize + size, 0x02);
            bytes[1] = static_cast<std::uint8_t>(size);
            const auto value = CDataFactory::Create(code, std::span(bytes).subspan(kValueHeadSize));
            if (value != nullptr && IsStoredThere(value.get(), bytes))
                sizes += (count++ > 0 ? ", " : "") + std::to_string(size);
        }
        if (count > 0)
            rows +=
                "`" + HexDigits(std::array{code}) + "`, " + (count > kMaxStoredData ? "any" : sizes) + "\n";
    }
    EXPECT_EQ(PageTable("| type | bytes | value |", 2), rows);
}

TEST(DayFilePage, HasTheReasonsOfDamage) {
    std::string rows;
    for (int fault = 0; fault <= static_cast<int>(EDayFileFault::Last); ++fault)
        rows += std::string(DayFileFaultText(static_cast<EDayFileFault>(fault))) + "\n";
    EXPECT_EQ(PageTable("| reason | what was found |", 1), rows);
}

} // namespace ruvo::test
