#include "tools/archive/archive_cells.h"

#include "base/json_writer.h"
#include "model/records/block_layout.h"
#include "tools/archive/archive_row.h"
#include "tools/events/event_fields.h"

#include <algorithm>
#include <array>
#include <span>
#include <utility>

namespace ruvo {

namespace {

/// JSON in which what differs from record to record is left out.
class CPieces {
public:
    CPieces() { m_pieces.Open('['); }

    CJsonWriter& Json() { return m_json; }
    /// The inside of a JSON string.
    void InsertText(std::string_view cp1252) {
        std::string text;
        AppendJsonRelayText(text, cp1252);
        ReplaceEscapedNuls(text);
        m_pieces.Signed(Insert(std::span(reinterpret_cast<const std::uint8_t*>(text.data()), text.size())));
    }
    void InsertBytes(const CParlaneData& value) {
        std::array<std::uint8_t, kMaxStoredData> buffer;
        std::uint32_t code = 0;
        std::size_t size = 0;
        value.GetWireBytes(buffer, code, size);
        m_pieces.Signed(-Insert(std::span(buffer).first(std::min(size, buffer.size()))));
    }
    SStoredCells Take() {
        EndPiece();
        m_pieces.Close(']');
        return std::move(m_stored);
    }

private:
    std::int64_t Insert(std::span<const std::uint8_t> bytes) {
        constexpr int kSizeBits = 16;
        EndPiece();
        const auto begin = static_cast<std::int64_t>(m_stored.bytes.size());
        m_stored.bytes.insert(m_stored.bytes.end(), bytes.begin(), bytes.end());
        return (begin << kSizeBits) + static_cast<std::int64_t>(bytes.size());
    }
    void EndPiece() {
        ReplaceEscapedNuls(m_piece);
        m_pieces.Text(m_piece);
        m_piece.clear();
    }

    SStoredCells m_stored;
    CJsonWriter m_pieces{m_stored.pieces};
    std::string m_piece;
    CJsonWriter m_json{m_piece};
};

void AddCell(const CCell& cell, CPieces& pieces) {
    CJsonWriter& json = pieces.Json();
    json.Open('{');
    json.Key("template").RelayText(cell.GetLabelTemplate());
    json.Key("text");
    if (const std::string text = cell.GetText(); text != cell.GetLabelTemplate()) {
        json.PlainText([&](std::string& /*out*/) { pieces.InsertText(text); });
    } else {
        json.RelayText(text);
    }
    json.Key("value");
    if (const CParlaneData* const value = cell.GetValue(); IsValue(value)) {
        json.Open('{');
        json.Key("code").Number(value->GetTypeCode());
        json.Key("bytes").PlainText([&](std::string& /*out*/) { pieces.InsertBytes(*value); });
        json.Close('}');
    } else {
        json.Null();
    }
    json.Key("bits").Open('[');
    for (const std::string& name : BitNamesOf(cell)) {
        json.RelayText(name);
    }
    json.Close(']');
    json.Close('}');
}

} // namespace

SStoredCells StoreCells(const CCellList& cells) {
    CPieces pieces;
    pieces.Json().Open('[');
    for (const auto& cell : cells) {
        AddCell(*cell, pieces);
    }
    pieces.Json().Close(']');
    return pieces.Take();
}

} // namespace ruvo
