#include "platform/console_buffer.h"

#include "base/secret.h"
#include "platform/windows/standard_handle.h"
#include "platform/windows/wide_text.h"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

namespace ruvo {

namespace {

constexpr std::string_view kEraseLine = "\x1B[K";

/// The bytes at the end of the text that begin a character and do not end it.
std::size_t UnfinishedTail(std::string_view utf8) {
    constexpr std::size_t kLongest = 4;
    for (std::size_t tail = 1; tail <= std::min(kLongest, utf8.size()); ++tail) {
        const auto byte = static_cast<unsigned char>(utf8[utf8.size() - tail]);
        if ((byte & 0xC0U) != 0x80U) {
            const std::size_t size = byte >= 0xF0U ? 4 : byte >= 0xE0U ? 3 : byte >= 0xC0U ? 2 : 1;
            return tail < size ? tail : 0;
        }
    }
    return 0;
}

// The code page of a console stays when the program has ended, and is that of all programs there: it is left
// alone.
class CConsoleOutput final : public std::streambuf {
public:
    explicit CConsoleOutput(HANDLE console) : m_console(console) {}

protected:
    std::streamsize xsputn(const char* bytes, std::streamsize count) override {
        return Put({bytes, static_cast<std::size_t>(count)}) ? count : 0;
    }
    int_type overflow(int_type character) override {
        const char byte = traits_type::to_char_type(character);
        return !traits_type::eq_int_type(character, traits_type::eof()) && Put({&byte, 1})
                   ? character
                   : traits_type::eof();
    }

private:
    bool Put(std::string_view bytes) {
        std::string text = m_unfinished.append(bytes);
        const std::size_t tail = UnfinishedTail(text);
        m_unfinished = text.substr(text.size() - tail);
        text.resize(text.size() - tail);
        std::string_view rest = text;
        bool isGood = true;
        for (std::size_t erase = rest.find(kEraseLine); isGood && erase != std::string_view::npos;
             erase = rest.find(kEraseLine)) {
            isGood = Write(rest.substr(0, erase));
            EraseToLineEnd();
            rest.remove_prefix(erase + kEraseLine.size());
        }
        isGood = isGood && Write(rest);
        WipeText(text);
        return isGood;
    }

    bool Write(std::string_view utf8) const {
        constexpr std::size_t kLargest = 8192; // an older console takes no more at once
        std::wstring wide = WideOfUtf8(utf8);
        bool isGood = true;
        for (std::size_t at = 0; isGood && at < wide.size();) {
            DWORD count = 0;
            const auto size = static_cast<DWORD>(std::min(kLargest, wide.size() - at));
            isGood = WriteConsoleW(m_console, wide.data() + at, size, &count, nullptr) != FALSE && count > 0;
            at += count;
        }
        WipeBytes(wide.data(), wide.size() * sizeof(wchar_t));
        return isGood;
    }

    void EraseToLineEnd() const {
        CONSOLE_SCREEN_BUFFER_INFO screen;
        DWORD count = 0;
        if (GetConsoleScreenBufferInfo(m_console, &screen) != FALSE) {
            const auto rest = static_cast<DWORD>(screen.dwSize.X - screen.dwCursorPosition.X);
            FillConsoleOutputCharacterW(m_console, L' ', rest, screen.dwCursorPosition, &count);
        }
    }

    HANDLE m_console;
    std::string m_unfinished;
};

class CConsoleInput final : public std::streambuf {
public:
    explicit CConsoleInput(HANDLE console) : m_console(console) {}

protected:
    int_type underflow() override {
        constexpr wchar_t kEndOfInput = 0x1A; // Ctrl+Z, where it begins a line
        std::array<wchar_t, 512> typed{};
        DWORD count = 0;
        if (ReadConsoleW(m_console, typed.data(), static_cast<DWORD>(typed.size()), &count, nullptr) ==
                FALSE ||
            count == 0 || typed[0] == kEndOfInput) {
            return traits_type::eof();
        }
        m_text = Utf8OfWide({typed.data(), count});
        std::erase(m_text, '\r');
        setg(m_text.data(), m_text.data(), m_text.data() + m_text.size());
        return m_text.empty() ? underflow() : traits_type::to_int_type(m_text.front());
    }

private:
    HANDLE m_console;
    std::string m_text;
};

} // namespace

std::unique_ptr<std::streambuf> ConsoleBuffer(EStandardStream stream) {
    if (!IsTerminal(stream)) {
        return nullptr;
    }
    const HANDLE console = StandardHandle(stream);
    return stream == EStandardStream::Input ? std::unique_ptr<std::streambuf>(new CConsoleInput(console))
                                            : std::unique_ptr<std::streambuf>(new CConsoleOutput(console));
}

} // namespace ruvo
