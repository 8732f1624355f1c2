// What is known of the visits of one site, for readers. It changes nothing.
#pragma once

#include "ledger/visit_entry.h"

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace ruvo {

/// Whether there are records of an event root's visits.
enum class EHistory : std::uint8_t {
    Found,
    None,        ///< no run over this event root has left one where was looked
    NotReadable, ///< there may be some, where this user may not look
};

/// Whether a run's record is complete.
enum class ERunState : std::uint8_t {
    Ended,   ///< whole, by a signal, killed or not begun: its line says so
    Running, ///< its process lives; what it has so far
};

/// The records of one event root. Records of several INI files may be in it.
class CVisitHistory {
public:
    explicit CVisitHistory(const std::string& eventRoot);

    [[nodiscard]] EHistory Found() const { return m_found; }
    /// The folder of the records; if none were found, the folders that were looked in. In the system's form.
    [[nodiscard]] const std::vector<std::string>& Folders() const { return m_folders; }

    using Take = std::function<void(const SVisitLine& line, ERunState state)>;
    /// Hands over every run, the earliest first and each number once; those that have no line yet come last.
    /// False when the folder, or a file to its end, cannot be read.
    [[nodiscard]] bool ForEach(const Take& take) const;
    /// The same of the runs of one INI file, given by any path of it; of others no entries are read.
    [[nodiscard]] bool ForEachOf(const std::string& iniPath, const Take& take) const;

private:
    [[nodiscard]] EHistory LookIn(const std::string& state, const std::string& folder) const;

    EHistory m_found = EHistory::None;
    std::string m_folder;
    std::vector<std::string> m_folders;
};

/// What is known of a relay from its visits, tonight's or earlier ones.
struct SKnownRelay {
    std::string name;
    std::string plant;
    std::string lastReached;
    /// When the first visit began that has missed it since; empty unless the latest one did.
    std::string missedSince;
    std::string missedLast; ///< the same of the latest one
    std::size_t nights = 0; ///< the days on which those visits began
};

/// The visits of one INI file in short. A repeated attempt belongs to the visit before it: what it has
/// reached is reached.
struct SVisitSummary {
    EHistory history = EHistory::None;
    std::vector<std::string> folders; ///< as CVisitHistory has them
    bool isWhole = true;              ///< all could be read
    std::string since;                ///< when the first visit began that is known
    std::optional<SVisitLine> last;   ///< the latest that has ended
    std::optional<SVisitLine> running;
    bool hasEvents = false; ///< whether any of these runs has put events into a day file
    std::map<std::pair<std::string, std::string>, SKnownRelay> relays; ///< by key and address
};

/// `also` gets every run of the event root, those of other INI files, too; it may be empty.
[[nodiscard]] SVisitSummary SummariseVisits(const std::string& eventRoot, const std::string& iniPath,
                                            const CVisitHistory::Take& also = {});

} // namespace ruvo
