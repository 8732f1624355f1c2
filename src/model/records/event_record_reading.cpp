// Records from bytes. A fault is reported once, where it is met; what was read before it stays.
#include "model/records/event_record.h"

#include "base/byte_cursor.h"
#include "model/cells/binary_cell.h"
#include "model/cells/cell_factory.h"
#include "model/values/data_factory.h"

namespace ruvo {
namespace {

enum class EShortNumber : std::uint8_t { Ok, Malformed, PastEnd };

/// A length byte and that many bytes, of which only the last may be other than 0: it is the number.
EShortNumber TakeShortNumber(CByteCursor& cursor, std::uint8_t& number) {
    std::uint8_t length = 0;
    std::span<const std::uint8_t> bytes;
    if (!cursor.TakeByte(length) || !cursor.TakeBytes(length, bytes)) {
        return EShortNumber::PastEnd;
    }
    if (bytes.empty()) {
        number = 0;
        return EShortNumber::Ok;
    }
    for (const std::uint8_t byte : bytes.first(bytes.size() - 1)) {
        if (byte != 0) {
            return EShortNumber::Malformed;
        }
    }
    number = bytes.back();
    return EShortNumber::Ok;
}

bool TakeTexts(CByteCursor& cursor, std::size_t count, std::vector<std::string>& texts) {
    for (std::size_t i = 0; i < count; ++i) {
        if (!cursor.TakeText(texts.emplace_back())) {
            return false;
        }
    }
    return true;
}

} // namespace

bool CEventRecord::Fail(EEventError eventError, CErrorList& errors) {
    AddError(errors, std::make_unique<CEventError>(static_cast<unsigned>(eventError)));
    m_valid = 0;
    return false;
}

bool CEventRecord::FailPastEnd(CErrorList& errors) {
    return Fail(EEventError::PastEnd, errors);
}

bool CEventRecord::ReadTimeStamp(CByteCursor& cursor, CErrorList& errors) {
    std::unique_ptr<CParlaneData> value;
    if (!CDataFactory::TakeTagged(cursor, value)) {
        return FailPastEnd(errors);
    }
    const auto* timeStamp = dynamic_cast<const CParlaneIEC870*>(value.get());
    if (timeStamp == nullptr) {
        return Fail(EEventError::NoTimeStamp, errors);
    }
    m_timeStamp = *timeStamp;
    return true;
}

bool CEventRecord::ReadEventCode(CByteCursor& cursor, CErrorList& errors) {
    const EShortNumber result = TakeShortNumber(cursor, m_eventCode);
    // A malformed code has a length all the same: the items after it can be read, and the record shown.
    if (result != EShortNumber::Ok) {
        Fail(EEventError::BadEventCode, errors);
    }
    return result != EShortNumber::PastEnd;
}

bool CEventRecord::ReadRest(CByteCursor& cursor) {
    return cursor.TakeText(m_auxText1) && cursor.TakeText(m_auxText2) && cursor.TakeText(m_auxText3) &&
           cursor.TakeWord(m_eventLocation) && cursor.TakeText(m_eventText) &&
           CDataFactory::TakeTagged(cursor, m_value);
}

bool CEventRecord::ReadEvent(CByteCursor& cursor, CErrorList& errors) {
    if (!cursor.TakeDoubleWord(m_uniqueId)) {
        return FailPastEnd(errors);
    }
    if (!ReadTimeStamp(cursor, errors)) {
        return false;
    }
    std::uint8_t reservedByte = 0;
    std::string reservedText;
    if (!cursor.TakeByte(reservedByte) || !cursor.TakeText(reservedText)) {
        return FailPastEnd(errors);
    }
    if (!ReadEventCode(cursor, errors)) {
        return false;
    }
    return ReadRest(cursor) || FailPastEnd(errors);
}

CSimpleEventRecord::CSimpleEventRecord(std::span<const std::uint8_t> body, CErrorList& errors)
    : CEventRecord(0) {
    CByteCursor cursor(body);
    if (!ReadEvent(cursor, errors)) {
        return;
    }
    bool fits = cursor.TakeText(m_formatText);
    while (fits && cursor.Remaining() > 0) {
        std::unique_ptr<CParlaneData> value;
        fits = CDataFactory::TakeTagged(cursor, value);
        if (fits) {
            m_values.push_back(std::move(value));
        }
    }
    if (!fits) {
        FailPastEnd(errors);
    }
}

CExtendedEventRecord::CExtendedEventRecord(std::uint32_t recordNumber, std::span<const std::uint8_t> body,
                                           CErrorList& errors)
    : CEventRecord(recordNumber) {
    CByteCursor cursor(body);
    std::string closingText;
    if (ReadEvent(cursor, errors) && !cursor.TakeText(closingText)) {
        FailPastEnd(errors);
    }
}

bool CExtendedEventRecord::ReadCell(CByteCursor& cursor, CErrorList& errors) {
    std::string labelTemplate;
    std::unique_ptr<CParlaneData> value;
    std::uint8_t nameCount = 0;
    std::vector<std::string> names;
    if (!cursor.TakeText(labelTemplate) || !CDataFactory::TakeTagged(cursor, value) ||
        !cursor.TakeByte(nameCount) || !TakeTexts(cursor, nameCount, names)) {
        return FailPastEnd(errors);
    }
    std::unique_ptr<CCell> cell =
        CCellFactory::CreateWithDefaultLimits(CCellID(), value.get(), std::move(labelTemplate));
    if (cell == nullptr) { // a value of an unknown type or size
        SetInvalid();
        return false;
    }
    if (cell->GetKind() == ECellKind::Binary) {
        static_cast<CBinaryCell&>(*cell).SetBitNames(std::move(names));
    }
    m_cells.push_back(std::move(cell));
    return true;
}

void CExtendedEventRecord::ReadCells(std::span<const std::uint8_t> body, CErrorList& errors) {
    CByteCursor cursor(body);
    while (cursor.Remaining() > 0 && ReadCell(cursor, errors)) {
    }
}

} // namespace ruvo
