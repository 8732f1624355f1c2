#include "fake_modules.h"

#include "platform/modules.h"
#include "platform/windows/system.h"

namespace ruvo {

using test::g_modules;

struct CModule::SHandle {
    HMODULE module = nullptr;
};
CModule::CModule() : m_handle(std::make_unique<SHandle>()) {}
CModule::~CModule() = default;
bool CModule::Load(const std::string& path) {
    EXPECT_EQ(path, "C:\\opt\\ruvo\\HalvexCryptoKit.DLL");
    ++g_modules.loads;
    m_handle->module = g_modules.present ? LoadLibraryA("HalvexCryptoKit.dll") : nullptr;
    return m_handle->module != nullptr;
}
void CModule::Unload() {
    ++g_modules.unloads;
}
void* CModule::FindEntry(unsigned ordinal) const {
    return ordinal == g_modules.missingOrdinal
               ? nullptr
               : reinterpret_cast<void*>(GetProcAddress(m_handle->module, MAKEINTRESOURCEA(ordinal)));
}

} // namespace ruvo
