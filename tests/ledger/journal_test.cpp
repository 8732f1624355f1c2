// A journal on the disk: whatever is cut off or changed, what is read is a beginning of what was written, and
// nothing that an earlier visit left is taken for a later one's.
#include "support/hex.h"
#include "support/scratch_folder.h"

#include "ledger/journal_entry.h"
#include "ledger/journal_file.h"
#include "ledger/leftovers.h"
#include "ledger/set_aside_file.h"
#include "ledger/standing_bytes.h"

#include <gtest/gtest.h>

#include <chrono>
#include <optional>
#include <thread>

namespace ruvo::test {

constexpr std::size_t kHead = kJournalHead.size();

/// "V1 R1 R1 S1 D1 ": the kinds and visits of the frames that can be read, and "!" where what stands behind
/// them is more than one torn frame.
static std::string FramesOf(const CScratchFolder& folder, const std::string& bytes,
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

/// Two visits; the second begins before the first is done. Payloads hold a number of theirs, too.
static std::string TwoVisits(std::vector<std::size_t>& ends) {
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
        std::vector<std::uint8_t> payload = Hex("01000000");
        payload.resize(row.payload, 0x5A);
        MakeFrame(frame, row.kind, row.visit, chains[row.visit], payload);
        bytes.append(frame.begin(), frame.end());
        ends.push_back(bytes.size());
    }
    return bytes;
}

constexpr const char* kAll = "V1 R1 S1 V2 L2 D1 D2 ";

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
    const std::string all = TwoVisits(ends);
    for (const std::size_t frames : {std::size_t{3}, std::size_t{4}, ends.size()})
        for (std::size_t at = kHead; at < ends[frames - 1]; ++at)
            for (const char change : {'\x01', '\x80', '\xFF'}) {
                std::string changed = all.substr(0, ends[frames - 1]);
                changed[at] = static_cast<char>(changed[at] ^ change);
                const auto whole = std::ranges::count_if(ends, [at](std::size_t end) { return end <= at; });
                const std::string read = FramesOf(folder, changed);
                EXPECT_TRUE(read == std::string(kAll).substr(0, static_cast<std::size_t>(whole) * 3) + "!" ||
                            (at >= ends[frames - 2] && read == std::string(kAll).substr(0, frames * 3 - 3)))
                    << "byte " << at << " of " << frames << " frames: " << read;
            }
    std::string torn = all + "x";
    torn[all.size() - 1] = static_cast<char>(torn[all.size() - 1] ^ '\x01');
    EXPECT_EQ(FramesOf(folder, torn), "V1 R1 S1 V2 L2 D1 !") << "a byte behind one that is torn";
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
    for (const int kind : {0, 8}) {
        SChain next = chain;
        MakeFrame(frame, static_cast<EFrame>(kind), 3, next, {});
        const std::string unknown(frame.begin(), frame.end());
        EXPECT_EQ(FramesOf(folder, bytes.substr(0, kHead) + third + unknown + "x"), "V3 !") << kind;
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
    EXPECT_EQ(journal->Head(), EJournalHead::Known);
    append(EFrame::Record);
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
    EXPECT_EQ(FramesOf(folder, folder.Read("s/now-1.journal")), "V1 R1 R1 R1 D1 ");
}

TEST(Journal, ItsNameIsNotThatOfAnEarlierOneOfWhichAnythingIsLeft) {
    const CScratchFolder folder;
    std::filesystem::create_directory(folder.Native("s"));
    for (const char* left : {"now-1-copy.journal", "now-2.journal.damaged", "now-3.journal"})
        folder.Write(std::string("s/") + left, "left");
    CJournalFile journal;
    ASSERT_TRUE(journal.Make(folder.Path("s"), "now"));
    EXPECT_TRUE(folder.Has("s/now-4.journal"));
    for (const char* name : {"b", "e", "a", "d", "c"})
        folder.Write("s/" + std::string(name) + ".journal", "");
    const std::vector<std::string> all = JournalsIn(folder.Path("s")).paths;
    EXPECT_TRUE(all.size() == 8 && std::ranges::is_sorted(all)) << "the oldest comes first";
}

TEST(Journal, OneInUseIsNeitherLeftNorUnread) {
    const CScratchFolder folder;
    CJournalFile journal;
    SChain chain;
    ASSERT_TRUE(journal.Make(folder.Path(), "now") &&
                journal.Append(EFrame::Visit, 1, chain, Pack(SVisitInfo{})) && journal.Flush());
    const SLeftovers left = ReadLeftovers(folder.Path());
    EXPECT_TRUE(left.isRead && left.IsEmpty());
}

TEST(Journal, OneOfAnEndedRunIsKnownByItsHead) {
    const CScratchFolder folder;
    const std::string head(kJournalHead);
    using enum EJournalHead;
    const struct {
        std::string bytes;
        EJournalHead want;
    } cases[] = {{head + "x", Known},
                 {"", Known},
                 {head.substr(0, 5), Known},
                 {head.substr(0, 5) + std::string(11, '\0'), Known},
                 {head.substr(0, 5) + std::string(10, '\0') + "x", Unknown},
                 {"RUVO JOURNAL 2\r\n", Unknown}};
    CJournalFile other;
    for (const auto& row : cases) {
        CJournalFile journal;
        EXPECT_EQ(journal.OpenEnded(folder.Write("j", row.bytes)), EJournalOpening::Opened);
        EXPECT_EQ(journal.Head(), row.want) << row.bytes;
        EXPECT_EQ(other.OpenEnded(folder.Path("j")), EJournalOpening::InUse);
        EXPECT_EQ(ReadJournal(journal.File()).end, head.size()) << "no frame is whole";
    }
    EXPECT_EQ(other.OpenEnded(folder.Path("none")), EJournalOpening::InUse) << "a run has just removed it";
    EXPECT_EQ(other.OpenEnded(folder.Path()), EJournalOpening::Failed);
}

TEST(Journal, WhatItHoldsComesBackAsItWas) {
    const SStoreInfo store{0x123456789A, 7, {{0, 3}, {9, 1}}};
    const auto back = UnpackStore(Pack(store));
    ASSERT_TRUE(back && back->records.size() == 2);
    EXPECT_EQ(std::tuple(back->length, back->lastExtended, back->records[1].first, back->records[1].count),
              std::tuple(0x123456789AU, 7U, 9U, 1U));
    const std::vector<std::uint8_t> visit = Pack(SVisitInfo{"K", "F", "B", 0x123456789A, false, true, "S"});
    const auto info = UnpackVisit(visit);
    ASSERT_TRUE(info);
    EXPECT_EQ(std::tuple(info->length, info->isFileMade, info->isFolderMade, info->source),
              std::tuple(0x123456789AU, false, true, "S"));
    for (std::size_t cut = 0; cut < visit.size(); ++cut)
        EXPECT_EQ(UnpackVisit(std::span(visit).first(cut)).has_value(), cut == visit.size() - 5)
            << cut << "; the first programs noted no source";
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

TEST(Journal, AFrameThatMakesNoSenseIsDamage) {
    const CScratchFolder folder;
    for (const auto& [kind, payload, isWhole] : {std::tuple(EFrame::Visit, "00000000", false),
                                                 {EFrame::Record, "00000000", false},
                                                 {EFrame::SetAside, "00000000", false},
                                                 {EFrame::SetAside, "0000000000000000", true},
                                                 {EFrame::Store, "0000000000000000", false}}) {
        SChain first, other;
        std::vector<std::uint8_t> frame;
        MakeFrame(frame, EFrame::Visit, 1, first, Pack(SVisitInfo{}));
        std::string bytes = std::string(kJournalHead).append(frame.begin(), frame.end());
        MakeFrame(frame, EFrame::Store, 1, first, Pack(SStoreInfo{7, 0, {{0, 9}}}));
        bytes.append(frame.begin(), frame.end());
        const bool isOther = kind == EFrame::Visit;
        MakeFrame(frame, kind, isOther ? 2 : 1, isOther ? other : first, Hex(payload));
        CFile file;
        const std::string path = folder.Write("j", bytes.append(frame.begin(), frame.end()));
        EXPECT_TRUE(file.Open(path, {.read = true}).Good());
        const SJournalContents contents = ReadJournal(file);
        EXPECT_EQ(contents.isWhole, isWhole) << payload;
        EXPECT_EQ(contents.entries.at(0).store.value_or(SStoreInfo()).records.size(), 1U) << "the one before";
    }
}

TEST(StandingBytes, TellWhatAnEndHasLeft) {
    const CScratchFolder folder;
    const std::string wanted = std::string(700, 'w') + std::string(500, 'x');
    const std::string before(100, 'b');
    const auto image =
        Hex("00 2F00 01 01000000 3C07 4523 8D 87 10 02 1A 00 00 01 05 05 506C616E74 04 44657363 06 "
            "414231322D58 12 01 04 54726970 24 01 07 00 01 1500 01000000 0C "
            "4576656E742056616C756520 24 01 07 00");
    const std::string record(image.begin(), image.end());
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
                 {"zeros, and records behind", before + zeros(412, 512) + record + record, Torn},
                 {"zeros, a part of one", before + zeros(412, 512) + record + record.substr(0, 40), Other},
                 {"the first byte of what is compared", before + zeros(300, 1), Other},
                 {"two bytes of it", before + wanted.substr(0, 302), Beginning},
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
    CFile file;
    ASSERT_TRUE(file.Open(folder.Write("day", std::string(1, '\0')), {.read = true}).Good());
    CStandingBytes shorter(file, 0, 2); // than it was
    EXPECT_TRUE(shorter.Compare(std::span(image).subspan(1, 1)));
    EXPECT_EQ(shorter.Outcome(), Unread) << "what follows is not known";
    EXPECT_FALSE(shorter.Compare(image));
}

TEST(SetAsideFile, LeadsNowhereElse) {
    for (const char* safe : {"AB12-1\\f.evt", "a b\\.f"})
        EXPECT_TRUE(IsSafePlace(safe)) << safe;
    for (const char* other :
         {"", "f", "\\f", "AB\\", ".\\f", "..\\f", "AB\\..", "AB\\..\\f", "AB\\C:f", "AB\\f\n", "AB\\f/g"})
        EXPECT_FALSE(IsSafePlace(other)) << other;
    EXPECT_TRUE(IsSetAsideName("f-1.setaside"));
    EXPECT_FALSE(IsSetAsideName("f-1.evt") || IsSetAsideName("..\\f-1.setaside"));
    const CScratchFolder folder;
    const auto read = [&](const std::string& text) {
        return ReadSetAsideHeader(folder.Write(
            "f", "APP: Parlane\r\nTYPE: EventList\r\nFORMAT: 1.0\r\nNEXTEXTENDED: 000001\r\n\r\n" + text +
                     "\r\n\x1A"));
    };
    const auto header = read("set aside|AB12-1\\f.evt|RV001|now");
    ASSERT_TRUE(header);
    EXPECT_EQ(std::tuple(header->file, header->key, header->begun, header->reason),
              std::tuple("AB12-1\\f.evt", "RV001", "now", ""));
    EXPECT_FALSE(read("set aside|..\\f.evt|RV001|now") || read("put aside|AB12-1\\f.evt|RV001|now"));
}

TEST(SetAsideFile, IsNamedAfterItsDayFile) {
    const CScratchFolder folder;
    folder.Write("taken-1.setaside", "");
    folder.Write("taken-2.setaside.done", "");
    const std::string longest(150, 'a');
    const std::string shorter(149, 'a');
    const struct {
        std::string dayFile, want;
    } cases[] = {{"AB12-1\\x.y.evt", "x.y-1"},
                 {"AB12-1\\taken.evt", "taken-3"},
                 {longest + "\xC3\xA9.evt", longest + "-1"},
                 {std::string(151, '\x80') + ".evt", "-1"},
                 {shorter + "\xC3\xA9.evt", shorter + "-1"}}; // no character is cut
    for (const auto& row : cases)
        EXPECT_EQ(FreeSetAsidePath(folder.Path(), row.dayFile), folder.Path(row.want + ".setaside"));
}

/// A file that has been closed stands in for a disk that fails.
TEST(BackgroundFlush, NeedsNobodyWhoAsksForIt) {
    const CScratchFolder folder;
    CFile file;
    ASSERT_TRUE(file.Open(folder.Write("f", ""), {.read = true, .write = true}).Good());
    CBackgroundFlush flush(file);
    EXPECT_TRUE(flush.NoteWrite() && flush.Flush());
    static_cast<void>(file.Close());
    std::this_thread::sleep_for(std::chrono::milliseconds(700)); // by then it waits for the next write
    bool isGood = true;
    for (int pause = 0; pause < 3000 && (isGood = flush.NoteWrite()); ++pause)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    EXPECT_FALSE(isGood || flush.Failure().Good());
    flush.Stop();
    ASSERT_TRUE(file.Open(folder.Path("f"), {.read = true, .write = true}).Good());
    EXPECT_FALSE(flush.Flush()) << "what was written before may be lost";
}

} // namespace ruvo::test
