#include "platform/users.h"

#include "platform/environment.h"
#include "platform/posix/native_path.h"
#include "platform/posix/program_words.h"

#include <array>
#include <cerrno>
#include <filesystem>
#include <grp.h>
#include <linux/capability.h>
#include <pwd.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <system_error>
#include <unistd.h>

namespace ruvo {

namespace {

/// An entry of the system's list of users, which lasts as long as this.
struct SEntry {
    std::array<char, 16384> buffer{};
    struct passwd entry = {};
    struct passwd* found = nullptr;

    void Find(uid_t id) { getpwuid_r(id, &entry, buffer.data(), buffer.size(), &found); }
    void Find(const std::string& name) {
        getpwnam_r(name.c_str(), &entry, buffer.data(), buffer.size(), &found);
    }
};

std::string Why(const char* what) {
    return what + (": " + std::generic_category().message(errno));
}

/// Those that a program hands on to one that it executes; the others go with the user.
bool DropInheritableCapabilities() {
    __user_cap_header_struct header = {_LINUX_CAPABILITY_VERSION_3, 0};
    std::array<__user_cap_data_struct, _LINUX_CAPABILITY_U32S_3> sets{};
    if (syscall(SYS_capget, &header, sets.data()) != 0) {
        return false;
    }
    for (__user_cap_data_struct& set : sets) {
        set.inheritable = 0;
    }
    return syscall(SYS_capset, &header, sets.data()) == 0;
}

std::vector<std::string> FreshEnvironment(const struct passwd& entry) {
    const std::string name = entry.pw_name;
    const std::string shell = entry.pw_shell;
    std::vector<std::string> environment{
        "PATH=/usr/local/bin:/usr/bin:/bin", "HOME=" + std::string(entry.pw_dir),
        "SHELL=" + (shell.empty() ? "/bin/sh" : shell), "USER=" + name, "LOGNAME=" + name};
    for (const char* const kept : {"TERM", "COLUMNS", "JOURNAL_STREAM"}) {
        if (const auto value = EnvironmentValue(kept)) {
            environment.push_back(kept + ("=" + *value));
        }
    }
    return environment;
}

} // namespace

bool IsRoot() {
    return geteuid() == 0;
}

std::optional<SUser> FindUser(const std::string& name) {
    SEntry entry;
    entry.Find(name);
    return entry.found != nullptr ? std::optional(SUser{entry.found->pw_uid, entry.found->pw_name})
                                  : std::nullopt;
}

SUser CurrentUser() {
    SEntry entry;
    entry.Find(geteuid());
    return {geteuid(), entry.found != nullptr ? entry.found->pw_name : ""};
}

std::optional<SUser> OwnerOf(const std::string& folder) {
    const auto native = ToNativePath(folder);
    std::filesystem::path place(native.value_or(""));
    std::error_code ignored;
    while (!std::filesystem::is_directory(place, ignored) && place.has_relative_path()) {
        place = place.parent_path();
    }
    struct stat status = {};
    if (stat(place.c_str(), &status) != 0) {
        return std::nullopt;
    }
    SEntry entry;
    entry.Find(status.st_uid);
    return SUser{status.st_uid, entry.found != nullptr ? entry.found->pw_name : ""};
}

std::string ContinueAs(const SUser& user, const std::vector<std::string>& arguments) {
    SEntry entry;
    entry.Find(user.id);
    if (entry.found == nullptr) {
        return "user " + std::to_string(user.id) + " is not known on this machine";
    }
    std::vector<std::string> words{"ruvo"}; // the program's name for people; what is executed is this one
    std::error_code error;
    if (const auto self = std::filesystem::read_symlink("/proc/self/exe", error); !error) {
        words.front() = self.string();
    }
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<std::string> environment = FreshEnvironment(*entry.found);
    if (initgroups(entry.found->pw_name, entry.found->pw_gid) != 0) {
        return Why("its groups cannot be taken");
    }
    if (setresgid(entry.found->pw_gid, entry.found->pw_gid, entry.found->pw_gid) != 0 ||
        setresuid(user.id, user.id, user.id) != 0 || !DropInheritableCapabilities()) {
        return Why("its permissions cannot be taken");
    }
    if (chdir("/") == 0) {
        execve("/proc/self/exe", PointersTo(words).data(), PointersTo(environment).data());
    }
    return Why("the program cannot be started");
}

} // namespace ruvo
