#include "tools/whole_file.h"

#include "platform/files.h"

#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <span>

namespace ruvo {

namespace {

namespace fs = std::filesystem;

/// Where links lead to, be it to nothing yet; the path itself when it is none.
fs::path BehindLinks(fs::path path) {
    constexpr int kMostLinks = 40; // as many as systems follow; more are a circle
    std::error_code error;
    for (int link = 0; link < kMostLinks && fs::is_symlink(fs::symlink_status(path, error)); ++link) {
        const fs::path target = fs::read_symlink(path, error);
        if (error) {
            break;
        }
        path = path.parent_path() / target; // which is the target alone when that is a full path
    }
    return path;
}

SFileResult WriteNewFile(const CFilePlace& place, std::string_view text) {
    CFile file;
    SFileResult result =
        file.Open(place.WritePath(), SOpenMode{.write = true, .create = true, .truncate = true});
    if (!result.Good()) {
        return result;
    }
    place.TakeAccessRights();
    const std::span bytes(reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
    std::size_t written = 0;
    result = file.Write(bytes, written);
    if (result.Good()) {
        result = file.FlushToDisk();
    }
    return result.Good() ? file.Close() : result;
}

std::string WriteDirectly(const std::string& path, std::string_view text) {
    errno = 0;
    std::ofstream stream(path, std::ios::binary);
    stream.write(text.data(), static_cast<std::streamsize>(text.size()));
    stream.close();
    return stream ? std::string() : std::generic_category().message(errno != 0 ? errno : EIO);
}

} // namespace

CFilePlace::CFilePlace(const std::string& path) : m_path(path) {
    std::error_code ignored;
    const fs::file_status status = fs::status(path, ignored);
    m_isDirect = fs::exists(status) && !fs::is_regular_file(status);
    if (!m_isDirect) {
        m_path = BehindLinks(path).string();
    }
    m_writePath = m_isDirect ? m_path : m_path + ".tmp";
}

void CFilePlace::TakeAccessRights() const {
    std::error_code error;
    const fs::file_status old = fs::status(m_path, error);
    if (!m_isDirect && fs::is_regular_file(old)) {
        fs::permissions(m_writePath, old.permissions(),
                        error); // where there are none to give, none are missed
    }
}

std::error_code CFilePlace::Settle() const {
    std::error_code error;
    if (!m_isDirect) {
        fs::rename(m_writePath, m_path, error);
    }
    return error;
}

void CFilePlace::Discard() const {
    std::error_code ignored; // an earlier failure is the one worth telling
    if (!m_isDirect) {
        fs::remove(m_writePath, ignored);
    }
}

std::string ReplaceWholeFile(const std::string& path, std::string_view text) {
    const CFilePlace place(path);
    if (place.IsDirect()) {
        return WriteDirectly(place.WritePath(), text);
    }
    const SFileResult written = WriteNewFile(place, text);
    const std::error_code moved = written.Good() ? place.Settle() : std::error_code();
    if (written.Good() && !moved) {
        return {};
    }
    place.Discard();
    return moved ? moved.message() : SystemErrorText(written.systemCode);
}

} // namespace ruvo
