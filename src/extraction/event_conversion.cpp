#include "extraction/event_conversion.h"

#include "extraction/cell_reading.h"
#include "link/client.h"
#include "model/cells/cell_factory.h"
#include "model/values/parlane_integers.h"
#include "model/values/parlane_location.h"
#include "model/values/parlane_text.h"
#include "model/values/parlane_time.h"

#include <array>
#include <limits>
#include <utility>

namespace ruvo {

namespace {

constexpr std::size_t kAnyNumber = std::numeric_limits<std::size_t>::max();
constexpr std::uint32_t kRecordRead = 1; ///< record numbers of extended records
constexpr std::uint32_t kRecordNotRead = 2;
constexpr int kAnyReplyLevel = 5; ///< accepts every reply of the device
constexpr const char* kValueLabel = "Event Value ";
constexpr const char* kUniqueIdLabel = "Evt Unique Id    %lu";
const CCellID kNoCell(0xFFFFFFFF, 0xFFFFFFFF);

/// The element as the class that it has to be.
template <class TValue>
TValue& Require(const CParlaneDataArray& values, std::size_t element) {
    auto* value = dynamic_cast<TValue*>(values.at(element).get());
    if (value == nullptr) {
        throw CMalformedEvent("element " + std::to_string(element) + " is of the wrong type");
    }
    return *value;
}

} // namespace

/// One event on its way to a record.
struct CEventConverter::SEvent {
    std::uint8_t kind;
    CParlaneDataArray& values;
    CStatus& status;
    std::uint16_t location;
    CParlaneIEC870 time;
    std::string text;
};

/// What an event kind must hold, and what it becomes.
struct CEventConverter::SKindRow {
    std::size_t minimum;
    std::size_t maximum;
    std::unique_ptr<CEventRecord> (CEventConverter::*make)(SEvent&);
};

const CEventConverter::SKindRow* CEventConverter::FindKind(std::uint8_t kind) {
    static constexpr std::array<SKindRow, 6> kKinds{{
        {4, kAnyNumber, &CEventConverter::MakePlain},
        {5, kAnyNumber, &CEventConverter::MakeSimple},
        {5, kAnyNumber, &CEventConverter::MakeSimple},
        {6, 6, &CEventConverter::MakeWithRecordColumn},
        {5, kAnyNumber, &CEventConverter::MakePlain},
        {7, 7, &CEventConverter::MakeWithRecordColumn},
    }};
    return kind < kKinds.size() ? &kKinds[kind] : nullptr;
}

bool CEventConverter::IsKnownKind(std::uint8_t kind) {
    return FindKind(kind) != nullptr;
}

CEventConverter::CEventConverter(std::uint32_t deviceAddress, SRecordTexts texts, CErrorList& errors)
    : m_deviceAddress(deviceAddress), m_texts(std::move(texts)), m_errors(errors) {}

std::unique_ptr<CEventRecord> CEventConverter::Convert(std::uint8_t kind, CParlaneDataArray& values,
                                                       CStatus& status) {
    constexpr std::size_t kCommonElements = 4;
    if (values.size() < kCommonElements) {
        throw CMalformedEvent("fewer than 4 elements");
    }
    SEvent event{kind,
                 values,
                 status,
                 Require<CParlaneMenu>(values, 0).GetLocation(),
                 Require<CParlaneIEC870>(values, 1),
                 Require<CParlaneText>(values, 2).TakeText()};
    const SKindRow* row = FindKind(kind);
    if (row == nullptr) {
        return nullptr;
    }
    if (values.size() < row->minimum || values.size() > row->maximum) {
        throw CMalformedEvent("wrong number of elements");
    }
    return (this->*row->make)(event);
}

/// Kinds 0 and 4: the value, and for kind 4 the relay's own event id.
std::unique_ptr<CEventRecord> CEventConverter::MakePlain(SEvent& event) {
    CCellList cells;
    AddEventValue(event, cells);
    if (event.kind == 4) {
        AddValueCell(event, kUniqueIdLabel, 4, cells);
    }
    return MakeExtended(event, kRecordRead, std::move(cells));
}

/// Kinds 3 and 5: a record is selected in the relay and its column read; kind 5 has the relay's event id too.
std::unique_ptr<CEventRecord> CEventConverter::MakeWithRecordColumn(SEvent& event) {
    const bool hasEventId = event.kind == 5;
    const std::size_t first = hasEventId ? 5 : 4;
    const std::uint8_t column = Require<CParlaneMenu>(event.values, first).GetColumn();
    const auto& recordToSelect = Require<CParlaneUint>(event.values, first + 1);

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
    if (hasEventId) {
        AddValueCell(event, kUniqueIdLabel, 4, cells);
    }
    if (!IsAcceptable(event.status, kAnyReplyLevel)) {
        return nullptr;
    }
    return MakeExtended(event, recordNumber, std::move(cells));
}

/// Kinds 1 and 2: a format text, given or fetched, and the values that it consumes.
std::unique_ptr<CEventRecord> CEventConverter::MakeSimple(SEvent& event) {
    std::string format =
        event.kind == 1 ? Require<CParlaneText>(event.values, 4).TakeText() : FetchFormatText(event);
    constexpr std::size_t kFirstFurther = 5;
    CParlaneDataList further;
    further.reserve(event.values.size() - kFirstFurther);
    for (std::size_t i = kFirstFurther; i < event.values.size(); ++i) {
        further.push_back(std::move(event.values[i]));
    }
    return std::make_unique<CSimpleEventRecord>(0, 0, static_cast<std::uint8_t>(m_deviceAddress & 0xFFU),
                                                event.time, std::move(event.text), std::move(event.values[3]),
                                                m_texts.plant, m_texts.description, m_texts.model,
                                                event.location, std::move(format), std::move(further));
}

std::string CEventConverter::FetchFormatText(SEvent& event) {
    std::unique_ptr<CParlaneData> value;
    const std::uint16_t cell = Require<CParlaneMenu>(event.values, 4).GetLocation();
    event.status = ToStatusWord(CP32Wrap::GetInstance()->GetText(nullptr, cell, value));
    if (!IsAcceptable(event.status, 0)) {
        return {};
    }
    auto* text = dynamic_cast<CParlaneText*>(value.get());
    if (text == nullptr) {
        throw CMalformedEvent("the format text is no text");
    }
    return text->TakeText();
}

std::unique_ptr<CEventRecord> CEventConverter::MakeExtended(SEvent& event, std::uint32_t recordNumber,
                                                            CCellList cells) {
    return std::make_unique<CExtendedEventRecord>(
        recordNumber, m_nextNumber++, static_cast<std::uint8_t>(m_deviceAddress & 0xFFU), event.time,
        std::move(event.text), std::move(event.values[3]), m_texts.plant, m_texts.description, m_texts.model,
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
    AddValueCell(event, std::move(label), 3, cells);
}

/// A value without a kind of cell gives none; the record is made all the same.
void CEventConverter::AddValueCell(SEvent& event, std::string label, std::size_t element, CCellList& cells) {
    const CParlaneData& value = *event.values[element];
    std::unique_ptr<CCell> cell = CCellFactory::CreateWithDefaultLimits(kNoCell, &value, std::move(label));
    if (cell == nullptr) {
        return;
    }
    if (NeedsStrings(value)) { // how that request ends does not matter: the cell then has no texts
        FetchStrings(event.location, *cell);
    }
    cells.push_back(std::move(cell));
}

} // namespace ruvo
