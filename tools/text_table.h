// Tables for reading.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace ruvo {

/// Of cells, which are UTF-8 without control characters.
using TableRow = std::vector<std::string>;

/// Appends the rows, with columns as wide as their widest cell. The first `leftColumns` are aligned left; the
/// others hold numbers and are aligned right.
void AppendTable(std::string& out, const std::vector<TableRow>& rows, std::size_t leftColumns);

} // namespace ruvo
