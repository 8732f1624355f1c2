// The words of a program, and those of its environment, as the system takes them.
#pragma once

#include <string>
#include <vector>

namespace ruvo {

/// Pointers to the texts, which must outlast them, and a null pointer behind.
inline std::vector<char*> PointersTo(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    pointers.reserve(texts.size() + 1);
    for (std::string& text : texts) {
        pointers.push_back(text.data());
    }
    pointers.push_back(nullptr);
    return pointers;
}

} // namespace ruvo
