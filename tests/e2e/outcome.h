// What a run left behind, in a form that does not change from run to run.
#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <regex>
#include <string>

namespace ruvo::test {

inline std::string FileBytes(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// The error log without its time stamps, one problem a line.
inline std::string WithoutTimeStamps(const std::string& log) {
    return std::regex_replace(log, std::regex("[^\r\n]{20}([^\r\n]*)\r\n"), "$1\n");
}

/// All files below a folder by path, the date of the run replaced by "DATE" unless it is to be kept. None
/// when there is no such folder.
inline std::map<std::string, std::string> FilesBelow(const std::filesystem::path& folder,
                                                     bool keepsDates = false) {
    std::map<std::string, std::string> files;
    if (!std::filesystem::exists(folder))
        return files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
        if (!entry.is_regular_file())
            continue;
        std::string name = entry.path().lexically_relative(folder).generic_string();
        if (const std::size_t date = name.rfind("-DEV.evt");
            !keepsDates && date != std::string::npos && date > 10)
            name.replace(date - 10, 10, "DATE");
        files[name] = FileBytes(entry.path());
    }
    return files;
}

/// Trace lines with "TIME" in the place of the times at which security events were seen.
inline std::string WithoutTimes(const std::string& trace) {
    return std::regex_replace(trace, std::regex("(Security Event : ).{23}"), "$1TIME");
}

} // namespace ruvo::test
