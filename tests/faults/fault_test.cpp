// Complete runs in which one thing after the other fails: what was written stays, what is lost is told.
#include "fault_rig.h"

#include "paths/path_utilities.h"

#include <limits>
#include <sstream>

namespace ruvo::test {

class FileFaults : public testing::Test {
protected:
    /// A day file holds what it held, and whole records behind it, or else people are warned of it.
    void CheckDayFile(const SOutcome& got, int address) const {
        const std::string file = got.DayFile(address).value_or("");
        EXPECT_TRUE(file.starts_with(rig.before.DayFile(address).value_or("")));
        EXPECT_TRUE(RecordsOf(file).isSound || got.IsTold("bytes; it may end with a torn record"));
        const auto node = got.disk.Find(got.DayFilePath(address));
        EXPECT_TRUE(!node || got.disk.nodes[*node].writes.empty() || got.CountWaiting() > 0 ||
                    got.IsTold(" could not be flushed to disk. It holds "))
            << "what is not on the disk counts as stored";
    }

    /// After a next run, in which nothing goes wrong, each event is in a day file once, or reported as lost.
    void CheckLedger(const SOutcome& got, std::size_t earlier = 3) {
        if (got.IsTold("bytes; it may end with a torn record"))
            return;
        SMemoryDisk left = got.disk;
        left.EndProcess();
        const SOutcome next = rig.RunOn(left, {});
        EXPECT_EQ(CountRecords(next.disk) + next.CountLost() + SOutcome::LostIn(got.debug),
                  earlier + got.notes.given + next.notes.given);
        EXPECT_FALSE(HasJournal(next)) << "everything has been brought in";
    }
    static bool HasJournal(const SOutcome& got) {
        return std::ranges::any_of(got.disk.Files("C:\\var"),
                                   [](const auto& file) { return !file.first.ends_with("event-root.txt"); });
    }

    /// No line is lost in silence, and a single fault tears none.
    void CheckLog(const SOutcome& got, bool mayTear) const {
        ASSERT_TRUE(got.Log().starts_with(rig.before.Log()));
        std::istringstream wanted(rig.clean.Log());
        for (std::string line; std::getline(wanted, line, '\r'); wanted.ignore())
            EXPECT_TRUE(got.IsTold(line)) << line;
        std::istringstream lines(got.Log());
        for (std::string line; !mayTear && std::getline(lines, line);)
            EXPECT_TRUE(line.starts_with("2021/03/02 14:03:07 ") && line.ends_with(".\r")) << line;
    }

    void Try(const std::vector<SDiskFault>& faults) {
        const SDiskFault& first = faults.front();
        SCOPED_TRACE("operations " + std::to_string(first.first) + " to " +
                     std::to_string(faults.back().last) + ", failure " + std::to_string(int(first.failure)));
        const bool mayTear = faults.size() > 1 || first.last > first.first;
        const SOutcome got = rig.Run({}, faults);
        EXPECT_TRUE(got.notes.taken == rig.clean.notes.taken ||
                    got.IsTold("; no event was taken from the relay.") ||
                    got.IsTold("the rest waits in the relay for the next run."))
            << "every relay is visited, whatever the disk does";
        CheckDayFile(got, kTested);
        CheckDayFile(got, kNext);
        CheckLog(got, mayTear);
        CheckLedger(got);
        ++points;
    }

    CFaultRig rig{0, ELinkType::Serial};
    std::size_t points = 0;
};

TEST_F(FileFaults, OneOperationFailsOrAllFromItOn) {
    using enum EFileFailure;
    ASSERT_GT(rig.clean.disk.operations, 40U);
    for (const EFileFailure failure : {DiskFull, BadPath, AccessDenied, BadDescriptor})
        for (const bool writesTakePart : {false, true})
            for (std::size_t n = 1; n <= rig.clean.disk.operations && !HasFailure(); ++n)
                for (const std::size_t last : {n, std::numeric_limits<std::size_t>::max()})
                    Try({{n, last, failure, writesTakePart}});
    std::cout << points << " file faults at " << rig.clean.disk.operations << " operations\n";
}

/// What mends the first failure fails itself: the cut of a torn record, the removal of a file made for
/// nothing.
TEST_F(FileFaults, TwoOperationsFail) {
    constexpr std::size_t kFarthest = 12;
    for (std::size_t n = 1; n <= rig.clean.disk.operations && !HasFailure(); ++n)
        for (std::size_t m = n + 1; m <= n + kFarthest; ++m)
            Try({{n, n, EFileFailure::DiskFull, true}, {m, m, EFileFailure::AccessDenied}});
    std::cout << points << " pairs of file faults\n";
}

/// Of a run that was killed events wait; in the next one, which stores them, operations fail.
TEST_F(FileFaults, OperationsFailBesideTheEventsOfAKilledRun) {
    constexpr std::size_t kStep = 7;
    constexpr int kKills = 3;
    int kills = 0;
    for (std::size_t kill = rig.clean.disk.operations; kill > kStep && kills < kKills; kill -= kStep) {
        SMemoryDisk left =
            rig.Run({}, {{kill, std::numeric_limits<std::size_t>::max(), EFileFailure::Other, false, true}})
                .disk;
        left.EndProcess();
        const SOutcome whole = rig.RunOn(left, {});
        if (!whole.IsTold(" of a visit that was ended "))
            continue; // none waited
        ++kills;
        const std::size_t earlier = CountRecords(whole.disk) + whole.CountLost() - whole.notes.given;
        for (std::size_t n = 1; n <= whole.disk.operations && !HasFailure(); ++n)
            for (const std::size_t last : {n, n + 3}) { // a second attempt, too
                SCOPED_TRACE("killed at " + std::to_string(kill) + ", failures at " + std::to_string(n) +
                             " to " + std::to_string(last));
                CheckLedger(rig.RunOn(left, {}, {{n, last, EFileFailure::Other}}), earlier);
            }
        std::cout << whole.disk.operations << " operations beside the events of a killed run\n";
    }
    EXPECT_EQ(kills, kKills);
}

TEST_F(FileFaults, WhereNothingCanBeMadeTheRelaysKeepTheirEvents) {
    const struct {
        SFreeSpace room;
        std::string locked;  ///< a folder that takes nothing new
        const char* refusal; ///< to the relay whose file has to be made; empty where it can be
        std::size_t taken;   ///< from both relays
    } cases[] = {{{65535, 9}, "", "The disk of /ev is full", 0},
                 {{65536, 1}, "", "The disk of /ev can take no more files", 0},
                 {{65536, 2}, "", "", rig.clean.notes.taken},
                 {{}, "C:\\ev", "No folder can be made in /ev: failure 5", 3},
                 {{}, "C:\\ev\\AB12-0006", "No file can be made in /ev/AB12-0006: failure 5", 3}};
    for (const auto& test : cases) {
        rig.before.disk.room = test.room;
        rig.before.disk.locked = test.locked;
        if (!test.locked.empty())
            rig.before.disk.PutFolder(test.locked);
        const SOutcome got = rig.Run({});
        EXPECT_EQ(got.notes.taken, test.taken) << test.refusal;
        EXPECT_EQ(got.IsTold("Failed to save event file " + std::string(test.refusal) +
                             "; no event was taken from the relay. Connection details - COM Port: COM1, "
                             "device address: 6."),
                  *test.refusal != '\0')
            << got.Log();
    }
}

TEST_F(FileFaults, DayFilesAreOnTheDiskWhenARunHasEnded) {
    EXPECT_TRUE(rig.clean.DayFile(kNext));
    EXPECT_EQ(rig.clean.disk.Files("C:\\ev"), rig.clean.disk.Files("C:\\ev", true));
}

TEST_F(FileFaults, AnUnreachableShareIsWalkedOnce) {
    const std::string folder = "\\\\srv\\share\\a\\b";
    CRunContext context;
    context.SetDestinationRoot(folder);
    context.SetDestinationFromRegistry(true);
    ResolveErrorLogPath(context, false);
    g_disk = {};
    EXPECT_FALSE(CanWriteInFolder(folder) || CanCreateFile(ErrorLogPath()));
    WriteLogLine("lost");
    EXPECT_EQ(g_disk.operations, 18U) << "each may wait for minutes";
}

class ServerFaults : public testing::TestWithParam<std::tuple<int, ELinkType>> {
protected:
    using enum EServerFault;

    /// True for the relay that is called, and with an abort for the one that is called next; the results of a
    /// command that has completed already may be fetched before that.
    bool MaySuffer(int address, const SServerFault& fault) const {
        const auto calls = [&](std::size_t n) {
            const auto& all = rig.clean.notes.calls;
            return n <= all.size() && (all[n - 1].address == 0 || all[n - 1].address == address);
        };
        const bool isAbort = fault.kind == AbortedInside || fault.kind == NeverEnds;
        return calls(fault.call) || (isAbort && (calls(fault.call + 1) || calls(fault.call + 2)));
    }

    void CheckFiles(const SOutcome& got) const {
        const auto files = got.disk.Files();
        for (const auto& [path, bytes] : rig.before.disk.Files())
            EXPECT_TRUE(files.at(path).starts_with(bytes)) << path;
        const std::size_t stored = CountRecords(got.disk) - earlier;
        const std::size_t aside = CountRecords(got.disk, ".setaside");
        EXPECT_EQ(aside, got.CountSetAside()) << "the log names their file";
        EXPECT_EQ(stored + aside + got.CountLost() + got.CountWaiting(), got.notes.given)
            << "a lost event is counted";
        EXPECT_TRUE(got.notes.given == got.notes.taken ||
                    got.IsTold("A problem occured during events extraction. Connection details"));
        const std::string onDisk = got.disk.Files("C:", true).at("C:\\run.log");
        const std::size_t lossTold = std::max(got.Log().rfind(", but not stored.") + 1,
                                              got.Log().rfind(" of unknown kind passed over.") + 1);
        EXPECT_TRUE(lossTold == 0 || onDisk.size() > lossTold)
            << "a power failure would take the only word on lost events";
        EXPECT_TRUE(stored == rig.clean.notes.taken || got.Log() != rig.clean.Log())
            << "nobody knows of events that stayed away";
    }

    void CheckPrivacy(const SOutcome& got) const {
        EXPECT_TRUE(got.notes.calls.empty() || got.notes.guard == rig.clean.notes.guard ||
                    got.IsTold("Cell BF.03 could not be restored"));
        EXPECT_FALSE(got.notes.sentPlain && std::get<int>(GetParam()) > 0);
        EXPECT_FALSE(got.IsTold(std::string(kSecret)));
    }

    void Try(const SServerFault& fault) {
        const auto operation = rig.clean.notes.calls[fault.call - 1].operation;
        SCOPED_TRACE("call " + std::to_string(fault.call) + " (" + std::string(OperationRow(operation).name) +
                     "), fault " + std::to_string(int(fault.kind)) + ", detail " +
                     std::to_string(fault.detail));
        const SOutcome got = rig.Run(fault);
        for (const int address : {kTested, kNext})
            EXPECT_TRUE(MaySuffer(address, fault) || got.DayFile(address) == rig.clean.DayFile(address))
                << "relay " << address;
        CheckFiles(got);
        CheckPrivacy(got);
        ++points;
    }

    std::vector<SServerFault> FaultsOf(std::size_t call) const {
        const SNotedCall& noted = rig.clean.notes.calls[call - 1];
        std::vector<SServerFault> faults{{call, RequestLost}, {call, ReplyLost},   {call, AbortedInside},
                                         {call, Status, 254}, {call, Status, 255}, {call, Status, 18}};
        for (int output = 0; output <= int(noted.outputs); ++output)
            faults.push_back({call, WrongType, output});
        using enum EOperation;
        // Writes and events ask for logins, and logins are answered through writes: there each code is tried.
        const bool all = std::get<ELinkType>(GetParam()) == ELinkType::Serial &&
                         (noted.operation == ChangeSetting || noted.operation == SetValue ||
                          noted.operation == ResetCell || noted.operation == GetEvent);
        for (int code = 0; code <= 255; code += all || code < 31 ? 1 : 14)
            faults.push_back({call, Status, int(ReplyStatus(std::uint8_t(code)))});
        for (int answer = kAbortAccepted; OperationRow(noted.operation).runsOn && answer <= kAbortLost;
             ++answer)
            faults.push_back({call, NeverEnds, answer});
        return faults;
    }

    CFaultRig rig{std::get<int>(GetParam()), std::get<ELinkType>(GetParam())};
    const std::size_t earlier = CountRecords(rig.before.disk);
    std::size_t points = 0;
};

TEST_P(ServerFaults, OneCallFails) {
    EXPECT_EQ(earlier, 3U);
    EXPECT_EQ(CountRecords(rig.clean.disk), 8U);
    EXPECT_EQ(rig.clean.notes.guard, Variant::FromBytes({7}));
    for (std::size_t call = 1; call <= rig.clean.notes.calls.size() && !HasFailure(); ++call)
        std::ranges::for_each(FaultsOf(call), [this](const SServerFault& fault) { Try(fault); });
    std::cout << points << " server faults at " << rig.clean.notes.calls.size() << " calls\n";
}

TEST_P(ServerFaults, OneAllocationFails) {
    ASSERT_GT(rig.clean.allocations, 500U);
    for (std::size_t n = 1; n <= rig.clean.allocations && !HasFailure(); ++n) {
        SCOPED_TRACE("allocation " + std::to_string(n));
        const SOutcome got = rig.Run({}, {}, n);
        CheckFiles(got);
        CheckPrivacy(got);
    }
    std::cout << rig.clean.allocations << " allocations failed\n";
}

INSTANTIATE_TEST_SUITE_P(Logins, ServerFaults,
                         testing::Combine(testing::Range(0, 4), testing::Values(ELinkType::Serial)));
INSTANTIATE_TEST_SUITE_P(Links, ServerFaults,
                         testing::Combine(testing::Values(0),
                                          testing::Values(ELinkType::Modem, ELinkType::Ethernet)));

} // namespace ruvo::test
