// A journal on the disk: whatever is cut off or changed, what is read is a beginning of what was written, and
// nothing that an earlier visit left is taken for a later one's.
#include "support/hex.h"
#include "support/scratch_folder.h"

#include "ledger/journal_file.h"
#include "ledger/standing_bytes.h"

#include <gtest/gtest.h>

#include <optional>

namespace ruvo::test {

namespace {

constexpr std::size_t kHead = kJournalHead.size();

/// "V1 R1 R1 S1 D1 ": the kinds and visits of the frames that can be read, and "!" where what stands behind
/// them is more than one torn frame.
std::string FramesOf(const CScratchFolder& folder, const std::string& bytes,
                     std::optional<std::uint32_t> visit = std::nullopt, std::uint64_t from = kHead) {
    folder.Write("j", bytes);
    CFile file;
    EXPECT_TRUE(file.Open(folder.Path("j"), {.read = true}).Good());
    CFrameReader reader(file, from, visit);
    std::string frames;
    for (SFrame frame; reader.Next(frame);)
        frames += std::string(1, "?VRLSDAW"[static_cast<std::size_t>(frame.kind)]) +
                  std::to_string(frame.visit) + " ";
    return frames + (reader.IsTornAtMost() ? "" : "!");
}

/// Two visits; the second begins before the first is done.
std::string TwoVisits(std::vector<std::size_t>& ends) {
    const struct {
        EFrame kind;
        std::uint32_t visit;
        std::size_t payload;
    } frames[] = {{EFrame::Visit, 1, 30}, {EFrame::Record, 1, 50}, {EFrame::Store, 1, 20},
                  {EFrame::Visit, 2, 30}, {EFrame::Lost, 2, 0},    {EFrame::Done, 1, 0},
                  {EFrame::Done, 2, 0}};
    std::string bytes(kJournalHead);
    std::map<std::uint32_t, SChain> chains;
    std::vector<std::uint8_t> frame;
    for (const auto& row : frames) {
        MakeFrame(frame, row.kind, row.visit, chains[row.visit],
                  std::vector<std::uint8_t>(row.payload, 0x5A));
        bytes.append(frame.begin(), frame.end());
        ends.push_back(bytes.size());
    }
    return bytes;
}

constexpr const char* kAll = "V1 R1 S1 V2 L2 D1 D2 ";

} // namespace

TEST(Journal, CutAnywhereItGivesTheFramesBeforeTheCut) {
    const CScratchFolder folder;
    std::vector<std::size_t> ends;
    const std::string bytes = TwoVisits(ends);
    for (std::size_t cut = kHead; cut <= bytes.size(); ++cut) {
        const auto whole = std::ranges::count_if(ends, [cut](std::size_t end) { return end <= cut; });
        const std::string want = std::string(kAll).substr(0, static_cast<std::size_t>(whole) * 3);
        EXPECT_EQ(FramesOf(folder, bytes.substr(0, cut)), want) << cut;
        EXPECT_EQ(FramesOf(folder, bytes.substr(0, cut) + std::string(300, '\0')), want)
            << cut << ", zeros behind";
    }
}

TEST(Journal, NoChangedByteIsBelieved) {
    const CScratchFolder folder;
    std::vector<std::size_t> ends;
    const std::string bytes = TwoVisits(ends);
    for (std::size_t at = kHead; at < bytes.size(); ++at)
        for (const char change : {'\x01', '\x80', '\xFF'}) {
            std::string changed = bytes;
            changed[at] = static_cast<char>(changed[at] ^ change);
            const auto whole = std::ranges::count_if(ends, [at](std::size_t end) { return end <= at; });
            const std::string read = FramesOf(folder, changed);
            EXPECT_TRUE(read == std::string(kAll).substr(0, static_cast<std::size_t>(whole) * 3) + "!" ||
                        (at >= ends[ends.size() - 2] && read == "V1 R1 S1 V2 L2 D1 "))
                << "byte " << at << ": " << read;
        }
}

TEST(Journal, NothingOfAnEarlierVisitIsTakenForALaterOnes) {
    const CScratchFolder folder;
    std::vector<std::size_t> ends;
    const std::string bytes = TwoVisits(ends);
    std::vector<std::uint8_t> frame;
    SChain chain;
    MakeFrame(frame, EFrame::Visit, 3, chain, std::vector<std::uint8_t>(30, 1));
    const std::string third(frame.begin(), frame.end());
    EXPECT_EQ(FramesOf(folder, bytes.substr(0, kHead) + third + bytes.substr(ends[0])), "V3 !");
    EXPECT_EQ(FramesOf(folder, bytes + bytes.substr(kHead)), std::string(kAll) + "!") << "the same once more";
    EXPECT_EQ(FramesOf(folder, bytes, 2, ends[2]), "V2 L2 D2 ") << "one visit's alone";
}

TEST(Journal, ChecksumsAreThoseOfEarlierPrograms) {
    const struct {
        std::uint8_t payload;
        std::uint32_t first, second;
    } cases[] = {{0, 0xA67A7688, 0x5ECFB857}, {3, 0x1F2F9F2E, 0x963E6A62}, {30, 0xAA6EDEC9, 0xE412313C}};
    for (const auto& row : cases) {
        std::vector<std::uint8_t> payload, frame;
        for (std::uint8_t i = 0; i < row.payload; ++i)
            payload.push_back(i);
        SChain chain;
        MakeFrame(frame, EFrame::Visit, 7, chain, payload);
        EXPECT_EQ(chain.checksum, row.first) << int{row.payload};
        MakeFrame(frame, EFrame::Record, 7, chain, payload);
        EXPECT_EQ(chain.checksum, row.second) << int{row.payload};
    }
}

TEST(Journal, FramesFollowOneAnotherWhateverIsDoneBetween) {
    const CScratchFolder folder;
    std::filesystem::create_directory(folder.Native("s"));
    std::optional<CJournalFile> journal(std::in_place);
    SChain chain;
    ASSERT_TRUE(journal->Make(folder.Path("s"), "now"));
    const auto append = [&](EFrame kind) { EXPECT_TRUE(journal->Append(kind, 1, chain, Hex("0102"))); };
    append(EFrame::Visit);
    EXPECT_TRUE(journal->Reserve(100'000));
    append(EFrame::Record);
    SFrame frame;
    EXPECT_TRUE(CFrameReader(journal->File(), kHead).Next(frame));
    EXPECT_FALSE(CFrameReader(journal->File(), kHead, 1, frame.offset + 18).Next(frame))
        << "its end is nearer";
    append(EFrame::Record);
    EXPECT_EQ(journal->Head(), EJournalHead::Known);
    append(EFrame::Done);
    journal.reset(); // nobody else reads it before
    EXPECT_EQ(FramesOf(folder, folder.Read("s/now-1.journal")), "V1 R1 R1 D1 ");
}

TEST(Journal, ItsNameIsNotThatOfAnEarlierOneOfWhichAnythingIsLeft) {
    const CScratchFolder folder;
    std::filesystem::create_directory(folder.Native("s"));
    for (const char* left : {"now-1-copy.journal", "now-2.journal.damaged", "now-3.journal"})
        folder.Write(std::string("s/") + left, "left");
    CJournalFile journal;
    ASSERT_TRUE(journal.Make(folder.Path("s"), "now"));
    EXPECT_TRUE(folder.Has("s/now-4.journal"));
}

TEST(Journal, WhatItHoldsComesBackAsItWas) {
    const SStoreInfo store{0x123456789A, 7, {{0, 3}, {9, 1}}};
    const auto back = UnpackStore(Pack(store));
    ASSERT_TRUE(back && back->records.size() == 2);
    EXPECT_EQ(std::tuple(back->length, back->lastExtended, back->records[1].first, back->records[1].count),
              std::tuple(0x123456789AU, 7U, 9U, 1U));
    const struct {
        const char* name;
        const char* hex;
        bool isTaken;
    } cases[] = {{"a simple record", "00000000 00 0200 AABB", true},
                 {"an extended one", "05000000 00 0100 AA 01 0100 BB", true},
                 {"cells alone", "00000000 01 0100 AA", false},
                 {"a block cut short", "00000000 00 0200 AA", false},
                 {"a third block", "00000000 00 0000 01 0000 01 0000", false},
                 {"no block", "00000000", false}};
    for (const auto& row : cases)
        EXPECT_EQ(UnpackRecord(Hex(row.hex)).has_value(), row.isTaken) << row.name;
}

TEST(StandingBytes, TellWhatAnEndHasLeft) {
    const CScratchFolder folder;
    const std::string wanted = std::string(700, 'w') + std::string(500, 'x');
    const std::string before(100, 'b');
    const auto zeros = [&](std::size_t from, std::size_t count) {
        return std::string(wanted).replace(from, count, count, '\0');
    };
    using enum EStanding;
    const struct {
        const char* name;
        std::string there;
        EStanding want;
    } cases[] = {{"nothing", before, Beginning},
                 {"a part", before + wanted.substr(0, 650), Beginning},
                 {"everything", before + wanted, All},
                 {"everything, and more", before + wanted + "more", All},
                 {"a sector that did not reach the disk", before + zeros(412, 512), Torn},
                 {"the end of one", before + zeros(300, 112), Torn},
                 {"the middle of one", before + zeros(420, 20), Other},
                 {"zeros, and something behind", before + zeros(412, 512) + "more", Other},
                 {"something else", before + std::string(40, 'o'), Other},
                 {"a file that was cut", before.substr(0, 99), Other}};
    for (const auto& row : cases) {
        folder.Write("day", row.there);
        CFile file;
        ASSERT_TRUE(file.Open(folder.Path("day"), {.read = true}).Good());
        CStandingBytes standing(file, before.size(), row.there.size());
        for (std::size_t at = 0; at < wanted.size(); at += 300) {
            const auto* const bytes = reinterpret_cast<const std::uint8_t*>(wanted.data()) + at;
            EXPECT_TRUE(standing.Compare({bytes, 300})) << row.name;
        }
        EXPECT_EQ(standing.Outcome(), row.want) << row.name;
    }
}

} // namespace ruvo::test
