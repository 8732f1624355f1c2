// Texts made for a relay's display, whose control characters move a cursor: cleaned to one line, or laid out
// as lines.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace ruvo {

/// What the relay's display takes for a command, or cannot show: below 0x20. 0x7F is a letter of its set.
constexpr bool IsDisplayControl(char c) {
    return static_cast<unsigned char>(c) < ' ';
}

/// One line for reading: control characters that move become blanks up to their column, those that end a line
/// go, other ones become "."; blanks never follow a blank except where a column is padded.
[[nodiscard]] std::string CleanDisplayLine(std::string_view text);

/// Lines written through a cursor, as the relay's display would show them.
class CDisplayLayout {
public:
    CDisplayLayout() : m_lines(1) {}

    void Write(std::string_view text);
    /// True when the text said that it goes on elsewhere.
    [[nodiscard]] bool IsContinued() const { return m_continued; }
    /// The lines joined with "\n".
    [[nodiscard]] std::string GetText() const;

private:
    /// Lines can be padded far; a hostile text could fill the memory with blanks. What lies beyond is
    /// dropped.
    static constexpr std::size_t kMaxSize = std::size_t{256} * 1024;

    void WriteControl(char control);
    void Put(char c);
    void PadToMultiple(std::size_t columns);
    void PadToLength(std::size_t length);
    void NextLine();
    [[nodiscard]] std::string& Line() { return m_lines[m_line]; }

    std::vector<std::string> m_lines;
    std::size_t m_line = 0;
    std::size_t m_column = 0;
    std::size_t m_size = 0;
    bool m_continued = false;
};

} // namespace ruvo
