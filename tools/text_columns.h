// Rows of columns of fixed widths, in which long texts go on in the next line.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace ruvo {

/// Breaks a text into lines of at most `width` columns, at a blank where there is one. UTF-8.
[[nodiscard]] std::vector<std::string> WrapText(std::string_view utf8, std::size_t width);

struct STextColumn {
    std::string text; ///< UTF-8 without control characters
    std::size_t width = 0;
    bool isRight = false; ///< a number, aligned right
};

/// Appends as many lines as the longest text needs.
void AppendColumns(std::string& out, std::span<const STextColumn> columns);

} // namespace ruvo
