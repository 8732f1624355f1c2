#include "platform/profile.h"

#include "platform/ini_text.h"
#include "platform/text_file.h"
#include "platform/windows/system.h"

#include <algorithm>
#include <optional>

namespace ruvo {

namespace {

/// The names in a list of them, each ended by a NUL, or by the end of a list that was cut.
std::vector<std::string> SplitNames(const std::string& list) {
    std::vector<std::string> names;
    for (std::size_t at = 0; at < list.size();) {
        names.emplace_back(list.c_str() + at);
        at += names.back().size() + 1;
    }
    return names;
}

} // namespace

struct CProfileReader::SState {
    std::string path;
    std::optional<CIniText> ini; // after the first question for it
};

CProfileReader::CProfileReader(const std::string& path)
    : m_state(std::make_unique<SState>(SState{path, std::nullopt})) {}

CProfileReader::~CProfileReader() = default;

const CIniText* CProfileReader::Text() const {
    std::string text;
    if (!m_state->ini && ReadTextFile(m_state->path, text)) {
        m_state->ini = CIniText::Parse(text);
    }
    return m_state->ini ? &*m_state->ini : nullptr;
}

std::vector<std::string> CProfileReader::SectionNames(std::size_t capacity) const {
    std::string list(capacity, '\0');
    const DWORD length =
        GetPrivateProfileSectionNamesA(list.data(), static_cast<DWORD>(capacity), m_state->path.c_str());
    list.resize(std::min<std::size_t>(length, capacity));
    return SplitNames(list);
}

std::vector<std::string> CProfileReader::KeyNames(std::string_view section) const {
    constexpr std::size_t kFirstCapacity = std::size_t{64} * 1024;
    constexpr std::size_t kEndOfList = 2; // a list that was cut is shorter than its buffer by two NULs
    const std::string name(section);
    for (std::size_t capacity = kFirstCapacity;; capacity *= 2) {
        std::string list(capacity, '\0');
        const DWORD length = GetPrivateProfileStringA(name.c_str(), nullptr, "", list.data(),
                                                      static_cast<DWORD>(capacity), m_state->path.c_str());
        if (length < capacity - kEndOfList) {
            list.resize(length);
            return SplitNames(list);
        }
    }
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
