#include "platform/native_text.h"

#include "base/text.h"
#include "platform/windows/wide_text.h"

#include <atomic>
#include <shellapi.h>

namespace ruvo {

namespace {

std::atomic<UINT> g_codePage{CP_ACP};

std::wstring WideOf(UINT codePage, std::string_view text) {
    const auto size = static_cast<int>(text.size());
    std::wstring wide(
        static_cast<std::size_t>(MultiByteToWideChar(codePage, 0, text.data(), size, nullptr, 0)), L'\0');
    MultiByteToWideChar(codePage, 0, text.data(), size, wide.data(), static_cast<int>(wide.size()));
    return wide;
}

std::string NarrowIn(UINT codePage, std::wstring_view wide) {
    const auto size = static_cast<int>(wide.size());
    const int needed = WideCharToMultiByte(codePage, 0, wide.data(), size, nullptr, 0, nullptr, nullptr);
    std::string text(static_cast<std::size_t>(needed), '\0');
    WideCharToMultiByte(codePage, 0, wide.data(), size, text.data(), needed, nullptr, nullptr);
    return text;
}

} // namespace

std::wstring Wide(std::string_view text) {
    return WideOf(g_codePage, text);
}

std::string Narrow(std::wstring_view wide) {
    return NarrowIn(g_codePage, wide);
}

std::wstring WideOfUtf8(std::string_view utf8) {
    return WideOf(CP_UTF8, utf8);
}

std::string Utf8OfWide(std::wstring_view wide) {
    return NarrowIn(CP_UTF8, wide);
}

void UseUtf8Texts() noexcept {
    g_codePage = CP_UTF8;
}

std::vector<std::string> ProgramArguments(int /*count*/, char** /*texts*/) {
    int count = 0;
    wchar_t** const words = CommandLineToArgvW(GetCommandLineW(), &count);
    std::vector<std::string> arguments;
    for (int word = 1; word < count; ++word) {
        arguments.push_back(Narrow(words[word]));
    }
    LocalFree(static_cast<HLOCAL>(words));
    return arguments;
}

std::string TextOfStored(std::string_view bytes) {
    return g_codePage == CP_ACP ? std::string(bytes) : Narrow(WideOf(CP_ACP, bytes));
}

std::optional<std::string> StoredText(std::string_view text) {
    if (g_codePage == CP_ACP) {
        return std::string(text);
    }
    const std::wstring wide = Wide(text);
    const std::string stored = NarrowIn(CP_ACP, wide);
    return WideOf(CP_ACP, stored) == wide ? std::optional(stored)
                                          : std::nullopt; // not one that is only like it
}

std::string NativeTextToUtf8(std::string_view text) {
    return Utf8OfWide(Wide(text));
}

// The extractor gives the bytes to the system as they are, in whatever code page that has.
std::string NativeRelayText(std::string_view cp1252) {
    return TextOfStored(BlankControlCharacters(cp1252));
}

} // namespace ruvo
