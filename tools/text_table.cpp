#include "tools/text_table.h"

#include "base/text.h"
#include "tools/text_encoding.h"

#include <algorithm>

namespace ruvo {

void AppendTable(std::string& out, const std::vector<TableRow>& rows, std::size_t leftColumns) {
    std::vector<std::size_t> widths(rows.empty() ? 0 : rows.front().size());
    for (const TableRow& row : rows) {
        for (std::size_t column = 0; column < row.size(); ++column) {
            widths[column] = std::max(widths[column], ColumnsOf(row[column]));
        }
    }
    for (const TableRow& row : rows) {
        const std::size_t start = out.size();
        for (std::size_t column = 0; column < row.size(); ++column) {
            const std::string blanks(widths[column] - ColumnsOf(row[column]), ' ');
            out += column > 0 ? "  " : "";
            out += column < leftColumns ? row[column] + blanks : blanks + row[column];
        }
        EraseTrailingBlanks(out, start);
        out += '\n';
    }
}

} // namespace ruvo
