#include "tools/text_columns.h"

#include "base/text.h"
#include "tools/text_encoding.h"

#include <algorithm>

namespace ruvo {

namespace {

constexpr std::string_view kGap = "  ";

/// How many bytes the first `columns` characters take.
std::size_t BytesOfColumns(std::string_view utf8, std::size_t columns) {
    std::size_t at = 0;
    for (; at < utf8.size(); ++at) {
        const bool starts = (static_cast<unsigned char>(utf8[at]) & 0xC0U) != 0x80U;
        if (starts && columns-- == 0) {
            break;
        }
    }
    return at;
}

} // namespace

std::vector<std::string> WrapText(std::string_view text, std::size_t width) {
    std::vector<std::string> lines;
    while (ColumnsOf(text) > width) {
        const std::size_t fits = BytesOfColumns(text, width);
        std::size_t end = text.substr(0, fits + 1).rfind(' ');
        if (end == std::string_view::npos || end == 0) {
            end = fits;
        }
        lines.emplace_back(text.substr(0, end));
        text.remove_prefix(std::min(text.find_first_not_of(' ', end), text.size()));
    }
    lines.emplace_back(text);
    return lines;
}

void AppendColumns(std::string& out, std::span<const STextColumn> columns) {
    std::vector<std::vector<std::string>> cells;
    std::size_t height = 0;
    for (const STextColumn& column : columns) {
        cells.push_back(WrapText(column.text, column.width));
        height = std::max(height, cells.back().size());
    }
    for (std::size_t line = 0; line < height; ++line) {
        const std::size_t start = out.size();
        for (std::size_t at = 0; at < cells.size(); ++at) {
            const std::string cell = line < cells[at].size() ? cells[at][line] : std::string();
            const std::size_t width = columns[at].width;
            const std::size_t blanks = width - std::min(ColumnsOf(cell), width);
            out += at > 0 ? kGap : "";
            out.append(columns[at].isRight ? blanks : 0, ' ');
            out += cell;
            out.append(columns[at].isRight ? 0 : blanks, ' ');
        }
        EraseTrailingBlanks(out, start);
        out += '\n';
    }
}

} // namespace ruvo
