// The length word of a block bounds what a record holds.
#include "model/cells/cell_factory.h"
#include "model/records/event_record.h"
#include "model/relay_values.h"

#include <gtest/gtest.h>

namespace ruvo::test {

TEST(Record, ABlockIsAsLongAsItsLengthCanSay) {
    const auto make = [](std::size_t formatSize) {
        CParlaneDataList values;
        std::generate_n(std::back_inserter(values), 254, [] { return FromWord("s255"); });
        const std::string format(formatSize, 'x');
        return CSimpleEventRecord(1, 1, 42, {}, "", nullptr, "", "", "", 0, format, std::move(values));
    };
    for (const std::size_t size : {0xFFFFU, 0x10000U}) {
        CSimpleEventRecord simple = make(size - make(0).GetBlockSize());
        CCellList cells;
        for (std::size_t label = size - 0xFF07; cells.size() < 129; label = 249)
            cells.push_back(
                CCellFactory::CreateWithDefaultLimits({}, FromWord("s255").get(), std::string(label, 'l')));
        CExtendedEventRecord extended(1, 1, 42, {}, "", nullptr, "", "", "", 0, std::move(cells));
        EXPECT_EQ(std::pair(simple.GetBlockSize(), extended.GetCellBlockSize()), std::pair(size, size));
        const auto check = [size](auto& record) {
            Bytes bytes;
            if (size == 0xFFFF)
                record.Serialise(bytes);
            else
                EXPECT_THROW(record.Serialise(bytes), CUnwritableRecord);
            EXPECT_EQ(record.DropUnwritable().count, size - 0xFFFF);
        };
        check(simple);
        check(extended);
    }
}

} // namespace ruvo::test
