#include "model/records/event_location.h"

#include <array>

namespace ruvo {
namespace {

struct SClassRow {
    std::uint16_t mask;
    std::uint16_t value;
    std::uint16_t locationClass;
};

/// A location is column x 256 + row, so a mask of 0xFFFF takes one cell, 0xFFF0 the sixteen rows from the
/// value on, and 0xFF00 a whole column. The first matching row counts: the first cell of a group of registers
/// belongs to the cell that heads them, so its row comes before the group's. What matches none has the class
/// 0.
constexpr std::array kClassRows{
    SClassRow{0xFFFF, 0x0020, 0x20},   SClassRow{0xFFFF, 0x0030, 0x20},   SClassRow{0xFFFF, 0x0021, 0x21},
    SClassRow{0xFFFF, 0x0040, 0x21},   SClassRow{0xFFFF, 0x0022, 0x22},   SClassRow{0xFFFF, 0x0050, 0x22},
    SClassRow{0xFFFF, 0x0023, 0x23},   SClassRow{0xFFFF, 0x0060, 0x23},   SClassRow{0xFF00, 0x0100, 0x100},
    SClassRow{0xFFF0, 0x0030, 0x30},   SClassRow{0xFFF0, 0x0040, 0x40},   SClassRow{0xFFF0, 0x0050, 0x50},
    SClassRow{0xFFF0, 0x0060, 0x60},   SClassRow{0xFFFF, 0x00DF, 0xDF},   SClassRow{0xFFFF, 0xFFFD, 0xFFFD},
    SClassRow{0xFFFF, 0xFFFC, 0xFFFC}, SClassRow{0xFFFF, 0xFFFB, 0xFFFB},
};

} // namespace

std::uint16_t ClassifyEventLocation(std::uint16_t location) {
    for (const SClassRow& row : kClassRows) {
        if ((location & row.mask) == row.value) {
            return row.locationClass;
        }
    }
    return 0;
}

bool ListsBits(std::uint16_t location) {
    const std::uint16_t locationClass = ClassifyEventLocation(location);
    return locationClass == 0x30 || locationClass == 0x40 || locationClass == 0x50 || locationClass == 0x60;
}

} // namespace ruvo
