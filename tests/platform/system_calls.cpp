#include "platform/system_calls.h"

#include <cerrno>
#include <cstdio>
#include <dirent.h>
#include <dlfcn.h>
#include <grp.h>
#include <pwd.h>
#include <string_view>
#include <sys/syscall.h>
#include <unistd.h>

using namespace ruvo::test;

namespace {

bool IsRefused(std::string_view call) {
    errno = call == g_refused ? g_error : errno;
    return call == g_refused;
}

int Tell(const char* call, const char* name, unsigned real, unsigned acting, unsigned saved) {
    return IsRefused(call) || dprintf(1, "%s %s %u %u %u|", call, name, real, acting, saved) < 0 ? -1 : 0;
}

} // namespace

extern "C" {

int fsync(int file) {
    ++g_flushes;
    if (g_interruptions > 0) {
        --g_interruptions;
        errno = EINTR;
        return -1;
    }
    return IsRefused("fsync") ? -1 : static_cast<int>(syscall(SYS_fsync, file));
}

int setresgid(gid_t real, gid_t acting, gid_t saved) noexcept {
    return g_mayBecomeAnyone ? Tell("setresgid", "", real, acting, saved)
                             : static_cast<int>(syscall(SYS_setresgid, real, acting, saved));
}

int setresuid(uid_t real, uid_t acting, uid_t saved) noexcept {
    return g_mayBecomeAnyone ? Tell("setresuid", "", real, acting, saved)
                             : static_cast<int>(syscall(SYS_setresuid, real, acting, saved));
}

int initgroups(const char* name, gid_t id) {
    static const auto next = reinterpret_cast<decltype(&initgroups)>(dlsym(RTLD_NEXT, "initgroups"));
    return g_mayBecomeAnyone ? Tell("initgroups", name, id, 0, 0) : next(name, id);
}

int getpwuid_r(uid_t id, struct passwd* entry, char* buffer, std::size_t size, struct passwd** found) {
    static const auto next = reinterpret_cast<decltype(&getpwuid_r)>(dlsym(RTLD_NEXT, "getpwuid_r"));
    static char name[] = "visitor", none[] = "";
    if (g_home == nullptr)
        return next(id, entry, buffer, size, found);
    *entry = {name, none, id, 77, none, const_cast<char*>(g_home), none};
    *found = *g_home == '\0' ? nullptr : entry;
    return 0;
}

int getgrgid_r(gid_t id, struct group* entry, char* buffer, std::size_t size, struct group** found) {
    static const auto next = reinterpret_cast<decltype(&getgrgid_r)>(dlsym(RTLD_NEXT, "getgrgid_r"));
    if (g_group == nullptr)
        return next(id, entry, buffer, size, found);
    entry->gr_name = const_cast<char*>(g_group);
    *found = *g_group == '\0' ? nullptr : entry;
    return 0;
}

struct dirent* readdir(DIR* folder) {
    static const auto next = reinterpret_cast<decltype(&readdir)>(dlsym(RTLD_NEXT, "readdir"));
    struct dirent* const entry = next(folder);
    if (entry != nullptr && g_hidesKinds)
        entry->d_type = DT_UNKNOWN;
    return entry;
}

} // extern "C"
