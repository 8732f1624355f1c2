#include "extraction/cell_reading.h"

#include "link/client.h"
#include "model/cells/binary_cell.h"
#include "model/cells/cell_factory.h"
#include "model/cells/integer_cells.h"
#include "model/values/parlane_integers.h"
#include "model/values/parlane_location.h"
#include "model/values/parlane_text.h"

#include <limits>

namespace ruvo {

namespace {

constexpr unsigned kExtractingMessage = 222;
constexpr unsigned kNoPrefix = 526;

CP32Wrap& Link() {
    return *CP32Wrap::GetInstance();
}

std::vector<std::string> TextsOf(const CParlaneDataArray& values) {
    std::vector<std::string> texts;
    texts.reserve(values.size());
    for (const auto& value : values) {
        const auto* text = dynamic_cast<const CParlaneText*>(value.get());
        texts.push_back(text == nullptr ? std::string() : text->GetText());
    }
    return texts;
}

/// The row of a cell location, which comes as a menu location or as a number.
std::uint8_t RowOfLocation(const CParlaneData& location) {
    if (const auto* menu = dynamic_cast<const CParlaneMenu*>(&location)) {
        return menu->GetRow();
    }
    return static_cast<std::uint8_t>(location.GetUnsigned() & 0xFFU);
}

/// A text cell's own limits say better than its text what it holds: the first of them takes its place.
void ReplaceByLimit(CellAddress address, std::unique_ptr<CParlaneData>& value) {
    CParlaneDataArray limits;
    const LinkStatus status = Link().GetSettingLimits(nullptr, address, limits);
    if (IsAcceptable(ToStatusWord(status), 0) && !limits.empty()) {
        value = std::move(limits.front());
    }
}

} // namespace

// The status word has the link's statuses in it: both read the same numbers.
static_assert(kStatusSuccess == kLinkGood && kStatusReply == kLinkReply && kStatusAborted == kLinkAborted);
static_assert(kStatusNotResponding == kLinkNotResponding && kStatusNoPortOpen == kLinkNoPortOpen);

CStatus ToStatusWord(LinkStatus status) {
    return CStatus(status > std::numeric_limits<std::uint16_t>::max() ? kLinkComFailure : status);
}

bool NeedsStrings(const CParlaneData& value) {
    return value.GetTypeCode() == kTypeFlags || value.GetTypeCode() == kTypeStringIndex;
}

CStatus FetchStrings(CellAddress address, CCell& cell) {
    CParlaneDataArray strings;
    const LinkStatus status = Link().GetStrings(nullptr, address, strings);
    if (auto* binary = dynamic_cast<CBinaryCell*>(&cell)) {
        binary->SetBitNames(TextsOf(strings));
    } else if (auto* indexed = dynamic_cast<CIndexedCell*>(&cell)) {
        indexed->SetTexts(TextsOf(strings));
    }
    return ToStatusWord(status);
}

CStatus ReadRecordColumn(std::uint8_t column, CCellList& cells, CErrorList& errors) {
    CParlaneDataArray locations;
    CParlaneDataArray texts;
    CParlaneDataArray values;
    CStatus status = ToStatusWord(Link().GetColumnTextAndValues(nullptr, column, locations, texts, values));
    if (!CheckStatus(status, 0, kExtractingMessage, kNoPrefix, kNoErrorCode, errors)) {
        return status;
    }
    for (std::size_t i = 0; i < locations.size() && i < values.size(); ++i) {
        const CellAddress address = MakeCellAddress(column, RowOfLocation(*locations[i]));
        std::unique_ptr<CParlaneData>& value = values[i];
        if (value->GetTypeCode() == kTypeText) {
            ReplaceByLimit(address, value);
        }
        const auto* label = i < texts.size() ? dynamic_cast<const CParlaneText*>(texts[i].get()) : nullptr;
        std::unique_ptr<CCell> cell =
            CCellFactory::CreateWithDefaultLimits(CCellID(ColumnOf(address), RowOf(address)), value.get(),
                                                  label == nullptr ? "" : label->GetText());
        if (cell == nullptr) {
            continue;
        }
        if (NeedsStrings(*value)) {
            status = FetchStrings(address, *cell);
        }
        cells.push_back(std::move(cell));
    }
    return status;
}

} // namespace ruvo
