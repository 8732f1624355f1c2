#include "platform/environment.h"

#include "platform/windows/wide_text.h"

namespace ruvo {

std::optional<std::string> EnvironmentValue(const char* name) {
    const std::wstring wideName = Wide(name);
    std::wstring value;
    DWORD size = GetEnvironmentVariableW(wideName.c_str(), nullptr, 0); // with the NUL
    while (size > value.size()) {                                       // again when it grew in between
        value.resize(size);
        size = GetEnvironmentVariableW(wideName.c_str(), value.data(), size);
    }
    value.resize(size);
    return value.empty() ? std::nullopt : std::optional(Narrow(value));
}

void SetEnvironmentValue(const std::string& name, const std::string& value) {
    SetEnvironmentVariableW(Wide(name).c_str(), Wide(value).c_str());
}

void ClearEnvironmentValue(const std::string& name) {
    SetEnvironmentVariableW(Wide(name).c_str(), nullptr);
}

std::vector<std::string> WholeEnvironment() {
    std::vector<std::string> variables;
    wchar_t* const block = GetEnvironmentStringsW();
    for (const wchar_t* at = block; at != nullptr && *at != L'\0';) {
        const std::wstring_view variable(at);
        variables.push_back(Narrow(variable));
        at += variable.size() + 1;
    }
    if (block != nullptr) {
        FreeEnvironmentStringsW(block);
    }
    return variables;
}

} // namespace ruvo
