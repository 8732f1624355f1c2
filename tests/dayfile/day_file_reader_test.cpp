// Day files read back: whatever bytes are cut off or changed, the damage is told once and every other record
// comes out as it was.
#include "dayfile/record_image.h"
#include "support/case_table.h"
#include "support/scratch_folder.h"

#include <gtest/gtest.h>

#include <map>

namespace ruvo::test {
namespace {

const std::string kFirst =
    "[00 01 02000000 !3C !07 D2040304100B1A 00 ' !01 05 'Plant 'Desc 'AB12 2003 'Outputs !20 !01 05 ' ]";
const std::string kEvent = "[00 00 00000000 !3C !07 D2040304100B1A 00 ' !01 05 'Plant 'Desc 'AB12 2003 ";
const SImage kSimple = MakeImage(kEvent + "'Trip !24 !02 0500 '%u_of_%s !24 !01 07 !18 !03 616263 ]");
const SImage kPlain = MakeImage(kEvent + "'Start !FF !00 'Start ]");
const SImage kExtended =
    MakeImage(kFirst + " [01 02000000 'Event_Value_ !20 !01 05 !02 'Start 'Trip 'Phase_%s !18 !01 42 !00 "
                       "'Fault !FF !00 !00 ]");
const std::string& kHeader = kDayFileHeader;

SRead ReadBack(const CScratchFolder& folder, const std::string& bytes) {
    return test::ReadBack(folder.Write("day.evt", bytes));
}

} // namespace

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

/// What the table's files are made of.
std::map<std::string, std::string> Pieces() {
    const std::string& H = kHeader;
    const std::string F = MakeImage(kFirst).bytes;
    const std::string& E = kExtended.bytes;
    return {
        {"header", H},
        {"open", H.substr(0, H.size() - 1)}, // without its end byte
        {"settings", "TYPE: Settings\r\n\x1A"},
        {"cut", "TYPE: EventList\r\nFree\r\x1A"},
        {"simple", kSimple.bytes},
        {"extended", E},
        {"first", F},
        {"cells", E.substr(F.size())},
        {"torn", E.substr(F.size() + 1)},
        {"other", MakeImage("[01 03000000 ]").bytes},
        {"behind", MakeImage(kFirst.substr(0, kFirst.size() - 1) + "00 ]").bytes},
        {"lenient",
         MakeImage("[00 0000000000 3C07D2040304100B1A 41 'ab 02 0005 ' ' ' 2003 ' FF00 ' ]").bytes},
        {"small", MakeImage("[00 00 00000000 3C07D2040304100B1A 00 ' 01 05 ' ' ' 2003 ' FF00 ' ]").bytes},
        {"holding", MakeImage(kEvent + "'Start FF00 ' !18 " +
                              HexDigits(std::string(1, static_cast<char>(E.size())) + E) + " ]")
                        .bytes},
        {"past", "\x01" + std::string(2, '\xFF') + std::string(300, '\x55')}, // its length says
        {"code", MakeImage("[00 00 00000000 3C07D2040304100B1A 00 ' 02 AA05 'Plant 'Desc 'AB12 2003 'Trip "
                           "FF00 'Trip ]")
                     .bytes},
        {"timeless", MakeImage("[00 00 00000000 2407D2040304100B1A 00 ' 01 05 'Plant 'Desc 'AB12 2003 'Trip "
                               "FF00 'Trip ]")
                         .bytes},
        {"beheaded", kSimple.bytes.substr(0, kSimple.bytes.size() - 1)},
        {"unknown", MakeImage(kEvent + "'Trip 7E020500 ' ]").bytes},
        {"odd", MakeImage(kEvent + "'Trip 2803010203 ' ]").bytes},
        {"oddcell", MakeImage("[01 02000000 'Phase 5003010203 00 ]").bytes},
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
        if (want == "R1 D- R2") {
            const bool isOdd = words.find("odd") != std::string::npos;
            const std::size_t size = kPieces.at(isOdd ? "odd" : "unknown").size();
            EXPECT_EQ(read.damage[0].offset, kHeader.size() + size - (isOdd ? 6 : 5));
            EXPECT_EQ(read.damage[0].length, isOdd ? 5U : 4U);
            EXPECT_EQ(read.images.at(kHeader.size()).size(), size - (isOdd ? 3 : 2));
        }
    });
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
