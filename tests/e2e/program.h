// Runs the built extractor against a substation file, in a folder and a world of its own.
#pragma once

#include "e2e/outcome.h"
#include "support/scratch_folder.h"

#include <cstdio>
#include <ctime>
#include <map>
#include <string>

namespace ruvo::test {

class CProgramRun {
public:
    /// The substation's TOML text, and what the INI file holds behind its paths.
    CProgramRun(const std::string& substation, const std::string& general, const std::string& sections) {
        m_folder.Write("substation.toml", "trace = \"trace.txt\"\n" + substation);
        m_folder.Write("site.ini", "[RUVO_GENERAL]\r\nEventRootDir=" + m_folder.Native("ev") +
                                       "\r\nErrorLogPathname=" + m_folder.Path("run.log") + "\r\n" + general +
                                       "\r\n" + sections);
    }

    /// Runs a shell command in which $RUVO is the program and $DIR this run's folder; its output.
    std::string Shell(const std::string& command) const {
        const std::string script =
            "cd /; export DIR='" + m_folder.Native() +
            "' RUVO='" RUVO_BIN_DIR "/ruvo'\n"
            "export P32LS_SUBSTATION=$DIR/substation.toml RUVO_LOCK_DIR=$DIR RUVO_STATE_DIR=$DIR/state "
            "RUVO_REGISTRY_USER=$DIR/user.ini RUVO_REGISTRY_MACHINE=$DIR/machine.ini\n" +
            command;
        m_folder.Write("script.sh", script);
        std::string output;
        FILE* pipe = popen(("bash '" + m_folder.Native("script.sh") + "' 2>&1").c_str(), "r");
        for (int character = fgetc(pipe); character != EOF; character = fgetc(pipe))
            output += static_cast<char>(character);
        pclose(pipe);
        return output;
    }

    /// One normal run; its output and exit status.
    std::string Run(const std::string& environment = "") const {
        return Shell(environment + " $RUVO $DIR/site.ini; echo exit $?");
    }

    /// The error log without its time stamps. Empty when there is none.
    std::string Log() const { return WithoutTimeStamps(m_folder.Read("run.log")); }

    /// All files below the event root.
    std::map<std::string, std::string> Files() const { return FilesBelow(m_folder.Native("ev")); }

    const CScratchFolder& Folder() const { return m_folder; }

private:
    CScratchFolder m_folder;
};

/// Today's date in UTC, as day files are named.
inline std::string UtcDate() {
    const std::time_t now = std::time(nullptr);
    std::tm fields{};
    gmtime_r(&now, &fields);
    char text[16];
    std::strftime(text, sizeof text, "%Y-%m-%d", &fields);
    return text;
}

} // namespace ruvo::test
