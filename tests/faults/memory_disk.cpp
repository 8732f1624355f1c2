#include "memory_disk.h"

#include <algorithm>
#include <iterator>
#include <tuple>
#include <utility>

namespace ruvo::test {

constexpr std::size_t kSector = 512;

static std::string SectorOf(const std::string& bytes, std::size_t sector) {
    std::string part = sector * kSector < bytes.size() ? bytes.substr(sector * kSector, kSector) : "";
    part.resize(kSector);
    return part;
}

static void Resize(std::string& bytes, const SMemoryNode::SWrite& write) {
    bytes.resize(write.isCut ? write.at : std::max(bytes.size(), write.at + write.bytes.size()));
}

std::pair<std::string, std::string> FolderAndName(const std::string& path) {
    const std::size_t end = path.rfind('\\');
    return end == std::string::npos ? std::pair(std::string(), path)
                                    : std::pair(path.substr(0, end), path.substr(end + 1));
}

std::vector<int> EventsIn(std::string_view bytes) {
    constexpr std::string_view kMark = "Event#";
    std::vector<int> events;
    for (std::size_t at = bytes.find(kMark); at != std::string_view::npos; at = bytes.find(kMark, at + 1))
        events.push_back(std::atoi(std::string(bytes.substr(at + kMark.size(), 4)).c_str()));
    return events;
}

void SMemoryNode::Write(std::size_t at, std::string_view text, bool isCut) {
    writes.push_back({at, std::string(text), isCut});
    Resize(bytes, writes.back());
    bytes.replace(at, text.size(), text);
}

void SMemoryNode::Name(const std::string& name, std::size_t node, const std::string& before) {
    changes.push_back({name, node, before});
    names.erase(before);
    if (node == 0)
        names.erase(name);
    else
        names[name] = node;
}

void SMemoryNode::Flush() {
    flushed = bytes;
    onDisk = names;
    writes.clear();
    changes.clear();
    unflushed.clear();
}

void SMemoryNode::ForgetUnflushed(const Choose& choose) {
    std::vector<std::pair<std::size_t, std::size_t>> lengths{{0, flushed.size()}}; // after so many writes
    std::string now = flushed;
    for (std::size_t n = 0; n < writes.size(); ++n) {
        Resize(now, writes[n]);
        if (now.size() != lengths.back().second)
            lengths.emplace_back(n + 1, now.size());
    }
    const auto [count, length] = lengths[lengths.size() == 1 ? 0 : choose(lengths.size())];
    std::map<std::size_t, std::vector<std::string>> sectors; // in all their states
    now = flushed;
    for (std::size_t n = 0; n < writes.size(); ++n) {
        const SWrite& write = writes[n];
        const std::size_t end = write.isCut ? std::max(now.size(), write.at) : write.at + write.bytes.size();
        const std::string before = now;
        Resize(now, write);
        now.replace(write.at, write.bytes.size(), write.bytes);
        for (std::size_t at = write.at / kSector; at * kSector < end; ++at) {
            std::vector<std::string>& states = sectors[at];
            if (write.isCut && n < count) // what the length has lost never comes back
                states.clear();
            else if (states.empty())
                states.push_back(SectorOf(before, at));
            if (std::string state = SectorOf(now, at); states.empty() || states.back() != state)
                states.push_back(std::move(state));
        }
    }
    bytes = flushed;
    bytes.resize(length);
    for (const auto& [at, states] : sectors)
        if (const std::size_t n = states.size() == 1 ? 0 : choose(states.size()); at * kSector < length)
            bytes.replace(at * kSector, kSector, states[n], 0, std::min(kSector, length - at * kSector));
    names = onDisk;
    for (const SChange& change : std::vector<SChange>(std::move(changes)))
        if (choose(2) == 1)
            Name(change.name, change.node, change.before);
    Flush();
}

std::optional<std::size_t> SMemoryDisk::Find(const std::string& path, bool onDisk) const {
    if (path != "C:" && !path.starts_with("C:\\"))
        return std::nullopt;
    std::size_t node = 0;
    for (std::size_t at = 2; at + 1 < path.size();) {
        const std::size_t end = std::min(path.find('\\', at + 1), path.size());
        const auto& names = onDisk ? nodes[node].onDisk : nodes[node].names;
        const auto found = names.find(path.substr(at + 1, end - at - 1));
        if (found == names.end())
            return std::nullopt;
        std::tie(node, at) = std::pair(found->second, end);
    }
    return node;
}

std::optional<std::size_t> SMemoryDisk::FindFolder(const std::string& path) const {
    const auto node = Find(path);
    return node && nodes[*node].isFolder ? node : std::nullopt;
}

std::size_t SMemoryDisk::Make(const std::string& path, bool isFolder) {
    const auto [folder, name] = FolderAndName(path);
    nodes.push_back({.isFolder = isFolder});
    nodes[*FindFolder(folder)].Name(name, nodes.size() - 1);
    return nodes.size() - 1;
}

void SMemoryDisk::PutFolder(const std::string& path) {
    if (!Find(path)) {
        PutFolder(FolderAndName(path).first);
        Make(path, true);
        nodes[*Find(FolderAndName(path).first)].Flush();
    }
}

void SMemoryDisk::Put(const std::string& path, std::string_view bytes) {
    const std::string folder = FolderAndName(path).first;
    PutFolder(folder);
    SMemoryNode& node = nodes[Find(path) ? *Find(path) : Make(path, false)];
    node.bytes = bytes;
    node.Flush();
    nodes[*Find(folder)].Flush();
}

void SMemoryDisk::Move(const std::string& path, const std::string& to) {
    const std::size_t node = *Find(path);
    for (const auto& [place, number] : {std::pair(path, std::size_t{0}), std::pair(to, node)})
        if (!place.empty()) {
            const auto [folder, name] = FolderAndName(place);
            PutFolder(folder);
            nodes[*Find(folder)].Name(name, number);
            nodes[*Find(folder)].Flush();
        }
}

void SMemoryDisk::FlushAll() {
    std::ranges::for_each(nodes, &SMemoryNode::Flush);
}

std::map<std::string, std::string> SMemoryDisk::Files(const std::string& below, bool asFlushed) const {
    std::map<std::string, std::string> files;
    const auto folder = FindFolder(below);
    for (const auto& [name, number] : folder ? nodes[*folder].names : std::map<std::string, std::size_t>()) {
        const SMemoryNode& node = nodes[number];
        if (node.isFolder)
            files.merge(Files(below + "\\" + name, asFlushed));
        else
            files[below + "\\" + name] = asFlushed ? node.flushed : node.bytes;
    }
    return files;
}

void SMemoryDisk::EndProcess() {
    std::ranges::set_difference(events.handedOver, events.written,
                                std::inserter(events.excused, events.excused.end()));
    *this = {.nodes = std::move(nodes), .events = std::move(events)};
    for (SMemoryNode& node : nodes)
        node.isLocked = false;
    events.underWay = 0;
    events.unnamed.clear();
}

void SMemoryDisk::EndMachine(const Choose& choose) {
    EndProcess();
    std::ranges::set_difference(events.handedOver, events.flushed,
                                std::inserter(events.excused, events.excused.end()));
    // Only what can be reached, or else there would be choices without effect.
    const auto end = [&](std::size_t number, const auto& self) -> void {
        nodes[number].ForgetUnflushed(choose);
        for (const auto& [name, below] : std::map(nodes[number].names))
            self(below, self);
    };
    end(0, end);
}

/// As every run does: journals in which no visit has begun go, and empty day files.
void SMemoryDisk::CleanUp() {
    constexpr std::size_t kHeadOfJournal = 16;
    for (const auto& [below, most] :
         {std::pair("C:\\var", kHeadOfJournal), std::pair("C:\\ev", std::size_t{0})})
        for (const auto& [path, bytes] : Files(below))
            if (bytes.size() <= most && !nodes[*Find(path)].isLocked)
                nodes[*Find(FolderAndName(path).first)].Name(FolderAndName(path).second, 0);
}

SDiskFault SMemoryDisk::Count() {
    if (operations + 1 == otherRunAt)
        CleanUp();
    const auto isHit = [number = ++operations](const SDiskFault& fault) {
        return fault.first <= number && number <= fault.last;
    };
    const auto hit = std::ranges::find_if(faults, isHit);
    return hit == faults.end() ? SDiskFault{} : *hit;
}

bool SMemoryDisk::HasEnded() const {
    const std::lock_guard lock(g_diskLock);
    const auto isOver = [this](const SDiskFault& fault) { return fault.isEnd && fault.first <= operations; };
    return std::ranges::any_of(faults, isOver);
}

void SMemoryDisk::NoteNames() {
    for (auto& [path, waiting] : events.unnamed)
        if (path.ends_with(".journal") || Find(path, true))
            events.flushed.merge(waiting);
}

/// How much of what a file grows by finds room.
std::size_t SMemoryDisk::RoomFor(const std::string& path, std::size_t growth) const {
    if (full.empty() || !path.starts_with(full))
        return growth;
    std::size_t used = 0;
    for (const auto& [name, bytes] : Files(full))
        used += bytes.size();
    return std::min(growth, fullAt - std::min(used, fullAt));
}

} // namespace ruvo::test
