#include "platform/environment.h"

#include "platform/windows/system.h"

namespace ruvo {

std::optional<std::string> EnvironmentValue(const char* name) {
    std::string value;
    DWORD size = GetEnvironmentVariableA(name, nullptr, 0); // with the NUL
    while (size > value.size()) {                           // again when it grew in between
        value.resize(size);
        size = GetEnvironmentVariableA(name, value.data(), size);
    }
    value.resize(size);
    return value.empty() ? std::nullopt : std::optional(std::move(value));
}

void SetEnvironmentValue(const std::string& name, const std::string& value) {
    SetEnvironmentVariableA(name.c_str(), value.c_str());
}

void ClearEnvironmentValue(const std::string& name) {
    SetEnvironmentVariableA(name.c_str(), nullptr);
}

std::vector<std::string> WholeEnvironment() {
    std::vector<std::string> variables;
    char* const block = GetEnvironmentStringsA();
    for (const char* at = block; at != nullptr && *at != '\0'; at += variables.back().size() + 1) {
        variables.emplace_back(at);
    }
    if (block != nullptr) {
        FreeEnvironmentStringsA(block);
    }
    return variables;
}

} // namespace ruvo
