#include "model/values/parlane_location.h"

namespace ruvo {

CParlaneMenu::CParlaneMenu(std::span<const std::uint8_t> data) : CParlaneData(kTypeMenu) {
    const std::uint32_t word = TakeWord(data, 2);
    Set(static_cast<std::uint8_t>(word), static_cast<std::uint8_t>(word >> 8U));
}

std::uint32_t CParlaneMenu::GetWireBytes(std::span<std::uint8_t> buffer, std::uint32_t& typeCode,
                                         std::size_t& size) const {
    return PutWord(GetLocation(), GetSize(), buffer, typeCode, size);
}

std::unique_ptr<CParlaneData> CParlaneMenu::Clone() const {
    return std::make_unique<CParlaneMenu>(*this);
}

std::unique_ptr<CParlaneData> CParlaneMenu::CreateMinimum() const {
    return std::make_unique<CParlaneMenu>(std::uint8_t{0}, std::uint8_t{0});
}

std::unique_ptr<CParlaneData> CParlaneMenu::CreateMaximum() const {
    return std::make_unique<CParlaneMenu>(std::uint8_t{0xFF}, std::uint8_t{0xFF});
}

std::unique_ptr<CParlaneData> CParlaneMenu::CreateStep() const {
    return std::make_unique<CParlaneMenu>(std::uint8_t{1}, std::uint8_t{1});
}

void CParlaneMenu::Set(std::uint8_t row, std::uint8_t column) {
    m_row = row;
    m_column = column;
}

} // namespace ruvo
