#include "tools/events/relay_selection.h"

#include "base/code_page.h"
#include "tools/text_encoding.h"

#include <algorithm>
#include <set>

namespace ruvo {

bool CRelaySelection::MatchesName(std::string_view name) const {
    return ContainsText(name, m_wanted);
}

void CRelaySelection::Begin(const SEventSource& source) {
    m_file = source.file;
    m_isNamed = m_isFileMatched = MatchesName(source.relay);
    m_hasMatched = m_hasMatched || m_isNamed;
    m_damage.clear();
}

bool CRelaySelection::MatchesTexts(const CEventRecord& record) {
    const std::string* const texts[] = {&record.GetAuxText1(), &record.GetAuxText2(), &record.GetAuxText3()};
    if (!std::ranges::equal(texts, m_texts, {}, [](const std::string* text) { return *text; })) {
        m_texts.clear();
        for (const std::string* const text : texts) {
            m_texts.push_back(*text);
        }
        m_doTextsMatch = std::ranges::any_of(
            m_texts, [this](const std::string& text) { return ContainsText(Cp1252ToUtf8(text), m_wanted); });
    }
    return m_doTextsMatch;
}

CDayFileWalk::ItemHandler CRelaySelection::Only(CDayFileWalk::ItemHandler handle) {
    if (m_wanted.empty()) {
        return handle;
    }
    return [this, handle = std::move(handle)](const SEventSource& source, const SDayFileItem& item,
                                              CProgress& progress) {
        if (m_file != source.file) {
            Begin(source);
        }
        if (m_isNamed) {
            handle(source, item, progress);
            return;
        }
        if (item.record == nullptr) {
            if (m_isFileMatched) {
                handle(source, item, progress);
            } else if (item.damage) {
                m_damage.push_back(*item.damage);
            }
            return;
        }
        if (!m_hasMatched) {
            m_plants[source.relay].insert(ReadableRelayLine(item.record->GetAuxText1()));
        }
        if (!MatchesTexts(*item.record)) {
            return;
        }
        m_hasMatched = m_isFileMatched = true;
        for (const SDayFileDamage& damage : m_damage) {
            SDayFileItem earlier;
            earlier.offset = damage.offset;
            earlier.damage = damage;
            handle(source, earlier, progress);
        }
        m_damage.clear();
        handle(source, item, progress);
    };
}

bool CRelaySelection::SayIfNone(const SFoundFiles& found, SConsole& console) const {
    constexpr std::size_t kMostListed = 20;
    const bool isNamed =
        std::ranges::any_of(found.files, [this](const SFoundFile& file) { return MatchesName(file.relay); });
    if (m_wanted.empty() || m_hasMatched || isNamed || found.files.empty()) {
        return false;
    }
    auto choices = m_plants;
    for (const SFoundFile& file : found.files) { // those without a record, too
        choices.try_emplace(file.relay);
    }
    std::string text = "No relay matches \"" + EscapeControls(m_wanted) + "\". There are: ";
    std::size_t count = 0;
    for (const auto& [relay, plants] : choices) {
        if (count == kMostListed) {
            text += ", and " + std::to_string(choices.size() - count) + " more";
            break;
        }
        text += count++ == 0 ? "" : ", ";
        std::string names;
        for (const std::string& plant : plants) {
            names += (names.empty() || plant.empty() ? "" : " / ") + plant;
        }
        text += names.empty() ? EscapeControls(relay) : names + " (" + EscapeControls(relay) + ")";
    }
    console.error.Write(text + ".\n");
    return true;
}

void CRelaySelection::ReportUnknownClocks(const SFoundFiles& found, SConsole& console) const {
    std::set<std::string> unknown;
    for (const SFoundFile& file : found.files) {
        if (file.clock == nullptr && MatchesName(file.relay)) {
            unknown.insert(file.relay);
        }
    }
    for (const std::string& relay : unknown) {
        console.error.Write("ruvoctl: --clocks: no line fits " + EscapeControls(relay) +
                            "; its times are taken as UTC and marked with ~\n");
    }
}

} // namespace ruvo
