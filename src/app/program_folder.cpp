#include "app/program_folder.h"

#include "paths/path_utilities.h"
#include "platform/files.h"
#include "platform/modules.h"

namespace ruvo {

CProgramFolder::CProgramFolder() : m_savedWorkingFolder(CurrentFolder()) {
    const SPathParts program = SplitPath(ProgramPath());
    m_programFolder = program.drive + program.folder;
    SetCurrentFolder(m_programFolder);
}

CProgramFolder::~CProgramFolder() {
    try {
        if (!m_savedWorkingFolder.empty()) {
            SetCurrentFolder(m_savedWorkingFolder);
        }
    } catch (...) { // no memory to form the path: the process stays in the program's folder
    }
}

} // namespace ruvo
