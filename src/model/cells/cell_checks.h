// Checking of values against limits: what is found is corrected in place and reported.
#pragma once

#include "model/status/errors.h"

#include <cstdint>
#include <string>

namespace ruvo {

/// Numbers of the messages that a check reports; never renumber.
enum class ECellMessage : unsigned {
    StepNotOne = 225,
    TooManyBits = 226,
    FixedBitsSet = 227,
    MaximumBelowMinimum = 228,
    MaximumNotAligned = 229,
    ValueBelowMinimum = 230,
    ValueAboveMaximum = 231,
    ValueNotAligned = 232,
    MillisecondsNotAligned = 233,
    MinutesNotAligned = 234,
    HoursNotAligned = 235,
    DayNotAligned = 236,
    NegativeStep = 237,
    CharactersOutOfRange = 238,
};

/// Appends a CCellError; always false, the result of a check with errors.
bool ReportCellError(CErrorList& errors, ECellMessage message, std::string argument1,
                     std::string argument2 = {}, std::string argument3 = {});

/// "0x%08x" and "%f" as the C library writes them in its own locale.
std::string HexNumberText(std::uint32_t number);
std::string RealNumberText(double number);

/// A value with its limits. 64 bits hold every sum and difference of 32-bit values, signed or not.
struct SIntegerCheck {
    std::int64_t value;
    std::int64_t minimum;
    std::int64_t maximum;
    std::int64_t step; ///< alignment is tested where it is above 0
};
bool CheckIntegers(SIntegerCheck& check, CErrorList& errors);

struct SRealCheck {
    double value;
    double minimum;
    double maximum;
    double step;  ///< alignment is tested where it is above 0
    double error; ///< how far each of them may be from what was meant, relative to itself
};
bool CheckReals(SRealCheck& check, CErrorList& errors);

} // namespace ruvo
