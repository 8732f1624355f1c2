// The profile reader of systems that have no profile functions, made usable beside the system's own.
#pragma once

#include <string>
#include <vector>

namespace ruvo::test {

/// Reads from a file that the reader has taken apart once.
class CTextReader {
public:
    explicit CTextReader(const std::string& path);
    CTextReader(const CTextReader&) = delete;
    CTextReader& operator=(const CTextReader&) = delete;
    ~CTextReader();

    std::string Read(const std::string& section, const std::string& key, const std::string& defaultValue,
                     std::size_t capacity) const;
    std::vector<std::string> SectionNames(std::size_t capacity) const;

private:
    void* m_reader;
};

} // namespace ruvo::test
