#include "platform/modules.h"

#include "platform/files.h"
#include "platform/full_path.h"
#include "platform/windows/wide_text.h"

#include <array>
#include <utility>

namespace ruvo {

namespace {

// Full path of the program (null) or of a module of this process. Longer paths than the program takes are
// cut.
std::string ModulePath(HMODULE module) {
    std::array<wchar_t, kMaxPath> path{};
    const DWORD length = GetModuleFileNameW(module, path.data(), kMaxPath);
    return Narrow({path.data(), length});
}

// The module that holds this code, and not one more reference to it.
HMODULE CodeModule() {
    constexpr DWORD kFlags =
        GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
    HMODULE module = nullptr;
    GetModuleHandleExW(kFlags, reinterpret_cast<const wchar_t*>(&CodeModule), &module);
    return module;
}

// A broken library makes the loader show a box of its own, which would stop an unattended run.
class CNoLoaderBoxes {
public:
    CNoLoaderBoxes() { SetThreadErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX, &m_before); }
    CNoLoaderBoxes(const CNoLoaderBoxes&) = delete;
    CNoLoaderBoxes& operator=(const CNoLoaderBoxes&) = delete;
    ~CNoLoaderBoxes() { SetThreadErrorMode(m_before, nullptr); }

private:
    DWORD m_before = 0;
};

} // namespace

std::string ProgramPath() {
    return ModulePath(nullptr);
}

std::string CodeFolder() {
    const std::string path = ModulePath(CodeModule());
    return path.substr(0, path.rfind('\\'));
}

std::string SystemModulePath(const std::string& path) {
    return path;
}

bool CanReadModule(const std::string& path) {
    CFile file;
    return file.Open(path, {.read = true}).Good();
}

struct CModule::SHandle {
    HMODULE module = nullptr;
    std::string failure;
};

CModule::CModule() : m_handle(std::make_unique<SHandle>()) {}

CModule::~CModule() {
    Unload();
}

bool CModule::Load(const std::string& path) {
    Unload();
    m_handle->failure.clear();
    const CNoLoaderBoxes quiet;
    m_handle->module = LoadLibraryW(Wide(path).c_str());
    if (!IsLoaded()) {
        m_handle->failure = path + ": " + SystemErrorText(static_cast<long>(GetLastError()));
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
    if (const HMODULE module = std::exchange(m_handle->module, nullptr)) {
        FreeLibrary(module);
    }
}

void* CModule::FindEntry(const char* name) const {
    return IsLoaded() ? reinterpret_cast<void*>(GetProcAddress(m_handle->module, name)) : nullptr;
}

void* CModule::FindEntry(unsigned ordinal) const {
    return FindEntry(MAKEINTRESOURCEA(ordinal)); // an address below 65536 is an ordinal, not a name
}

} // namespace ruvo
