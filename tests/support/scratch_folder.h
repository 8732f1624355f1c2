// A folder of a test's own, removed at the end.
#pragma once

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <stdexcept>
#include <string>

namespace ruvo {

class CScratchFolder {
public:
    explicit CScratchFolder(const std::filesystem::path& parent = std::filesystem::temp_directory_path())
        : m_native((parent / ("ruvo-test-" + std::to_string(std::random_device{}()))).string()) {
        if (!std::filesystem::create_directory(m_native))
            throw std::runtime_error("no folder for the test"); // nothing outside may be written or removed
        std::filesystem::permissions(m_native, std::filesystem::perms::owner_all);
    }
    CScratchFolder(const CScratchFolder&) = delete;
    CScratchFolder& operator=(const CScratchFolder&) = delete;
    ~CScratchFolder() { std::filesystem::remove_all(m_native); }

    std::string Native(const std::string& name = "") const {
        return name.empty() ? m_native : m_native + "/" + name;
    }
    /// The Windows-form path of a name in the folder, or of the folder itself.
    std::string Path(const std::string& name = "") const {
        std::string path = m_native[0] == '/' ? "C:" + m_native : m_native;
        std::ranges::replace(path, '/', '\\');
        return name.empty() ? path : path + "\\" + name;
    }
    /// Makes the folders that are missing on the way.
    std::string Write(const std::string& name, const std::string& bytes) const {
        std::error_code ignored;
        std::filesystem::create_directories(std::filesystem::path(Native(name)).parent_path(), ignored);
        std::ofstream(Native(name), std::ios::binary) << bytes;
        return Path(name);
    }
    std::string Read(const std::string& name) const {
        std::ifstream file(Native(name), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    bool Has(const std::string& name) const { return std::filesystem::exists(Native(name)); }

private:
    std::string m_native;
};

} // namespace ruvo
