#include "fault_rig.h"

#include <fstream>
#include <iterator>
#include <regex>

namespace ruvo {

std::unique_ptr<IServerConnection> ConnectToServer() {
    return g_connect();
}

namespace test {

sim::SSubstation LoadSubstation(const std::string& text) {
    const sim::SLoadedSubstation loaded = sim::ReadSubstation(text, "substation.toml", "C:");
    EXPECT_EQ(loaded.error, "");
    return *loaded.substation;
}

sim::SSubstation LoadFor(int generation) {
    std::ifstream file(RUVO_TEST_DATA "/faults/substation.toml");
    std::string text{std::istreambuf_iterator<char>(file), {}};
    const std::string login = generation == 0   ? R"(password = "SECRET78", length = 8)"
                              : generation == 1 ? R"(password = "SECRET78")"
                                                : R"(users = [{ name = "A", password = "SECRET78" }])";
    text = std::regex_replace(text, std::regex("GENERATION"), std::to_string(generation));
    return LoadSubstation(std::regex_replace(text, std::regex("LOGIN"), login));
}

SRecords RecordsOf(const std::string& bytes) {
    g_disk = {};
    g_disk.Put("C:\\day", bytes);
    SRecords records;
    CDayFileReader reader;
    EXPECT_TRUE(reader.Open("C:\\day").Good());
    for (SDayFileItem item; reader.Next(item); records.isSound = records.isSound && !item.damage) {
        records.count += item.record != nullptr ? 1 : 0;
        for (const int event :
             EventsIn({reinterpret_cast<const char*>(item.bytes.data()), item.bytes.size()}))
            records.events.push_back(event);
    }
    return records;
}

std::size_t CountRecords(const SMemoryDisk& disk, std::string_view ending) {
    std::size_t count = 0;
    for (const auto& [path, bytes] : disk.Files()) {
        const SRecords records = path.ends_with(ending) ? RecordsOf(bytes) : SRecords{};
        EXPECT_TRUE(records.isSound) << path << " is damaged";
        count += records.count;
    }
    return count;
}

} // namespace test

} // namespace ruvo
