// Text-like values: texts, passwords, hexadecimal texts, modem dial codes, enciphered passwords.
#pragma once

#include "model/values/parlane_data.h"

#include <string>
#include <string_view>

namespace ruvo {

/// A text of the relay: its bytes in the device character set, and their meaning in the program's code page.
/// Most texts are plain ASCII, whose bytes mean themselves; those are held once.
class CParlaneText final : public CParlaneData {
public:
    explicit CParlaneText(std::span<const std::uint8_t> data);
    explicit CParlaneText(std::string_view text);

    std::uint32_t GetWireBytes(std::span<std::uint8_t> buffer, std::uint32_t& typeCode,
                               std::size_t& size) const override;
    std::size_t GetSize() const override { return m_text.size(); } // a character is a byte on both sides
    std::unique_ptr<CParlaneData> Clone() const override;
    std::unique_ptr<CParlaneData> CreateMinimum() const override;
    std::unique_ptr<CParlaneData> CreateMaximum() const override;
    std::unique_ptr<CParlaneData> CreateStep() const override;

    const std::string& GetText() const { return m_text; }
    /// Gives the text away; the value is empty afterwards.
    std::string TakeText();
    /// Encodes every character anew; one without a device character becomes "." on the wire.
    void SetText(std::string_view text);

private:
    std::string m_text;
    std::string m_raw; ///< the bytes as the relay holds them; empty where they are those of the text
};

/// A password in clear; its bytes are not mapped.
class CParlanePassword final : public CParlaneData {
public:
    explicit CParlanePassword(std::span<const std::uint8_t> data);
    explicit CParlanePassword(std::string_view text) : CParlaneData(kTypePassword), m_text(text) {}

    std::uint32_t GetWireBytes(std::span<std::uint8_t> buffer, std::uint32_t& typeCode,
                               std::size_t& size) const override;
    std::size_t GetSize() const override { return m_text.size(); }
    std::unique_ptr<CParlaneData> Clone() const override;
    std::unique_ptr<CParlaneData> CreateMinimum() const override;
    std::unique_ptr<CParlaneData> CreateMaximum() const override;
    std::unique_ptr<CParlaneData> CreateStep() const override;

    const std::string& GetText() const { return m_text; }
    void SetText(std::string_view text) { m_text = text; }
    /// One "*" per character.
    std::string GetMaskedText() const { return std::string(m_text.size(), '*'); }

private:
    std::string m_text;
};

/// Bytes held as text, two upper-case digits each.
class CParlaneHex final : public CParlaneData {
public:
    explicit CParlaneHex(std::span<const std::uint8_t> data);

    std::uint32_t GetWireBytes(std::span<std::uint8_t> buffer, std::uint32_t& typeCode,
                               std::size_t& size) const override;
    std::size_t GetSize() const override { return m_text.size() / 2; }
    std::unique_ptr<CParlaneData> Clone() const override;
    std::unique_ptr<CParlaneData> CreateMinimum() const override;
    std::unique_ptr<CParlaneData> CreateMaximum() const override;
    std::unique_ptr<CParlaneData> CreateStep() const override;

    const std::string& GetText() const { return m_text; }
    /// Any text is taken; a pair counts up to its first character that is no digit, a last odd one not at
    /// all.
    void SetText(std::string_view text) { m_text = text; }

private:
    std::string m_text;
};

/// Dial codes of a modem, plain bytes. Its default limits are empty.
class CParlaneModem final : public CParlaneData {
public:
    CParlaneModem() : CParlaneData(kTypeModem) {}
    explicit CParlaneModem(std::span<const std::uint8_t> data);

    std::uint32_t GetWireBytes(std::span<std::uint8_t> buffer, std::uint32_t& typeCode,
                               std::size_t& size) const override;
    std::size_t GetSize() const override { return m_bytes.size(); }
    std::unique_ptr<CParlaneData> Clone() const override;
    std::unique_ptr<CParlaneData> CreateMinimum() const override;
    std::unique_ptr<CParlaneData> CreateMaximum() const override;
    std::unique_ptr<CParlaneData> CreateStep() const override;

    const std::vector<std::uint8_t>& GetBytes() const { return m_bytes; }
    void SetBytes(std::span<const std::uint8_t> bytes) { m_bytes.assign(bytes.begin(), bytes.end()); }

private:
    std::vector<std::uint8_t> m_bytes;
};

/// A password enciphered with a key of the relay.
class CParlaneEncryptedPassword final : public CParlaneData {
public:
    explicit CParlaneEncryptedPassword(std::span<const std::uint8_t> data);
    /// Enciphers a password of 8 characters with a key of 32 hexadecimal digits. Other lengths are traced as
    /// errors: missing key digits count as 0; a longer password leaves zeros after its first 8 characters; a
    /// shorter one throws std::invalid_argument.
    CParlaneEncryptedPassword(std::string_view password, std::string_view key);

    std::uint32_t GetWireBytes(std::span<std::uint8_t> buffer, std::uint32_t& typeCode,
                               std::size_t& size) const override;
    std::size_t GetSize() const override { return m_bytes.size(); }
    std::unique_ptr<CParlaneData> Clone() const override;
    std::unique_ptr<CParlaneData> CreateMinimum() const override;
    std::unique_ptr<CParlaneData> CreateMaximum() const override;
    std::unique_ptr<CParlaneData> CreateStep() const override;

    const std::vector<std::uint8_t>& GetBytes() const { return m_bytes; }

private:
    std::vector<std::uint8_t> m_bytes;
};

} // namespace ruvo
