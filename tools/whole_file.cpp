#include "tools/whole_file.h"

#include "platform/files.h"

#include <cstdint>
#include <filesystem>
#include <span>
#include <system_error>

namespace ruvo {

namespace {

SFileResult WriteNewFile(const std::string& path, std::string_view text) {
    CFile file;
    SFileResult result = file.Open(path, SOpenMode{.write = true, .create = true, .truncate = true});
    if (!result.Good()) {
        return result;
    }
    const std::span bytes(reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
    std::size_t written = 0;
    result = file.Write(bytes, written);
    if (result.Good()) {
        result = file.FlushToDisk();
    }
    return result.Good() ? file.Close() : result;
}

} // namespace

std::string ReplaceWholeFile(const std::string& path, std::string_view text) {
    const std::string beside = path + ".tmp";
    std::error_code moved;
    const SFileResult written = WriteNewFile(beside, text);
    if (written.Good()) {
        std::filesystem::rename(beside, path, moved);
    }
    if (written.Good() && !moved) {
        return {};
    }
    std::error_code ignored; // the first failure is the one worth telling
    std::filesystem::remove(beside, ignored);
    return moved ? moved.message() : SystemErrorText(written.systemCode);
}

} // namespace ruvo
