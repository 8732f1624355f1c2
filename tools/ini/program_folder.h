// Where a run stands while it reads its INI file.
#pragma once

#include "paths/path_utilities.h"
#include "platform/files.h"
#include "platform/modules.h"

#include <string>

namespace ruvo {

/// The program's folder as working directory, for as long as this lives: relative paths in an INI file count
/// from there.
class CProgramFolder {
public:
    CProgramFolder() : m_saved(CurrentFolder()) {
        const SPathParts program = SplitPath(ProgramPath());
        SetCurrentFolder(program.drive + program.folder);
    }
    ~CProgramFolder() {
        if (!m_saved.empty()) {
            SetCurrentFolder(m_saved);
        }
    }
    CProgramFolder(const CProgramFolder&) = delete;
    CProgramFolder& operator=(const CProgramFolder&) = delete;

private:
    std::string m_saved;
};

} // namespace ruvo
