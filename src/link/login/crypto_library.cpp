#include "link/login/crypto_library.h"

#include "base/text.h"
#include "platform/debug_output.h"
#include "platform/files.h"
#include "platform/full_path.h"
#include "platform/modules.h"

#include <algorithm>
#include <string_view>

namespace ruvo {

namespace {

/// A network path, or one that begins with a drive and a root.
bool IsAbsolute(const std::string& name) {
    if (name.size() <= 2) {
        return false;
    }
    const bool network = name[0] == '\\' && name[1] == '\\';
    return network || (IsLetter(name[0]) && name[1] == ':' && name[2] == '\\');
}

/// The names that the pattern "^testhost*.+exe$" matches: its last "t" may be absent, but there is something
/// before the ending.
bool IsTestHost(std::string_view name) {
    constexpr std::string_view kStart = "testhos";
    constexpr std::string_view kEnd = "exe";
    return name.size() > kStart.size() + kEnd.size() && name.starts_with(kStart) && name.ends_with(kEnd);
}

/// Lets `write` fill the digest; a provider that wrote no text has made none.
template <class Write>
bool FillDigest(DigestText& digest, Write write) {
    digest.fill('\0');
    write(digest.data());
    digest.back() = '\0'; // whatever the provider wrote, the text ends here
    return digest.front() != '\0';
}

} // namespace

struct CryptoLibrary::SState {
    CModule module;
    KeyedDigestFunction keyedDigest = nullptr;
    TextDigestFunction textDigest = nullptr;
    bool loaded = false;
};

CryptoLibrary::SState& CryptoLibrary::State() {
    static SState state;
    return state;
}

int CryptoLibrary::Initialize() {
    SState& state = State();
    if (state.loaded) {
        return kLoaded;
    }
    if (!state.module.Load(ResolveCryptoLibraryPath(kCryptoProviderFile, ProgramPath(), CurrentFolder()))) {
        WriteDebugOutput("CryptoLibrary::Initialize(): [Error] Unable to load the library DLL.");
        return kNotLoaded;
    }
    state.keyedDigest = reinterpret_cast<KeyedDigestFunction>(state.module.FindEntry(kKeyedDigestOrdinal));
    state.textDigest = reinterpret_cast<TextDigestFunction>(state.module.FindEntry(kTextDigestOrdinal));
    state.loaded = state.keyedDigest != nullptr && state.textDigest != nullptr &&
                   state.module.FindEntry(kUnusedOrdinal) != nullptr;
    if (!state.loaded) {
        WriteDebugOutput("CryptoLibrary::Initialize(): [Error] Some functions are not available in the DLL.");
        state.module.Unload();
        return kNotLoaded;
    }
    return kLoaded;
}

void CryptoLibrary::Uninitialize() {
    SState& state = State();
    if (state.loaded) {
        state.module.Unload();
        state.keyedDigest = nullptr;
        state.textDigest = nullptr;
        state.loaded = false;
    }
}

bool CryptoLibrary::MakeKeyedDigest(std::span<const std::uint8_t> bytes, const char* key,
                                    DigestText& digest) {
    return FillDigest(digest, [&](char* out) {
        if (Initialize() == kLoaded) {
            State().keyedDigest(bytes.data(), static_cast<std::uint32_t>(bytes.size()), key, out);
        }
    });
}

bool CryptoLibrary::MakeTextDigest(const char* text, DigestText& digest) {
    return FillDigest(digest, [&](char* out) {
        if (Initialize() == kLoaded) {
            State().textDigest(text, out);
        }
    });
}

std::string ResolveCryptoLibraryPath(const std::string& name, const std::string& executablePath,
                                     const std::string& currentFolder) {
    if (IsAbsolute(name)) {
        return name;
    }
    const std::string executable = executablePath.substr(0, kMaxPath);
    const std::size_t separator = executable.rfind('\\');
    const std::string folder = separator == std::string::npos ? "" : executable.substr(0, separator);
    if (IsTestHost(std::string_view(executable).substr(separator == std::string::npos ? 0 : separator + 1))) {
        std::string path = currentFolder.substr(0, kMaxPath) + "\\" + name;
        if (CanReadModule(path)) {
            return path;
        }
        WriteDebugOutput("Unit tests error, " + path + " file not found\n");
    }
    return folder + "\\" + name;
}

} // namespace ruvo
