// How long the fetching of an event takes through COM, directly, and in the conversions between the two.
#include "link/seam/server_connection.h"
#include "link/windows/variant_conversion.h"
#include "platform/com_runtime.h"
#include "platform/modules.h"
#include "sim/server/simulated_connection.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace ruvo::test {
namespace {

constexpr int kEvents = 2000;

struct SEvent {
    Variant kind, values, more, status;
};

double Microseconds(std::chrono::steady_clock::time_point begin, int count) {
    return std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - begin).count() /
           count;
}

/// Fetches all events; the time of each on average, negative when one could not be had.
double TimeEvents(IServerConnection& connection, SEvent& event) {
    IP32ls& server = connection.Server();
    std::int32_t opened = -1;
    const Variant address = Variant::FromUI1(5);
    const bool called =
        server.OpenPort(Variant::FromText("COM1"), Variant::FromText(""), event.status) == EComResult::Ok;
    if (!called || !event.status.ToI4(opened) || opened != 0) {
        return -1;
    }
    const auto begin = std::chrono::steady_clock::now();
    for (int i = 0; i < kEvents; ++i) {
        std::int32_t status = -1;
        if (server.GetEvent(address, event.kind, event.values, event.more, event.status) != EComResult::Ok ||
            !event.status.ToI4(status) || status != 0) {
            return -1;
        }
    }
    return Microseconds(begin, kEvents);
}

/// Both sides' work on one event: five values to the system and back.
double TimeConversions(const SEvent& event) {
    const auto begin = std::chrono::steady_clock::now();
    for (int i = 0; i < kEvents; ++i) {
        for (const Variant* value : {&event.kind, &event.kind, &event.values, &event.more, &event.status}) {
            COwnedVariant native;
            ToVariant(*value, native);
            if (FromVariant(native.Get()) != *value) {
                return -1;
            }
        }
    }
    return Microseconds(begin, kEvents);
}

int Run() {
    const std::filesystem::path file = std::filesystem::temp_directory_path() / "timing.toml";
    std::ofstream(file) << "link.serial = [\"COM1\"]\n[[relay]]\nserial = 5\ngenerate = { count = " << kEvents
                        << ", kinds = [0, 1], seed = 7 }\ncells.\"05.02\" = { uint = 1, label = \"L\" }\n";
    const std::string command =
        "\"\"" + CodeFolder() + "\\p32ls-sim.exe\" /RegServer \"" + file.string() + "\"\"";
    if (std::system(command.c_str()) != 0) {
        return 1;
    }
    SEvent event;
    std::string refusal;
    const auto direct = sim::ConnectToSubstation(file.string(), refusal);
    const double directTime = direct ? TimeEvents(*direct, event) : -1;
    const double conversionTime = TimeConversions(event);
    const auto remote = ConnectToServer();
    const double remoteTime = remote ? TimeEvents(*remote, event) : -1;
    std::printf("GetEvent, microseconds on average of %d\n"
                "through COM        %8.1f\ndirectly           %8.1f\nconversions alone  %8.1f (%.1f %%)\n",
                kEvents, remoteTime, directTime, conversionTime, 100 * conversionTime / remoteTime);
    return remoteTime < 0 || directTime < 0 || conversionTime < 0 ? 1 : 0;
}

} // namespace
} // namespace ruvo::test

int main() {
    if (!ruvo::StartComRuntime()) {
        return 1;
    }
    const int status = ruvo::test::Run();
    ruvo::StopComRuntime();
    return status;
}
