// Both readers bear one name, since a program has one of them. Here, and nowhere else, the text reader goes
// by another, so that one program can ask both.
#define CProfileReader CProfileTextReader
#include "platform/posix/profile.cpp"
#undef CProfileReader

#include "windows/text_reader.h"

namespace ruvo::test {

CTextReader::CTextReader(const std::string& path) : m_reader(new CProfileTextReader(path)) {}

CTextReader::~CTextReader() {
    delete static_cast<CProfileTextReader*>(m_reader);
}

std::string CTextReader::Read(const std::string& section, const std::string& key,
                              const std::string& defaultValue, std::size_t capacity) const {
    return static_cast<CProfileTextReader*>(m_reader)->ReadString(section, key, defaultValue, capacity);
}

std::vector<std::string> CTextReader::SectionNames(std::size_t capacity) const {
    return static_cast<CProfileTextReader*>(m_reader)->SectionNames(capacity);
}

} // namespace ruvo::test
