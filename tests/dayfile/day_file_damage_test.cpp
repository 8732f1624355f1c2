// A day file of 100 records, cut at every byte and with every single bit flipped.
#include "dayfile/record_image.h"
#include "support/scratch_folder.h"

#include <gtest/gtest.h>

#include <array>

namespace ruvo::test {
namespace {

constexpr std::size_t kRecords = 100;

/// Short records of both kinds, with values of all types that are stored.
class CDayFile {
public:
    CDayFile() {
        for (std::size_t number = 0; number < kRecords; ++number) {
            const SImage image = MakeImage(number % 3 == 2 ? Extended(number) : Simple(number));
            starts.push_back(bytes.size());
            records[bytes.size()] = image.bytes;
            bytes += image.bytes;
            marks += image.marks;
        }
        starts.push_back(bytes.size());
    }
    /// Index of the record that holds the byte.
    std::size_t RecordAt(std::size_t at) const {
        return static_cast<std::size_t>(std::ranges::upper_bound(starts, at) - starts.begin()) - 1;
    }

    std::string bytes = kDayFileHeader;
    std::string marks = std::string(bytes.size(), ' ');
    std::vector<std::size_t> starts; ///< of the records, and the end of the file
    Images records;

private:
    template <class Pool>
    std::string Pick(const Pool& pool) {
        m_random = m_random * 1103515245 + 12345;
        return std::string(pool[(m_random >> 16) % std::size(pool)]) + " ";
    }
    std::string Text() { return Pick(std::array{"'", "'A", "'Trip", "'Zone_2_on", "'%u_of_%s", "'\xC4nd"}); }
    std::string Value() {
        return Pick(std::array{"!18 !03 4F6666", "!20 !02 0500", "!24 !01 07", "!28 !02 FEFF",
                               "!2C !04 01234582", "!34 !04 0000A042", "!38 !04 10270000",
                               "!3C !07 D2040304100B1A", "!44 !02 0109", "!48 !01 05", "!FF !00",
                               "!1C !04 41414141"});
    }
    // One draw a statement, so that every compiler makes the same file.
    std::string Event(const std::string& id) {
        std::string words = id + " !3C !07 D2040304100B1A 00 !00 !01 05 " + Text();
        words += "'D 'AB12 2003 " + Text();
        return words + Value();
    }
    std::string Simple(std::size_t number) {
        std::string words = "[00 !00 00000000 " + Event("");
        words += Text();
        for (std::size_t values = number / 3 % 3; values > 0; --values)
            words += Value();
        return words + "]";
    }
    std::string Extended(std::size_t number) {
        const std::string id = {"0123456789ABCDEF"[number / 16], "0123456789ABCDEF"[number % 16]};
        std::string words = "[00 " + Pick(std::array{"!01", "!02", "!09"});
        words += Event("!" + id + " !00 !00 !00") + "!00 ] [01 !" + id + " !00 !00 !00 ";
        for (std::size_t cells = number / 3 % 3; cells > 0; --cells) {
            words += Text();
            words += Pick(std::array{"!20 !01 05 !02 'On 'Off", "!18 !01 42 !00", "!24 !02 0500 !00",
                                     "!28 !01 FE !00", "!34 !04 0000A042 !00", "!FF !00 !00"});
        }
        return words + "]";
    }

    std::uint32_t m_random = 20261116;
};

const CDayFile& DayFile() {
    static const CDayFile file;
    return file;
}

} // namespace

TEST(DayFileDamage, CutAtEveryByte) {
    const CScratchFolder folder;
    const CDayFile& day = DayFile();
    Images whole = day.records;
    const std::string path = folder.Write("day.evt", day.bytes);
    for (std::size_t cut = day.bytes.size(); cut > 0; --cut) {
        std::filesystem::resize_file(folder.Native("day.evt"), cut);
        const std::size_t sound = cut < day.starts[0] ? 0 : day.starts[day.RecordAt(cut)];
        whole.erase(whole.lower_bound(sound), whole.end());
        const SRead read = ReadBack(path);
        ASSERT_EQ(read.images, whole) << cut;
        ASSERT_EQ(read.damage.size(), sound != cut ? 1U : 0U) << cut;
        if (sound != cut) {
            ASSERT_EQ(read.damage[0].offset, sound);
            ASSERT_EQ(read.damage[0].length, cut - sound);
        }
    }
}

class DayFileDamageBit : public testing::TestWithParam<unsigned> {
protected:
    /// Reads the file with that bit of the byte flipped; `byte` is what then stands there.
    SRead ReadFlipped(std::size_t at, char& byte) {
        byte = static_cast<char>(day.bytes[at] ^ (1 << GetParam()));
        Put(at, byte);
        SRead read = ReadBack(m_folder.Path("day.evt"));
        Put(at, day.bytes[at]);
        return read;
    }
    const CDayFile& day = DayFile();

private:
    void Put(std::size_t at, char byte) { m_file.seekp(static_cast<std::streamoff>(at)).put(byte).flush(); }

    const CScratchFolder m_folder;
    std::fstream m_file{(m_folder.Write("day.evt", day.bytes), m_folder.Native("day.evt")),
                        std::ios::binary | std::ios::in | std::ios::out};
};
INSTANTIATE_TEST_SUITE_P(Every, DayFileDamageBit, testing::Range(0U, 8U));

// No reader can tell a type code that suits the same bytes, or a text's length that happens to end where
// another item does: the record then is another sound one, byte for byte as the file now says.
TEST_P(DayFileDamageBit, FlippedInEveryByteOfTheRecords) {
    std::map<std::string, int> seen;
    for (std::size_t at = day.starts[0]; at < day.bytes.size(); ++at) {
        const std::size_t index = day.RecordAt(at);
        const std::size_t start = day.starts[index];
        SCOPED_TRACE(testing::Message() << "byte " << at << ", " << at - start << " of record " << index);
        std::string flipped = day.records.at(start);
        SRead read = ReadFlipped(at, flipped[at - start]);
        const std::string got = std::exchange(read.images[start], day.records.at(start));
        ASSERT_EQ(read.images, day.records) << "the other records, and none invented";
        for (const SDayFileDamage& damage : read.damage)
            ASSERT_TRUE(damage.offset >= start && damage.offset + damage.length <= day.starts[index + 1]);
        const char mark = day.marks[at];
        if (read.damage.empty()) {
            ASSERT_NE(mark, 'h');
            // The reserved byte may hold anything and is written as 0.
            ASSERT_TRUE(got == flipped || (got == day.records.at(start) && mark == ' '));
        } else {
            ASSERT_NE(mark, ' ');
        }
        ++seen[!read.damage.empty() ? "found" : mark == 's' ? "another" : "content"];
    }
    EXPECT_LT(seen["another"] * 10, seen["found"]);
    for (const auto& [what, count] : seen)
        RecordProperty(what, count);
}

TEST_P(DayFileDamageBit, FlippedInEveryByteOfTheHeader) {
    const std::size_t type = day.bytes.find("TYPE: EventList");
    for (std::size_t at = 0; at < day.starts[0]; ++at) {
        SCOPED_TRACE(at);
        const bool counts = day.bytes[at] < ' ' || (at >= type && at < day.bytes.find('\r', type));
        char byte = 0;
        const SRead read = ReadFlipped(at, byte);
        ASSERT_EQ(read.images, day.records);
        ASSERT_TRUE(read.damage.size() == 1 || (read.damage.empty() && !counts));
        if (!read.damage.empty()) {
            ASSERT_EQ(read.damage[0].offset, 0U);
            ASSERT_EQ(read.damage[0].length, day.starts[0]);
        }
    }
}

} // namespace ruvo::test
