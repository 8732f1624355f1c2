// From the values that a relay delivers for one event to the event record.
#pragma once

#include "model/cells/cell.h"
#include "model/records/event_record.h"
#include "model/status/errors.h"
#include "model/status/status.h"
#include "model/values/parlane_data.h"

#include <cstdint>
#include <exception>
#include <memory>
#include <string>

namespace ruvo {

/// Event data that does not have the elements that its kind asks for.
class CMalformedEvent : public std::exception {};

/// What every record of one visit has in common.
struct SRecordTexts {
    std::string plant;       ///< cell 00.05
    std::string description; ///< cell 00.04
    std::string model;       ///< cell 00.06
};

/// Turns events into records, asking the relay for what an event only refers to. One per visit: it numbers
/// the extended records from 1.
class CEventConverter {
public:
    /// `errors` is borrowed as long as the converter lives and receives failures of column reads.
    CEventConverter(std::uint32_t deviceAddress, SRecordTexts texts, CErrorList& errors);

    /// The record of one event, or null for a kind that none is made of. `values` is used up. `status`
    /// becomes that of the last request made whose status counts; one that is not good ends the visit after
    /// this record. Throws CMalformedEvent, and CStatus when a request was aborted.
    std::unique_ptr<CEventRecord> Convert(std::uint8_t kind, CParlaneDataArray& values, CStatus& status);

private:
    struct SEvent;

    std::unique_ptr<CEventRecord> MakePlain(SEvent& event);
    std::unique_ptr<CEventRecord> MakeWithRecordColumn(SEvent& event);
    std::unique_ptr<CEventRecord> MakeSimple(SEvent& event);
    std::unique_ptr<CEventRecord> MakeExtended(SEvent& event, std::uint32_t recordNumber, CCellList cells);
    std::uint8_t EventCode() const;
    void AddEventValue(SEvent& event, CCellList& cells);
    void AddEventId(SEvent& event, CCellList& cells);
    void AddValueCell(SEvent& event, std::string label, std::size_t element, CCellList& cells);
    std::string FetchFormatText(SEvent& event);

    std::uint32_t m_deviceAddress;
    SRecordTexts m_texts;
    CErrorList& m_errors;
    std::uint32_t m_nextNumber = 1;
};

} // namespace ruvo
