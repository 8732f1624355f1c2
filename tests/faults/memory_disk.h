// A disk in memory that stands in for the platform's files, breaks when told to, and forgets at an end of the
// machine what nobody has flushed. The definitions of memory_files.cpp take the place of the platform's,
// which the linker then leaves out.
#pragma once

#include "platform/files.h"

#include <functional>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace ruvo::test {

inline std::recursive_mutex g_diskLock; ///< several threads of a run use the disk

/// What goes wrong with the operations of those numbers, counted from 1. A write that takes a part puts half
/// of its bytes into the file before it fails.
struct SDiskFault {
    std::size_t first = 0;
    std::size_t last = 0;
    EFileFailure failure = EFileFailure::None;
    bool writesTakePart = false;
    bool isEnd = false; ///< of the process: from the first operation on nothing has an effect, or an answer
};

/// Picks one of so many possibilities, of which the first is the oldest.
using Choose = std::function<std::size_t(std::size_t count)>;

/// A file, or a folder, whatever names lead to it.
struct SMemoryNode {
    struct SWrite {
        std::size_t at;
        std::string bytes;
        bool isCut; ///< the length becomes `at`
    };
    struct SChange {
        std::string name;
        std::size_t node;   ///< 0 for a removal
        std::string before; ///< the name that it had until then, if it had one
    };
    bool isFolder = false;
    bool isLocked = false;
    std::string bytes{}, flushed{};                       ///< as they are, and as they were at the last flush
    std::map<std::string, std::size_t> names{}, onDisk{}; ///< of a folder, likewise
    std::vector<SWrite> writes{};                         ///< since the last flush
    std::vector<SChange> changes{};
    std::set<int> unflushed{}; ///< events that the writes are of

    void Write(std::size_t at, std::string_view text, bool isCut = false);
    void Name(const std::string& name, std::size_t node, const std::string& before = {});
    void Flush();
    /// An end of the machine: of each sector, of the length and of each name one of the states since the last
    /// flush is left.
    void ForgetUnflushed(const Choose& choose);
};

std::pair<std::string, std::string> FolderAndName(const std::string& path);

/// The numbers of the events whose texts ("Event#0007") are in the bytes, as often as they are.
std::vector<int> EventsIn(std::string_view bytes);

/// What is known of the events that relays have handed over, by numbers that stand in their texts.
struct SEventLedger {
    std::set<int> handedOver;
    std::set<int> written; ///< into any file, by a write that succeeded
    std::set<int>
        flushed; ///< together with the names that lead to a day file; a journal's have to be so before
    std::map<std::string, std::set<int>> unnamed; ///< flushed but for those
    std::set<int> excused;         ///< an end came before the event could have been safe from it
    std::size_t refusedFrames = 0; ///< for want of room in the journal
    std::string toldElsewhere;     ///< lines that the log could not take
    int underWay = 0;              ///< without a text that tells: is written with the next frame
};

struct SMemoryDisk {
    std::vector<SMemoryNode> nodes{SMemoryNode{.isFolder = true}}; ///< the first is the drive's root
    std::vector<SDiskFault> faults{};
    std::size_t operations = 0; ///< what was asked of the disk so far
    SFreeSpace room{};
    std::string locked{}; ///< a folder in which nothing can be made
    std::string full{};   ///< a folder below which files take `fullAt` bytes at most
    std::size_t fullAt = 0;
    bool flushesNames = true;   ///< of what is in folders
    std::size_t flushEvery = 0; ///< so many frames are flushed beside the run; 0 for none
    std::size_t otherRunAt = 0; ///< before this operation another run removes what is empty and not locked
    SEventLedger events{};

    // For tests: done at once, and on the disk.
    void Put(const std::string& path, std::string_view bytes);
    void PutFolder(const std::string& path);
    void Move(const std::string& path, const std::string& to); ///< to nowhere if that is empty
    void FlushAll();
    /// All files by their paths, or those below a folder; as a reader sees them, or as flushed.
    std::map<std::string, std::string> Files(const std::string& below = "C:", bool asFlushed = false) const;

    /// The ends, after which everybody has let go of everything.
    void EndProcess();
    void EndMachine(const Choose& choose);

    /// Counts an operation and gives what is wrong with it.
    SDiskFault Count();
    bool HasEnded() const;
    bool hasTornWrite = false; ///< the end has come within a write
    SFileResult Do() { return Fail(Count().failure); }
    static SFileResult Fail(EFileFailure failure) { return {failure, static_cast<long>(failure)}; }
    /// The node's number; none where nothing of that name is, or its folder is none.
    std::optional<std::size_t> Find(const std::string& path, bool onDisk = false) const;
    std::optional<std::size_t> FindFolder(const std::string& path) const;
    bool Takes(const std::string& folder) const { return FindFolder(folder) && folder != locked; }
    std::size_t Make(const std::string& path, bool isFolder);
    void CleanUp();
    void NoteNames(); ///< some have been flushed
    std::size_t RoomFor(const std::string& path, std::size_t growth) const;
};
inline SMemoryDisk g_disk;

} // namespace ruvo::test
