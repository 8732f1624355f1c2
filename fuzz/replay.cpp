// Runs a target over files, where there is no fuzzer: arguments are files, and folders of files. A folder
// that does not exist holds none. The last line is the number of inputs; none at all is a failure.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

void RunFile(const std::filesystem::path& path) {
    std::printf("%s\n", path.c_str());
    std::fflush(stdout); // so that the last line names the input that ended the process
    std::ifstream file(path, std::ios::binary);
    const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
    // In an array of their own, so that reading past its end is seen where memory is checked.
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
}

std::size_t RunAll(const std::filesystem::path& path) {
    if (!std::filesystem::is_directory(path)) {
        const bool exists = std::filesystem::exists(path);
        if (exists) {
            RunFile(path);
        }
        return exists ? 1 : 0;
    }
    std::size_t count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(path)) {
        RunFile(entry.path());
        ++count;
    }
    return count;
}

} // namespace

int main(int argc, char** argv) {
    std::size_t count = 0;
    for (int i = 1; i < argc; ++i) {
        count += RunAll(argv[i]);
    }
    std::printf("%zu inputs\n", count);
    return count > 0 ? 0 : 1;
}
