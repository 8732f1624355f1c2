// The formatter. Input: capacity (2 bytes), locale and count of values (1 byte: 3 and 3 bits), that many
// tagged values, and the format text.
#include "fuzz/support/input.h"
#include "fuzz/support/require.h"

#include "model/format/formatter.h"
#include "model/values/parlane_integers.h"
#include "model/values/parlane_number.h"
#include "model/values/parlane_text.h"

#include <cstdio>
#include <cstring>

namespace ruvo::fuzz {

namespace {

constexpr std::size_t kMostCapacity = 1024;

struct SCase {
    std::size_t capacity = 0;
    const SLocale* locale = nullptr;
    CParlaneDataList values;
    std::string format;
};

SCase TakeCase(CInput input) {
    SCase made;
    made.capacity = input.TakeWord() % (kMostCapacity + 1);
    const unsigned choice = input.TakeByte();
    constexpr unsigned kNoLocale = 7;
    made.locale = choice % 8 == kNoLocale ? nullptr : &GetLocale(choice % 8);
    for (unsigned count = choice / 8 % 8; count > 0; --count) {
        made.values.push_back(input.TakeValue());
    }
    made.format.assign(input.Rest().begin(), input.Rest().end());
    return made;
}

/// Formats into a heap buffer of exactly the capacity; gives what was written.
template <class TFormat>
std::string Formatted(std::size_t capacity, const TFormat& format) {
    const std::unique_ptr<char[]> buffer(new char[capacity]);
    std::memset(buffer.get(), '\x7E', capacity);
    const std::size_t length = format(buffer.get(), capacity);
    Require(capacity == 0 ? length == 0 : length < capacity, "the capacity is not exceeded");
    Require(capacity == 0 || buffer[length] == '\0', "what is written is terminated");
    return {buffer.get(), length};
}

/// With a smaller buffer the same text is written, cut; and the verdict does not depend on the room.
template <class TFormat>
std::string CheckedText(const SCase& made, const TFormat& format) {
    const std::string all = Formatted(kMostCapacity + 1, format);
    const std::string cut = Formatted(made.capacity, format);
    Require(cut == all.substr(0, made.capacity > 0 ? made.capacity - 1 : 0), "a short buffer cuts the text");
    return all;
}

/// Whatever a value's class, something that the native arguments know.
CNativeArgument ToNative(const CParlaneData* value) {
    if (value == nullptr) {
        return std::string_view();
    }
    if (const auto* text = dynamic_cast<const CParlaneText*>(value)) {
        return std::string_view(text->GetText());
    }
    if (const auto* number = dynamic_cast<const CParlaneNumber*>(value)) {
        return SFormatNumber{number->GetValue(), number->GetUnit()};
    }
    if (const auto* time = dynamic_cast<const CParlaneIEC870*>(value)) {
        return *time;
    }
    if (const auto* integer = dynamic_cast<const CParlaneInt*>(value)) {
        return integer->GetValue();
    }
    return value->GetTypeCode() == kTypeFloat ? CNativeArgument(value->GetFloat())
                                              : CNativeArgument(value->GetUnsigned());
}

void Check(const SCase& made) {
    bool success = true;
    const std::string text = CheckedText(made, [&](char* buffer, std::size_t capacity) {
        bool ownSuccess = true;
        const std::size_t length =
            FormatValues(made.locale, buffer, capacity, made.format, made.values, ownSuccess);
        success = ownSuccess;
        return length;
    });
    if (made.format.find('%') == std::string::npos) {
        Require(success && text == made.format.substr(0, kMostCapacity), "plain text stays as it is");
    }
    if (made.values.size() <= 1) {
        const CParlaneData* const only = made.values.empty() ? nullptr : made.values.front().get();
        bool oneSuccess = true;
        const std::string one = Formatted(kMostCapacity + 1, [&](char* buffer, std::size_t capacity) {
            return FormatValue(made.locale, buffer, capacity, made.format, only, oneSuccess);
        });
        Require(one == text && oneSuccess == success, "one value is a list of one");
    }
    std::vector<CNativeArgument> arguments;
    for (const auto& value : made.values) {
        arguments.push_back(ToNative(value.get()));
    }
    CheckedText(made, [&](char* buffer, std::size_t capacity) {
        return FormatNative(made.locale, buffer, capacity, made.format, arguments);
    });
}

/// Conversions that mean the same to the C library.
constexpr std::string_view kShared = "diuX";

/// Such a conversion; flags that the C library leaves undefined for the letter stay out.
std::string TakeConversion(CInput& input, char& letter) {
    const unsigned flags = input.TakeByte();
    const unsigned width = input.TakeByte() % 40U;
    const unsigned precision = input.TakeByte() % 20U;
    letter = kShared[input.TakeByte() % kShared.size()];
    const bool isSigned = letter == 'd' || letter == 'i';
    std::string format = "%";
    format += (flags & 1U) != 0 ? "-" : "";
    format += (flags & 2U) != 0 ? "0" : "";
    format += (flags & 4U) != 0 && isSigned ? "+" : "";
    format += (flags & 8U) != 0 && isSigned ? " " : "";
    format += (flags & 16U) != 0 && letter == 'X' ? "#" : "";
    format += (flags & 32U) != 0 ? std::to_string(width) : "";
    format += (flags & 64U) != 0 ? "." + std::to_string(precision) : "";
    format += (flags & 128U) != 0 ? "h" : "";
    return format + letter;
}

void CheckAgainstLibrary(CInput input) {
    char letter = 0;
    const std::string format = TakeConversion(input, letter);
    const std::uint32_t number = input.TakeLong();
    if ((number & 0xFFFFU) == 0) { // to no precision, the library writes no digit of a 0
        return;
    }
    const CNativeArgument argument(number);
    const std::string ours = Formatted(kMostCapacity, [&](char* buffer, std::size_t capacity) {
        return FormatNative(nullptr, buffer, capacity, format, {&argument, 1});
    });
    const std::string theirs = Formatted(kMostCapacity, [&](char* buffer, std::size_t capacity) {
        return static_cast<std::size_t>(std::snprintf(buffer, capacity, format.c_str(), number));
    });
    Require(ours == theirs, "a conversion that the C library knows gives what it gives there");
}

} // namespace

} // namespace ruvo::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    ruvo::fuzz::Check(ruvo::fuzz::TakeCase(ruvo::fuzz::CInput({data, size})));
    ruvo::fuzz::CheckAgainstLibrary(ruvo::fuzz::CInput({data, size}));
    return 0;
}
