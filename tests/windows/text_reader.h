// The profile reader of systems that have no profile functions, made usable beside the system's own.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace ruvo::test {

/// What the reader answers about a file that it has taken apart once.
struct STextReader {
    std::function<std::string(std::string_view section, std::string_view key, std::string_view defaultValue,
                              std::size_t capacity)>
        read;
    std::function<std::vector<std::string>(std::size_t capacity)> sectionNames;
};

STextReader ReadAsText(const std::string& path);

} // namespace ruvo::test
