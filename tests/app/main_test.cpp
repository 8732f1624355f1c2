// The process entry, here by another name: this program has one of its own.
#define main RunRuvo
#include "app/main.cpp"
#undef main

#include "support/failing_memory.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>

TEST(Main, TellsWhyItCannotStart) {
    const auto start = [] {
        // The first one is for the thread, without which it goes on all the same.
        const ruvo::test::CFailingMemory memory(2);
        std::array<char*, 1> texts{};
        std::exit(RunRuvo(0, texts.data()));
    };
    EXPECT_EXIT(start(), testing::ExitedWithCode(0), "^RUVO cannot start: std::bad_alloc\n$");
}
