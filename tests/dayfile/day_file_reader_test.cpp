// Day files read back: whatever bytes are cut off or changed, the damage is told once and every other record
// comes out as it was.
#include "dayfile/record_image.h"
#include "support/case_table.h"
#include "support/scratch_folder.h"

#include <gtest/gtest.h>

#include <map>

namespace ruvo::test {

const std::string kFirst =
    "[00 01 02000000 !3C !07 D2040304100B1A 00 ' !01 05 'Plant 'Desc 'AB12 2003 'Outputs !20 !01 05 ' ]";
const std::string kEvent = "[00 00 00000000 !3C !07 D2040304100B1A 00 ' !01 05 'Plant 'Desc 'AB12 2003 ";
const SImage kSimple = MakeImage(kEvent + "'Trip !24 !02 0500 '%u_of_%s !24 !01 07 !18 !03 616263 ]");
const SImage kPlain = MakeImage(kEvent + "'Start !FF !00 'Start ]");
const SImage kExtended =
    MakeImage(kFirst + " [01 02000000 'Event_Value_ !20 !01 05 !02 'Start 'Trip 'Phase_%s !18 !01 42 !00 "
                       "'Fault !FF !00 !00 ]");
const std::string& kHeader = kDayFileHeader;

static SRead ReadBack(const CScratchFolder& folder, const std::string& bytes) {
    return test::ReadBack(folder.Write("day.evt", bytes));
}

// A later run's records stand behind the torn one, and their first bytes complete it as its lengths say.
TEST(DayFileReader, RecordTornAtEveryByteBeforeSoundOnes) {
    const CScratchFolder folder;
    const std::string text(46, '\'');
    const std::string cells = kFirst + " [01 02000000 ";
    const std::pair<const char*, SImage> kTorn[] = {
        {"ends in a text", kPlain},
        {"ends in a long text", MakeImage(kEvent + "'Start FF00 '" + text + " ]")},
        {"ends in a Text value", kSimple},
        {"ends in an Int", MakeImage(kEvent + "'Trip FF00 '%d 28020500 ]")},
        {"ends in bit names", MakeImage(cells + "'Outputs 200105 02 'Start 'Trip ]")},
        {"ends in a text cell", MakeImage(cells + "'Phase 1803414243 00 ]")},
    };
    for (const auto& [name, torn] : kTorn)
        for (const auto& [first, second] : {std::pair(&kPlain, &kSimple), std::pair(&kExtended, &kPlain)})
            for (std::size_t cut = 1; cut < torn.bytes.size(); ++cut) {
                SCOPED_TRACE(testing::Message() << name << ", cut at " << cut);
                const std::size_t next = kHeader.size() + cut;
                const SRead read =
                    ReadBack(folder, kHeader + torn.bytes.substr(0, cut) + first->bytes + second->bytes);
                EXPECT_EQ(read.images,
                          (Images{{next, first->bytes}, {next + first->bytes.size(), second->bytes}}));
                ASSERT_EQ(read.damage.size(), 1U);
                EXPECT_EQ(read.damage[0].offset, kHeader.size());
                EXPECT_EQ(read.damage[0].length, cut);
            }
}

/// Records and damage in the order of the file, by the numbers of the pieces: "R1 D2-3 ".
std::string InWords(const SRead& read, std::map<std::uint64_t, std::string>& number) {
    std::map<std::uint64_t, std::string> got;
    for (const auto& [offset, image] : read.images)
        got[offset] = "R" + number[offset] + " ";
    for (const SDayFileDamage& d : read.damage)
        got[d.offset].insert(0, "D" + number[d.offset] + "-" + number[d.offset + d.length] + " ");
    std::string text;
    for (const auto& [offset, item] : got)
        text += item;
    return text;
}

/// The values of no known type or size, by the pieces that hold them.
const std::map<std::string, std::string> kUnknownValues = {
    {"unknown", "7E020500"}, {"odd", "2803010203"},     {"oddextended", "2803010203"},
    {"twin", "2803010203"},  {"shifted", "2803010203"}, {"doubled", "3406050405040504"}};

/// A header that is so long.
std::string HeaderOf(std::size_t size) {
    const std::string begin = "TYPE: EventList\r\n", end = "\r\n\x1A";
    return begin + std::string(size - begin.size() - end.size(), '\t') + end;
}

/// What the table's files are made of.
std::map<std::string, std::string> Pieces() {
    const auto image = [](const std::string& words) { return MakeImage(words).bytes; };
    const std::string& H = kHeader;
    const std::string F = image(kFirst);
    const std::string& E = kExtended.bytes;
    std::string odd = kFirst;
    odd.replace(odd.find("!20 !01 05"), 10, "2803010203");
    return {{"header", H},
            {"open", H.substr(0, H.size() - 1)}, // without its end byte
            {"settings", "TYPE: Settings\r\n\x1A"},
            {"cut", "TYPE: EventList\r\nFree\r\x1A"},
            {"control", "TYPE: EventList\r\nFree\x1F\r\n\x1A"},
            {"full", HeaderOf(16384)},
            {"overfull", HeaderOf(16385)},
            {"simple", kSimple.bytes},
            {"extended", E},
            {"first", F},
            {"cells", E.substr(F.size())},
            {"torn", E.substr(F.size() + 1)},
            {"other", image("[01 03000000 ]")},
            {"behind", image(kFirst.substr(0, kFirst.size() - 1) + "00 ]")},
            {"valued", image(kFirst.substr(0, kFirst.size() - 1) + "FF00 ]")},
            {"lenient", image("[00 0000000000 3C07D2040304100B1A 41 'ab 02 0005 ' ' ' 2003 ' FF00 ' ]")},
            {"small", image("[00 00 00000000 3C07D2040304100B1A 00 ' 01 05 ' ' ' 2003 ' FF00 ' ]")},
            {"holding", image(kEvent + "'Start FF00 ' !18 " +
                              HexDigits(std::string(1, static_cast<char>(E.size())) + E) + " ]")},
            {"past", "\x01" + std::string(2, '\xFF') + std::string(300, '\x55')}, // its length says
            {"code", image("[00 00 00000000 3C07D2040304100B1A 00 ' 02 AA05 'Plant 'Desc 'AB12 2003 'Trip "
                           "FF00 'Trip ]")},
            {"timeless", image("[00 00 00000000 2407D2040304100B1A 00 ' 01 05 'Plant 'Desc 'AB12 2003 'Trip "
                               "FF00 'Trip ]")},
            {"beheaded", kSimple.bytes.substr(0, kSimple.bytes.size() - 1)},
            {"unknown", image(kEvent + "'Trip 7E020500 ' ]")},
            {"odd", image(kEvent + "'Trip 2803010203 ' ]")},
            {"oddextended", image(odd) + E.substr(F.size())},
            {"twin", image(kEvent + "'Trip 2803010203 ' 2803000000 ]")},
            {"shifted", image(kEvent + "'Trip 2803010203 ' 1807414141 03000000 ]")},
            {"doubled", image(kEvent + "'Trip FF00 0100 3406050405040504 ]")},
            {"oddcell", image("[01 02000000 'Phase 2803010203 00 ]")},
            {"index", image("[01 02000000 'Phase 500105 00 ]")},
            {"junk", std::string(100, '\x55')},
            {"zeros", std::string(5000, '\0')}};
}

TEST(DayFileReader, DamageIsToldOnceAndReadingGoesOnAtASoundRecordWithAWitness) {
    const std::map<std::string, std::string> kPieces = Pieces();
    const CScratchFolder folder;
    ForEachCase<3>("dayfile/damage.txt", [&](auto& words, auto& want, auto& fault) {
        std::map<std::uint64_t, std::string> number; // of the piece that begins there
        std::string bytes;
        std::istringstream pieces(words);
        int count = 0;
        for (std::string word; pieces >> word; bytes += kPieces.at(word))
            number.try_emplace(bytes.size(), std::to_string(count++));
        number.try_emplace(bytes.size(), std::to_string(count));
        const SRead read = ReadBack(folder, bytes);
        EXPECT_EQ(InWords(read, number), want.empty() ? "" : want + " ");
        EXPECT_EQ(read.damage.empty() ? "" : DayFileFaultText(read.damage[0].fault), fault);
        for (const auto& [piece, digits] : kUnknownValues)
            if (words == "header " + piece + " simple") {
                const std::vector<std::uint8_t> value = Hex(digits);
                ASSERT_EQ(read.damage.size(), 1U);
                EXPECT_EQ(read.damage[0].offset, bytes.find(std::string(value.begin(), value.end())));
                EXPECT_EQ(read.damage[0].length, value.size());
                EXPECT_EQ(read.images.at(kHeader.size()).size(), kPieces.at(piece).size() - value.size() + 2)
                    << "none in its place";
            }
    });
}

TEST(DayFileReader, StartsOverWithEachFile) {
    const CScratchFolder folder;
    const std::string path = folder.Write("day.evt", kHeader + kSimple.bytes + kPlain.bytes);
    CDayFileReader reader;
    SDayFileItem item;
    EXPECT_TRUE(reader.Open(path, {.write = true}).Good() && reader.Next(item) && item.IsReadFailure() &&
                item.damage->offset + item.damage->length == 0);
    EXPECT_EQ(DayFileFaultText(item.damage->fault), "the file cannot be read further");
    EXPECT_FALSE(reader.Next(item)) << "it is told once";
    for (int time = 0; time < 2; ++time) {
        EXPECT_TRUE(reader.Open(path).Good() && reader.Next(item) && item.record);
        EXPECT_EQ(item.offset, kHeader.size());
        EXPECT_EQ(reader.Position(), kHeader.size() + kSimple.bytes.size());
    }
}

/// A simple record of 65342 bytes, most of them in values that hold the text of 254 bytes; the first of those
/// texts begins at byte 64.
std::string LongRecord(const std::string& text) {
    std::string words = kEvent + "'" + std::string(19, 's') + " FF00 ' ";
    for (int value = 0; value < 255; ++value)
        words += "18FE" + HexDigits(text) + " ";
    return MakeImage(words + "]").bytes;
}

TEST(DayFileReader, ALargeFileIsReadToItsEnd) {
    const CScratchFolder folder;
    const std::string cell = "'Phase 18FF" + HexDigits(std::string(255, 'x')) + " 00 ";
    const std::string extended = MakeImage(kFirst + " [01 02000000 " + cell + cell + "]").bytes;
    std::string bytes = kHeader;
    Images all;
    const auto add = [&](const std::string& image) {
        all[bytes.size()] = image;
        bytes += image;
    };
    add(LongRecord(std::string(254, 'v')));
    while (bytes.size() < 2'500'000) {
        add(extended);
        add(kSimple.bytes);
    }
    const SRead read = ReadBack(folder, bytes);
    EXPECT_TRUE(read.images == all && read.damage.empty()) << read.images.size() << " of " << all.size();
}

// At each of four places something is wrong that a few bytes tell: no record behind it, no block's tag, no
// timestamp, no cells behind it. What such places would cost to parse is not taken from the records behind
// them.
TEST(DayFileReader, JunkThatResemblesRecordsCostsNone) {
    const CScratchFolder folder;
    const std::string junk = MakeImage("00257F00000000003C07 FFFFFFFFFFFF 022D7F00000000003C07 FFFFFFFFFFFF "
                                       "001D7F00000000000007 FFFFFFFFFFFF 00077F01000000003C07 FFFFFFFFFFFF")
                                 .bytes;
    const std::string record = LongRecord((junk + junk + junk + junk).substr(0, 254));
    std::string bytes = kHeader;
    for (int times = 0; times < 100; ++times)
        bytes += junk;
    const std::size_t at = bytes.size();
    const SRead read = ReadBack(folder, bytes + record + record);
    EXPECT_TRUE(read.images == (Images{{at, record}, {at + record.size(), record}}));
    ASSERT_EQ(read.damage.size(), 1U);
    EXPECT_EQ(read.damage[0].length, at - kHeader.size());
}

// Its cells fill their block but for one byte.
TEST(DayFileReader, TheLongestRecordIsReadWhole) {
    const CScratchFolder folder;
    std::string words = kFirst + " [01 02000000 ";
    for (int cell = 0; cell < 13106; ++cell)
        words += "'A FF00 00 ";
    const std::string longest = MakeImage(words + "]").bytes;
    const std::string torn = longest.substr(0, longest.size() - 2);
    const std::size_t at = kHeader.size() + torn.size();
    const SRead read = ReadBack(folder, kHeader + torn + longest + kSimple.bytes);
    EXPECT_EQ(read.images, (Images{{at, longest}, {at + longest.size(), kSimple.bytes}}));
    ASSERT_EQ(read.damage.size(), 1U);
    EXPECT_EQ(read.damage[0].length, torn.size());
}

// Each 17 bytes look like the start of a record as long as can be, whose values take long to be found
// wanting: the work must not be the product of both.
TEST(DayFileReader, HostileFileIsReadInReasonableWork) {
    const CScratchFolder folder;
    std::string bytes = kHeader;
    while (bytes.size() < 1500000)
        bytes += MakeImage("00EBFF00 03000F01 3C07 002202111E0302").bytes;
    const SRead read = ReadBack(folder, bytes);
    ASSERT_EQ(read.damage.size(), 1U);
    EXPECT_EQ(read.damage[0].length, bytes.size() - kHeader.size());
}

} // namespace ruvo::test
