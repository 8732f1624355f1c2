// Day files made for the tests of the commands that read them.
#pragma once

#include "model/cells/binary_cell.h"
#include "model/cells/cell_factory.h"
#include "model/records/event_record.h"
#include "model/values/data_factory.h"

#include <cstdint>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace ruvo::test {

inline std::vector<std::string> Lines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

inline std::unique_ptr<CParlaneData> Value(std::uint32_t type, const std::vector<std::uint8_t>& data) {
    return CDataFactory::Create(type, data);
}

/// That day of November 2026, at hour:12:01.234.
inline CParlaneIEC870 At(std::uint8_t day, std::uint8_t hour) {
    return CParlaneIEC870(CParlaneIEC870::Octets{0xD2, 4, 12, hour, day, 11, 26});
}

inline std::string Image(const CEventRecord& record) {
    std::vector<std::uint8_t> bytes;
    record.Serialise(bytes);
    return {bytes.begin(), bytes.end()};
}

inline std::string Simple(const CParlaneIEC870& time, const std::string& text) {
    CParlaneDataList values;
    values.push_back(Value(0x24, {7}));
    values.push_back(nullptr);
    return Image(CSimpleEventRecord(0, 0, 5, time, text, nullptr, "D\xE9part \"7\"", "a\x07\x1B[2J", "\x81\\",
                                    0x0320, "Step %u", std::move(values)));
}

inline std::string Extended(const CParlaneIEC870& time, const std::string& text,
                            const std::string& label = "Fault %u") {
    CCellList cells;
    cells.push_back(CCellFactory::CreateWithDefaultLimits({}, Value(0x20, {5}).get(), "Event Value "));
    static_cast<CBinaryCell&>(*cells.back()).SetBitNames({"Start", "Trip", "Gesperrt \xFC"});
    cells.push_back(CCellFactory::CreateWithDefaultLimits({}, Value(0x24, {0x0F, 1}).get(), label));
    const auto value = Value(0x20, {5});
    return Image(
        CExtendedEventRecord(1, 9, 5, time, text, value->Clone(), "P", "Q", "R", 0x0901, std::move(cells)));
}

inline const std::string kHeader = "APP: Parlane\r\nTYPE: EventList\r\n\r\nheaderText\r\n\x1A";

} // namespace ruvo::test
