// A disk in memory that stands in for the platform's files, and breaks when told to. Exactly one file of a
// test program includes this: its definitions take the place of the platform's, which the linker then leaves
// out.
#pragma once

#include "support/failing_memory.h"

#include "platform/files.h"
#include "platform/state_folder.h"

#include <algorithm>
#include <map>
#include <set>

namespace ruvo {

namespace test {

/// What goes wrong with the operations of those numbers, counted from 1. A write that takes a part puts half
/// of its bytes into the file before it fails.
struct SDiskFault {
    std::size_t first = 0;
    std::size_t last = 0;
    EFileFailure failure = EFileFailure::None;
    bool writesTakePart = false;
    bool isEnd = false; ///< of the process: from the first operation on nothing has an effect, or an answer
};

struct SMemoryDisk {
    std::map<std::string, std::string> files;
    std::set<std::string> folders;
    std::vector<SDiskFault> faults;
    std::size_t operations = 0; ///< what was asked of the disk so far
    SFreeSpace room{};
    std::string locked{}; ///< a folder in which nothing can be made

    /// Counts an operation and gives what is wrong with it.
    SDiskFault Count() {
        const auto isHit = [number = ++operations](const SDiskFault& fault) {
            return fault.first <= number && number <= fault.last;
        };
        const auto hit = std::ranges::find_if(faults, isHit);
        return hit == faults.end() ? SDiskFault{} : *hit;
    }
    bool HasEnded() const {
        return std::ranges::any_of(
            faults, [this](const SDiskFault& fault) { return fault.isEnd && fault.first <= operations; });
    }
    SFileResult Do() { return Fail(Count().failure); }
    static SFileResult Fail(EFileFailure failure) { return {failure, static_cast<long>(failure)}; }
    bool Takes(const std::string& folder) const { return folders.contains(folder) && folder != locked; }
    bool HasFolderOf(const std::string& path) const { return Takes(path.substr(0, path.rfind('\\'))); }

    std::map<std::string, std::string> onDisk{}; ///< what a power failure leaves of files that were flushed
};
inline SMemoryDisk g_disk;

/// What an end of the machine leaves: of each file the length and every sector are those of before or after
/// what was not flushed, as the bits of `kept` say in turn.
inline SMemoryDisk AfterPowerFailure(SMemoryDisk disk, unsigned kept) {
    constexpr std::size_t kSector = 512;
    for (auto& [path, bytes] : disk.files) {
        std::string older = disk.onDisk[path];
        const std::size_t length = (kept & 1U) != 0 ? bytes.size() : older.size();
        older.resize(length);
        bytes.resize(length);
        for (std::size_t at = 0, bit = 1; at < length; at += kSector, bit = 3 - bit)
            if ((kept >> bit & 1U) == 0)
                bytes.replace(at, kSector, older, at, kSector);
    }
    return disk;
}

} // namespace test

using test::g_disk;

struct CFile::SHandle {
    std::string path; ///< empty when closed
    std::size_t position = 0;
    std::string& Bytes() const { return g_disk.files[path]; }
};

CFile::CFile() : m_handle(std::make_unique<SHandle>()) {}
CFile::~CFile() = default;

SFileResult CFile::Open(const std::string& path, SOpenMode mode) {
    const test::CFailingMemory::SExempt exempt;
    *m_handle = {};
    SFileResult result = g_disk.Do();
    if (result.Good() && mode.exclusive && g_disk.files.contains(path))
        result = g_disk.Fail(EFileFailure::Exists);
    if (result.Good() && !g_disk.files.contains(path))
        result =
            g_disk.Fail(!g_disk.folders.contains(path.substr(0, path.rfind('\\'))) ? EFileFailure::BadPath
                        : !mode.create                                             ? EFileFailure::NotFound
                        : !g_disk.HasFolderOf(path) ? EFileFailure::AccessDenied
                                                    : EFileFailure::None);
    if (result.Good())
        g_disk.files.try_emplace(m_handle->path = path);
    return result;
}
bool CFile::IsOpen() const {
    return !m_handle->path.empty();
}
SFileResult CFile::GetLength(std::uint64_t& length) {
    length = m_handle->Bytes().size();
    return g_disk.Do();
}
SFileResult CFile::Seek(std::int64_t offset, ESeekOrigin origin, std::uint64_t& position) {
    const SFileResult result = g_disk.Do();
    const std::size_t start = origin == ESeekOrigin::End ? m_handle->Bytes().size() : 0;
    if (result.Good())
        m_handle->position = start + static_cast<std::size_t>(offset);
    position = m_handle->position;
    return result;
}
SFileResult CFile::Read(std::span<std::uint8_t> buffer, std::size_t& count) {
    const std::size_t from = std::min(m_handle->position, m_handle->Bytes().size());
    count = m_handle->Bytes().copy(reinterpret_cast<char*>(buffer.data()), buffer.size(), from);
    m_handle->position += count;
    return g_disk.Do();
}
SFileResult CFile::Write(std::span<const std::uint8_t> bytes, std::size_t& count) {
    const test::CFailingMemory::SExempt exempt;
    const test::SDiskFault fault = g_disk.Count();
    count = fault.failure == EFileFailure::None ? bytes.size() : fault.writesTakePart ? bytes.size() / 2 : 0;
    m_handle->Bytes().resize(std::max(m_handle->Bytes().size(), m_handle->position + count));
    m_handle->Bytes().replace(m_handle->position, count, reinterpret_cast<const char*>(bytes.data()), count);
    m_handle->position += count;
    return g_disk.Fail(fault.failure);
}
SFileResult CFile::SetLength(std::uint64_t length) {
    const test::CFailingMemory::SExempt exempt;
    const SFileResult result = g_disk.Do();
    m_handle->Bytes().resize(result.Good() ? length : m_handle->Bytes().size());
    return result;
}
SFileResult CFile::FlushToDisk() {
    const SFileResult result = g_disk.Do();
    if (result.Good())
        g_disk.onDisk[m_handle->path] = m_handle->Bytes();
    return result;
}
EFileLock CFile::TryLock() {
    return g_disk.Do().Good() ? EFileLock::Taken : EFileLock::Unknown;
}
bool CFile::IsAt(const std::string& path) const {
    return g_disk.Do().Good() && path == m_handle->path;
}
SFileResult CFile::Close() {
    const SFileResult result = IsOpen() ? g_disk.Do() : g_disk.Fail(EFileFailure::BadDescriptor);
    *m_handle = {};
    return result;
}

EPathKind GetPathKind(const std::string& path) {
    const bool works = g_disk.Do().Good();
    const bool isFolder = works && g_disk.folders.contains(path);
    return works && g_disk.files.contains(path) ? EPathKind::File
           : isFolder                           ? EPathKind::Folder
                                                : EPathKind::Missing;
}
SFileResult CanMakeEntryIn(const std::string& folder, EPathKind) {
    return g_disk.Takes(folder) ? g_disk.Do() : g_disk.Fail(EFileFailure::AccessDenied);
}
SFileResult MakeFolder(const std::string& path) {
    const test::CFailingMemory::SExempt exempt;
    const SFileResult result = g_disk.Do();
    const bool isDone = !result.Good() || (g_disk.HasFolderOf(path) && g_disk.folders.insert(path).second);
    return isDone ? result
                  : g_disk.Fail(g_disk.folders.contains(path) ? EFileFailure::Exists : EFileFailure::BadPath);
}
bool RemoveFile(const std::string& path) {
    return g_disk.Do().Good() && (g_disk.onDisk.erase(path), g_disk.files.erase(path) != 0);
}
bool RemovePlainFile(const std::string& path) {
    return RemoveFile(path);
}
bool ListFolder(const std::string& folder, std::vector<SFolderEntry>& entries) {
    const test::CFailingMemory::SExempt exempt;
    for (const auto& [path, bytes] : g_disk.files)
        if (path.starts_with(folder + "\\"))
            entries.push_back({path.substr(folder.size() + 1), false, true});
    return g_disk.Do().Good();
}
std::string StateFolder() {
    return "C:\\state";
}
bool MakePrivateFolder(const std::string& folder) {
    const test::CFailingMemory::SExempt exempt;
    return g_disk.Do().Good() && (g_disk.folders.insert(folder), true);
}
std::string ResolvedFolder(const std::string& folder) {
    return folder;
}
bool RenameFile(const std::string& from, const std::string& to) {
    const test::CFailingMemory::SExempt exempt;
    const bool isDone = g_disk.Do().Good() && g_disk.files.contains(from);
    for (auto* names : {&g_disk.files, &g_disk.onDisk})
        if (auto node = isDone ? names->extract(from) : decltype(names->extract(from)){}) {
            node.key() = to;
            names->insert_or_assign(to, node.mapped());
        }
    return isDone;
}
bool RemoveEmptyFolder(const std::string& path) {
    const auto isWithin = [&](const auto& file) { return file.first.starts_with(path + "\\"); };
    return g_disk.Do().Good() && std::ranges::none_of(g_disk.files, isWithin) &&
           g_disk.folders.erase(path) != 0;
}

// A run asks for the first two, and looks at no answer; the rest is only linked.
// clang-format off
void FlushFolder(const std::string&) {}
SFreeSpace FreeSpace(const std::string&) { return g_disk.room; }
std::string SystemErrorText(long systemCode) { return "failure " + std::to_string(systemCode); }
bool IsLink(const std::string&) { return false; }
bool IsDriveRoot(const std::string&) { return false; }
bool CFile::RemoveIfEmpty() { return false; }
bool CopyToNewFile(const std::string&, const std::string&) { return false; }
std::string MakeUniqueFile(const std::string&, const std::string&) { return {}; }
std::string TemporaryFolder() { return {}; }
std::string CurrentFolder() { return {}; }
// clang-format on

} // namespace ruvo
