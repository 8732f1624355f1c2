// Selects what belongs to the relays that "--relay" means: by the relay's name, or by what the relay calls
// itself in its records: plant text, description, model.
#pragma once

#include "tools/events/day_file_walk.h"

#include <map>
#include <set>
#include <string>
#include <vector>

namespace ruvo {

class CRelaySelection {
public:
    /// UTF-8; part of the relay's name or of one of its texts, ASCII letters without case. Empty for all.
    explicit CRelaySelection(std::string wanted) : m_wanted(std::move(wanted)) {}

    /// Whether the name alone says that all of the relay's files belong to it.
    [[nodiscard]] bool MatchesName(std::string_view name) const;
    /// Takes the items of a walk and hands on those of the selected relays. In a file whose name does not
    /// match, damage belongs to them if one of the file's records does.
    [[nodiscard]] CDayFileWalk::ItemHandler Only(CDayFileWalk::ItemHandler handle);
    /// After a walk: if no relay matches, says on standard error what there is to choose from.
    /// True when it has said so.
    bool SayIfNone(const SFoundFiles& found, SConsole& console) const;
    /// Names the selected relays of which the file of clocks says nothing: they count as UTC, with a mark.
    void ReportUnknownClocks(const SFoundFiles& found, SConsole& console) const;

private:
    void Begin(const SEventSource& source);
    [[nodiscard]] bool MatchesTexts(const CEventRecord& record);

    std::string m_wanted;
    bool m_hasMatched = false;
    std::string m_file; ///< the one at hand
    bool m_isNamed = false;
    bool m_isFileMatched = false;
    std::vector<SDayFileDamage> m_damage; ///< of that file, before its first record that matches
    std::vector<std::string> m_texts;     ///< of the last record; seldom others than those of the next
    bool m_doTextsMatch = false;
    std::map<std::string, std::set<std::string>> m_plants; ///< by relay, while none matches
};

} // namespace ruvo
