// What the relay reports about one event, as it is kept in memory: simple records carry a format text with
// values, extended records carry whole cells. Records belong to one thread at a time; they are built once and
// not changed afterwards, except that a record which cannot be written may give up the items that keep it
// back.
#pragma once

#include "model/cells/cell.h"
#include "model/records/event_block.h"
#include "model/values/parlane_data.h"
#include "model/values/parlane_time.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace ruvo {

class CByteCursor;

/// What was left out of a record so that it has a binary form.
struct SDroppedItems {
    std::size_t count = 0;
    std::string first; ///< "the value of cell 2 (LABEL)", with the relay's own label

    bool operator==(const SDroppedItems&) const = default;
};

class CEventRecord {
public:
    virtual ~CEventRecord() = default;

    [[nodiscard]] virtual std::unique_ptr<CEventRecord> Clone() const = 0;
    /// The record's content for reading; lines are joined with "\n".
    [[nodiscard]] virtual std::string GetText() const = 0;
    /// Appends the record's blocks. A record without a binary form throws CUnwritableRecord and leaves the
    /// bytes as they were.
    virtual void Serialise(std::vector<std::uint8_t>& bytes) const = 0;
    /// Size of the first block without tag and length word; may exceed what a block can hold.
    [[nodiscard]] virtual std::size_t GetBlockSize() const;
    /// Writes the first block; blockSize goes into its length word as it is.
    virtual void WriteBlock(CBlockWriter& writer, std::size_t blockSize) const;

    /// How many bytes Serialise appends; for a record without a binary form, about how many it would.
    [[nodiscard]] std::size_t GetImageSize() const;
    [[nodiscard]] std::uint32_t GetRecordNumber() const { return m_recordNumber; }
    [[nodiscard]] std::uint32_t GetUniqueId() const { return m_uniqueId; }
    [[nodiscard]] std::uint8_t GetEventCode() const { return m_eventCode; }
    [[nodiscard]] const CParlaneIEC870& GetTimeStamp() const { return m_timeStamp; }
    /// The event text as stored; GetEventText returns it with the value in it.
    [[nodiscard]] const std::string& GetEventFormat() const { return m_eventText; }
    /// Null for none.
    [[nodiscard]] const CParlaneData* GetEventValue() const { return m_value.get(); }
    [[nodiscard]] const std::string& GetAuxText1() const { return m_auxText1; }
    [[nodiscard]] const std::string& GetAuxText2() const { return m_auxText2; }
    [[nodiscard]] const std::string& GetAuxText3() const { return m_auxText3; }
    [[nodiscard]] std::uint16_t GetEventLocation() const { return m_eventLocation; }
    [[nodiscard]] bool IsValid() const { return m_valid != 0; }

    /// "Monday 05 February 2024 13:07:09.045 GMT"; empty for an invalid record.
    [[nodiscard]] std::string GetTimeText() const;
    /// The event text with the value in it, cleaned for display; empty for an invalid record.
    [[nodiscard]] std::string GetEventText() const;

protected:
    /// An empty record of 1/1/98 00:00.
    explicit CEventRecord(std::uint32_t recordNumber) : m_recordNumber(recordNumber) {}
    /// Trailing blanks of the four texts are removed. The value may be null.
    CEventRecord(std::uint32_t recordNumber, std::uint32_t uniqueId, std::uint8_t eventCode,
                 const CParlaneIEC870& timeStamp, std::string eventText, std::unique_ptr<CParlaneData> value,
                 std::string auxText1, std::string auxText2, std::string auxText3,
                 std::uint16_t eventLocation);
    CEventRecord(const CEventRecord& other);
    CEventRecord& operator=(const CEventRecord&) = delete;

    /// Reads what both kinds of block begin with, from the unique id to the event value. False when reading
    /// cannot go on; the fault is then reported and the record invalid.
    bool ReadEvent(CByteCursor& cursor, CErrorList& errors);
    /// Reports that an item passes the end of the buffer and makes the record invalid; always false.
    bool FailPastEnd(CErrorList& errors);
    void SetInvalid() { m_valid = 0; }
    /// Throws where the first block cannot be written; returns its size.
    [[nodiscard]] std::size_t RequireWritableEvent() const;
    /// Leaves the event value out when it is too long.
    void DropLongEventValue(SDroppedItems& dropped);

private:
    bool Fail(EEventError eventError, CErrorList& errors);
    bool ReadTimeStamp(CByteCursor& cursor, CErrorList& errors);
    bool ReadEventCode(CByteCursor& cursor, CErrorList& errors);
    bool ReadRest(CByteCursor& cursor);

    std::uint32_t m_recordNumber;
    std::uint32_t m_uniqueId = 0;
    std::uint8_t m_eventCode = 0;
    CParlaneIEC870 m_timeStamp;
    std::string m_eventText;
    std::unique_ptr<CParlaneData> m_value;
    std::string m_auxText1;
    std::string m_auxText2;
    std::string m_auxText3;
    std::uint16_t m_eventLocation = 0;
    int m_valid = 1;
};

class CSimpleEventRecord : public CEventRecord {
public:
    CSimpleEventRecord(std::uint32_t recordNumber, std::uint32_t uniqueId, std::uint8_t eventCode,
                       const CParlaneIEC870& timeStamp, std::string eventText,
                       std::unique_ptr<CParlaneData> value, std::string auxText1, std::string auxText2,
                       std::string auxText3, std::uint16_t eventLocation, std::string formatText,
                       CParlaneDataList values);
    /// From the first block's body after its record-number byte. Faults go to the errors and make the record
    /// invalid; it keeps what was read before them. A value of unknown type or size is read as null.
    CSimpleEventRecord(std::span<const std::uint8_t> body, CErrorList& errors);
    CSimpleEventRecord(const CSimpleEventRecord& other);

    [[nodiscard]] std::unique_ptr<CEventRecord> Clone() const override;
    [[nodiscard]] std::string GetText() const override;
    void Serialise(std::vector<std::uint8_t>& bytes) const override;
    [[nodiscard]] std::size_t GetBlockSize() const override;
    void WriteBlock(CBlockWriter& writer, std::size_t blockSize) const override;

    [[nodiscard]] const std::string& GetFormatText() const { return m_formatText; }
    /// The values that the format consumes; an element may be null.
    [[nodiscard]] const CParlaneDataList& GetValues() const { return m_values; }

    /// Leaves out what keeps the record from being written: values that are too long, and values from the end
    /// until the block is short enough. Serialise then succeeds.
    SDroppedItems DropUnwritable();

private:
    std::string m_formatText;
    CParlaneDataList m_values;
};

class CExtendedEventRecord : public CEventRecord {
public:
    CExtendedEventRecord(std::uint32_t recordNumber, std::uint32_t uniqueId, std::uint8_t eventCode,
                         const CParlaneIEC870& timeStamp, std::string eventText,
                         std::unique_ptr<CParlaneData> value, std::string auxText1, std::string auxText2,
                         std::string auxText3, std::uint16_t eventLocation, CCellList cells);
    /// As the simple record's; the record number precedes the body. ReadCells adds the second block.
    CExtendedEventRecord(std::uint32_t recordNumber, std::span<const std::uint8_t> body, CErrorList& errors);
    CExtendedEventRecord(const CExtendedEventRecord& other);

    [[nodiscard]] std::unique_ptr<CEventRecord> Clone() const override;
    [[nodiscard]] std::string GetText() const override;
    void Serialise(std::vector<std::uint8_t>& bytes) const override;
    [[nodiscard]] std::size_t GetBlockSize() const override;
    void WriteBlock(CBlockWriter& writer, std::size_t blockSize) const override;
    /// Size of the second block without tag and length word. Throws CUnwritableRecord for an indexed cell
    /// whose index selects no text.
    [[nodiscard]] virtual std::size_t GetCellBlockSize() const;
    virtual void WriteCellBlock(CBlockWriter& writer, std::size_t blockSize) const;

    /// Appends the cells of the second block's body after its unique id. A cell that cannot be read makes
    /// the record invalid and ends the reading.
    void ReadCells(std::span<const std::uint8_t> body, CErrorList& errors);

    [[nodiscard]] const CCellList& GetCells() const { return m_cells; }

    /// The same with cells: one whose value cannot be written keeps its label.
    SDroppedItems DropUnwritable();

private:
    friend CEventRecord; // asks for the size of the second block's image

    [[nodiscard]] std::size_t GetCellImageSize() const;
    bool ReadCell(CByteCursor& cursor, CErrorList& errors);
    [[nodiscard]] std::size_t RequireWritableCells() const;

    CCellList m_cells;
};

/// Owns its records.
using CEventRecordList = COwnedPtrList<CEventRecord>;

/// The records of one file with its name and three further texts.
class CEventList {
public:
    static constexpr std::size_t kTextCount = 3;

    [[nodiscard]] const std::string& GetName() const { return m_name; }
    void SetName(std::string name) { m_name = std::move(name); }
    /// The index is 0 to 2.
    [[nodiscard]] const std::string& GetInfoText(std::size_t index) const { return m_texts.at(index); }
    void SetInfoText(std::size_t index, std::string text) { m_texts.at(index) = std::move(text); }
    [[nodiscard]] CEventRecordList& GetRecords() { return m_records; }
    [[nodiscard]] const CEventRecordList& GetRecords() const { return m_records; }

private:
    std::string m_name;
    std::array<std::string, kTextCount> m_texts{"unknown", "unknown", "unknown"};
    CEventRecordList m_records;
};

} // namespace ruvo
