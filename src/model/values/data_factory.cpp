#include "model/values/data_factory.h"

#include "model/records/block_layout.h"
#include "model/values/parlane_integers.h"
#include "model/values/parlane_location.h"
#include "model/values/parlane_number.h"
#include "model/values/parlane_text.h"
#include "model/values/parlane_time.h"

#include <algorithm>
#include <array>
#include <limits>
#include <stdexcept>

namespace ruvo {

namespace {

using Bytes = std::span<const std::uint8_t>;
using Maker = std::unique_ptr<CParlaneData> (*)(Bytes);

template <class T>
std::unique_ptr<CParlaneData> Make(Bytes data) {
    return std::make_unique<T>(data);
}

std::unique_ptr<CParlaneData> MakeInvalid(Bytes /*data*/) {
    return std::make_unique<CParlaneInvalid>();
}

/// A type, its permitted sizes in bytes, and how a value of it is made.
struct STypeRow {
    std::uint32_t typeCode;
    std::size_t minimumSize;
    std::size_t maximumSize;
    Maker make;
};

constexpr std::size_t kAny = std::numeric_limits<std::size_t>::max();

constexpr std::array kTypes{
    STypeRow{kTypeText, 0, kAny, Make<CParlaneText>},
    STypeRow{kTypePassword, 0, kAny, Make<CParlanePassword>},
    STypeRow{kTypeFlags, 1, 4, Make<CParlaneFlags>},
    STypeRow{kTypeUint, 1, 4, Make<CParlaneUint>},
    STypeRow{kTypeInt, 0, kAny, Make<CParlaneInt>},
    STypeRow{kTypeShortNumber, 4, 4, Make<CParlaneNumber>},
    STypeRow{kTypeLongNumber, 6, 6, Make<CParlaneNumber>},
    STypeRow{kTypeFloat, 4, kAny, Make<CParlaneFloat>},
    STypeRow{kTypeTimer, 4, kAny, Make<CParlaneTimer>},
    STypeRow{kTypeIEC870, kTimeStampSize, kTimeStampSize, Make<CParlaneIEC870>},
    STypeRow{kTypeMenu, 2, 2, Make<CParlaneMenu>},
    STypeRow{kTypeReply, 1, kAny, Make<CParlaneReply>},
    STypeRow{kTypeStringIndex, 1, kAny, Make<CParlaneStringIndex>},
    STypeRow{kTypeNoData, 0, kAny, MakeInvalid},
    STypeRow{kTypeHex, 0, kAny, Make<CParlaneHex>},
    STypeRow{kTypeModem, 0, kAny, Make<CParlaneModem>},
    STypeRow{kTypeEncryptedPassword, 0, kAny, Make<CParlaneEncryptedPassword>},
    STypeRow{kTypeInvalid, 0, kAny, MakeInvalid},
};

} // namespace

std::unique_ptr<CParlaneData> CDataFactory::Create(std::uint32_t typeCode, Bytes data) {
    const auto* row = std::find_if(kTypes.begin(), kTypes.end(),
                                   [typeCode](const STypeRow& type) { return type.typeCode == typeCode; });
    if (row == kTypes.end() || data.size() < row->minimumSize || data.size() > row->maximumSize) {
        return nullptr;
    }
    return row->make(data);
}

std::unique_ptr<CParlaneData> CDataFactory::CreateTagged(Bytes bytes) {
    CByteCursor cursor(bytes);
    std::unique_ptr<CParlaneData> value;
    if (!TakeTagged(cursor, value)) {
        throw std::invalid_argument("a tagged value is shorter than its stated size");
    }
    return value;
}

bool CDataFactory::TakeTagged(CByteCursor& cursor, std::unique_ptr<CParlaneData>& value) {
    CByteCursor ahead = cursor;
    std::uint8_t typeCode = 0;
    std::uint8_t length = 0;
    Bytes data;
    if (!ahead.TakeByte(typeCode) || !ahead.TakeByte(length) || !ahead.TakeBytes(length, data)) {
        return false;
    }
    value = Create(typeCode, data);
    cursor = ahead;
    return true;
}

void CDataFactory::AppendTagged(const CParlaneData* value, std::vector<std::uint8_t>& bytes) {
    const std::size_t dataSize = value != nullptr ? value->GetSize() : 0;
    if (dataSize > kMaxStoredData) {
        throw std::invalid_argument("a value of more than 255 bytes cannot be written");
    }
    const std::size_t start = bytes.size();
    bytes.resize(start + kValueHeadSize + dataSize);
    std::uint32_t typeCode = kTypeInvalid;
    std::size_t size = 0;
    if (value != nullptr) {
        value->GetWireBytes(std::span(bytes).subspan(start + kValueHeadSize), typeCode, size);
    }
    bytes[start] = static_cast<std::uint8_t>(typeCode);
    bytes[start + 1] = static_cast<std::uint8_t>(dataSize);
}

} // namespace ruvo
