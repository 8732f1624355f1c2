#include "tools/archive/record_writer.h"

#include "tools/archive/archive_cells.h"
#include "tools/archive/archive_row.h"

namespace ruvo {

CRecordWriter::CRecordWriter(CDatabase& database)
    : m_database(database), m_texts(database),
      m_put(database,
            "INSERT INTO records (id, file_id, byte_offset, unique_id, event_code, time, "
            "time_invalid, summer_time, location, event, text, value, plant, description, model, "
            "cells, cell_bytes, bytes) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)"),
      m_index(database,
              "INSERT INTO records_text (rowid, event, text, value, plant) VALUES (?, ?, ?, ?, ?)") {}

void CRecordWriter::BindText(const std::string& text) {
    const std::optional<std::int64_t> number = m_texts.NumberOf(text);
    number ? m_put.Bind(*number) : m_put.Bind(text);
}

void CRecordWriter::Add(std::int64_t fileId, const SDayFileItem& item, std::optional<std::int64_t> id) {
    const SArchiveRow row = MakeArchiveRow(item);
    const SStoredCells cells = row.cells != nullptr ? StoreCells(*row.cells) : SStoredCells();
    id ? m_put.Bind(*id) : m_put.BindNull();
    m_put.Bind(fileId).Bind(static_cast<std::int64_t>(row.offset));
    m_put.Bind(std::int64_t{row.uniqueId}).Bind(std::int64_t{row.eventCode});
    row.time ? m_put.Bind(*row.time) : m_put.BindNull();
    m_put.Bind(std::int64_t{row.isTimeInvalid}).Bind(std::int64_t{row.isSummerTime});
    m_put.Bind(std::int64_t{row.location});
    for (const std::string* text :
         {&row.event, &row.text, &row.value, &row.plant, &row.description, &row.model}) {
        BindText(*text);
    }
    if (row.cells != nullptr) {
        BindText(cells.pieces);
        m_put.Bind(cells.bytes);
    } else {
        m_put.BindNull().BindNull();
    }
    m_put.Bind(row.bytes).Step();
    m_put.Rewind();
    m_index.Bind(m_database.LastId()).Bind(row.event).Bind(row.text).Bind(row.value).Bind(row.plant).Step();
    m_index.Rewind();
}

} // namespace ruvo
