// A complete run over a simulated substation, on a disk in memory, in which something goes wrong.
#pragma once

#include "faulty_core.h"
#include "memory_disk.h"
#include "support/fake_system.h"

#include "dayfile/day_file_reader.h"
#include "log/connection_details.h"
#include "log/error_log.h"
#include "run/extraction_run.h"
#include "run/link_control.h"
#include "run/run_end.h"
#include "sim/server/simulated_server.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>

namespace ruvo {

inline std::function<std::unique_ptr<IServerConnection>()> g_connect; ///< the only way to a server

namespace test {

// The relays of substation.toml. Between the two a run visits one that does not answer, so that each log has
// something to say.
inline constexpr int kTested = 1; ///< with a login; its day file is there already
inline constexpr int kNext = 6;   ///< whose folder and day file have to be made

enum class ELinkType : std::uint8_t { Serial, Modem, Ethernet };

[[nodiscard]] sim::SSubstation LoadSubstation(const std::string& text);
[[nodiscard]] sim::SSubstation LoadFor(int generation);

class CFaultyConnection final : public IServerConnection {
public:
    CFaultyConnection(const sim::SSubstation& substation, SServerFault fault, SServerNotes& notes)
        : m_core(substation, m_sinks, fault, notes), m_server(m_core) {}
    IP32ls& Server() override { return m_server; }
    bool Advise(IP32lsSink_v2& sink, std::uint32_t& cookie) override {
        return (cookie = m_sinks.Add(sink)) != 0;
    }
    void Unadvise(std::uint32_t cookie) override { m_sinks.Remove(cookie); }

private:
    sim::CSinkList m_sinks;
    CFaultyCore m_core;
    sim::CSimulatedServer m_server;
};

struct SOutcome {
    SMemoryDisk disk;
    std::string debug;
    SServerNotes notes;
    std::size_t allocations = 0;

    std::string Log() const {
        const auto node = disk.Find("C:\\run.log");
        return node ? disk.nodes[*node].bytes : "";
    }
    /// What a line lost to the log is told to counts as well.
    bool IsTold(const std::string& text) const { return (Log() + debug).find(text) != std::string::npos; }
    /// Events that the lines of the run say are lost; all, or those of one relay.
    std::size_t CountLost() const { return LostIn(Log() + debug); }
    /// Events that they say wait in the journal.
    std::size_t CountWaiting() const {
        return LostIn(Log() + debug, " waits in the journal for") +
               LostIn(Log() + debug, " wait in the journal for");
    }
    std::size_t CountSetAside() const { return LostIn(Log() + debug, " set aside in "); }
    static std::size_t LostIn(const std::string& told,
                              std::string_view mark = " taken from the relay, but not stored.") {
        std::size_t lost = 0;
        for (std::size_t at = told.find(mark); at != std::string::npos; at = told.find(mark, at + 1))
            lost += std::stoul(told.substr(told.rfind(' ', told.rfind(' ', at - 1) - 1) + 1));
        return lost;
    }
    static std::string DayFilePath(int address) {
        const std::string name = "AB12-000" + std::to_string(address);
        return "C:\\ev\\" + name + "\\" + name + "-2026-11-16-DEV.evt";
    }
    /// The bytes of a relay's day file; none when there is no file.
    std::optional<std::string> DayFile(int address) const {
        const auto node = disk.Find(DayFilePath(address));
        return node ? std::optional(disk.nodes[*node].bytes) : std::nullopt;
    }
};

/// The records of a day file's bytes, and whether all of them make sense.
struct SRecords {
    std::size_t count = 0;
    bool isSound = true;
    std::vector<int> events{}; ///< the numbers in their texts
};
SRecords RecordsOf(const std::string& bytes);
/// Records in all files of that kind, which must be sound.
std::size_t CountRecords(const SMemoryDisk& disk, std::string_view ending = ".evt");

class CFaultRig {
public:
    /// Visits relays without a login at the addresses 1 and 6, over a serial link.
    explicit CFaultRig(sim::SSubstation relays) : substation(std::move(relays)) {
        m_fields.errorLogPath = "C:\\run.log";
        m_fields.commPort = "COM1";
        m_fields.serialEntries = {{"RV001", kTested}, {"RV003", kNext}};
    }
    CFaultRig(int generation, ELinkType link) : CFaultRig(LoadFor(generation)) {
        m_fields.useModem = link == ELinkType::Modem ? 1 : 0;
        m_fields.useEthernet = link == ELinkType::Ethernet ? 1 : 0;
        m_fields.tapiModemName = "Acme";
        m_fields.tapiNumberToDial = "555";
        m_fields.modemEntries = m_fields.serialEntries = {{"RV001", kTested}, {"RV002", 2}, {"RV003", kNext}};
        m_fields.ethernetEntries = {
            {"RV001", "10.0.0.1,1"}, {"RV002", "10.0.0.6,2"}, {"RV003", "10.0.0.6,6"}};
        m_fields.passwords = {{"RV001", std::string(kSecret)}};
        // Users log in as in a program that has user names.
        CP32Wrap::SetUsernamePasswordCallback([](auto&, char** buffer, auto, auto*, auto*, auto, int code,
                                                 auto) { return Supply(*buffer, code); });
        CP32Wrap::SetSecondEditionLoginCallback([](auto&, char** buffer, auto, auto*, auto, auto*, auto,
                                                   int code, auto) { return Supply(*buffer, code); });
        before.disk.PutFolder("C:\\ev");
        before.disk = Run({}).disk; // with the files that later runs append to
        before.disk.EndProcess();
        before.disk.Move("C:\\ev\\AB12-0006", "");
        before.disk.FlushAll();
        clean = Run({});
    }

    /// The run from the same start every time.
    SOutcome Run(SServerFault serverFault, const std::vector<SDiskFault>& diskFaults = {},
                 std::size_t failingAllocation = 0) {
        return RunOn(before.disk, serverFault, diskFaults, failingAllocation);
    }
    SOutcome RunOn(const SMemoryDisk& disk, SServerFault serverFault,
                   const std::vector<SDiskFault>& diskFaults = {}, std::size_t failingAllocation = 0) {
        SOutcome outcome;
        outcome.notes.onEvent = onEvent;
        g_connect = [&] {
            return std::make_unique<CFaultyConnection>(substation, serverFault, outcome.notes);
        };
        ResetConnectionDetails();
        g_debugOutput.clear();
        g_debugOutput.reserve(std::size_t{1} << 20); // what is told there needs no memory
        g_disk = disk;
        g_disk.faults = diskFaults;
        g_disk.operations = 0;
        Extract(failingAllocation);
        outcome.allocations = CFailingMemory::Count();
        ++m_runs;
        outcome.disk = std::move(g_disk);
        outcome.debug = g_debugOutput;
        return outcome;
    }

    SOutcome before; ///< only the disk
    SOutcome clean;  ///< a run in which nothing goes wrong
    sim::SSubstation substation;
    std::function<void(int address)> onEvent; ///< a relay has handed one over

private:
    static int Supply(char* buffer, int code) {
        std::ranges::copy(kSecret, buffer);
        return code == GETPASSWORD_PASS_REQUEST ? 0 : 1;
    }

    void Extract(std::size_t failingAllocation) const {
        CRunContext context;
        context.Config() = CRuvoConfig(m_fields);
        context.SetDestinationRoot("C:\\ev");
        ResolveErrorLogPath(context, true);
        CRunEnd end;
        const CFailingMemory memory(failingAllocation);
        try {
            if (CP32Wrap::CreateInstance() == kLinkGood)
                RunExtraction(context, end);
            else
                LogMessage("P32LS failed to open.", false);
        } catch (const std::bad_alloc&) {
            LogMessage("Unhandled exception occured.", false);
        }
        CloseLink(context);
        CP32Wrap::DestroyInstance();
    }

    /// A run that hangs ends the program, with a word on which one it was.
    void Watch(const std::stop_token& stop) const {
        constexpr int kPatience = 1200; // tenths of a second
        int idle = 0;
        for (std::size_t seen = 0; !stop.stop_requested() && idle < kPatience; seen = m_runs) {
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
            idle = seen == m_runs ? idle + 1 : 0;
        }
        if (idle == kPatience) {
            std::cerr << "Run " << m_runs + 1 << " hangs" << std::endl;
            std::abort();
        }
    }

    SRuvoConfigFields m_fields;
    std::atomic<std::size_t> m_runs = 0;
    std::jthread m_watch{[this](const std::stop_token& stop) { Watch(stop); }}; // last: it uses what is above
};

} // namespace test

} // namespace ruvo
