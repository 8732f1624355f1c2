#include "tools/visit/retry_file.h"

#include "base/digest.h"
#include "config/ini_keys.h"
#include "platform/environment.h"
#include "platform/files.h"
#include "platform/single_instance.h"
#include "platform/text_file.h"
#include "tools/ini/ini_document.h"

#include <algorithm>
#include <array>

namespace ruvo {

namespace {

bool Holds(const std::vector<std::string>& keys, const std::string& key) {
    return std::ranges::find(keys, key) != keys.end();
}

/// What a run of the copy would do: the same as one of the file, for these relays.
bool IsSameSite(const std::string& path, const SSitePlaces& places, const std::vector<std::string>& keys) {
    const auto made = ReadSitePlaces(path);
    const auto isWanted = [&keys](const SVisitedRelay& relay) { return Holds(keys, relay.key); };
    return made && made->events == places.events && made->log == places.log &&
           made->relays.size() == keys.size() && std::ranges::all_of(made->relays, isWanted);
}

SFileResult WriteForOwner(const std::string& path, const std::string& bytes) {
    CFile file;
    SFileResult result =
        file.Open(path, {.write = true, .create = true, .truncate = true, .plain = true, .ownerOnly = true});
    std::size_t count = 0;
    if (result.Good()) {
        result = file.Write({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()}, count);
    }
    const SFileResult closed = file.Close();
    return result.Good() ? closed : result;
}

} // namespace

CRetryFile::CRetryFile() {
    if (const std::string folder = InstanceFolder(); !folder.empty()) {
        m_path = folder + "\\retry-" + DigestOf(EnvironmentValue("RUVO_SITE").value_or("")) + ".ini";
    }
}

std::string CRetryFile::Make(const std::string& iniPath, const SSitePlaces& places,
                             const std::vector<std::string>& keys) {
    std::string bytes;
    if (m_path.empty()) {
        return "there is no folder for a copy of the INI file";
    }
    if (!ReadTextFileBytes(iniPath, bytes)) {
        return "the INI file cannot be read any more";
    }
    if (const std::string_view why = CIniDocument(bytes).WhyNotEditable(); !why.empty()) {
        return std::string(why);
    }
    Remove(); // its permissions may be others
    const SFileResult result = WriteForOwner(m_path, IniWithRelays(std::move(bytes), places, keys));
    if (!result.Good()) {
        return "a copy of the INI file cannot be written: " + SystemErrorText(result.systemCode);
    }
    return IsSameSite(m_path, places, keys)
               ? std::string()
               : "the INI file cannot be reduced to the relays without an answer";
}

void CRetryFile::Remove() const {
    if (!m_path.empty() && GetPathKind(m_path) == EPathKind::File) {
        RemoveFile(m_path);
    }
}

std::string IniWithRelays(std::string bytes, const SSitePlaces& places,
                          const std::vector<std::string>& keys) {
    constexpr std::array kSections{kSerialSection, kModemSection, kEthernetSection, kPasswordsSection};
    CIniDocument document(std::move(bytes));
    for (const SVisitedRelay& relay : places.relays) {
        for (const std::string_view section : kSections) {
            if (!Holds(keys, relay.key)) {
                document.Remove(section, relay.key);
            }
        }
    }
    return document.Bytes();
}

} // namespace ruvo
