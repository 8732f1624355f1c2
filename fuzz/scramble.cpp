// Passwords in their scrambled form. Input: a scrambled text, which is also tried as a plain password.
#include "fuzz/support/input.h"
#include "fuzz/support/memory_system.h"
#include "fuzz/support/require.h"

#include "config/scramble.h"

#include <array>
#include <cstring>

namespace ruvo::fuzz {

namespace {

constexpr char kUntouched = '\x7E';

/// A buffer of exactly the promised size on the heap: the sanitizer sees a byte behind it.
template <std::size_t kSize>
std::unique_ptr<std::array<char, kSize>> Buffer() {
    auto buffer = std::make_unique<std::array<char, kSize>>();
    buffer->fill(kUntouched);
    return buffer;
}

void CheckUnscramble(const std::string& text) {
    const auto plain = Buffer<kMaxPasswordLength + 1>();
    const std::size_t length = std::strlen(text.c_str());
    if (UnscramblePassword(text.c_str(), plain->data()) != 0) {
        Require(length < kScrambledLength || text[1] > '8', "a scrambled text is refused for a reason");
        Require(std::ranges::count(*plain, kUntouched) == kMaxPasswordLength + 1,
                "a refused text leaves the output alone");
        return;
    }
    Require(length >= kScrambledLength, "a short text is refused");
    Require(std::memchr(plain->data(), '\0', plain->size()) != nullptr, "a password ends within its buffer");
    const auto again = Buffer<kMaxPasswordLength + 1>();
    Require(UnscramblePassword(text.substr(0, kScrambledLength).c_str(), again->data()) == 0 &&
                *again == *plain,
            "what follows the scrambled text does not count");
}

void CheckScramble(const std::string& text) {
    const std::string password = text.c_str(); // up to its first NUL
    const auto scrambled = Buffer<kScrambledLength + 1>();
    if (ScramblePassword(password.c_str(), scrambled->data()) != 0) {
        Require(password.size() > kMaxPasswordLength && (*scrambled)[0] == kUntouched,
                "only a long password is refused");
        return;
    }
    Require(std::strlen(scrambled->data()) == kScrambledLength, "a scrambled text has one length");
    const auto plain = Buffer<kMaxPasswordLength + 1>();
    Require(UnscramblePassword(scrambled->data(), plain->data()) == 0 && password == plain->data(),
            "a scrambled password comes back");
}

} // namespace

} // namespace ruvo::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(data, data + size);
    ruvo::fuzz::MemorySystem().unixSeconds = static_cast<std::int64_t>(size); // which key is drawn
    ruvo::fuzz::CheckUnscramble(text);
    ruvo::fuzz::CheckScramble(text);
    ruvo::fuzz::CheckScramble(text.substr(0, ruvo::kMaxPasswordLength));
    return 0;
}
