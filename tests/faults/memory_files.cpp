// The platform's files, on the disk in memory.
#include "memory_disk.h"

#include "ledger/background_flush.h"
#include "platform/mapped_part.h"
#include "platform/state_folder.h"
#include "support/failing_memory.h"

#include <algorithm>
#include <utility>

namespace ruvo {

using namespace test;

/// The memory is the test's, and so is the disk meanwhile.
struct SDiskCall {
    CFailingMemory::SExempt exempt;
    std::lock_guard<std::recursive_mutex> lock{g_diskLock};
};

struct CFile::SHandle {
    std::string path; ///< empty when closed
    std::size_t node = 0;
    std::size_t position = 0;
    bool hasLock = false;
    SMemoryNode& Node() const { return g_disk.nodes[node]; }
    void Reset() {
        const std::lock_guard guard(g_diskLock);
        if (hasLock && node < g_disk.nodes.size())
            Node().isLocked = false;
        *this = {};
    }
};

CFile::CFile() : m_handle(std::make_unique<SHandle>()) {}
CFile::~CFile() {
    m_handle->Reset();
}

SFileResult CFile::Open(const std::string& path, SOpenMode mode) {
    const SDiskCall call;
    m_handle->Reset();
    const SFileResult result = g_disk.Do();
    if (!result.Good())
        return result;
    const std::string folder = FolderAndName(path).first;
    auto node = g_disk.Find(path);
    const EFileFailure failure = node && mode.exclusive                 ? EFileFailure::Exists
                                 : node && g_disk.nodes[*node].isFolder ? EFileFailure::AccessDenied
                                 : node                                 ? EFileFailure::None
                                 : !g_disk.FindFolder(folder)           ? EFileFailure::BadPath
                                 : !mode.create                         ? EFileFailure::NotFound
                                 : !g_disk.Takes(folder)                ? EFileFailure::AccessDenied
                                                                        : EFileFailure::None;
    if (failure != EFileFailure::None)
        return g_disk.Fail(failure);
    *m_handle = {path, node ? *node : g_disk.Make(path, false)};
    return result;
}
bool CFile::IsOpen() const {
    return !m_handle->path.empty();
}
SFileResult CFile::GetLength(std::uint64_t& length) {
    const SDiskCall call;
    length = m_handle->Node().bytes.size();
    return g_disk.Do();
}
SFileResult CFile::Seek(std::int64_t offset, ESeekOrigin origin, std::uint64_t& position) {
    const SDiskCall call;
    const SFileResult result = g_disk.Do();
    const std::size_t start = origin == ESeekOrigin::End ? m_handle->Node().bytes.size() : 0;
    if (result.Good())
        m_handle->position = start + static_cast<std::size_t>(offset);
    position = m_handle->position;
    return result;
}
SFileResult CFile::Read(std::span<std::uint8_t> buffer, std::size_t& count) {
    const SDiskCall call;
    const std::string& bytes = m_handle->Node().bytes;
    count = bytes.copy(reinterpret_cast<char*>(buffer.data()), buffer.size(),
                       std::min(m_handle->position, bytes.size()));
    m_handle->position += count;
    return g_disk.Do();
}
/// As a write, and as a store into what is mapped.
static SFileResult PutInto(const std::string& path, SMemoryNode& node, std::size_t position,
                           std::span<const std::uint8_t> bytes, std::size_t& count) {
    SDiskFault fault = g_disk.Count();
    const std::size_t end = position + bytes.size();
    const std::size_t growth = end > node.bytes.size() ? end - node.bytes.size() : 0;
    const std::size_t missing = growth - g_disk.RoomFor(path, growth);
    if (fault.failure == EFileFailure::None && missing > 0)
        fault.failure = EFileFailure::DiskFull;
    count = fault.failure == EFileFailure::None ? bytes.size()
            : missing > 0                       ? bytes.size() - std::min(missing, bytes.size())
            : fault.writesTakePart              ? bytes.size() / 2
                                                : 0;
    const std::string_view text(reinterpret_cast<const char*>(bytes.data()), count);
    g_disk.hasTornWrite =
        g_disk.hasTornWrite || (fault.isEnd && fault.first == g_disk.operations && count > 0);
    if (!path.empty() && count > 0)
        node.Write(position, text);
    const bool isJournal = path.ends_with(".journal");
    const bool isReserve = isJournal && bytes.front() == 0;
    g_disk.events.refusedFrames += missing > 0 && isJournal && !isReserve && node.bytes.size() > 16 ? 1 : 0;
    if (fault.failure == EFileFailure::None) {
        std::vector<int> events = isReserve ? std::vector<int>() : EventsIn(text);
        if (const int number = isJournal && !isReserve ? std::exchange(g_disk.events.underWay, 0) : 0)
            events.push_back(number);
        g_disk.events.written.insert(events.begin(), events.end());
        node.unflushed.insert(events.begin(), events.end());
    }
    return g_disk.Fail(fault.failure);
}
SFileResult CFile::Write(std::span<const std::uint8_t> bytes, std::size_t& count) {
    const SDiskCall call;
    const SFileResult result = PutInto(m_handle->path, m_handle->Node(), m_handle->position, bytes, count);
    m_handle->position += count;
    return result;
}
bool CMappedPart::Map(CFile& file, std::uint64_t offset, std::size_t size) noexcept {
    const SDiskCall call;
    m_memory = reinterpret_cast<std::uint8_t*>(file.m_handle.get()); // of a file that outlives it
    m_offset = offset;
    m_size = size;
    return g_disk.Do().Good();
}
SFileResult CMappedPart::Store(std::uint64_t offset, std::span<const std::uint8_t> bytes) noexcept {
    const SDiskCall call;
    auto& handle = *reinterpret_cast<CFile::SHandle*>(m_memory);
    std::size_t count = 0;
    return offset + bytes.size() > handle.Node().bytes.size()
               ? g_disk.Fail(EFileFailure::Other)
               : PutInto(handle.path, handle.Node(), static_cast<std::size_t>(offset), bytes, count);
}
void CMappedPart::Unmap() noexcept {}
SFileResult CFile::SetLength(std::uint64_t length) {
    const SDiskCall call;
    const SFileResult result = g_disk.Do();
    if (result.Good() && length != m_handle->Node().bytes.size())
        m_handle->Node().Write(length, "", true);
    return result;
}
SFileResult CFile::FlushToDisk() {
    const SDiskCall call;
    const SFileResult result = g_disk.Do();
    if (result.Good()) {
        SMemoryNode& node = m_handle->Node();
        g_disk.events.unnamed[m_handle->path].merge(node.unflushed);
        node.Flush();
        g_disk.NoteNames();
    }
    return result;
}
SFileResult CFile::FlushWritten() {
    return FlushToDisk();
}
EFileLock CFile::TryLock() {
    const SDiskCall call;
    if (!g_disk.Do().Good())
        return EFileLock::Unknown;
    const bool isFree = m_handle->hasLock || !m_handle->Node().isLocked;
    m_handle->hasLock = isFree;
    m_handle->Node().isLocked = true;
    return isFree ? EFileLock::Taken : EFileLock::HeldByAnother;
}
bool CFile::IsAt(const std::string& path) const {
    const SDiskCall call;
    return g_disk.Do().Good() && IsOpen() && g_disk.Find(path) == m_handle->node;
}
SFileResult CFile::Close() {
    const SDiskCall call;
    const SFileResult result = IsOpen() ? g_disk.Do() : g_disk.Fail(EFileFailure::BadDescriptor);
    m_handle->Reset();
    return result;
}

EPathKind GetPathKind(const std::string& path) {
    const SDiskCall call;
    const auto node = g_disk.Do().Good() ? g_disk.Find(path) : std::nullopt;
    return !node ? EPathKind::Missing : g_disk.nodes[*node].isFolder ? EPathKind::Folder : EPathKind::File;
}
bool IsAbsent(const std::string& path) {
    const SDiskCall call;
    const SFileResult result = g_disk.Do();
    return result.failure == EFileFailure::NotFound || (result.Good() && !g_disk.Find(path));
}
SFileResult CanMakeEntryIn(const std::string& folder, EPathKind) {
    const SDiskCall call;
    return g_disk.Takes(folder) ? g_disk.Do() : g_disk.Fail(EFileFailure::AccessDenied);
}
SFileResult MakeFolder(const std::string& path) {
    const SDiskCall call;
    const SFileResult result = g_disk.Do();
    if (!result.Good())
        return result;
    if (g_disk.Find(path) || !g_disk.Takes(FolderAndName(path).first))
        return g_disk.Fail(g_disk.FindFolder(path) ? EFileFailure::Exists : EFileFailure::BadPath);
    g_disk.Make(path, true);
    return result;
}
bool RemoveFile(const std::string& path) {
    const SDiskCall call;
    const auto [folder, name] = FolderAndName(path);
    if (!g_disk.Do().Good() || !g_disk.Find(path))
        return false;
    g_disk.nodes[*g_disk.Find(folder)].Name(name, 0);
    return true;
}
bool RenameFile(const std::string& from, const std::string& to) {
    const SDiskCall call;
    const auto node = g_disk.Do().Good() ? g_disk.Find(from) : std::nullopt;
    if (node)
        g_disk.nodes[*g_disk.Find(FolderAndName(to).first)].Name(FolderAndName(to).second, *node,
                                                                 FolderAndName(from).second);
    return node.has_value();
}
bool RemovePlainFile(const std::string& path) {
    return RemoveFile(path);
}
bool RemoveEmptyFolder(const std::string& path) {
    const SDiskCall call;
    const auto folder = g_disk.FindFolder(path);
    return folder && g_disk.nodes[*folder].names.empty() && RemoveFile(path);
}
bool ListFolder(const std::string& folder, std::vector<SFolderEntry>& entries) {
    const SDiskCall call;
    const auto node = g_disk.Do().Good() ? g_disk.FindFolder(folder) : std::nullopt;
    entries.clear();
    if (node)
        for (const auto& [name, number] : g_disk.nodes[*node].names)
            entries.push_back({name, g_disk.nodes[number].isFolder, !g_disk.nodes[number].isFolder});
    return node.has_value();
}
bool FlushFolder(const std::string& folder) {
    const SDiskCall call;
    const auto node = g_disk.FindFolder(folder.substr(0, folder.find_last_not_of('\\') + 1));
    const bool isGood = g_disk.Do().Good() && g_disk.flushesNames;
    if (isGood && node)
        g_disk.nodes[*node].Flush();
    g_disk.NoteNames();
    return isGood;
}
std::string StateFolder() {
    return "C:\\var\\state";
}
bool MakePrivateFolder(const std::string& folder) {
    const SDiskCall call;
    const bool isThere = g_disk.FindFolder(folder).has_value();
    const std::string above = FolderAndName(folder).first;
    if (isThere || !g_disk.Do().Good() || !MakePrivateFolder(above) || !g_disk.Takes(above))
        return isThere;
    g_disk.Make(folder, true);
    return true;
}
std::string ResolvedFolder(const std::string& folder) {
    return GetPathKind(folder) == EPathKind::Folder ? folder : "";
}
SFreeSpace FreeSpace(const std::string&) {
    return g_disk.room;
}

// The journal's flushes without a thread of their own, so that a run asks the same of the disk each time.
// What is flushed beside the run is as much as the disk says: by itself nothing, so that an end of the
// machine loses the most.
bool CBackgroundFlush::NoteWrite() noexcept {
    const std::size_t every = g_disk.flushEvery;
    return every != 0 && g_disk.operations % every == 0 ? Flush() : !m_hasFailed;
}
bool CBackgroundFlush::Flush() noexcept {
    m_failure = m_file.FlushWritten();
    m_hasFailed = !m_failure.Good() || m_hasFailed;
    return !m_hasFailed;
}
void CBackgroundFlush::Stop() noexcept {}

// Only linked.
// clang-format off
std::string SystemErrorText(long systemCode) { return "failure " + std::to_string(systemCode); }
bool IsLink(const std::string&) { return false; }
bool IsDriveRoot(const std::string&) { return false; }
bool CFile::RemoveIfEmpty() { return false; }
std::optional<bool> CFile::IsLocked() { return false; }
std::vector<std::string> StateFoldersToRead() { return {StateFolder()}; }
bool CopyToNewFile(const std::string&, const std::string&) { return false; }
std::string MakeUniqueFile(const std::string&, const std::string&) { return {}; }
std::string TemporaryFolder() { return {}; }
std::string CurrentFolder() { return {}; }
// clang-format on

} // namespace ruvo
