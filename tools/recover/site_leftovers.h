// What ended runs have left of a site's events: in journals and set-aside files.
#pragma once

#include "ledger/leftovers.h"

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace ruvo {

class CJsonWriter;

/// Of one event root.
struct SRootLeftovers {
    std::string eventRoot; ///< in the system's own form; empty when it is unknown
    bool isThere = true;   ///< the event root
    /// Whose runs had it as their event root, as their records name them; known of other sites' roots.
    std::set<std::string> iniPaths;
    bool areRunsKnown = true; ///< all of them
    SLeftovers found;
};

/// Which event roots are looked at beside the one that the INI file names.
enum class EOtherRoots : std::uint8_t {
    /// Those that runs of the INI file had, and those that do not exist any more or are unknown, unless they
    /// belong to another INI file that still exists; those, too, whose runs cannot be read.
    Former,
    All,
};

struct SSiteLeftovers {
    std::string stateFolder; ///< where they were looked for; empty for none
    /// The site's own first; of others only those with something left, or that cannot be read. When the state
    /// folder cannot be listed, one without an event root stands for the others.
    std::vector<SRootLeftovers> roots;

    [[nodiscard]] bool IsRead() const;
    /// The first that could not be read, for people; empty for none.
    [[nodiscard]] std::string UnreadFolder() const;
    /// Where not all could be read, those that could be; nullopt when these are none.
    [[nodiscard]] std::optional<std::uint64_t> EventsWaiting() const;
    [[nodiscard]] std::optional<std::uint64_t> EventsSetAside() const;

private:
    [[nodiscard]] std::optional<std::uint64_t> OrUnknown(std::uint64_t events) const;
};

/// What the folders of event roots hold, each read once: every one of many sites asks for those of the
/// others.
class CRootLeftovers {
public:
    /// nullopt when the state folder cannot be listed.
    [[nodiscard]] const std::optional<std::vector<std::string>>& FoldersIn(const std::string& stateFolder);
    [[nodiscard]] const SRootLeftovers& Of(const std::string& folder);

private:
    std::map<std::string, std::optional<std::vector<std::string>>> m_folders;
    std::map<std::string, SRootLeftovers> m_roots;
};

/// The INI file may be empty where none is known.
[[nodiscard]] SSiteLeftovers FindLeftovers(const std::string& eventRoot, const std::string& iniPath,
                                           EOtherRoots others, CRootLeftovers& known);

/// A sentence for each leftover, without a full stop, UTF-8, and for what could not be read.
[[nodiscard]] std::vector<std::string> DescribeLeftovers(const SSiteLeftovers& leftovers);
/// A page for people.
[[nodiscard]] std::string LeftoversAsText(const SSiteLeftovers& leftovers);
/// One object a line: each event root, then what is left of it.
[[nodiscard]] std::string LeftoversAsJson(const SSiteLeftovers& leftovers);

} // namespace ruvo
