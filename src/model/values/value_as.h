// A value as one of the class that its type code is for.
#pragma once

#include "model/values/parlane_data.h"

#include <type_traits>
#include <typeinfo>

namespace ruvo {

/// Null for a value of another class, and for none. The library's cast would look for classes derived from
/// the wanted one, which took longer than to format a number.
template <class TValue>
const TValue* ValueAs(const CParlaneData* value) {
    static_assert(std::is_final_v<TValue>);
    return value != nullptr && typeid(*value) == typeid(TValue) ? static_cast<const TValue*>(value) : nullptr;
}

} // namespace ruvo
