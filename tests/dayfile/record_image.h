// Images of day-file records written out by hand, and what the reader makes of a file of them.
#pragma once

#include "support/hex.h"

#include "dayfile/day_file_reader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace ruvo::test {

/// Bytes of blocks, and for each whether it is a block's tag or length ('h'), carries structure otherwise
/// ('s') or is content (' ').
struct SImage {
    std::string bytes;
    std::string marks;
};

/// Made of words: "[00" opens a block of that tag and "]" closes it, "'Trip" is a text, "!3C" a structural
/// byte, anything else hexadecimal digits. "_" in a text stands for a blank.
inline SImage MakeImage(const std::string& words) {
    SImage image;
    std::size_t block = 0;
    std::istringstream stream(words);
    for (std::string word; stream >> word;) {
        const char mark = word[0];
        const std::size_t start = image.bytes.size();
        const std::size_t marked = mark == '[' ? 3 : mark == '!' || mark == '\'' ? 1 : 0;
        image.marks += std::string(marked, mark == '[' ? 'h' : 's');
        std::string rest = word.substr(marked > 0 ? 1 : 0);
        if (mark == '\'') {
            std::ranges::replace(rest, '_', ' ');
            image.bytes += static_cast<char>(rest.size()) + rest;
        } else if (mark == ']') {
            image.bytes[block + 1] = static_cast<char>(start - block - 3);
            image.bytes[block + 2] = static_cast<char>((start - block - 3) >> 8);
        } else {
            for (const std::uint8_t byte : Hex(rest + (mark == '[' ? "0000" : "")))
                image.bytes += static_cast<char>(byte);
        }
        image.marks.resize(image.bytes.size(), ' ');
        block = mark == '[' ? start : block;
    }
    return image;
}

inline const std::string kDayFileHeader =
    "APP: Parlane\r\nTYPE: EventList\r\nFORMAT: 1.0\r\nNEXTEXTENDED: 000003\r\n\r\nheaderText\r\n\x1A";

using Images = std::map<std::uint64_t, std::string>; ///< of records, by offset
struct SRead {
    Images images; ///< records written again
    std::vector<SDayFileDamage> damage;
};

inline SRead ReadBack(const std::string& path) {
    CDayFileReader reader;
    EXPECT_TRUE(reader.Open(path).Good());
    SRead read;
    std::vector<std::uint8_t> image;
    for (SDayFileItem item; reader.Next(item);) {
        EXPECT_TRUE(item.record || item.damage) << "nothing to tell at " << item.offset;
        if (item.damage)
            read.damage.push_back(*item.damage);
        if (!item.record)
            continue;
        EXPECT_TRUE(item.record->IsValid());
        image.clear();
        item.record->Serialise(image);
        read.images[item.offset].assign(image.begin(), image.end());
    }
    return read;
}

} // namespace ruvo::test
