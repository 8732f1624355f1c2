#include "model/values/parlane_text.h"

#include "base/tea.h"
#include "base/text.h"
#include "model/values/character_set.h"
#include "model/values/parlane_integers.h"
#include "platform/trace.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace ruvo {

namespace {

constexpr std::size_t kCipherBlockSize = 8;
constexpr std::size_t kCipherKeyDigits = std::size_t{2} * 16;

std::span<const std::uint8_t> BytesOf(const std::string& text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

/// The limits of a text are the least and the greatest code of a character.
std::unique_ptr<CParlaneData> MakeCharacterCode(std::uint32_t code) {
    return std::make_unique<CParlaneUint>(code, 1);
}

/// Two digits as one byte; a character that is no digit ends the number.
std::uint8_t HexByte(char first, char second) {
    const int high = HexDigitValue(first);
    const int low = HexDigitValue(second);
    if (high < 0) {
        return 0;
    }
    return static_cast<std::uint8_t>(low < 0 ? high : high * 16 + low);
}

bool IsCipherKey(std::string_view key) {
    return key.size() == kCipherKeyDigits &&
           std::all_of(key.begin(), key.end(), [](char digit) { return HexDigitValue(digit) >= 0; });
}

TeaKey MakeTeaKey(std::string_view digits) {
    std::string padded(digits.substr(0, kCipherKeyDigits));
    padded.resize(kCipherKeyDigits, '0');
    TeaKey key{};
    for (std::size_t i = 0; i < kCipherKeyDigits / 2; ++i) {
        key[i / 4] |= std::uint32_t{HexByte(padded[2 * i], padded[2 * i + 1])} << (8 * (i % 4));
    }
    return key;
}

std::uint32_t LittleEndianWord(std::string_view characters) {
    std::uint32_t word = 0;
    for (std::size_t i = 4; i-- > 0;) {
        word = word << 8U | static_cast<std::uint8_t>(characters[i]);
    }
    return word;
}

void PutLittleEndianWord(std::uint32_t word, std::uint8_t* bytes) {
    for (unsigned i = 0; i < 4; ++i) {
        bytes[i] = static_cast<std::uint8_t>(word >> (8 * i));
    }
}

} // namespace

CParlaneText::CParlaneText(std::span<const std::uint8_t> data)
    : CParlaneData(kTypeText), m_text(DecodeDeviceBytes(data)) {
    // The bytes are kept only where decoding changed them: what is sent or stored must be the very bytes that
    // came.
    if (!std::ranges::equal(BytesOf(m_text), data)) {
        m_raw.assign(data.begin(), data.end());
    }
}

CParlaneText::CParlaneText(std::string_view text) : CParlaneData(kTypeText) {
    SetText(text);
}

std::uint32_t CParlaneText::GetWireBytes(std::span<std::uint8_t> buffer, std::uint32_t& typeCode,
                                         std::size_t& size) const {
    return PutWireBytes(BytesOf(m_raw.empty() ? m_text : m_raw), buffer, typeCode, size);
}

std::unique_ptr<CParlaneData> CParlaneText::Clone() const {
    return std::make_unique<CParlaneText>(*this);
}
std::unique_ptr<CParlaneData> CParlaneText::CreateMinimum() const {
    return MakeCharacterCode(0);
}
std::unique_ptr<CParlaneData> CParlaneText::CreateMaximum() const {
    return MakeCharacterCode(0xFF);
}
std::unique_ptr<CParlaneData> CParlaneText::CreateStep() const {
    return MakeCharacterCode(1);
}

void CParlaneText::SetText(std::string_view text) {
    std::string raw = EncodeDeviceText(text);
    m_text = std::string(text); // may be a view of the text that it replaces
    m_raw = raw == m_text ? std::string() : std::move(raw);
}

std::string CParlaneText::TakeText() {
    m_raw.clear();
    return std::exchange(m_text, {});
}

CParlanePassword::CParlanePassword(std::span<const std::uint8_t> data)
    : CParlaneData(kTypePassword), m_text(data.begin(), data.end()) {}

std::uint32_t CParlanePassword::GetWireBytes(std::span<std::uint8_t> buffer, std::uint32_t& typeCode,
                                             std::size_t& size) const {
    return PutWireBytes(BytesOf(m_text), buffer, typeCode, size);
}

std::unique_ptr<CParlaneData> CParlanePassword::Clone() const {
    return std::make_unique<CParlanePassword>(*this);
}
std::unique_ptr<CParlaneData> CParlanePassword::CreateMinimum() const {
    return MakeCharacterCode(0);
}
std::unique_ptr<CParlaneData> CParlanePassword::CreateMaximum() const {
    return MakeCharacterCode(0xFF);
}
std::unique_ptr<CParlaneData> CParlanePassword::CreateStep() const {
    return MakeCharacterCode(1);
}

CParlaneHex::CParlaneHex(std::span<const std::uint8_t> data) : CParlaneData(kTypeHex) {
    m_text.reserve(2 * data.size());
    for (const std::uint8_t octet : data) {
        AppendHexByte(m_text, octet);
    }
}

std::uint32_t CParlaneHex::GetWireBytes(std::span<std::uint8_t> buffer, std::uint32_t& typeCode,
                                        std::size_t& size) const {
    size = GetSize();
    for (std::size_t i = 0; i < std::min(size, buffer.size()); ++i) {
        buffer[i] = HexByte(m_text[2 * i], m_text[2 * i + 1]);
    }
    typeCode = GetTypeCode();
    return typeCode;
}

std::unique_ptr<CParlaneData> CParlaneHex::Clone() const {
    return std::make_unique<CParlaneHex>(*this);
}
std::unique_ptr<CParlaneData> CParlaneHex::CreateMinimum() const {
    return MakeCharacterCode(0);
}
std::unique_ptr<CParlaneData> CParlaneHex::CreateMaximum() const {
    return MakeCharacterCode(0xFF);
}
std::unique_ptr<CParlaneData> CParlaneHex::CreateStep() const {
    return MakeCharacterCode(1);
}

CParlaneModem::CParlaneModem(std::span<const std::uint8_t> data)
    : CParlaneData(kTypeModem), m_bytes(data.begin(), data.end()) {}

std::uint32_t CParlaneModem::GetWireBytes(std::span<std::uint8_t> buffer, std::uint32_t& typeCode,
                                          std::size_t& size) const {
    return PutWireBytes(m_bytes, buffer, typeCode, size);
}

std::unique_ptr<CParlaneData> CParlaneModem::Clone() const {
    return std::make_unique<CParlaneModem>(*this);
}
std::unique_ptr<CParlaneData> CParlaneModem::CreateMinimum() const {
    return std::make_unique<CParlaneModem>();
}
std::unique_ptr<CParlaneData> CParlaneModem::CreateMaximum() const {
    return std::make_unique<CParlaneModem>();
}
std::unique_ptr<CParlaneData> CParlaneModem::CreateStep() const {
    return std::make_unique<CParlaneModem>();
}

CParlaneEncryptedPassword::CParlaneEncryptedPassword(std::span<const std::uint8_t> data)
    : CParlaneData(kTypeEncryptedPassword), m_bytes(data.begin(), data.end()) {}

CParlaneEncryptedPassword::CParlaneEncryptedPassword(std::string_view password, std::string_view key)
    : CParlaneData(kTypeEncryptedPassword) {
    if (password.size() != kCipherBlockSize) {
        TraceError("Password size must be equal to 8 bytes.");
    }
    if (!IsCipherKey(key)) {
        TraceError("Encryption key size must be equal to 16 bytes (64 bits).");
    }
    if (password.size() < kCipherBlockSize) {
        throw std::invalid_argument("a password to encipher needs 8 characters");
    }
    const STeaBlock block = TeaEncipher(
        {LittleEndianWord(password.substr(0, 4)), LittleEndianWord(password.substr(4, 4))}, MakeTeaKey(key));
    m_bytes.resize(password.size());
    PutLittleEndianWord(block.first, m_bytes.data());
    PutLittleEndianWord(block.second, m_bytes.data() + 4);
}

std::uint32_t CParlaneEncryptedPassword::GetWireBytes(std::span<std::uint8_t> buffer, std::uint32_t& typeCode,
                                                      std::size_t& size) const {
    return PutWireBytes(m_bytes, buffer, typeCode, size);
}

std::unique_ptr<CParlaneData> CParlaneEncryptedPassword::Clone() const {
    return std::make_unique<CParlaneEncryptedPassword>(*this);
}
std::unique_ptr<CParlaneData> CParlaneEncryptedPassword::CreateMinimum() const {
    return MakeCharacterCode(0);
}
std::unique_ptr<CParlaneData> CParlaneEncryptedPassword::CreateMaximum() const {
    return MakeCharacterCode(0xFF);
}
std::unique_ptr<CParlaneData> CParlaneEncryptedPassword::CreateStep() const {
    return MakeCharacterCode(1);
}

} // namespace ruvo
