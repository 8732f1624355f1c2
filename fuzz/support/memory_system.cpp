#include "fuzz/support/memory_system.h"

#include "platform/clock.h"
#include "platform/debug_output.h"
#include "platform/files.h"
#include "platform/full_path_rules.h"
#include "platform/message_box.h"

#include <algorithm>

namespace ruvo {

namespace {

using fuzz::FileBytes;
using fuzz::MemorySystem;

constexpr long kSomeCode = 5;
constexpr std::size_t kLongestName = 255;
constexpr std::uint64_t kFreeSpace = std::uint64_t{1} << 40;

SFileResult Failed(EFileFailure failure) {
    return {failure, kSomeCode};
}

/// The path under which a file or folder is kept; empty for one that no system would take.
std::string Key(const std::string& path) {
    if (path.find('\0') != std::string::npos || path.starts_with("\\\\") || path.starts_with("//")) {
        return {};
    }
    std::string full = FormFullPath(path, MemorySystem().currentFolder);
    full.erase(full.find_last_not_of('\\') + 1);
    const bool isLongName = full.size() - full.rfind('\\') - 1 > kLongestName;
    return (full.starts_with("C:") || full.starts_with("c:")) && !isLongName ? "C:" + full.substr(2)
                                                                             : std::string();
}

std::string ParentOf(const std::string& key) {
    return key.substr(0, key.rfind('\\'));
}

std::string NoteTouched(const std::string& path) {
    MemorySystem().touched.push_back(path);
    return Key(path);
}

bool IsFolder(const std::string& key) {
    return MemorySystem().folders.contains(key);
}

bool IsEmptyFolder(const std::string& key) {
    const std::string below = key + "\\";
    const auto& files = MemorySystem().files;
    const auto& folders = MemorySystem().folders;
    const auto file = files.lower_bound(below);
    const auto folder = folders.lower_bound(below);
    return (file == files.end() || !file->first.starts_with(below)) &&
           (folder == folders.end() || !folder->starts_with(below));
}

} // namespace

namespace fuzz {

void SMemorySystem::AddFolder(const std::string& path) {
    folders.insert(path);
}

void SMemorySystem::AddFile(const std::string& path, FileBytes bytes) {
    files[path] = std::make_shared<FileBytes>(std::move(bytes));
}

const FileBytes* SMemorySystem::Find(const std::string& path) const {
    const auto found = files.find(path);
    return found == files.end() ? nullptr : found->second.get();
}

SMemorySystem& MemorySystem() {
    static SMemorySystem system;
    return system;
}

} // namespace fuzz

struct CFile::SHandle {
    std::shared_ptr<FileBytes> bytes;
    std::size_t position = 0;
    bool mayWrite = false;
    std::string key;
};

CFile::CFile() : m_handle(std::make_unique<SHandle>()) {}
CFile::~CFile() = default;

SFileResult CFile::Open(const std::string& path, SOpenMode mode) {
    *m_handle = {};
    const std::string key = NoteTouched(path);
    if (key.empty() || !IsFolder(ParentOf(key))) {
        return Failed(EFileFailure::BadPath);
    }
    if (IsFolder(key)) {
        return Failed(EFileFailure::AccessDenied);
    }
    auto& files = MemorySystem().files;
    if (mode.exclusive && files.contains(key)) {
        return Failed(EFileFailure::Exists);
    }
    if (!files.contains(key)) {
        if (!mode.create) {
            return Failed(EFileFailure::NotFound);
        }
        files[key] = std::make_shared<FileBytes>();
    }
    *m_handle = {files[key], 0, mode.write, key};
    if (mode.truncate) {
        m_handle->bytes->clear();
    }
    return {};
}

bool CFile::IsOpen() const {
    return m_handle->bytes != nullptr;
}

SFileResult CFile::GetLength(std::uint64_t& length) {
    length = IsOpen() ? m_handle->bytes->size() : 0;
    return IsOpen() ? SFileResult{} : Failed(EFileFailure::BadDescriptor);
}

SFileResult CFile::Seek(std::int64_t offset, ESeekOrigin origin, std::uint64_t& position) {
    position = 0;
    if (!IsOpen()) {
        return Failed(EFileFailure::BadDescriptor);
    }
    const std::size_t base = origin == ESeekOrigin::Start     ? 0
                             : origin == ESeekOrigin::Current ? m_handle->position
                                                              : m_handle->bytes->size();
    const std::int64_t target = static_cast<std::int64_t>(base) + offset;
    if (target < 0) {
        return Failed(EFileFailure::Other);
    }
    m_handle->position = static_cast<std::size_t>(target);
    position = m_handle->position;
    return {};
}

SFileResult CFile::Read(std::span<std::uint8_t> buffer, std::size_t& count) {
    count = 0;
    if (!IsOpen()) {
        return Failed(EFileFailure::BadDescriptor);
    }
    const FileBytes& bytes = *m_handle->bytes;
    const std::size_t at = std::min(m_handle->position, bytes.size());
    count = std::min(buffer.size(), bytes.size() - at);
    std::copy_n(bytes.begin() + static_cast<std::ptrdiff_t>(at), count, buffer.begin());
    m_handle->position = at + count;
    return {};
}

SFileResult CFile::Write(std::span<const std::uint8_t> bytes, std::size_t& count) {
    count = 0;
    if (!IsOpen() || !m_handle->mayWrite) {
        return Failed(EFileFailure::BadDescriptor);
    }
    FileBytes& held = *m_handle->bytes;
    held.resize(std::max(held.size(), m_handle->position + bytes.size()));
    std::ranges::copy(bytes, held.begin() + static_cast<std::ptrdiff_t>(m_handle->position));
    m_handle->position += bytes.size();
    count = bytes.size();
    return {};
}

SFileResult CFile::SetLength(std::uint64_t length) {
    if (!IsOpen() || !m_handle->mayWrite) {
        return Failed(EFileFailure::BadDescriptor);
    }
    m_handle->bytes->resize(length);
    return {};
}

SFileResult CFile::FlushToDisk() {
    return IsOpen() ? SFileResult{} : Failed(EFileFailure::BadDescriptor);
}
SFileResult CFile::FlushWritten() {
    return FlushToDisk();
}

EFileLock CFile::TryLock() {
    return IsOpen() ? EFileLock::Taken : EFileLock::Unknown;
}

std::optional<bool> CFile::IsLocked() {
    return IsOpen() ? std::optional(false) : std::nullopt;
}

bool CFile::IsAt(const std::string& path) const {
    const auto found = MemorySystem().files.find(Key(path));
    return found != MemorySystem().files.end() && found->second == m_handle->bytes;
}

bool CFile::RemoveIfEmpty() {
    return IsOpen() && m_handle->bytes->empty() && MemorySystem().files.erase(m_handle->key) > 0;
}

SFileResult CFile::Close() {
    const SFileResult result = FlushToDisk();
    *m_handle = {};
    return result;
}

std::string SystemErrorText(long systemCode) {
    return "failure " + std::to_string(systemCode);
}

EPathKind GetPathKind(const std::string& path) {
    const std::string key = Key(path);
    if (IsFolder(key)) {
        return EPathKind::Folder;
    }
    return MemorySystem().files.contains(key) ? EPathKind::File : EPathKind::Missing;
}

bool IsAbsent(const std::string& path) {
    return GetPathKind(path) == EPathKind::Missing;
}

bool IsLink(const std::string& /*path*/) {
    return false;
}

SFreeSpace FreeSpace(const std::string& /*path*/) {
    return {kFreeSpace, kFreeSpace};
}

bool IsDriveRoot(const std::string& path) {
    const bool isDrive = path.starts_with("C:") || path.starts_with("c:");
    return isDrive && (path.size() == 2 || (path.size() == 3 && path[2] == '\\'));
}

SFileResult CanMakeEntryIn(const std::string& folder, EPathKind /*entry*/) {
    return IsFolder(Key(folder)) ? SFileResult{} : Failed(EFileFailure::BadPath);
}

SFileResult MakeFolder(const std::string& path) {
    const std::string key = NoteTouched(path);
    if (key.empty() || !IsFolder(ParentOf(key))) {
        return Failed(EFileFailure::BadPath);
    }
    const bool isFree = !MemorySystem().files.contains(key) && MemorySystem().folders.insert(key).second;
    return isFree ? SFileResult{} : Failed(EFileFailure::Exists);
}

bool RemoveEmptyFolder(const std::string& path) {
    const std::string key = NoteTouched(path);
    return IsEmptyFolder(key) && MemorySystem().folders.erase(key) > 0;
}

bool RemoveFile(const std::string& path) {
    return MemorySystem().files.erase(NoteTouched(path)) > 0;
}

bool RemovePlainFile(const std::string& path) {
    return RemoveFile(path);
}

bool RenameFile(const std::string& from, const std::string& to) {
    const auto* const bytes = MemorySystem().Find(Key(from));
    const std::string key = NoteTouched(to);
    if (bytes == nullptr || key.empty()) {
        return false;
    }
    MemorySystem().AddFile(key, *bytes);
    return RemoveFile(from);
}

bool CopyToNewFile(const std::string& source, const std::string& destination) {
    const auto* const bytes = MemorySystem().Find(Key(source));
    const std::string key = NoteTouched(destination);
    if (bytes == nullptr || key.empty() || GetPathKind(destination) != EPathKind::Missing) {
        return false;
    }
    MemorySystem().AddFile(key, *bytes);
    return true;
}

std::string MakeUniqueFile(const std::string& folder, const std::string& prefix) {
    const bool separated = folder.ends_with('\\') || folder.ends_with('/');
    const std::string path = folder + (separated ? "" : "\\") + prefix + "000000.tmp";
    CFile file;
    const bool made =
        file.Open(path, {.read = true, .write = true, .create = true, .truncate = false}).Good();
    return made ? path : std::string();
}

bool FlushFolder(const std::string& /*folder*/) {
    return true;
}

bool ListFolder(const std::string& folder, std::vector<SFolderEntry>& entries) {
    entries.clear();
    const std::string key = Key(folder);
    for (const std::string& path : MemorySystem().folders) {
        if (path.size() > key.size() && ParentOf(path) == key) {
            entries.push_back({path.substr(key.size() + 1), true, false});
        }
    }
    for (const auto& [path, bytes] : MemorySystem().files) {
        if (ParentOf(path) == key) {
            entries.push_back({path.substr(key.size() + 1), false, true});
        }
    }
    return IsFolder(key);
}

std::string TemporaryFolder() {
    return "C:\\tmp\\";
}

std::string CurrentFolder() {
    return MemorySystem().currentFolder;
}

bool SetCurrentFolder(const std::string& folder) {
    const std::string key = Key(folder);
    if (!IsFolder(key)) {
        return false;
    }
    MemorySystem().currentFolder = key + (key.size() == 2 ? "\\" : "");
    return true;
}

std::int64_t UnixSeconds() {
    return MemorySystem().unixSeconds;
}

std::optional<SCalendarTime> LocalTime() {
    return SCalendarTime{2026, 11, 16, 23, 30, 0};
}

SCalendarTime UtcTime() {
    return {2026, 11, 16, 22, 30, 0};
}

bool IsDaylightTime() {
    return false;
}

void WriteDebugOutput(const std::string& /*text*/) noexcept {}

void ShowMessageBox(EMessageIcon /*icon*/, const std::string& /*title*/, const std::string& /*text*/) {}

} // namespace ruvo
