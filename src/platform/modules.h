// Loadable modules, and where the running program is.
#pragma once

#include <memory>
#include <string>

namespace ruvo {

/// Full path of the running program.
std::string ProgramPath();
/// Folder, without a separator at its end, of the program or library that holds this code.
std::string CodeFolder();

/// The file that CModule::Load would load for this path, as the system's own programs write it.
std::string SystemModulePath(const std::string& path);
/// True when the file that CModule::Load would load for this path can be opened for reading.
bool CanReadModule(const std::string& path);

/// A loaded module; the destructor releases it. On POSIX a name that ends in ".dll" (any letter case) is
/// looked for with the ending ".so", same folder and base name.
class CModule {
public:
    CModule();
    CModule(const CModule&) = delete;
    CModule& operator=(const CModule&) = delete;
    ~CModule();

    /// Loads the module at a full path; false when it, or something it depends on, is missing.
    bool Load(const std::string& path);
    /// Why the last Load failed, in the system's words; empty when it did not.
    const std::string& FailureText() const;
    bool IsLoaded() const;
    void Unload();

    /// Address of an entry point by name; null when there is none.
    void* FindEntry(const char* name) const;
    /// Address of an entry point by ordinal (on POSIX the symbol "OrdinalN"); null when there is none.
    void* FindEntry(unsigned ordinal) const;

private:
    struct SHandle;
    std::unique_ptr<SHandle> m_handle;
};

} // namespace ruvo
