#include "rig.h"

#include <fstream>

namespace ruvo::test {

Variant Tagged(std::uint8_t type, Variant::Bytes data) {
    data.insert(data.begin(), {type, static_cast<std::uint8_t>(data.size())});
    return Variant::FromBytes(std::move(data));
}

std::string Folder() {
    return std::filesystem::temp_directory_path().string() + "com_test_" +
           std::to_string(GetCurrentProcessId());
}

bool AwaitNoServer() {
    const auto end = std::chrono::steady_clock::now() + 20s;
    while (!ServerProcesses().empty()) {
        if (std::chrono::steady_clock::now() > end)
            return false;
        std::this_thread::sleep_for(50ms);
    }
    return true;
}

const std::string kSubstation = R"(
[link]
serial = ["COM1"]
modems = ["M\u00F6dem"]
[[relay]]
serial = 5
modem = { number = "0123", address = 6 }
identity = { plant = "Bay 3" }
[relay.cells]
"05.02" = { uint = 7, size = 2, label = "Voltage" }
"05.03" = { uint = 9, size = 1, writable = true, limits = [{ uint = 0, size = 1 }, { uint = 20, size = 1 }] }
"05.04" = { index = 1, strings = ["Off", { none = true }, { other = true }] }
"BF.15" = { int = -2, size = 2 }
[[relay.event]]
kind = 0
location = "05.02"
time = 2026-03-05T14:07:09
text = "T"
value = { none = true }
)";

void Server::Serve(const std::string& toml) {
    std::ofstream(File(), std::ios::binary) << toml;
}

} // namespace ruvo::test
