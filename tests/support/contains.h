// Whether a text has a part; a failure shows both.
#pragma once

#include <gtest/gtest.h>

#include <string_view>

namespace ruvo::test {

inline testing::AssertionResult Contains(std::string_view text, std::string_view part) {
    const bool has = text.find(part) != std::string_view::npos;
    return testing::AssertionResult(has) << '"' << part << "\" in:\n" << text;
}

} // namespace ruvo::test
