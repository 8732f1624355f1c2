#include "link/requests/reply_values.h"

#include "model/values/data_factory.h"

#include <span>
#include <stdexcept>

namespace ruvo {

bool UnpackValue(const Variant& variant, std::unique_ptr<CParlaneData>& value) {
    if (variant.IsEmpty()) {
        value = std::make_unique<CParlaneInvalid>();
        return true;
    }
    const Variant::Bytes* bytes = variant.AsBytes();
    if (bytes == nullptr) {
        return false;
    }
    try {
        value = CDataFactory::CreateTagged(*bytes);
    } catch (const std::invalid_argument&) {
        return false;
    }
    return value != nullptr;
}

bool UnpackValueList(const Variant& variant, CParlaneDataArray& values) {
    const Variant::List* list = variant.AsList();
    if (list == nullptr) {
        return false;
    }
    values.reserve(values.size() + list->size());
    for (const Variant& element : *list) {
        std::unique_ptr<CParlaneData> value;
        if (!UnpackValue(element, value)) {
            return false;
        }
        values.push_back(std::move(value));
    }
    return true;
}

bool UnpackPackedValues(const Variant& type, const Variant& size, const Variant& data,
                        CParlaneDataArray& values) {
    std::uint8_t typeCode = 0;
    std::uint8_t elementSize = 0;
    const Variant::Bytes* bytes = data.AsBytes();
    if (bytes == nullptr || !type.ToUI1(typeCode) || !size.ToUI1(elementSize)) {
        return false;
    }
    if (elementSize == 0) {
        std::unique_ptr<CParlaneData> value = CDataFactory::Create(typeCode, {});
        if (value == nullptr) { // a type without an empty form
            value = std::make_unique<CParlaneInvalid>();
        }
        values.push_back(std::move(value));
        return true;
    }
    const std::span<const std::uint8_t> all(*bytes);
    for (std::size_t offset = 0; all.size() - offset >= elementSize; offset += elementSize) {
        std::unique_ptr<CParlaneData> value =
            CDataFactory::Create(typeCode, all.subspan(offset, elementSize));
        if (value == nullptr) {
            return false;
        }
        values.push_back(std::move(value));
    }
    return true;
}

bool PackValue(const CParlaneData& value, Variant& variant) {
    Variant::Bytes bytes;
    try {
        CDataFactory::AppendTagged(&value, bytes);
    } catch (const std::invalid_argument&) {
        return false;
    }
    variant = Variant::FromBytes(std::move(bytes));
    return true;
}

} // namespace ruvo
