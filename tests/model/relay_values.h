// Values and records from short texts.
#pragma once

#include "model/values/data_factory.h"
#include "model/values/parlane_integers.h"
#include "model/values/parlane_number.h"
#include "model/values/parlane_text.h"
#include "model/values/parlane_time.h"
#include "support/hex.h"

#include <algorithm>
#include <functional>
#include <map>
#include <sstream>
#include <string>

namespace ruvo::test {

using Bytes = std::vector<std::uint8_t>;
using Value = std::unique_ptr<CParlaneData>;

template <class TValue, class... TArguments>
Value Make(TArguments... arguments) {
    return std::make_unique<TValue>(arguments...);
}
/// 13:07:09.045 on 5 February 2024, a Monday.
inline constexpr CParlaneIEC870::Octets kMonday{0x55, 0x23, 7, 13, 0x25, 2, 24};
/// The time with one octet replaced: the octet's number times 1000 plus its value; 0 for none.
inline Value Time(CParlaneIEC870::Octets octets, double change) {
    if (const auto number = static_cast<std::size_t>(change); number > 0)
        octets.at(number / 1000) = static_cast<std::uint8_t>(number % 1000);
    return Make<CParlaneIEC870>(octets);
}

/// Hexadecimal octets, blanks or "_" between them.
inline Bytes FromHex(std::string hex) {
    std::ranges::replace(hex, '_', ' ');
    return Hex(hex);
}

/// A value from its kind's letter and a number, or from tagged hex.
inline Value FromWord(const std::string& word) {
    static const std::map<char, std::function<Value(double)>> kMakers{
        {'i', [](double n) { return Make<CParlaneInt>(static_cast<std::int32_t>(n), 4U); }},
        {'u', [](double n) { return Make<CParlaneUint>(static_cast<std::uint32_t>(n), 4U); }},
        {'b', [](double n) { return Make<CParlaneFlags>(static_cast<std::uint32_t>(n), 1U); }},
        {'T', [](double n) { return Make<CParlaneTimer>(static_cast<std::uint32_t>(n)); }},
        {'x', [](double n) { return Make<CParlaneStringIndex>(static_cast<std::uint16_t>(n)); }},
        {'f', [](double n) { return Make<CParlaneFloat>(static_cast<float>(n)); }},
        {'s', [](double n) { return Make<CParlaneText>(std::string(static_cast<std::size_t>(n), 'x')); }},
        {'S', [](double n) { return Time({}, n); }},
        {'t', [](double n) { return Time(kMonday, n); }}};
    static const std::map<char, std::uint8_t> kUnitCodes{{'A', 0},  {'V', 1},  {'%', 12},
                                                         {'_', 15}, {'^', 24}, {'?', 200}};
    const double number = std::strtod(word.c_str() + 1, nullptr);
    if (const auto unit = kUnitCodes.find(word[0]); unit != kUnitCodes.end())
        return Make<CParlaneNumber>(number, unit->second, ENumberForm::Long);
    const auto maker = kMakers.find(word[0]);
    return maker != kMakers.end() ? maker->second(number)
                                  : CDataFactory::CreateTagged(FromHex(word == "FF" ? "FF 00" : word));
}

inline Bytes ToBytes(const CParlaneData* value) {
    Bytes bytes;
    CDataFactory::AppendTagged(value, bytes);
    return bytes;
}

} // namespace ruvo::test
