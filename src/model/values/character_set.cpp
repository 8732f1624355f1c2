#include "model/values/character_set.h"

#include <algorithm>
#include <array>

namespace ruvo {

namespace {

constexpr unsigned char kFirstMapped = 0x7F;
constexpr unsigned char kColumnMark = 0x10;
constexpr unsigned char kNoPartner = '.';

struct SCharacterTables {
    std::array<unsigned char, 256> toText{};
    std::array<unsigned char, 256> toDevice{};
};

struct SCharacterPair {
    unsigned char device;
    unsigned char text;
};

constexpr SCharacterTables MakeAscii() {
    SCharacterTables tables;
    for (unsigned i = 0; i < 256; ++i) {
        tables.toText[i] = tables.toDevice[i] = i < kFirstMapped ? static_cast<unsigned char>(i) : kNoPartner;
    }
    return tables;
}

constexpr void AddRun(SCharacterTables& tables, unsigned firstDevice, std::string_view characters) {
    for (const char character : characters) {
        const auto text = static_cast<unsigned char>(character);
        tables.toText[firstDevice] = text;
        tables.toDevice[text] = static_cast<unsigned char>(firstDevice++);
    }
}

/// Western European: the relay's characters follow one another from 0x7F on, in an order of their own.
constexpr SCharacterTables MakeWestern() {
    SCharacterTables tables = MakeAscii();
    AddRun(tables, 0x7F,
           "\xC0\xC1\xC4\xC7\xC8\xC9\xCA\xCB\xCE\xCF\xD1\xD4\xD6\xD9\xDB\xDC\xDF"
           "\xE0\xE1\xE4\xE7\xE8\xE9\xEA\xEB\xEE\xEF\xF1\xF4\xF6\xF9\xFB\xFC\xCD\xD3\xED\xF3");
    return tables;
}

/// Cyrillic: the relay has no letters of its own for those that look like Latin ones, and of the main
/// alphabet no small letters.
constexpr SCharacterTables MakeCyrillic() {
    constexpr SCharacterPair kOthers[] = {{0x86, 0xA8}, {0x88, 0xAF}, {0x97, 0xB8}, {0x99, 0xBF},
                                          {0xBC, 0xA1}, {0xBD, 0xA2}, {0xFD, 0xB0}, {0xFE, 0xB5}};
    constexpr SCharacterPair kLookalikes[] = {{'A', 0xC0}, {'B', 0xC2}, {'E', 0xC5}, {'K', 0xCA}, {'M', 0xCC},
                                              {'H', 0xCD}, {'O', 0xCE}, {'P', 0xD0}, {'C', 0xD1}, {'T', 0xD2},
                                              {'Y', 0xD3}, {'X', 0xD5}, {'b', 0xDC}, {'I', 0xB2}, {'i', 0xB3},
                                              {'J', 0xA3}, {'j', 0xBC}, {'S', 0xBD}, {'s', 0xBE}};
    constexpr unsigned kCapitals = 0xC0;
    constexpr unsigned kSmallLetters = 0xE0;
    SCharacterTables tables = MakeAscii();
    AddRun(tables, 0xD0, "\xC1\xC3\xC4\xC6\xC7\xC8\xC9\xCB\xCF\xD4\xD6\xD7\xD8\xD9\xDA\xDB\xDD\xDE\xDF");
    for (const SCharacterPair& pair : kOthers) {
        tables.toText[pair.device] = pair.text;
        tables.toDevice[pair.text] = pair.device;
    }
    for (const SCharacterPair& pair : kLookalikes) {
        tables.toDevice[pair.text] = pair.device;
    }
    for (unsigned i = 0; i < 32; ++i) {
        tables.toDevice[kSmallLetters + i] = tables.toDevice[kCapitals + i];
    }
    return tables;
}

constexpr SCharacterTables kAscii = MakeAscii();
constexpr SCharacterTables kWestern = MakeWestern();
constexpr SCharacterTables kCyrillic = MakeCyrillic();

const SCharacterTables* g_tables = &kWestern;

unsigned char ToCode(char character) {
    return static_cast<unsigned char>(character);
}

} // namespace

void SetDeviceCodePage(unsigned codePage) {
    g_tables = codePage == 1252 ? &kWestern : codePage == 1251 ? &kCyrillic : &kAscii;
}

std::string DecodeDeviceBytes(std::span<const std::uint8_t> bytes) {
    std::string text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    unsigned char previous = 0;
    for (char& character : text) {
        const unsigned char code = ToCode(character);
        if (code >= kFirstMapped && previous != kColumnMark) {
            character = static_cast<char>(g_tables->toText[code]);
        }
        previous = code;
    }
    return text;
}

std::string DecodeDeviceText(std::string_view text) {
    return DecodeDeviceBytes({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
}

std::string EncodeDeviceText(std::string_view text) {
    std::string bytes(text);
    std::transform(bytes.begin(), bytes.end(), bytes.begin(), EncodeDeviceChar);
    return bytes;
}

char DecodeDeviceChar(char device) {
    return static_cast<char>(g_tables->toText[ToCode(device)]);
}

char EncodeDeviceChar(char character) {
    return static_cast<char>(g_tables->toDevice[ToCode(character)]);
}

bool IsDeviceCharInRange(char character, std::uint32_t low, std::uint32_t high) {
    const unsigned char code = ToCode(EncodeDeviceChar(character));
    const bool hasPartner = code != kNoPartner || ToCode(character) == kNoPartner;
    return hasPartner && code >= low && code <= high;
}

char ClampDeviceChar(char character, std::uint32_t low, std::uint32_t high) {
    const unsigned char code = ToCode(EncodeDeviceChar(character));
    if (code < low) {
        return DecodeDeviceChar(static_cast<char>(low));
    }
    if (code > high) {
        return DecodeDeviceChar(static_cast<char>(high));
    }
    return IsDeviceCharInRange(character, low, high) ? character : static_cast<char>(kNoPartner);
}

} // namespace ruvo
