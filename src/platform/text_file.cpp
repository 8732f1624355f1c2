// Whole text files, read alike on every system.
#include "platform/text_file.h"
#include "base/code_page.h"
#include "platform/files.h"

#include <array>

namespace ruvo {

namespace {

constexpr std::size_t kReadBlock = std::size_t{64} * 1024;

bool ReadAll(CFile& file, std::string& text) {
    std::array<std::uint8_t, kReadBlock> block; // the pages that a short file leaves are not touched
    for (std::size_t count = 1; count != 0;) {
        if (!file.Read(block, count).Good() || text.size() + count > kLargestTextFile) {
            return false;
        }
        text.append(reinterpret_cast<const char*>(block.data()), count);
    }
    return true;
}

} // namespace

bool ReadTextFileBytes(const std::string& path, std::string& bytes) {
    bytes.clear();
    CFile file;
    if (file.Open(path, {.read = true}).Good() && ReadAll(file, bytes)) {
        return true;
    }
    bytes.clear();
    return false;
}

std::string TextOfFileBytes(std::string_view bytes) {
    return bytes.starts_with(kUtf16Mark) ? Utf16ToUtf8(bytes.substr(kUtf16Mark.size())) : std::string(bytes);
}

bool ReadTextFile(const std::string& path, std::string& text) {
    const bool isRead = ReadTextFileBytes(path, text);
    if (text.starts_with(kUtf16Mark)) {
        text = TextOfFileBytes(text);
    }
    return isRead;
}

} // namespace ruvo
