// Ends of the process and of the machine at any moment of a run, and of the runs that bring in what it left.
// After each, a run that nothing disturbs has to account for every event that a relay has handed over.
// RUVO_CRASH_STATES says how many states are tried; docs/reliability.md tells of them.
#include "fault_rig.h"

#include "platform/full_path.h"

#include <cstdlib>
#include <iomanip>
#include <random>
#include <sstream>

namespace ruvo::test {

namespace {

constexpr std::size_t kNever = std::numeric_limits<std::size_t>::max();
constexpr std::size_t kUsualStates = 5000;
constexpr std::size_t kTextSize = 150;
constexpr const char* kFolder = "C:\\ev\\AB12-0001";
constexpr const char* kDayFile = "C:\\ev\\AB12-0001\\AB12-0001-2026-11-16-DEV.evt";

enum class EStart : std::uint8_t { NoFolder, Folder, EmptyFile, Header, Records };

struct SCrashCase {
    const char* name;
    EStart start = EStart::NoFolder;
    bool bothInOneFile = false; ///< two relays of one name: two visits to one day file
    bool isNextVisited = false; ///< the second relay has events
    bool hasState = true;       ///< the state folder is there
    const char* locked = "";    ///< for the first run: a folder that takes nothing new
    const char* full = "";      ///< and one that takes some bytes only, another number in each run
    std::size_t fullAt = 0;     ///< the least of them, and by how many they may be more
    std::size_t fullWithin = 1;
    bool isMoved = false;       ///< a person may put the day file away after an end
    std::size_t abortedAt = 0;  ///< the first relay's event at which the first run's visit is aborted
    bool isRefusedOnce = false; ///< one operation of the first run fails
    int cells = 1;              ///< of extended records, with 250 letters each
};
void PrintTo(const SCrashCase& test, std::ostream* out) {
    *out << test.name;
}

const SCrashCase kCases[] = {
    {.name = "NothingThere", .hasState = false},
    {.name = "FolderThere", .start = EStart::Folder},
    {.name = "EmptyFile", .start = EStart::EmptyFile},
    {.name = "HeaderAlone", .start = EStart::Header},
    {.name = "EarlierRecords", .start = EStart::Records},
    {.name = "TwoRelays", .start = EStart::Records, .isNextVisited = true},
    {.name = "TwoVisitsToOneFile", .bothInOneFile = true, .isNextVisited = true},
    {.name = "NoJournal", .hasState = false, .locked = "C:\\var"},
    {.name = "FullJournalDisk",
     .isNextVisited = true,
     .full = "C:\\var",
     .fullWithin = 400'000,
     .cells = 200},
    {.name = "FullEventDisk", .isNextVisited = true, .full = "C:\\ev", .fullWithin = 2'000},
    {.name = "FullEventDiskBehindRecords",
     .start = EStart::Records,
     .full = "C:\\ev",
     .fullAt = 1'000,
     .fullWithin = 2'000},
    {.name = "MovedDayFile", .start = EStart::Records, .isMoved = true},
    {.name = "MovedNewDayFile", .isMoved = true},
    {.name = "OneRefusal", .start = EStart::Records, .isNextVisited = true, .isRefusedOnce = true},
    {.name = "Aborted", .start = EStart::Records, .isNextVisited = true, .abortedAt = 4},
    {.name = "AbortedWithLongRecords", .abortedAt = 5, .cells = 200},
    {.name = "AbortedRefusedOnce", .start = EStart::Header, .abortedAt = 5, .isRefusedOnce = true},
    {.name = "LongRecords", .start = EStart::Records, .cells = 200},
};

// ---- The relays: of each, some events wait for the first run, some for the second, one for the third.

constexpr int kSimple = 0, kExtended = 3, kUnknown = 99; // kinds of events
constexpr std::array kEvents{kSimple, kExtended, kUnknown, kExtended, kSimple, kExtended, kSimple, kSimple};
constexpr std::array<std::size_t, 3> kReadyAt{5, 7, 8};
constexpr int kPerRelay = 1000;
constexpr std::array kAddresses{kTested, kNext};

int RelayOf(int event) {
    return event / kPerRelay;
}
bool IsUnknown(int event) {
    return kEvents[static_cast<std::size_t>(event % kPerRelay)] == kUnknown;
}

std::string RelayText(const SCrashCase& test, int address, bool hasEvents) {
    std::ostringstream text;
    text << "[[relay]]\nserial = " << address << "\nidentity = { model = \"AB12-X\", serial = \"000"
         << (test.bothInOneFile ? kTested : address) << "\" }\n"
         << "cells.\"09.01\" = { index = 1, strings = [\"Off\", \"On\"] }\n"
         << "columns.\"30\" = { locations = \"uint\" }\n"
         << "[[relay.record]]\ncolumn = \"30\"\nnumber = 1\n";
    for (int cell = 2; cell < 2 + test.cells; ++cell)
        text << "cells.\"30." << std::hex << std::uppercase << std::setw(2) << std::setfill('0') << cell
             << std::dec << "\" = { text = \"" << std::string(250, 'z') << "\", label = \"Cell\" }\n";
    for (std::size_t n = 0; hasEvents && n < kEvents.size(); ++n) {
        std::array<char, 16> mark{};
        std::snprintf(mark.data(), mark.size(), "Event#%04d ", address * kPerRelay + static_cast<int>(n));
        text << "[[relay.event]]\nkind = " << kEvents[n]
             << "\nlocation = \"09.01\"\ntime = 2026-02-16T13:07:09\n"
             << "text = \"" << mark.data() << std::string(kTextSize, static_cast<char>('a' + n))
             << "\"\nvalue = { uint = 1 }\n"
             << (kEvents[n] == kExtended ? "record = { column = \"30\", number = 1 }\n" : "");
    }
    return text.str();
}

// ---- What an end leaves.

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
    void TryEnd(const SMemoryDisk& ended, std::size_t perEnd);
    void Follow(SMemoryDisk disk, std::size_t ends, const std::string& story);
    std::string Complaint(const SOutcome& last) const;
    std::string ComplaintOfFiles(const SOutcome& last, std::map<int, std::size_t>& stored) const;
    std::string ComplaintOfState(const SOutcome& last, std::map<int, std::size_t>& stored) const;
    std::map<int, std::size_t> ToldLosses(const std::string& log) const;

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
    disk.PutFolder("C:\\ev");
    if (test.hasState)
        disk.PutFolder("C:\\var\\state");
    else
        disk.PutFolder("C:\\var");
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
        disk.PutFolder(kFolder);
    else if (test.start != EStart::NoFolder)
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
    std::vector<SDiskFault> faults{{end, kNever, EFileFailure::BadDescriptor, takesPart, true}};
    if (number == 0 && test.isRefusedOnce)
        if (const std::size_t at = Below(end); at > 0)
            faults.push_back({at, at, EFileFailure::DiskFull, Below(2) == 0});
    return Run(disk, number, std::move(faults));
}

/// All that an end may leave, or as many of it as wanted.
void CrashTest::TryEnd(const SMemoryDisk& ended, std::size_t perEnd) {
    std::string story;
    for (const SDiskFault& fault : ended.faults)
        story += (fault.isEnd ? " ends at " : " refused at ") + std::to_string(fault.first) +
                 (fault.writesTakePart ? "t" : "");
    SMemoryDisk disk = ended;
    disk.EndProcess();
    Follow(disk, 1, story + " process,");
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
    if (const std::string complaint = Complaint(last); !complaint.empty() && ++failing <= 3)
        complaints += test.name + story + " then: " + complaint + "\n" + last.Log() + "\n";
    keptJournals += last.Log().find(" is damaged") != std::string::npos ? 1 : 0;
    if (ends < kMostEnds && Below(2) == 0) {
        const std::size_t end = 1 + Below(last.disk.operations);
        SMemoryDisk next = RunUntil(disk, ends, end, Below(2) == 0).disk;
        const bool isProcess = Below(3) == 0;
        isProcess ? next.EndProcess() : next.EndMachine(ByChance());
        Follow(next, ends + 1,
               story + " then at " + std::to_string(end) + (isProcess ? " process," : " machine,"));
    }
}

/// What is wrong with the accounts after a run that nothing has disturbed; empty when all is right.
std::string CrashTest::Complaint(const SOutcome& last) const {
    const SEventLedger& events = last.disk.events;
    std::map<int, std::size_t> stored, away;
    std::string complaint = ComplaintOfFiles(last, stored) + ComplaintOfState(last, stored);
    for (const auto& [path, bytes] : last.disk.Files("C:\\moved"))
        for (const int event : RecordsOf(bytes).events)
            ++away[event];
    const std::string log = last.Log() + events.toldElsewhere;
    std::map<int, std::size_t> missing, absent;
    for (const int event : events.handedOver) {
        const std::string name = " event " + std::to_string(event);
        if (stored[event] > 1)
            complaint += name + " is stored " + std::to_string(stored[event]) + " times;";
        if (stored[event] > 0 && away[event] > 0 &&
            log.find(" of a visit that was ended ") == std::string::npos)
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
        const bool isAside = path.ends_with(".setaside");
        const SRecords records = isAside ? RecordsOf(bytes) : SRecords();
        for (const int event : records.events)
            ++stored[event];
        if (!records.isSound)
            complaint += " " + path + " is damaged;";
        const std::string told = isAside ? " set aside in " + DisplayPath(path) + ": "
                                         : path.substr(path.rfind('\\') + 1) + " is damaged";
        // Records that the journal has refused go into a file that only the log names.
        const bool mayBeUntold = bytes.empty() || (isAside && test.isRefusedOnce);
        if (!mayBeUntold && last.Log().find(told) == std::string::npos)
            complaint += " " + path + " is left without a word;";
    }
    return complaint;
}

/// Only what no journal has can be torn for good.
std::string CrashTest::ComplaintOfFiles(const SOutcome& last, std::map<int, std::size_t>& stored) const {
    const bool mayBeTorn = (test.isRefusedOnce || *test.locked != '\0') &&
                           last.Log().find(" does not end with a whole record") != std::string::npos;
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

} // namespace

TEST_P(CrashTest, EveryEventIsAccountedFor) {
    const char* const wanted = std::getenv("RUVO_CRASH_STATES");
    const std::size_t budget =
        (wanted != nullptr ? std::strtoul(wanted, nullptr, 10) : kUsualStates) / std::size(kCases);
    const SMemoryDisk start = Start();
    SOutcome clean = Run(start, 0);
    if (test.abortedAt > 0) {
        std::size_t events = 0, call = 0;
        while (events < test.abortedAt)
            events += clean.notes.calls.at(call++).operation == sim::EOperation::GetEvent ? 1 : 0;
        abort = {call, EServerFault::Status, 18};
        clean = Run(start, 0);
    }
    EXPECT_EQ(Complaint(clean), "") << clean.Log();
    const std::size_t ends = 2 * (clean.disk.operations + 1); // each with and without a part of a write
    const std::size_t step = 1 + 3 * ends / budget;
    for (std::size_t round = 1; states < budget; ++round)
        for (std::size_t n = Below(step); n < ends; n += step) {
            SMemoryDisk disk = start;
            disk.locked = test.locked;
            disk.full = test.full;
            disk.fullAt = test.fullAt + Below(test.fullWithin);
            const SMemoryDisk ended = RunUntil(disk, 0, n / 2 + 1, n % 2 == 1).disk;
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
