// Code that runs in a process of its own.
#pragma once

#include <functional>
#include <sys/wait.h>
#include <unistd.h>

namespace ruvo {

/// The exit status of a child process that runs the code; -1 when it did not end by itself.
inline int RunInChild(const std::function<int()>& code) {
    const pid_t child = fork();
    if (child == 0)
        _exit(code());
    int status = -1;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

/// What the code finds in a child process, which has to end by itself.
inline bool HoldsInChild(const std::function<bool()>& code) {
    return RunInChild([&] { return code() ? 0 : 1; }) == 0;
}

} // namespace ruvo
