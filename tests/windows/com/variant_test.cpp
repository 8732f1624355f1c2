// The system's variants and what owns them, without any server.
#include "rig.h"

#include "link/windows/variant_conversion.h"

namespace ruvo::test {
namespace {

TEST(Conversion, EveryKindComesBackAsItWas) {
    const std::tuple<const char*, Variant, int> cases[] = {
        {"nothing", Variant(), VT_EMPTY},
        {"the largest byte", Variant::FromUI1(255), VT_UI1},
        {"a negative word", Variant::FromI2(-16619), VT_I2},
        {"a word that a byte could hold", Variant::FromI2(7), VT_I2},
        {"the smallest number", Variant::FromI4(INT32_MIN), VT_I4},
        {"a number that a byte could hold", Variant::FromI4(7), VT_I4},
        {"a text beyond ASCII", Variant::FromText("Gr\xFC\xDF \x80"), VT_BSTR},
        {"a text that is a number", Variant::FromText("7"), VT_BSTR},
        {"a text with a NUL", Variant::FromText(std::string("a\0b", 3)), VT_BSTR},
        {"an empty text", Variant::FromText(""), VT_BSTR},
        {"bytes", Variant::FromBytes({0, 255, 7}), VT_ARRAY | VT_UI1},
        {"no bytes", Variant::FromBytes({}), VT_ARRAY | VT_UI1},
        {"words", Variant::FromWords({-1, 0x7FFF}), VT_ARRAY | VT_I2},
        {"a list", Variant::FromList({Variant(), Variant::FromBytes({1}), Variant::FromI2(-1)}),
         VT_ARRAY | VT_VARIANT},
        {"an empty list", Variant::FromList({}), VT_ARRAY | VT_VARIANT},
        {"something useless", Variant::Other(), VT_NULL},
    };
    for (const auto& [name, value, type] : cases) {
        COwnedVariant native;
        ToVariant(value, native);
        EXPECT_EQ(native.Get().vt, type) << name;
        EXPECT_EQ(FromVariant(native.Get()), value) << name;
    }
}

TEST(Conversion, OtherNumbersAreTakenWhereTheyFit) {
    const auto with = [](VARTYPE type, LONGLONG bits) {
        VARIANT value;
        VariantInit(&value);
        value.llVal = bits;
        value.vt = type;
        return FromVariant(value);
    };
    const std::tuple<const char*, VARTYPE, LONGLONG, Variant> cases[] = {
        {"a signed byte", VT_I1, 0xFF, Variant::FromI4(-1)},
        {"an unsigned word", VT_UI2, 0xFFFF, Variant::FromI4(0xFFFF)},
        {"an unsigned number", VT_UI4, 7, Variant::FromI4(7)},
        {"an unsigned number that is too large", VT_UI4, 0x80000000, Variant::Other()},
        {"an integer", VT_INT, -2, Variant::FromI4(-2)},
        {"a long integer", VT_I8, -3, Variant::FromI4(-3)},
        {"a long integer that is too large", VT_I8, 1LL << 32, Variant::Other()},
        {"true", VT_BOOL, -1, Variant::FromUI1(255)},
        {"a real number", VT_R8, 0, Variant::Other()},
        {"an error", VT_ERROR, 0, Variant::Other()},
        {"an array that is not there", VT_ARRAY | VT_UI1, 0, Variant::Other()},
        {"an object", VT_UNKNOWN, 0, Variant::Other()},
    };
    for (const auto& [name, type, bits, wanted] : cases)
        EXPECT_EQ(with(type, bits), wanted) << name;
    VARIANT inner;
    VariantInit(&inner);
    inner.vt = VT_I2;
    inner.iVal = -5;
    VARIANT outer;
    VariantInit(&outer);
    outer.vt = VT_BYREF | VT_VARIANT;
    outer.pvarVal = &inner;
    EXPECT_EQ(FromVariant(outer), Variant::FromI2(-5));
}

TEST(Conversion, ArraysAreReadFromTheirLowerBoundAndInOneDimension) {
    const auto array = [](VARTYPE type, UINT dimensions, LONG lower, ULONG count) {
        std::vector<SAFEARRAYBOUND> bounds(dimensions);
        for (SAFEARRAYBOUND& bound : bounds) {
            bound.lLbound = lower;
            bound.cElements = count;
        }
        VARIANT value;
        VariantInit(&value);
        value.vt = static_cast<VARTYPE>(VT_ARRAY | VT_UI1);
        value.parray = SafeArrayCreate(type, dimensions, bounds.data());
        return value;
    };
    COwnedVariant shifted;
    *shifted.Receive() = array(VT_UI1, 1, -3, 3);
    for (LONG i = -3; i < 0; ++i) {
        std::uint8_t byte = static_cast<std::uint8_t>(i + 10);
        ASSERT_EQ(SafeArrayPutElement(shifted.Get().parray, &i, &byte), S_OK);
    }
    EXPECT_EQ(FromVariant(shifted.Get()), Variant::FromBytes({7, 8, 9}));
    WipeArray(shifted.Get());
    EXPECT_EQ(FromVariant(shifted.Get()), Variant::FromBytes({0, 0, 0}));
    COwnedVariant square;
    *square.Receive() = array(VT_UI1, 2, 0, 2);
    EXPECT_EQ(FromVariant(square.Get()), Variant::Other());
    COwnedVariant lying;
    *lying.Receive() = array(VT_I4, 1, 0, 2);
    EXPECT_EQ(FromVariant(lying.Get()), Variant::Other());
}

struct SCounted : IUnknown {
    STDMETHODIMP QueryInterface(REFIID, void** result) override {
        *result = this;
        AddRef();
        return S_OK;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return ++references; }
    STDMETHODIMP_(ULONG) Release() override { return --references; }
    ULONG references = 1;
};

TEST(Owners, GiveEachReferenceBackOnce) {
    SCounted object;
    {
        CComPointer<IUnknown> first(&object);
        CComPointer<IUnknown> second = first;
        EXPECT_EQ(object.references, 3U);
        CComPointer<IUnknown> third = std::move(first);
        EXPECT_EQ(object.references, 3U);
        third = second;
        EXPECT_EQ(object.references, 3U);
        EXPECT_EQ(second.Query(first), S_OK);
        EXPECT_EQ(object.references, 4U);
        EXPECT_EQ(third.Query(first), S_OK) << "into a pointer that holds one";
        EXPECT_EQ(object.references, 4U);
        const auto adopted = CComPointer<IUnknown>::Adopt(&object);
        EXPECT_EQ(object.references, 4U);
    }
    EXPECT_EQ(object.references, 0U);
}

} // namespace
} // namespace ruvo::test
