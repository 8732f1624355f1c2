// Values of the files that stand in for the registry. Input: a byte that is the capacity, and the user's
// file.
#include "fuzz/support/input.h"
#include "fuzz/support/memory_system.h"
#include "fuzz/support/require.h"

#include "platform/ini_text.h"
#include "platform/registry.h"
#include "platform/text_file.h"

#include <array>
#include <cstdlib>

namespace ruvo::fuzz {

namespace {

const std::string kKey = "K";
constexpr std::string_view kNumberMark = "dword:";

int DigitOf(char c) {
    const std::size_t at = std::string_view("0123456789abcdef0123456789ABCDEF").find(c);
    return at == std::string_view::npos ? -1 : static_cast<int>(at % 16);
}

/// What the text of a value stands for: four bytes of a number in hexadecimal digits, the lowest first, or
/// itself.
std::string BytesOf(const std::string& text) {
    if (text.size() <= kNumberMark.size() || text.size() > kNumberMark.size() + 8 ||
        !EqualIniNames(text.substr(0, kNumberMark.size()), kNumberMark)) {
        return text;
    }
    std::array<int, 8> digits{};
    std::size_t place = digits.size();
    for (std::size_t at = text.size(); at-- > kNumberMark.size();) {
        digits.at(--place) = DigitOf(text[at]);
        if (digits.at(place) < 0) {
            return text;
        }
    }
    std::string bytes;
    for (std::size_t at = digits.size(); at > 0; at -= 2) {
        bytes += static_cast<char>(digits.at(at - 2) * 16 + digits.at(at - 1));
    }
    return bytes;
}

void CheckValue(const CIniText& ini, const std::string& name, std::size_t capacity) {
    const SIniEntry* entry = ini.FindEntry(kKey, name);
    if (entry == nullptr && name.empty()) {
        entry = ini.FindEntry(kKey, "@");
    }
    std::optional<std::string> wanted;
    if (entry != nullptr && entry->value) {
        wanted = BytesOf(*entry->value);
        wanted = wanted->size() <= capacity ? wanted : std::nullopt;
    }
    Require(ReadRegistryValue(ERegistryRoot::CurrentUser, kKey, name, capacity) == wanted,
            "a value is the number or the text that stands in the file");
}

void Check(CInput input) {
    [[maybe_unused]] static const int named =
        setenv("RUVO_REGISTRY_USER", "/user.ini", 1) + setenv("RUVO_REGISTRY_MACHINE", "/machine.ini", 1);
    const std::size_t capacity = input.TakeByte();
    MemorySystem().touched.clear();
    MemorySystem().AddFile("C:\\user.ini", {input.Rest().begin(), input.Rest().end()});
    std::string text;
    Require(ReadTextFile("/user.ini", text), "the file is read");
    const CIniText ini = CIniText::Parse(text);
    CheckValue(ini, "V", capacity);
    CheckValue(ini, "", capacity);
    Require(!ReadRegistryValue(ERegistryRoot::LocalMachine, kKey, "V", capacity),
            "the machine's part is another file");
}

} // namespace

} // namespace ruvo::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    ruvo::fuzz::Check(ruvo::fuzz::CInput({data, size}));
    return 0;
}
