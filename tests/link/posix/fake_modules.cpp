#include "fake_modules.h"

#include "platform/modules.h"

#include <dlfcn.h>
#include <filesystem>

namespace ruvo {

using test::g_modules;

struct CModule::SHandle {
    void* module = nullptr;
};
CModule::CModule() : m_handle(std::make_unique<SHandle>()) {}
CModule::~CModule() = default;
bool CModule::Load(const std::string& path) {
    EXPECT_EQ(path, "C:\\opt\\ruvo\\HalvexCryptoKit.DLL");
    ++g_modules.loads;
    const auto folder = std::filesystem::read_symlink("/proc/self/exe").parent_path();
    m_handle->module =
        g_modules.present ? dlopen((folder / "HalvexCryptoKit.so").c_str(), RTLD_NOW) : nullptr;
    return m_handle->module != nullptr;
}
void CModule::Unload() {
    ++g_modules.unloads;
}
void* CModule::FindEntry(unsigned ordinal) const {
    return ordinal == g_modules.missingOrdinal
               ? nullptr
               : dlsym(m_handle->module, ("Ordinal" + std::to_string(ordinal)).c_str());
}

} // namespace ruvo
