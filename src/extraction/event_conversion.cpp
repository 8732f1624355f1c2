#include "extraction/event_conversion.h"

#include "extraction/cell_reading.h"
#include "link/client.h"
#include "link/seam/known_cells.h"
#include "model/cells/cell_factory.h"
#include "model/records/event_kinds.h"
#include "model/values/parlane_integers.h"
#include "model/values/parlane_location.h"
#include "model/values/parlane_text.h"
#include "model/values/parlane_time.h"

#include <utility>

namespace ruvo {

namespace {

constexpr std::uint32_t kRecordRead = 1; ///< record numbers of extended records
constexpr std::uint32_t kRecordNotRead = 2;
constexpr int kAnyReplyLevel = 5; ///< accepts every reply of the device
constexpr const char* kValueLabel = "Event Value ";
constexpr const char* kUniqueIdLabel = "Evt Unique Id    %lu";

/// The element as the class that it has to be.
template <class TValue>
TValue& Require(const CParlaneDataArray& values, std::size_t element) {
    auto* value = dynamic_cast<TValue*>(values.at(element).get());
    if (value == nullptr) {
        throw CMalformedEvent();
    }
    return *value;
}

} // namespace

/// One event on its way to a record.
struct CEventConverter::SEvent {
    SEventKind kind;
    CParlaneDataArray& values;
    CStatus& status;
    std::uint16_t location;
    CParlaneIEC870 time;
    std::string text;
};

CEventConverter::CEventConverter(std::uint32_t deviceAddress, SRecordTexts texts, CErrorList& errors)
    : m_deviceAddress(deviceAddress), m_texts(std::move(texts)), m_errors(errors) {}

std::unique_ptr<CEventRecord> CEventConverter::Convert(std::uint8_t kind, CParlaneDataArray& values,
                                                       CStatus& status) {
    if (values.size() < kCommonElements) {
        throw CMalformedEvent();
    }
    const SEventKind* known = FindEventKind(kind);
    SEvent event{known != nullptr ? *known : SEventKind{},
                 values,
                 status,
                 Require<CParlaneMenu>(values, kLocationElement).GetLocation(),
                 Require<CParlaneIEC870>(values, kTimeElement),
                 Require<CParlaneText>(values, kTextElement).TakeText()};
    if (known == nullptr) { // its elements are checked nevertheless: the relay may violate the protocol
        return nullptr;
    }
    const std::size_t needed = event.kind.MinimumElements();
    if (values.size() < needed || (event.kind.hasRecord && values.size() > needed)) {
        throw CMalformedEvent();
    }
    if (event.kind.hasRecord) {
        return MakeWithRecordColumn(event);
    }
    if (event.kind.hasFormatText || event.kind.hasFormatCell) {
        return MakeSimple(event);
    }
    return MakePlain(event);
}

/// The event's value is all that there is, with or without the relay's own event id.
std::unique_ptr<CEventRecord> CEventConverter::MakePlain(SEvent& event) {
    CCellList cells;
    AddEventValue(event, cells);
    AddEventId(event, cells);
    return MakeExtended(event, kRecordRead, std::move(cells));
}

/// A record is selected in the relay and its column read.
std::unique_ptr<CEventRecord> CEventConverter::MakeWithRecordColumn(SEvent& event) {
    const std::uint8_t column =
        Require<CParlaneMenu>(event.values, event.kind.RecordColumnElement()).GetColumn();
    const auto& recordToSelect = Require<CParlaneUint>(event.values, event.kind.RecordNumberElement());

    CCellList cells;
    AddEventValue(event, cells);

    std::uint32_t recordNumber = kRecordNotRead;
    event.status = ToStatusWord(CP32Wrap::GetInstance()->ChangeSetting(
        nullptr, MakeCellAddress(column, rows::kSelectRecord), recordToSelect));
    if (IsAcceptable(event.status, 0)) {
        event.status = ReadRecordColumn(column, cells, m_errors);
        if (IsAcceptable(event.status, 0)) {
            recordNumber = kRecordRead;
        }
    }
    AddEventId(event, cells);
    // A relay that refuses to select the record has reported its event nevertheless.
    if (!IsAcceptable(event.status, kAnyReplyLevel)) {
        return nullptr;
    }
    return MakeExtended(event, recordNumber, std::move(cells));
}

/// A format text, delivered or fetched, and the values that it consumes.
std::unique_ptr<CEventRecord> CEventConverter::MakeSimple(SEvent& event) {
    std::string format = event.kind.hasFormatText
                             ? Require<CParlaneText>(event.values, kFormatElement).TakeText()
                             : FetchFormatText(event);
    CParlaneDataList formatValues;
    formatValues.reserve(event.values.size() - kFirstFormatValue);
    for (std::size_t i = kFirstFormatValue; i < event.values.size(); ++i) {
        formatValues.push_back(std::move(event.values[i]));
    }
    return std::make_unique<CSimpleEventRecord>(0, 0, EventCode(), event.time, std::move(event.text),
                                                std::move(event.values[kValueElement]), m_texts.plant,
                                                m_texts.description, m_texts.model, event.location,
                                                std::move(format), std::move(formatValues));
}

std::string CEventConverter::FetchFormatText(SEvent& event) {
    std::unique_ptr<CParlaneData> value;
    const std::uint16_t cell = Require<CParlaneMenu>(event.values, kFormatElement).GetLocation();
    event.status = ToStatusWord(CP32Wrap::GetInstance()->GetText(nullptr, cell, value));
    if (!IsAcceptable(event.status, 0)) {
        return {};
    }
    auto* text = dynamic_cast<CParlaneText*>(value.get());
    if (text == nullptr) {
        throw CMalformedEvent();
    }
    return text->TakeText();
}

/// A record's event code is the relay's address on its line: nothing else in the record says which of the
/// relays there it came from. A day file has one byte for it, as the line has for an address.
std::uint8_t CEventConverter::EventCode() const {
    return static_cast<std::uint8_t>(m_deviceAddress & 0xFFU);
}

std::unique_ptr<CEventRecord> CEventConverter::MakeExtended(SEvent& event, std::uint32_t recordNumber,
                                                            CCellList cells) {
    return std::make_unique<CExtendedEventRecord>(
        recordNumber, m_nextNumber++, EventCode(), event.time, std::move(event.text),
        std::move(event.values[kValueElement]), m_texts.plant, m_texts.description, m_texts.model,
        event.location, std::move(cells));
}

/// The event's value as a cell. From its first "%" on the event's text is the value's format and moves to the
/// cell's label.
void CEventConverter::AddEventValue(SEvent& event, CCellList& cells) {
    std::string label = kValueLabel;
    if (const std::size_t percent = event.text.find('%'); percent != std::string::npos) {
        label.append(event.text, percent);
        event.text.erase(percent);
    }
    AddValueCell(event, std::move(label), kValueElement, cells);
}

void CEventConverter::AddEventId(SEvent& event, CCellList& cells) {
    if (event.kind.hasId) {
        AddValueCell(event, kUniqueIdLabel, kIdElement, cells);
    }
}

/// A value without a kind of cell makes none; the record is made nevertheless.
void CEventConverter::AddValueCell(SEvent& event, std::string label, std::size_t element, CCellList& cells) {
    const CParlaneData& value = *event.values[element];
    std::unique_ptr<CCell> cell = CCellFactory::CreateWithDefaultLimits(CCellID(), &value, std::move(label));
    if (cell == nullptr) {
        return;
    }
    if (NeedsStrings(value)) { // how that request ends does not matter: the cell then has no texts
        FetchStrings(event.location, *cell);
    }
    cells.push_back(std::move(cell));
}

} // namespace ruvo
