#include "platform/profile.h"

#include "base/text.h"
#include "platform/text_file.h"

#include "platform/ini_text.h"

#include <algorithm>

namespace ruvo {

namespace {

// A default loses the blanks (not the tabs) at its end and one pair of quotes around the rest.
std::string_view CleanDefault(std::string_view text) {
    text = TrimEnd(text, kBlank);
    const bool quoted =
        text.size() >= 2 && text.front() == text.back() && (text.front() == '"' || text.front() == '\'');
    return quoted ? text.substr(1, text.size() - 2) : text;
}

} // namespace

struct CProfileReader::SState {
    bool isRead = false;
    CIniText ini; // what cannot be read answers like an empty file
};

CProfileReader::CProfileReader(const std::string& path) {
    std::string text;
    const bool isRead = ReadTextFile(path, text);
    m_state = std::make_unique<SState>(SState{isRead, CIniText::Parse(text)});
}

CProfileReader::~CProfileReader() = default;

const CIniText* CProfileReader::Text() const {
    return m_state->isRead ? &m_state->ini : nullptr;
}

std::vector<std::string> CProfileReader::SectionNames(std::size_t capacity) const {
    constexpr std::size_t kEndOfList = 2; // the last name's NUL and the list's, kept when a list is cut
    std::size_t room = capacity - std::min(capacity, kEndOfList);
    std::vector<std::string> names;
    for (const SIniSection& section : m_state->ini.Sections()) {
        if (room == 0) {
            break;
        }
        if (!section.name.empty()) {
            names.push_back(section.name.substr(0, room));
            room -= std::min(room, section.name.size() + 1);
        }
    }
    return names;
}

std::vector<std::string> CProfileReader::KeyNames(std::string_view section) const {
    return m_state->ini.KeyNames(section);
}

std::string CProfileReader::ReadString(std::string_view section, std::string_view key,
                                       std::string_view defaultValue, std::size_t capacity) const {
    const SIniEntry* const entry = m_state->ini.FindEntry(section, key);
    const bool found = entry != nullptr && entry->value;
    const std::string_view answer = found ? *entry->value : CleanDefault(defaultValue);
    return std::string(answer.substr(0, capacity - std::min<std::size_t>(capacity, 1)));
}

} // namespace ruvo
