// Texts that must not stay in memory after their use. Only what is overwritten here is gone: a secret is kept
// in few places, and each of them wipes its own.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <type_traits>

namespace ruvo {

/// Overwrites bytes with zeros, even when they are not read afterwards.
inline void WipeBytes(void* bytes, std::size_t count) noexcept {
    auto* at = static_cast<volatile unsigned char*>(bytes); // the compiler must not leave these writes out
    for (std::size_t i = 0; i < count; ++i) {
        at[i] = 0;
    }
}

/// Overwrites all that the text has room for, and empties it.
inline void WipeText(std::string& text) noexcept {
    text.resize(text.capacity()); // a longer text may have been there before; nothing is allocated
    WipeBytes(text.data(), text.size());
    text.clear();
}

/// A text of fixed length that is wiped when it goes.
class CSecret {
public:
    explicit CSecret(std::string_view text) : m_text(text) {}
    CSecret(std::size_t length, char fill) : m_text(length, fill) {}
    CSecret(const CSecret&) = delete;
    CSecret& operator=(const CSecret&) = delete;
    ~CSecret() { WipeText(m_text); }

    std::size_t Length() const { return m_text.size(); }
    /// The characters and a NUL; may be written to in place.
    char* Data() { return m_text.data(); }
    const char* Text() const { return m_text.c_str(); }

private:
    std::string m_text;
};

/// Wipes a text that it does not own at the end of the scope.
class CWipeAtScopeEnd {
public:
    explicit CWipeAtScopeEnd(std::string& text) : m_text(text) {}
    CWipeAtScopeEnd(const CWipeAtScopeEnd&) = delete;
    CWipeAtScopeEnd& operator=(const CWipeAtScopeEnd&) = delete;
    ~CWipeAtScopeEnd() { WipeText(m_text); }

private:
    std::string& m_text;
};

/// The same for a plain value, such as a block of bytes.
template <class TValue>
class CWipeValueAtScopeEnd {
public:
    static_assert(std::is_trivially_copyable_v<TValue>, "what the value points to would stay");

    explicit CWipeValueAtScopeEnd(TValue& value) : m_value(value) {}
    CWipeValueAtScopeEnd(const CWipeValueAtScopeEnd&) = delete;
    CWipeValueAtScopeEnd& operator=(const CWipeValueAtScopeEnd&) = delete;
    ~CWipeValueAtScopeEnd() { WipeBytes(&m_value, sizeof m_value); }

private:
    TValue& m_value;
};

} // namespace ruvo
