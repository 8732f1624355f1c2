// Why a substation file is refused.
#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>

namespace ruvo::sim {

/// Thrown while a substation file is read and caught by its loader, which adds the file's name.
class CSubstationError : public std::runtime_error {
public:
    CSubstationError(std::size_t line, const std::string& reason)
        : std::runtime_error(reason), m_line(line) {}
    std::size_t Line() const { return m_line; } ///< from 1

private:
    std::size_t m_line;
};

} // namespace ruvo::sim
