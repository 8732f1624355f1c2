#include "extraction/event_file_names.h"

#include "base/text.h"
#include "link/client.h"
#include "link/seam/known_cells.h"
#include "model/values/parlane_text.h"
#include "paths/path_utilities.h"
#include "platform/clock.h"

#include <algorithm>
#include <cstdio>

namespace ruvo {

namespace {

constexpr std::size_t kModelCharacters = 4;

std::string UtcDate() {
    const SCalendarTime now = UtcTime();
    char date[40];
    std::snprintf(date, sizeof date, "%.4d-%.2d-%.2d", now.year, now.month, now.day);
    return date;
}

/// What a relay is called by.
struct SIdentity {
    std::string serialNumber;
    std::string model; ///< its first characters
};

SIdentity ReadIdentity(bool* isWhole) {
    SIdentity identity;
    identity.serialNumber = ReadSystemText(RowOf(cells::kSerialNumber));
    identity.model = ReadSystemText(RowOf(cells::kModel)).substr(0, kModelCharacters);
    if (isWhole != nullptr && (identity.serialNumber.empty() || identity.model.empty())) {
        *isWhole = false;
    }
    return identity;
}

} // namespace

std::string ReadSystemText(std::uint8_t row) {
    CParlaneDataArray values;
    CP32Wrap* wrap = CP32Wrap::GetInstance();
    if (wrap == nullptr) {
        return {};
    }
    wrap->GetValue(nullptr, MakeCellAddress(0x00, row), values);
    const auto* text = values.empty() ? nullptr : dynamic_cast<const CParlaneText*>(values.front().get());
    return text == nullptr ? std::string() : text->GetText();
}

std::string MakeDeviceFolderName(bool* isWhole) {
    const SIdentity identity = ReadIdentity(isWhole);
    return std::string(Trim(identity.model + "-" + identity.serialNumber, kBlank));
}

std::string MakeEventFileName(bool* isWhole) {
    const SIdentity identity = ReadIdentity(isWhole);
    return identity.model + "-" + std::string(Trim(identity.serialNumber, kBlank)) + "-" + UtcDate() +
           "-DEV.evt";
}

bool IsSafeFileName(const std::string& name) {
    return !HasForbiddenCharacter(name) && std::ranges::none_of(name, [](char character) {
        return IsControlCharacter(character) || character == '\\' || character == ':';
    });
}

} // namespace ruvo
