// Writes records into the tables of an archive and into its index of texts.
#pragma once

#include "dayfile/day_file_reader.h"
#include "tools/archive/archive_texts.h"
#include "tools/archive/database.h"

#include <cstdint>
#include <optional>
#include <string>

namespace ruvo {

/// Works within a transaction of its user. May throw CDatabaseError.
class CRecordWriter {
public:
    explicit CRecordWriter(CDatabase& database);

    /// Adds the record of an item under an id that is free, by default the next one.
    void Add(std::int64_t fileId, const SDayFileItem& item, std::optional<std::int64_t> id = std::nullopt);

private:
    void BindText(const std::string& text);

    CDatabase& m_database;
    CArchiveTexts m_texts;
    CStatement m_put;
    CStatement m_index;
};

} // namespace ruvo
