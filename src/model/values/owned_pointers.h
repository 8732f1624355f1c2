// Containers of pointers that own what they hold.
#pragma once

#include <memory>
#include <vector>

namespace ruvo {

/// The order is that of insertion; an element is deleted when it is removed or the container ends.
template <class T>
using COwnedPtrArray = std::vector<std::unique_ptr<T>>;

template <class T>
using COwnedPtrList = std::vector<std::unique_ptr<T>>;

} // namespace ruvo
