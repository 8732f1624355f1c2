#include "platform/modules.h"

#include "platform/posix/native_path.h"

#include <algorithm>
#include <dlfcn.h>
#include <filesystem>
#include <link.h>
#include <string_view>
#include <strings.h>
#include <unistd.h>
#include <utility>

namespace ruvo {

namespace {

std::string NativeProgramPath() {
    std::error_code error;
    return std::filesystem::read_symlink("/proc/self/exe", error).string();
}

// The file that holds this code, or the program when the code is linked into it.
std::string NativeCodePath() {
    Dl_info info = {};
    link_map* map = nullptr;
    const void* const here = reinterpret_cast<const void*>(&CodeFolder);
    const int found = dladdr1(here, &info, reinterpret_cast<void**>(&map), RTLD_DL_LINKMAP);
    // The program itself has no name in the list of modules (and dli_fname would be what it was called by).
    if (found == 0 || map == nullptr || map->l_name == nullptr || *map->l_name == '\0') {
        return NativeProgramPath();
    }
    std::error_code error;
    const std::filesystem::path resolved = std::filesystem::canonical(map->l_name, error);
    return error ? std::string(map->l_name) : resolved.string();
}

// Library names keep their Windows ending above the seam; the file here ends with ".so".
std::string ModuleFile(std::string native) {
    constexpr std::string_view kEnding = ".dll";
    const std::size_t base = native.size() - std::min(native.size(), kEnding.size());
    if (strcasecmp(native.c_str() + base, kEnding.data()) == 0) {
        native.replace(base, kEnding.size(), ".so");
    }
    return native;
}

} // namespace

std::string ProgramPath() {
    return FromNativePath(NativeProgramPath());
}

std::string CodeFolder() {
    return FromNativePath(std::filesystem::path(NativeCodePath()).parent_path().string());
}

std::string SystemModulePath(const std::string& path) {
    const auto native = ToNativePath(path);
    return native ? ModuleFile(*native) : path;
}

bool CanReadModule(const std::string& path) {
    const auto native = ToNativePath(path);
    return native && access(ModuleFile(*native).c_str(), R_OK) == 0;
}

struct CModule::SHandle {
    void* module = nullptr;
    std::string failure;
};

CModule::CModule() : m_handle(std::make_unique<SHandle>()) {}

CModule::~CModule() {
    Unload();
}

bool CModule::Load(const std::string& path) {
    Unload();
    m_handle->failure.clear();
    const auto native = ToNativePath(path);
    if (!native) {
        m_handle->failure = path + ": no such drive";
        return false;
    }
    m_handle->module = dlopen(ModuleFile(*native).c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!IsLoaded()) {
        m_handle->failure = dlerror();
    }
    return IsLoaded();
}

const std::string& CModule::FailureText() const {
    return m_handle->failure;
}

bool CModule::IsLoaded() const {
    return m_handle->module != nullptr;
}

void CModule::Unload() {
    if (void* const module = std::exchange(m_handle->module, nullptr)) {
        dlclose(module);
    }
}

void* CModule::FindEntry(const char* name) const {
    return IsLoaded() ? dlsym(m_handle->module, name) : nullptr;
}

void* CModule::FindEntry(unsigned ordinal) const {
    return FindEntry(("Ordinal" + std::to_string(ordinal)).c_str());
}

} // namespace ruvo
