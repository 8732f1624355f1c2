#include "platform/profile.h"

#include "platform/ini_text.h"
#include "platform/text_file.h"
#include "platform/windows/wide_text.h"

#include <algorithm>
#include <optional>

namespace ruvo {

namespace {

/// The names in a list of them, each ended by a NUL, or by the end of a list that was cut.
std::vector<std::string> SplitNames(std::wstring_view list) {
    std::vector<std::string> names;
    while (!list.empty()) {
        const std::wstring_view name = list.substr(0, list.find(L'\0'));
        names.push_back(Narrow(name));
        list.remove_prefix(std::min(name.size() + 1, list.size()));
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
    std::wstring list(capacity, L'\0');
    const DWORD length = GetPrivateProfileSectionNamesW(list.data(), static_cast<DWORD>(capacity),
                                                        Wide(m_state->path).c_str());
    list.resize(std::min<std::size_t>(length, capacity));
    return SplitNames(list);
}

std::vector<std::string> CProfileReader::KeyNames(std::string_view section) const {
    constexpr std::size_t kFirstCapacity = std::size_t{64} * 1024;
    constexpr std::size_t kEndOfList = 2; // a list that was cut is shorter than its buffer by two NULs
    const std::wstring name = Wide(section);
    for (std::size_t capacity = kFirstCapacity;; capacity *= 2) {
        std::wstring list(capacity, L'\0');
        const DWORD length =
            GetPrivateProfileStringW(name.c_str(), nullptr, L"", list.data(), static_cast<DWORD>(capacity),
                                     Wide(m_state->path).c_str());
        if (length < capacity - kEndOfList) {
            list.resize(length);
            return SplitNames(list);
        }
    }
}

std::string CProfileReader::ReadString(std::string_view section, std::string_view key,
                                       std::string_view defaultValue, std::size_t capacity) const {
    std::wstring value(capacity, L'\0');
    const DWORD length =
        GetPrivateProfileStringW(Wide(section).c_str(), Wide(key).c_str(), Wide(defaultValue).c_str(),
                                 value.data(), static_cast<DWORD>(capacity), Wide(m_state->path).c_str());
    value.resize(std::min<std::size_t>(length, capacity));
    return Narrow(value);
}

} // namespace ruvo
