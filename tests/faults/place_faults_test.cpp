// Places that are proved, made, held and written to, when others are at work there or the disk fails.
#include "memory_disk.h"

#include "dayfile/held_day_file.h"
#include "paths/path_utilities.h"
#include "support/failing_memory.h"

#include <gtest/gtest.h>

namespace ruvo::test {

static void Start() {
    g_disk = {};
    g_disk.PutFolder("C:\\ev");
    g_disk.Put("C:\\ev\\old", "x");
}
/// The operation of that number, counted from the next one.
static void Break(std::size_t nth, EFileFailure failure) {
    g_disk.faults.push_back({g_disk.operations + nth, g_disk.operations + nth, failure});
}
static const std::vector<std::uint8_t> kImage(40, 'r');

// On this disk no file can be made that is there for the proof of a folder alone.
TEST(PlaceFaults, AProofBeginsAgainThreeTimesWhereItIsDisturbed) {
    using enum EFileFailure;
    for (const auto& [failure, attempts, isGiven] :
         {std::tuple(BadPath, 1U, true), {Exists, 3U, true}, {NotFound, 4U, false}, {DiskFull, 1U, false}}) {
        Start();
        for (std::size_t attempt = 1; attempt <= attempts; ++attempt)
            Break(3 * attempt, failure); // of each attempt the operation that makes the file
        EXPECT_EQ(CanCreateFile("C:\\ev\\f"), isGiven) << attempts;
    }
    for (const auto& [locked, operations] : {std::pair("", 8U), {"C:\\ev", 1U}}) {
        Start();
        g_disk.locked = locked;
        EXPECT_FALSE(CanWriteInFolder("C:\\ev"));
        EXPECT_EQ(g_disk.operations, operations) << "what is refused would be refused again";
    }
}

TEST(PlaceFaults, WhatAnotherMakesAtTheSameMomentIsThere) {
    Start();
    Break(1, EFileFailure::NotFound);
    EXPECT_TRUE(MakeDirectory("C:\\ev"));
    Start();
    Break(2, EFileFailure::NotFound); // so it was missing
    Break(9, EFileFailure::Other);    // the flush
    EXPECT_TRUE(CHeldDayFile().Hold("C:\\ev\\old")) << "what another has written into it may be lost";
    Start();
    CHeldDayFile file;
    ASSERT_TRUE(MakeFolder("C:\\ev\\AB12").Good() && !file.Hold("C:\\ev\\AB12\\f"));
    file.StartAt(0, {});
    file.Add(kImage);
    file.Finish();
    g_disk.EndMachine([](std::size_t) { return std::size_t{0}; });
    EXPECT_TRUE(g_disk.Files().contains("C:\\ev\\AB12\\f")) << "with the name of its folder";
}

TEST(PlaceFaults, AWriteThatHasStoredNothingLeavesNothingToFlush) {
    for (const bool isLengthKnown : {true, false}) {
        Start();
        CHeldDayFile file;
        ASSERT_FALSE(file.Hold("C:\\ev\\old"));
        file.StartAt(1, {});
        file.Add(kImage);
        Break(2, EFileFailure::DiskFull);
        for (std::size_t nth = isLengthKnown ? 4 : 3; nth < 20; ++nth)
            Break(nth, EFileFailure::Other);
        EXPECT_THROW(file.Finish(), CFileException);
        EXPECT_EQ(file.CutBack(), isLengthKnown) << "else part of it may be there";
        EXPECT_FALSE(file.HasFlushFailed());
    }
}

TEST(PlaceFaults, ImagesNeedNoMemory) {
    Start();
    CHeldDayFile file;
    ASSERT_FALSE(file.Hold("C:\\ev\\old"));
    file.StartAt(1, {});
    const CFailingMemory counted(0);
    for (int images = 0; images < 5000; ++images)
        file.Add(kImage);
    EXPECT_EQ(CFailingMemory::Count(), 0U);
}

} // namespace ruvo::test
