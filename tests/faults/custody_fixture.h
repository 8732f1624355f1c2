// Visits that keep their events on a disk in memory, and what recovery makes of them.
#pragma once

#include "fault_rig.h"
#include "ledger/visit_custody.h"
#include "support/hex.h"

#include <algorithm>
#include <string>
#include <vector>

namespace ruvo::test {

class Custody : public testing::Test {
protected:
    static constexpr const char* kRoot = "C:\\ev";
    static constexpr const char* kFile = "C:\\ev\\AB12-1\\AB12-1-2026-11-16-DEV.evt";

    /// One whole record; its text has the number.
    static std::vector<std::uint8_t> Record(int number) {
        std::vector<std::uint8_t> bytes =
            Hex("00 3500 01 01000000 3C07 4523 8D 87 10 02 1A 00 00 01 05 05 506C616E74 04 44657363 06 "
                "414231322D58 12 01 0A 4576656E742330303030 24 01 07 00 01 1500 01000000 0C "
                "4576656E742056616C756520 24 01 07 00");
        constexpr std::string_view kPlace = "0000";
        std::ranges::copy(std::to_string(10'000 + number).substr(1),
                          std::search(bytes.begin(), bytes.end(), kPlace.begin(), kPlace.end()));
        return bytes;
    }

    static std::string Day(const std::vector<int>& numbers, const std::string& behind = "") {
        std::string bytes =
            "APP: Parlane\r\nTYPE: EventList\r\nFORMAT: 1.0\r\nNEXTEXTENDED: 000009\r\n\r\nx\r\n\x1A";
        for (const int number : numbers)
            for (const std::uint8_t byte : Record(number))
                bytes += static_cast<char>(byte);
        return bytes + behind;
    }

    void SetUp() override {
        g_disk = {};
        g_disk.PutFolder(kRoot);
        g_disk.PutFolder("C:\\var\\state");
        g_standardError.clear();
        isReached = true;
    }

    /// All operations until the next Mend, from the nth from now on.
    static void Break(EFileFailure failure, std::size_t nth = 1, std::size_t many = 1'000'000) {
        g_disk.faults = {{g_disk.operations + nth, g_disk.operations + nth + many - 1, failure}};
    }
    static void Mend() {
        if (!g_disk.faults.empty())
            isReached = g_disk.operations >= g_disk.faults.front().first;
        g_disk.faults.clear();
    }
    static void Take(CVisitCustody& custody, const std::vector<int>& numbers,
                     const std::string& path = kFile) {
        ASSERT_FALSE(custody.Begin(path));
        for (const int number : numbers)
            EXPECT_TRUE(custody.Keep(Record(number), 0));
    }
    /// Of two records the journal takes the first alone; the nth operation for the other fails.
    static void FailAtSecond(CVisitCustody& custody, std::size_t nth = 1) {
        Take(custody, {1});
        Break(EFileFailure::Other, nth);
        EXPECT_FALSE(custody.Keep(Record(2), 0)) << "the visit has to end";
        Mend();
    }
    void Tell(const SLedgerReport& report) {
        EXPECT_FALSE(report.reason.ends_with(' ')) << "without the cause: " << report.reason;
        told.push_back(report);
    }
    void BringIn() {
        CRunLedger next(kRoot, [this](const SLedgerReport& report) { Tell(report); });
        next.BringIn();
    }
    /// The events of the day file, and those of the set-aside files.
    static std::vector<int> Stored(const std::string& ending = ".evt") {
        std::vector<int> events;
        for (const auto& [path, bytes] : g_disk.Files())
            if (path.ends_with(ending))
                std::ranges::copy(EventsIn(bytes), std::back_inserter(events));
        return events;
    }
    bool IsTold(const std::string& reasonsEnd) const {
        return std::ranges::any_of(told, [&](const auto& row) { return row.reason.ends_with(reasonsEnd); });
    }
    static std::size_t Count(const std::string& ending) {
        return static_cast<std::size_t>(std::ranges::count_if(
            g_disk.Files(), [&](const auto& file) { return file.first.ends_with(ending); }));
    }

    static inline bool isReached = true; ///< an operation that was to fail, before the last Mend
    std::vector<SLedgerReport> told;
    CRunLedger ledger{kRoot, [this](const SLedgerReport& report) { Tell(report); }};
};

} // namespace ruvo::test
