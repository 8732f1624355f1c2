// The files that a substation keeps: they only grow, line by line.
#pragma once

#include "platform/files.h"

#include <string>

namespace ruvo::sim {

/// Not safe for use by several threads.
class CLineFile {
public:
    /// Opens the file, made when it is missing; false when that fails. An empty path keeps nothing.
    bool Open(const std::string& path);
    /// Appends the text and a line end in one piece.
    void Append(const std::string& line);

private:
    CFile m_file;
};

} // namespace ruvo::sim
