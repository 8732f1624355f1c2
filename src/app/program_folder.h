// The working folder of a run.
#pragma once

#include <string>

namespace ruvo {

/// The program's folder as working directory, for as long as this lives: relative paths, in an INI file too,
/// count from there.
class CProgramFolder {
public:
    CProgramFolder();
    CProgramFolder(const CProgramFolder&) = delete;
    CProgramFolder& operator=(const CProgramFolder&) = delete;
    /// Returns to the folder that was current before.
    ~CProgramFolder();

private:
    std::string m_programFolder; ///< with its separator
    std::string m_savedWorkingFolder;
};

} // namespace ruvo
