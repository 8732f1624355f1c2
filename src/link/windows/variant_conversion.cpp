#include "link/windows/variant_conversion.h"

#include "base/secret.h"

#include <algorithm>
#include <new>
#include <optional>
#include <span>
#include <utility>

namespace ruvo {

namespace {

// Lists of lists do not occur; a reply that nests them without end must not exhaust the stack.
constexpr int kDeepestList = 4;

/// The elements of a one-dimensional array, from its lower to its upper bound, while this lives.
template <class Element>
class CArrayElements {
public:
    explicit CArrayElements(SAFEARRAY* array) : m_array(array) {
        LONG lower = 0;
        LONG upper = 0;
        void* data = nullptr;
        if (array == nullptr || SafeArrayGetDim(array) != 1 ||
            SafeArrayGetElemsize(array) != sizeof(Element) || FAILED(SafeArrayGetLBound(array, 1, &lower)) ||
            FAILED(SafeArrayGetUBound(array, 1, &upper)) || FAILED(SafeArrayAccessData(array, &data))) {
            return;
        }
        const LONGLONG count = static_cast<LONGLONG>(upper) - lower + 1;
        m_elements.emplace(static_cast<Element*>(data), static_cast<std::size_t>(count));
    }
    CArrayElements(const CArrayElements&) = delete;
    CArrayElements& operator=(const CArrayElements&) = delete;
    ~CArrayElements() {
        if (m_elements) {
            static_cast<void>(SafeArrayUnaccessData(m_array)); // undoes what has succeeded
        }
    }

    explicit operator bool() const { return m_elements.has_value(); }
    std::span<Element> All() const { return *m_elements; }

private:
    SAFEARRAY* m_array;
    std::optional<std::span<Element>> m_elements;
};

// --- to the system ---

BSTR MakeText(const std::string& text, UINT codePage) {
    const int length = static_cast<int>(text.size());
    const int wide = MultiByteToWideChar(codePage, 0, text.data(), length, nullptr, 0);
    BSTR made = SysAllocStringLen(nullptr, static_cast<UINT>(wide));
    if (made == nullptr) {
        throw std::bad_alloc();
    }
    MultiByteToWideChar(codePage, 0, text.data(), length, made, wide);
    return made;
}

/// Puts an array of so many zeroed elements into the variant.
template <class Element>
std::span<Element> MakeArray(VARTYPE type, std::size_t count, VARIANT& target,
                             std::optional<CArrayElements<Element>>& access) {
    SAFEARRAY* const array = SafeArrayCreateVector(type, 0, static_cast<ULONG>(count));
    if (array == nullptr) {
        throw std::bad_alloc();
    }
    target.parray = array;
    target.vt = static_cast<VARTYPE>(VT_ARRAY | type);
    access.emplace(array);
    if (!*access) {
        throw std::bad_alloc();
    }
    return access->All();
}

template <class Element>
void PutNumbers(VARTYPE type, const std::vector<Element>& values, VARIANT& target) {
    std::optional<CArrayElements<Element>> access;
    std::ranges::copy(values, MakeArray(type, values.size(), target, access).begin());
}

void PutList(const Variant::List& list, VARIANT& target, UINT codePage) {
    std::optional<CArrayElements<VARIANT>> access;
    const std::span<VARIANT> elements = MakeArray(VT_VARIANT, list.size(), target, access);
    for (std::size_t i = 0; i < list.size(); ++i) {
        COwnedVariant element;
        ToVariant(list[i], element, codePage);
        elements[i] = element.Release();
    }
}

/// False when the value is not held as a number.
bool PutNumber(const Variant& value, VARIANT& target) {
    if (std::uint8_t byte = 0; value.ToUI1(byte) && value == Variant::FromUI1(byte)) {
        target.bVal = byte;
        target.vt = VT_UI1;
    } else if (std::int16_t word = 0; value.ToI2(word) && value == Variant::FromI2(word)) {
        target.iVal = word;
        target.vt = VT_I2;
    } else if (std::int32_t number = 0; value.ToI4(number) && value == Variant::FromI4(number)) {
        target.lVal = number;
        target.vt = VT_I4;
    } else {
        return false;
    }
    return true;
}

// --- from the system ---

/// For functions of the system that only read their argument, though they do not say so.
VARIANT* Unchanged(const VARIANT& value) {
    return const_cast<VARIANT*>(&value);
}

struct SReading {
    UINT codePage;
    int depth;
};

Variant Read(const VARIANT& value, SReading reading);

std::string NarrowText(BSTR text, UINT codePage) {
    const int length = static_cast<int>(SysStringLen(text));
    const int size = WideCharToMultiByte(codePage, 0, text, length, nullptr, 0, nullptr, nullptr);
    std::string narrow(static_cast<std::size_t>(std::max(size, 0)), '\0');
    WideCharToMultiByte(codePage, 0, text, length, narrow.data(), size, nullptr, nullptr);
    return narrow;
}

template <class Element>
Variant ReadNumbers(const VARIANT& value, Variant (*make)(std::vector<Element>)) {
    const CArrayElements<Element> elements(value.parray);
    return elements ? make({elements.All().begin(), elements.All().end()}) : Variant::Other();
}

Variant ReadList(const VARIANT& value, SReading reading) {
    const CArrayElements<VARIANT> elements(value.parray);
    if (!elements || reading.depth == kDeepestList) {
        return Variant::Other();
    }
    Variant::List list;
    list.reserve(elements.All().size());
    ++reading.depth;
    for (const VARIANT& element : elements.All()) {
        list.push_back(Read(element, reading));
    }
    return Variant::FromList(std::move(list));
}

/// A number of a width that the seam lacks.
template <class Number>
Variant ReadNumber(Number number) {
    return std::in_range<std::int32_t>(number) ? Variant::FromI4(static_cast<std::int32_t>(number))
                                               : Variant::Other();
}

struct SReader {
    VARTYPE type;
    Variant (*read)(const VARIANT& value, SReading reading);
};

constexpr SReader kReaders[] = {
    {VT_EMPTY, [](const VARIANT&, SReading) { return Variant(); }},
    {VT_UI1, [](const VARIANT& value, SReading) { return Variant::FromUI1(value.bVal); }},
    {VT_I2, [](const VARIANT& value, SReading) { return Variant::FromI2(value.iVal); }},
    {VT_I4,
     [](const VARIANT& value, SReading) { return Variant::FromI4(static_cast<std::int32_t>(value.lVal)); }},
    {VT_BSTR,
     [](const VARIANT& value, SReading reading) {
         return Variant::FromText(NarrowText(value.bstrVal, reading.codePage));
     }},
    {VT_ARRAY | VT_UI1,
     [](const VARIANT& value, SReading) { return ReadNumbers<std::uint8_t>(value, Variant::FromBytes); }},
    {VT_ARRAY | VT_I2,
     [](const VARIANT& value, SReading) { return ReadNumbers<std::int16_t>(value, Variant::FromWords); }},
    {VT_ARRAY | VT_VARIANT, ReadList},
    // As the system converts a truth value to a byte.
    {VT_BOOL, [](const VARIANT& value, SReading) { return Variant::FromUI1(value.boolVal == 0 ? 0 : 0xFF); }},
    {VT_I1, [](const VARIANT& value, SReading) { return ReadNumber(static_cast<std::int8_t>(value.cVal)); }},
    {VT_UI2, [](const VARIANT& value, SReading) { return ReadNumber(value.uiVal); }},
    {VT_UI4, [](const VARIANT& value, SReading) { return ReadNumber(value.ulVal); }},
    {VT_INT, [](const VARIANT& value, SReading) { return ReadNumber(value.intVal); }},
    {VT_UINT, [](const VARIANT& value, SReading) { return ReadNumber(value.uintVal); }},
    {VT_I8, [](const VARIANT& value, SReading) { return ReadNumber(value.llVal); }},
    {VT_UI8, [](const VARIANT& value, SReading) { return ReadNumber(value.ullVal); }},
};

Variant Read(const VARIANT& value, SReading reading) {
    if ((value.vt & VT_BYREF) != 0) {
        COwnedVariant direct;
        const bool good = SUCCEEDED(VariantCopyInd(direct.Receive(), Unchanged(value)));
        return good && (direct.Get().vt & VT_BYREF) == 0 ? Read(direct.Get(), reading) : Variant::Other();
    }
    const auto* reader = std::ranges::find(kReaders, value.vt, &SReader::type);
    return reader == std::end(kReaders) ? Variant::Other() : reader->read(value, reading);
}

} // namespace

void ToVariant(const Variant& value, COwnedVariant& result, UINT codePage) {
    VARIANT& target = *result.Receive();
    if (const std::string* text = value.AsText()) {
        target.bstrVal = MakeText(*text, codePage);
        target.vt = VT_BSTR;
    } else if (const Variant::Bytes* bytes = value.AsBytes()) {
        PutNumbers(VT_UI1, *bytes, target);
    } else if (const Variant::Words* words = value.AsWords()) {
        PutNumbers(VT_I2, *words, target);
    } else if (const Variant::List* list = value.AsList()) {
        PutList(*list, target, codePage);
    } else if (!value.IsEmpty() && !PutNumber(value, target)) {
        target.vt = VT_NULL;
    }
}

Variant FromVariant(const VARIANT& value, UINT codePage) {
    return Read(value, {codePage, 0});
}

void WipeArray(const VARIANT& value) noexcept {
    if (value.vt == (VT_ARRAY | VT_UI1)) {
        if (const CArrayElements<std::uint8_t> bytes(value.parray); bytes) {
            WipeBytes(bytes.All().data(), bytes.All().size());
        }
    }
}

} // namespace ruvo
