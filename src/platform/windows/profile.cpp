#include "platform/profile.h"

#include "platform/windows/system.h"

#include <algorithm>

namespace ruvo {

struct CProfileReader::SState {
    std::string path;
};

CProfileReader::CProfileReader(const std::string& path) : m_state(std::make_unique<SState>(SState{path})) {}

CProfileReader::~CProfileReader() = default;

std::vector<std::string> CProfileReader::SectionNames(std::size_t capacity) const {
    std::string list(capacity, '\0');
    const DWORD length =
        GetPrivateProfileSectionNamesA(list.data(), static_cast<DWORD>(capacity), m_state->path.c_str());
    list.resize(std::min<std::size_t>(length, capacity));
    std::vector<std::string> names;
    for (std::size_t at = 0; at < list.size();) {
        names.emplace_back(list.c_str() + at); // up to the name's NUL, or to the end of a list that was cut
        at += names.back().size() + 1;
    }
    return names;
}

bool CProfileReader::MayHoldKeys(std::string_view /*section*/) const {
    return true;
}

std::string CProfileReader::ReadString(std::string_view section, std::string_view key,
                                       std::string_view defaultValue, std::size_t capacity) const {
    std::string value(capacity, '\0');
    const DWORD length = GetPrivateProfileStringA(std::string(section).c_str(), std::string(key).c_str(),
                                                  std::string(defaultValue).c_str(), value.data(),
                                                  static_cast<DWORD>(capacity), m_state->path.c_str());
    value.resize(std::min<std::size_t>(length, capacity));
    return value;
}

} // namespace ruvo
