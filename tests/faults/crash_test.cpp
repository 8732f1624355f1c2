// Ends of the process and of the machine at any moment of a run, and of the runs that bring in what it left.
// After each, a run that nothing disturbs has to account for every event that a relay has handed over.
// RUVO_CRASH_STATES says how many states are tried; docs/reliability.md tells of them.
#include "crash_case.h"

#include "platform/full_path.h"

#include <cstdlib>
#include <random>
#include <sstream>

namespace ruvo::test {

constexpr std::size_t kNever = std::numeric_limits<std::size_t>::max();
constexpr std::size_t kUsualStates = 5000;
/// Goes through all combinations of choices.
struct SEveryChoice {
    std::vector<std::pair<std::size_t, std::size_t>> made; ///< and how many there are
    std::size_t at = 0;

    std::size_t operator()(std::size_t count) {
        if (at == made.size())
            made.emplace_back(0, count);
        return made[at++].first;
    }
    bool Next() {
        at = 0;
        while (!made.empty() && made.back().first + 1 == made.back().second)
            made.pop_back();
        return !made.empty() && ++made.back().first > 0;
    }
    bool AreAtMost(std::size_t most) const {
        std::size_t product = 1;
        for (std::size_t n = 0; n < made.size() && product <= most; ++n)
            product *= made[n].second;
        return product <= most;
    }
};

class CrashTest : public testing::TestWithParam<SCrashCase> {
protected:
    using Random = std::mt19937_64;
    std::size_t Below(std::size_t count) { return count == 0 ? 0 : random() % count; }

    /// By chance; many choices at once are seldom all of one kind unless it is wanted.
    Choose ByChance() {
        enum EManner : std::uint8_t { New, Old, Mixed, MostlyNew, MostlyOld, Count };
        return [this, manner = Below(Count)](std::size_t count) {
            const bool isMixed = manner == Mixed || (manner > Mixed && Below(6) == 0);
            return isMixed ? Below(count) : manner == New || manner == MostlyNew ? count - 1 : 0;
        };
    }

    SMemoryDisk Start();
    SOutcome Run(const SMemoryDisk& disk, std::size_t number, std::vector<SDiskFault> faults = {});
    SOutcome RunUntil(const SMemoryDisk& disk, std::size_t number, std::size_t end, bool takesPart);
    SMemoryDisk AfterEndOfProcess(const SMemoryDisk& ended, const std::string& story);
    void TryEnd(const SMemoryDisk& ended, std::size_t perEnd);
    void Follow(SMemoryDisk disk, std::size_t ends, const std::string& story);
    std::string Complaint(const SOutcome& last) const;
    std::string ComplaintOfFiles(const SOutcome& last, std::map<int, std::size_t>& stored) const;
    std::string ComplaintOfState(const SOutcome& last, std::map<int, std::size_t>& stored) const;
    std::map<int, std::size_t> ToldLosses(const std::string& log) const;

    void Complain(const std::string& what) { complaints += ++failing <= 3 ? test.name + what + "\n" : ""; }

    const SCrashCase& test = GetParam();
    Random random{1};
    CFaultRig rig{LoadSubstation("[link]\nserial = [\"COM1\"]\n" + RelayText(test, kTested, true) +
                                 RelayText(test, kNext, test.isNextVisited))};
    const sim::SSubstation all = rig.substation;
    SServerFault abort{};
    std::string earlier; ///< bytes of the day file
    std::size_t states = 0, failing = 0, mostLost = 0, keptJournals = 0;
    std::string complaints;
};

SMemoryDisk CrashTest::Start() {
    SMemoryDisk disk;
    if (test.start != EStart::NoRoot)
        disk.PutFolder("C:\\ev");
    disk.PutFolder(test.hasState ? "C:\\var\\state" : "C:\\var");
    if (test.start == EStart::Header || test.start == EStart::Records) {
        SMemoryDisk fresh;
        fresh.PutFolder("C:\\ev");
        earlier = Run(fresh, 0).disk.Files("C:\\ev").at(kDayFile);
        for (std::size_t at = 0; (at = earlier.find("Event#", at)) != std::string::npos; ++at)
            earlier.replace(at, 6, "Older.");
        if (test.start == EStart::Header)
            earlier.resize(earlier.find('\x1A') + 1);
    }
    if (test.start == EStart::Folder)
        disk.PutFolder(FolderAndName(kDayFile).first);
    else if (test.start > EStart::Folder)
        disk.Put(kDayFile, earlier);
    return disk;
}

/// The run of that number, counted from 0: relays have all events that are ready by then, but for those that
/// are gone.
SOutcome CrashTest::Run(const SMemoryDisk& disk, std::size_t number, std::vector<SDiskFault> faults) {
    std::map<int, int> gone;
    for (const int event : disk.events.handedOver)
        ++gone[RelayOf(event)];
    rig.substation = all;
    for (std::size_t n = 0; n < kAddresses.size(); ++n) {
        std::vector<sim::SEvent>& events = rig.substation.relays[n].events;
        events.resize(events.empty() ? 0 : kReadyAt[std::min(number, kReadyAt.size() - 1)]);
        events.erase(events.begin(), events.begin() + gone[kAddresses[n]]);
    }
    rig.onEvent = [gone](int address) mutable {
        const std::lock_guard lock(g_diskLock);
        const int event = address * kPerRelay + gone[address]++;
        g_disk.events.handedOver.insert(event);
        g_disk.events.underWay = IsUnknown(event) ? event : 0;
    };
    g_standardError.clear();
    SOutcome outcome = rig.RunOn(disk, number == 0 ? abort : SServerFault(), faults);
    for (std::size_t at = 0; (at = outcome.debug.find("Line lost: ", at)) != std::string::npos; ++at)
        outcome.disk.events.toldElsewhere += outcome.debug.substr(at, outcome.debug.find('\n', at) + 1 - at);
    return outcome;
}

SOutcome CrashTest::RunUntil(const SMemoryDisk& disk, std::size_t number, std::size_t end, bool takesPart) {
    SMemoryDisk begin = disk;
    if (number == 0 || Below(2) == 0) {
        begin.locked = test.locked;
        begin.full = test.full;
        begin.fullAt = test.fullAt + Below(test.fullWithin);
    }
    if (number == 0 && test.meetsAnother) // at any moment, and some time before the end
        end = (begin.otherRunAt = end) + Below(100);
    begin.flushEvery = Below(4);
    std::vector<SDiskFault> faults{{end, kNever, EFileFailure::BadDescriptor, takesPart, true}};
    if (number == 0 && test.isRefusedOnce)
        if (const std::size_t at = Below(end); at > 0)
            faults.push_back({at, at, EFileFailure::DiskFull, Below(2) == 0});
    return Run(begin, number, std::move(faults));
}

/// It costs the event under way, unless there is no journal that takes the others.
SMemoryDisk CrashTest::AfterEndOfProcess(const SMemoryDisk& ended, const std::string& story) {
    SMemoryDisk disk = ended;
    disk.EndProcess();
    const bool isKept = *test.locked == '\0' && !test.isRefusedOnce;
    if (isKept && disk.events.excused.size() > ended.events.excused.size() + 1)
        Complain(story + ": several events were in no file");
    return disk;
}

/// All that an end may leave, or as many of it as wanted.
void CrashTest::TryEnd(const SMemoryDisk& ended, std::size_t perEnd) {
    std::string story;
    for (const SDiskFault& fault : ended.faults)
        story += (fault.isEnd ? " ends at " : " refused at ") + std::to_string(fault.first) +
                 (fault.writesTakePart ? "t" : "");
    if (ended.events.refusedFrames > 0 && !test.isRefusedOnce)
        Complain(story + ": no room was reserved for a frame");
    Follow(AfterEndOfProcess(ended, story), 1, story + " process,");
    SMemoryDisk disk;
    SEveryChoice every;
    (disk = ended).EndMachine(std::ref(every));
    if (every.AreAtMost(perEnd))
        do {
            every.at = 0;
            (disk = ended).EndMachine(std::ref(every));
            Follow(disk, 1, story + " machine,");
        } while (every.Next());
    else
        for (std::size_t n = 0; n < perEnd; ++n) {
            (disk = ended).EndMachine(ByChance());
            Follow(disk, 1, story + " machine,");
        }
}

/// The next run, which brings in what there is; and another end within it, and so on.
void CrashTest::Follow(SMemoryDisk disk, std::size_t ends, const std::string& story) {
    constexpr std::size_t kMostEnds = 4;
    if (test.isMoved && disk.Find(kDayFile) && Below(2) == 0)
        disk.Move(kDayFile, "C:\\moved\\" + std::to_string(ends));
    ++states;
    mostLost = std::max(mostLost, disk.events.excused.size());
    const SOutcome last = Run(disk, ends);
    if (const std::string complaint = Complaint(last); !complaint.empty())
        Complain(story + " then: " + complaint + "\n" + last.Log());
    keptJournals += last.Log().find(" is damaged") != std::string::npos ? 1 : 0;
    if (ends < kMostEnds && Below(2) == 0) {
        const std::size_t end = 1 + Below(last.disk.operations);
        SMemoryDisk next = RunUntil(disk, ends, end, Below(2) == 0).disk;
        const bool isProcess = Below(3) == 0;
        if (isProcess)
            next = AfterEndOfProcess(next, story);
        else
            next.EndMachine(ByChance());
        Follow(next, ends + 1,
               story + " then at " + std::to_string(end) + (isProcess ? " process," : " machine,"));
    }
}

/// What is wrong with the accounts after a run that nothing has disturbed; empty when all is right.
std::string CrashTest::Complaint(const SOutcome& last) const {
    const SEventLedger& events = last.disk.events;
    std::map<int, std::size_t> stored, away;
    std::string complaint = ComplaintOfFiles(last, stored);
    complaint += ComplaintOfState(last, stored); // it has to know what the day files have
    for (const auto& [path, bytes] : last.disk.Files("C:\\moved"))
        for (const int event : RecordsOf(bytes).events)
            ++away[event];
    const std::string log = last.Log() + events.toldElsewhere;
    const bool isRecoveryTold = log.find(" of a visit that was ended ") != std::string::npos;
    // An end between the line that names a set-aside file and the cut of a journal that has no frame of it.
    const std::size_t atMost = test.isRefusedOnce && test.abortedAt > 0 && isRecoveryTold ? 2 : 1;
    std::map<int, std::size_t> missing, absent;
    for (const int event : events.handedOver) {
        const std::string name = " event " + std::to_string(event);
        if (stored[event] > atMost)
            complaint += name + " is stored " + std::to_string(stored[event]) + " times;";
        if (stored[event] > 0 && away[event] > 0 && !isRecoveryTold)
            complaint += name + " is stored once more without a word;";
        if (stored[event] + away[event] == 0) {
            ++absent[RelayOf(event)];
            missing[RelayOf(event)] += events.excused.contains(event) ? 0 : 1;
        }
    }
    for (auto& [relay, told] : ToldLosses(log)) {
        if (missing[relay] > told)
            complaint += " " + std::to_string(missing[relay]) + " events of relay " + std::to_string(relay) +
                         " are lost, told " + std::to_string(told) + ";";
        if (told > 0 && absent[relay] == 0)
            complaint += " losses are told of that are none;";
    }
    return complaint;
}

/// Counts set-aside files' records as stored. Whatever else is left in the state folder is told of.
std::string CrashTest::ComplaintOfState(const SOutcome& last, std::map<int, std::size_t>& stored) const {
    std::string complaint;
    for (const auto& [path, bytes] : last.disk.Files("C:\\var")) {
        // A record that no journal has can tear the day file for good: then the others wait.
        if (test.isRefusedOnce &&
            last.Log().find(" in journal " + DisplayPath(path) + " for ") != std::string::npos)
            for (const int event : EventsIn(bytes))
                stored[event] = std::max<std::size_t>(stored[event], 1);
        const bool isAside = path.ends_with(".setaside");
        const SRecords records = isAside ? RecordsOf(bytes) : SRecords();
        for (const int event : records.events)
            ++stored[event];
        if (!records.isSound && !test.isRefusedOnce) // what no journal has can be torn for good
            complaint += " " + path + " is damaged;";
        const std::size_t name = path.rfind('\\') + 1;
        const std::string told = isAside ? " set aside in " + DisplayPath(path) + ": "
                                         : path.substr(name, path.rfind(".damaged") - name) +
                                               (test.isRefusedOnce ? "" : " is damaged");
        // Records that the journal has refused go into a file that only the log names.
        const bool mayBeUntold =
            bytes.empty() || path.ends_with("event-root.txt") || (isAside && test.isRefusedOnce);
        if (!mayBeUntold && last.Log().find(told) == std::string::npos)
            complaint += " " + path + " is left without a word;";
    }
    return complaint;
}

/// Only what no journal has can be torn for good; behind it nothing is added to a file that ends so.
std::string CrashTest::ComplaintOfFiles(const SOutcome& last, std::map<int, std::size_t>& stored) const {
    const bool mayBeTorn = test.isRefusedOnce || *test.locked != '\0';
    std::string complaint;
    for (const auto& [path, bytes] : last.disk.Files("C:\\ev")) {
        const bool isFirst = path == kDayFile && (!test.isMoved || bytes.find("Older.") != std::string::npos);
        const SRecords records = RecordsOf(bytes);
        const std::size_t older = isFirst && test.start == EStart::Records ? RecordsOf(earlier).count : 0;
        if ((!records.isSound && !mayBeTorn) || records.count != records.events.size() + older)
            complaint += " " + path + " is damaged;";
        if (isFirst && !bytes.starts_with(earlier))
            complaint += " earlier bytes of " + path + " have changed;";
        std::map<int, int> latest;
        for (const int event : records.events) {
            ++stored[event];
            if (std::exchange(latest[RelayOf(event)], event) > event && !test.isMoved)
                complaint += " event " + std::to_string(event) + " is out of order;";
        }
    }
    return complaint;
}

/// Of each relay, how many events the log says are in no file.
std::map<int, std::size_t> CrashTest::ToldLosses(const std::string& log) const {
    std::map<int, std::size_t> told{{kTested, 0}, {kNext, 0}};
    std::istringstream lines(log);
    for (std::string line; std::getline(lines, line);)
        for (const char* mark : {" taken from the relay, but not stored.", " of unknown kind passed over."})
            for (const auto& [relay, key, address] :
                 {std::tuple(kTested, "Visit of RV001", "device address: 1."),
                  std::tuple(kNext, "Visit of RV003", "device address: 6.")})
                if (line.find(mark) != std::string::npos &&
                    (line.find(key) != std::string::npos || line.find(address) != std::string::npos))
                    told[relay] += SOutcome::LostIn(line, mark);
    return told;
}

TEST_P(CrashTest, EveryEventIsAccountedFor) {
    const char* const wanted = std::getenv("RUVO_CRASH_STATES");
    const std::size_t share = test.cells > 1 ? 10 : 1; // long columns take that much longer to read
    const std::size_t budget =
        (wanted != nullptr ? std::strtoul(wanted, nullptr, 10) : kUsualStates) / std::size(kCases) / share;
    const SMemoryDisk start = Start();
    SOutcome clean = Run(start, 0);
    if (test.abortedAt > 0) {
        std::size_t events = 0, call = 0;
        while (events < test.abortedAt)
            events += clean.notes.calls.at(call++).operation == EOperation::GetEvent ? 1 : 0;
        abort = {call, EServerFault::Status, 18};
        clean = Run(start, 0);
    }
    EXPECT_EQ(Complaint(clean), "") << clean.Log();
    const std::size_t ends = 2 * (clean.disk.operations + 1); // each with and without a part of a write
    const std::size_t step = 1 + 3 * ends / budget;
    for (std::size_t round = 1; states < budget; ++round)
        for (std::size_t n = Below(step); n < ends; n += step) {
            const SMemoryDisk ended = RunUntil(start, 0, n / 2 + 1, n % 2 == 1).disk;
            if (n % 2 == 0 || ended.hasTornWrite)
                TryEnd(ended, round * std::max<std::size_t>(1, budget / (2 * ends)));
        }
    std::cout << states << " states, " << failing << " failing; at most " << mostLost << " events excused, "
              << keptJournals << " damaged journals kept\n";
    EXPECT_EQ(failing, 0U) << complaints;
}

INSTANTIATE_TEST_SUITE_P(Ends, CrashTest, testing::ValuesIn(kCases),
                         [](const auto& made) { return std::string(made.param.name); });

} // namespace ruvo::test
