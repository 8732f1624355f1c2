// An INI file as bytes, to edit one entry at a time: whatever is not the entry stays byte for byte.
#pragma once

#include "platform/ini_text.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace ruvo {

/// Why a run cannot read what these bytes say; empty when it can.
std::string_view WhyNotReadable(std::string_view bytes);

/// The bytes of an INI file and what they say. Values that are set are plain ASCII without line ends.
class CIniDocument {
public:
    explicit CIniDocument(std::string bytes);

    const std::string& Bytes() const { return m_bytes; }
    const CIniText& Ini() const { return m_ini; }
    /// Why these bytes cannot be edited and stay what they are; empty when they can.
    std::string_view WhyNotEditable() const;

    /// Replaces the value of the entry that is read; adds the entry when there is none: after the
    /// relay key before it in its section, and the section at the end of the file.
    void Set(std::string_view section, std::string_view key, std::string_view value);
    /// Takes every line of the key out of the section that is read. None of them would be missed, and the
    /// next one would count if only the first went.
    void Remove(std::string_view section, std::string_view key);

private:
    /// Where a line is in the text.
    struct SLine {
        std::size_t begin = 0;
        std::size_t end = 0;  ///< of what it says
        std::size_t next = 0; ///< after its line end
    };

    void Splice(std::size_t begin, std::size_t end, std::string_view with);
    std::size_t ByteAt(std::size_t textAt) const;
    std::size_t SizeInBytes(std::string_view text) const;
    SLine Line(std::size_t number) const;
    SLine NextLine(const SLine& line) const;
    std::string LineEnd(const SLine& like) const;
    void InsertLine(std::size_t after, const std::string& line);
    void ChangeLine(std::size_t number, std::string_view value);

    std::string m_bytes;
    std::string m_text; ///< the same in UTF-8, as the lines are counted and cut
    CIniText m_ini;
};

/// One change, to be found again in what an edit made.
struct SIniChange {
    std::string_view section;
    std::string_view key;
    const std::string* value = nullptr; ///< null for an entry that is taken out
};

/// True when `after` says what `before` said but for the change: same sections, same entries, same comments,
/// in the same order, and the changed entry reads as it should.
[[nodiscard]] bool IsOnlyChange(const CIniText& before, const CIniText& after, const SIniChange& change);

} // namespace ruvo
