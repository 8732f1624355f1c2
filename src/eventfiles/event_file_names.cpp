#include "eventfiles/event_file_names.h"

#include "link/p32_wrap.h"
#include "paths/path_utilities.h"
#include "platform/clock.h"
#include "protocol/parlane_text.h"

#include <algorithm>
#include <cstdio>

namespace ruvo {

namespace {

constexpr std::size_t kModelCharacters = 4;

std::string TrimBlanks(const std::string& text) {
    const std::size_t first = text.find_first_not_of(' ');
    if (first == std::string::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

std::string UtcDate() {
    const SCalendarTime now = UtcTime();
    char date[40];
    std::snprintf(date, sizeof date, "%.4d-%.2d-%.2d", now.year, now.month, now.day);
    return date;
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

std::string MakeDeviceFolderName() {
    const std::string serialNumber = ReadSystemText(RowOf(cells::kSerialNumber));
    const std::string model = ReadSystemText(RowOf(cells::kModel));
    return TrimBlanks(model.substr(0, kModelCharacters) + "-" + serialNumber);
}

std::string MakeEventFileName() {
    const std::string serialNumber = ReadSystemText(RowOf(cells::kSerialNumber));
    const std::string model = ReadSystemText(RowOf(cells::kModel));
    return model.substr(0, kModelCharacters) + "-" + TrimBlanks(serialNumber) + "-" + UtcDate() + "-DEV.evt";
}

bool AreNamesWhole(const std::string& folder, const std::string& file) {
    return !folder.starts_with('-') && !folder.ends_with('-') && !file.starts_with('-') &&
           file.find("--") == std::string::npos;
}

bool IsSafeFileName(const std::string& name) {
    constexpr unsigned char kDelete = 0x7F;
    return !HasForbiddenCharacter(name) && std::ranges::none_of(name, [](unsigned char character) {
        return character < ' ' || character == kDelete || character == '\\' || character == ':';
    });
}

} // namespace ruvo
