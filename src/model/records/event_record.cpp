#include "model/records/event_record.h"

#include "base/text.h"
#include "model/cells/binary_cell.h"
#include "model/cells/integer_cells.h"
#include "model/cells/other_cells.h"

#include <algorithm>
#include <utility>

namespace ruvo {
namespace {

template <class T>
COwnedPtrList<T> CloneAll(const COwnedPtrList<T>& list) {
    COwnedPtrList<T> copies;
    copies.reserve(list.size());
    for (const auto& element : list) {
        copies.push_back(element ? element->Clone() : nullptr);
    }
    return copies;
}

bool IsTooLong(const CParlaneData* value) {
    return value != nullptr && value->GetSize() > kMaxStoredData;
}

/// Appends what `write` puts into `size` bytes; when it throws, the bytes are as before.
template <class TWrite>
void AppendBlocks(std::vector<std::uint8_t>& bytes, std::size_t size, const TWrite& write) {
    const std::size_t before = bytes.size();
    bytes.resize(before + size);
    try {
        CBlockWriter writer(std::span<std::uint8_t>(bytes).subspan(before));
        write(writer);
    } catch (...) {
        bytes.resize(before);
        throw;
    }
}

/// The bits' names as far as the count byte reaches; other cells have none.
std::span<const std::string> StoredBitNames(const CCell& cell) {
    if (cell.GetKind() != ECellKind::Binary) {
        return {};
    }
    const std::span<const std::string> names = static_cast<const CBinaryCell&>(cell).GetBitNames();
    return names.first(std::min(names.size(), kMaxStoredText));
}

/// An indexed cell is stored as the text that its index selects.
const std::string& SelectedText(const CCell& cell, std::size_t position) {
    const std::string* text = static_cast<const CIndexedCell&>(cell).GetSelectedText();
    if (text == nullptr) {
        throw CUnwritableRecord(EUnwritable::Cell, position);
    }
    return *text;
}

std::size_t CellDataSize(const CCell& cell, std::size_t position) {
    if (cell.GetKind() == ECellKind::Indexed) {
        return kValueHeadSize + SelectedText(cell, position).size();
    }
    return StoredValueSize(cell.GetValue());
}

std::size_t StoredCellSize(const CCell& cell, std::size_t position) {
    std::size_t size = StoredTextSize(cell.GetLabelTemplate()) + CellDataSize(cell, position) + kBitCountSize;
    for (const std::string& name : StoredBitNames(cell)) {
        size += StoredTextSize(name);
    }
    return size;
}

void WriteCell(CBlockWriter& writer, const CCell& cell, std::size_t position) {
    writer.WriteText(cell.GetLabelTemplate());
    if (cell.GetKind() == ECellKind::Indexed) {
        writer.WriteTextValue(SelectedText(cell, position));
    } else {
        writer.WriteValue(cell.GetValue());
    }
    const std::span<const std::string> names = StoredBitNames(cell);
    writer.WriteByte(static_cast<std::uint8_t>(names.size()));
    for (const std::string& name : names) {
        writer.WriteText(name);
    }
}

/// False for a value that is too long, and for an index that selects no text.
bool HasStoredValue(const CCell& cell) {
    if (cell.GetKind() != ECellKind::Indexed) {
        return !IsTooLong(cell.GetValue());
    }
    const std::string* text = static_cast<const CIndexedCell&>(cell).GetSelectedText();
    return text != nullptr && text->size() <= kMaxStoredData;
}

void CountDropped(SDroppedItems& dropped, const std::string& what) {
    if (dropped.count++ == 0) {
        dropped.first = what;
    }
}

/// Drops the elements from a position on.
template <class T>
void DropFrom(COwnedPtrList<T>& list, std::size_t kept, const std::string& what, SDroppedItems& dropped) {
    if (kept < list.size()) {
        CountDropped(dropped, what + " " + std::to_string(kept + 1));
        dropped.count += list.size() - kept - 1;
        list.resize(kept);
    }
}

/// The same text, not a copy of it.
std::string WithoutBlanksAtEnd(std::string&& text) {
    text.resize(TrimEnd(text, kBlank).size());
    return std::move(text);
}

} // namespace

CEventRecord::CEventRecord(std::uint32_t recordNumber, std::uint32_t uniqueId, std::uint8_t eventCode,
                           const CParlaneIEC870& timeStamp, std::string eventText,
                           std::unique_ptr<CParlaneData> value, std::string auxText1, std::string auxText2,
                           std::string auxText3, std::uint16_t eventLocation)
    : m_recordNumber(recordNumber), m_uniqueId(uniqueId), m_eventCode(eventCode), m_timeStamp(timeStamp),
      m_eventText(WithoutBlanksAtEnd(std::move(eventText))), m_value(std::move(value)),
      m_auxText1(WithoutBlanksAtEnd(std::move(auxText1))),
      m_auxText2(WithoutBlanksAtEnd(std::move(auxText2))),
      m_auxText3(WithoutBlanksAtEnd(std::move(auxText3))), m_eventLocation(eventLocation) {}

CEventRecord::CEventRecord(const CEventRecord& other)
    : m_recordNumber(other.m_recordNumber), m_uniqueId(other.m_uniqueId), m_eventCode(other.m_eventCode),
      m_timeStamp(other.m_timeStamp), m_eventText(other.m_eventText),
      m_value(other.m_value ? other.m_value->Clone() : nullptr), m_auxText1(other.m_auxText1),
      m_auxText2(other.m_auxText2), m_auxText3(other.m_auxText3), m_eventLocation(other.m_eventLocation),
      m_valid(other.m_valid) {}

std::size_t CEventRecord::GetBlockSize() const {
    std::size_t size = kMinEventSize + (m_value ? m_value->GetSize() : 0);
    for (const std::string* text : {&m_auxText1, &m_auxText2, &m_auxText3, &m_eventText}) {
        size += StoredTextSize(*text) - kLengthSize; // kMinEventSize has the length bytes already
    }
    return size;
}

// Not virtual: the order of the record's virtual functions is fixed.
std::size_t CEventRecord::GetImageSize() const {
    const auto* extended = dynamic_cast<const CExtendedEventRecord*>(this);
    return kBlockHeadSize + GetBlockSize() + (extended != nullptr ? extended->GetCellImageSize() : 0);
}

void CEventRecord::WriteBlock(CBlockWriter& writer, std::size_t blockSize) const {
    // In the order of kEventItems. Of the record number a reader only asks whether it is 0: a simple record.
    writer.WriteBlockHead(EBlockTag::Event, blockSize);
    writer.WriteByte(static_cast<std::uint8_t>(m_recordNumber & 0xFFU));
    writer.WriteLong(m_uniqueId);
    writer.WriteValue(&m_timeStamp);
    writer.WriteByte(0); // the two reserved items
    writer.WriteText({});
    writer.WriteByte(kEventCodeSize); // the length of the short number
    writer.WriteByte(m_eventCode);
    writer.WriteText(m_auxText1);
    writer.WriteText(m_auxText2);
    writer.WriteText(m_auxText3);
    writer.WriteWord(m_eventLocation);
    writer.WriteText(m_eventText);
    writer.WriteValue(m_value.get());
}

std::size_t CEventRecord::RequireWritableEvent() const {
    if (IsTooLong(m_value.get())) {
        throw CUnwritableRecord(EUnwritable::EventValue, std::nullopt);
    }
    const std::size_t size = GetBlockSize();
    if (size > kMaxBlockSize) {
        throw CUnwritableRecord(EUnwritable::EventBlock, std::nullopt);
    }
    return size;
}

void CEventRecord::DropLongEventValue(SDroppedItems& dropped) {
    if (IsTooLong(m_value.get())) {
        m_value.reset();
        CountDropped(dropped, "the event value");
    }
}

CSimpleEventRecord::CSimpleEventRecord(std::uint32_t recordNumber, std::uint32_t uniqueId,
                                       std::uint8_t eventCode, const CParlaneIEC870& timeStamp,
                                       std::string eventText, std::unique_ptr<CParlaneData> value,
                                       std::string auxText1, std::string auxText2, std::string auxText3,
                                       std::uint16_t eventLocation, std::string formatText,
                                       CParlaneDataList values)
    : CEventRecord(recordNumber, uniqueId, eventCode, timeStamp, std::move(eventText), std::move(value),
                   std::move(auxText1), std::move(auxText2), std::move(auxText3), eventLocation),
      m_formatText(std::move(formatText)), m_values(std::move(values)) {}

CSimpleEventRecord::CSimpleEventRecord(const CSimpleEventRecord& other)
    : CEventRecord(other), m_formatText(other.m_formatText), m_values(CloneAll(other.m_values)) {}

std::unique_ptr<CEventRecord> CSimpleEventRecord::Clone() const {
    return std::make_unique<CSimpleEventRecord>(*this);
}

std::size_t CSimpleEventRecord::GetBlockSize() const {
    std::size_t size = CEventRecord::GetBlockSize() + StoredTextSize(m_formatText);
    for (const auto& value : m_values) {
        size += StoredValueSize(value.get());
    }
    return size;
}

void CSimpleEventRecord::WriteBlock(CBlockWriter& writer, std::size_t blockSize) const {
    CEventRecord::WriteBlock(writer, blockSize);
    writer.WriteText(m_formatText);
    for (const auto& value : m_values) {
        writer.WriteValue(value.get());
    }
}

void CSimpleEventRecord::Serialise(std::vector<std::uint8_t>& bytes) const {
    const auto tooLong = std::find_if(m_values.begin(), m_values.end(),
                                      [](const auto& value) { return IsTooLong(value.get()); });
    if (tooLong != m_values.end()) {
        throw CUnwritableRecord(EUnwritable::Value, static_cast<std::size_t>(tooLong - m_values.begin()));
    }
    const std::size_t size = RequireWritableEvent();
    AppendBlocks(bytes, kBlockHeadSize + size, [&](CBlockWriter& writer) { WriteBlock(writer, size); });
}

SDroppedItems CSimpleEventRecord::DropUnwritable() {
    // A long value becomes an empty one, so that the values after it stay with their conversions in the
    // format text. Only the end of the list is ever cut.
    SDroppedItems dropped;
    DropLongEventValue(dropped);
    std::size_t size = CEventRecord::GetBlockSize() + StoredTextSize(m_formatText);
    std::size_t kept = 0;
    for (; kept < m_values.size(); ++kept) {
        if (IsTooLong(m_values[kept].get())) {
            m_values[kept].reset();
            CountDropped(dropped, "value " + std::to_string(kept + 1));
        }
        size += StoredValueSize(m_values[kept].get());
        if (size > kMaxBlockSize) {
            break;
        }
    }
    DropFrom(m_values, kept, "value", dropped);
    return dropped;
}

CExtendedEventRecord::CExtendedEventRecord(std::uint32_t recordNumber, std::uint32_t uniqueId,
                                           std::uint8_t eventCode, const CParlaneIEC870& timeStamp,
                                           std::string eventText, std::unique_ptr<CParlaneData> value,
                                           std::string auxText1, std::string auxText2, std::string auxText3,
                                           std::uint16_t eventLocation, CCellList cells)
    : CEventRecord(recordNumber, uniqueId, eventCode, timeStamp, std::move(eventText), std::move(value),
                   std::move(auxText1), std::move(auxText2), std::move(auxText3), eventLocation),
      m_cells(std::move(cells)) {}

CExtendedEventRecord::CExtendedEventRecord(const CExtendedEventRecord& other)
    : CEventRecord(other), m_cells(CloneAll(other.m_cells)) {}

std::unique_ptr<CEventRecord> CExtendedEventRecord::Clone() const {
    return std::make_unique<CExtendedEventRecord>(*this);
}

std::size_t CExtendedEventRecord::GetCellImageSize() const {
    std::size_t size = kBlockHeadSize + kUniqueIdSize;
    for (std::size_t i = 0; i < m_cells.size(); ++i) {
        size += HasStoredValue(*m_cells[i])
                    ? StoredCellSize(*m_cells[i], i)
                    : StoredTextSize(m_cells[i]->GetLabelTemplate()) - kLengthSize + kMinCellSize;
    }
    return size;
}

std::size_t CExtendedEventRecord::GetBlockSize() const {
    return CEventRecord::GetBlockSize() + StoredTextSize({});
}

void CExtendedEventRecord::WriteBlock(CBlockWriter& writer, std::size_t blockSize) const {
    CEventRecord::WriteBlock(writer, blockSize);
    writer.WriteText({}); // where a simple record has its format text
}

std::size_t CExtendedEventRecord::GetCellBlockSize() const {
    std::size_t size = kUniqueIdSize;
    for (std::size_t i = 0; i < m_cells.size(); ++i) {
        size += StoredCellSize(*m_cells[i], i);
    }
    return size;
}

void CExtendedEventRecord::WriteCellBlock(CBlockWriter& writer, std::size_t blockSize) const {
    writer.WriteBlockHead(EBlockTag::Cells, blockSize);
    writer.WriteLong(GetUniqueId());
    for (std::size_t i = 0; i < m_cells.size(); ++i) {
        WriteCell(writer, *m_cells[i], i);
    }
}

std::size_t CExtendedEventRecord::RequireWritableCells() const {
    for (std::size_t i = 0; i < m_cells.size(); ++i) {
        if (CellDataSize(*m_cells[i], i) > kValueHeadSize + kMaxStoredData) {
            throw CUnwritableRecord(EUnwritable::Cell, i);
        }
    }
    const std::size_t size = GetCellBlockSize();
    if (size > kMaxBlockSize) {
        throw CUnwritableRecord(EUnwritable::CellBlock, std::nullopt);
    }
    return size;
}

void CExtendedEventRecord::Serialise(std::vector<std::uint8_t>& bytes) const {
    // Both blocks are checked before either is written: a record is stored whole or not at all.
    const std::size_t size = RequireWritableEvent();
    const std::size_t cellSize = RequireWritableCells();
    AppendBlocks(bytes, 2 * kBlockHeadSize + size + cellSize, [&](CBlockWriter& writer) {
        WriteBlock(writer, size);
        WriteCellBlock(writer, cellSize);
    });
}

SDroppedItems CExtendedEventRecord::DropUnwritable() {
    SDroppedItems dropped;
    DropLongEventValue(dropped);
    std::size_t size = kUniqueIdSize;
    std::size_t kept = 0;
    for (; kept < m_cells.size(); ++kept) {
        std::unique_ptr<CCell>& cell = m_cells[kept];
        if (!HasStoredValue(*cell)) {
            CountDropped(dropped, "the value of cell " + std::to_string(kept + 1) + " (" +
                                      cell->GetLabelTemplate() + ")");
            cell = std::make_unique<CHeadingCell>(cell->GetHead());
        }
        size += StoredCellSize(*cell, kept);
        if (size > kMaxBlockSize) {
            break;
        }
    }
    DropFrom(m_cells, kept, "cell", dropped);
    return dropped;
}

} // namespace ruvo
