#include "tools/report/event_kind.h"

#include <algorithm>
#include <array>
#include <string>

namespace ruvo {

namespace {

struct SKindRow {
    EEventKind kind;
    std::string_view name;
};
constexpr std::array<SKindRow, kEventKindCount> kKinds{{{EEventKind::Trip, "Trip"},
                                                        {EEventKind::Fault, "Fault"},
                                                        {EEventKind::Start, "Start"},
                                                        {EEventKind::Alarm, "Alarm"},
                                                        {EEventKind::Switching, "Switching"},
                                                        {EEventKind::Device, "Relay itself"},
                                                        {EEventKind::Other, "Other"}}};
static_assert(std::ranges::is_sorted(kKinds, {}, &SKindRow::kind), "one row per EEventKind, in order");

struct SWordRow {
    EEventKind kind;
    std::string_view beginning; ///< of a word, in small letters; accented letters as the relay writes them
};
// The first row that a text has decides: an alarm about a trip circuit is an alarm, a fault that started the
// breaker is a fault. English, French, German and Spanish, as relays speak them.
constexpr std::array kWords{
    SWordRow{EEventKind::Alarm, "alarm"},
    SWordRow{EEventKind::Alarm, "warn"},
    SWordRow{EEventKind::Alarm, "supervis"},
    SWordRow{EEventKind::Alarm, "unhealthy"},
    SWordRow{EEventKind::Trip, "trip"},
    SWordRow{EEventKind::Trip, "déclench"},
    SWordRow{EEventKind::Trip, "declench"},
    SWordRow{EEventKind::Trip, "auslös"},
    SWordRow{EEventKind::Trip, "ausgelöst"},
    SWordRow{EEventKind::Trip, "disparo"},
    SWordRow{EEventKind::Fault, "fault"},
    SWordRow{EEventKind::Fault, "défaut"},
    SWordRow{EEventKind::Fault, "defaut"},
    SWordRow{EEventKind::Fault, "kurzschlu"},
    SWordRow{EEventKind::Fault, "erdschlu"},
    SWordRow{EEventKind::Fault, "fehler"},
    SWordRow{EEventKind::Fault, "falta"},
    SWordRow{EEventKind::Start, "start"},
    SWordRow{EEventKind::Start, "pickup"},
    SWordRow{EEventKind::Start, "pick-up"},
    SWordRow{EEventKind::Start, "démarr"},
    SWordRow{EEventKind::Start, "demarr"},
    SWordRow{EEventKind::Start, "anreg"},
    SWordRow{EEventKind::Start, "arranque"},
    SWordRow{EEventKind::Alarm, "thermal"},
    SWordRow{EEventKind::Alarm, "overload"},
    SWordRow{EEventKind::Switching, "open"},
    SWordRow{EEventKind::Switching, "close"},
    SWordRow{EEventKind::Switching, "closing"},
    SWordRow{EEventKind::Switching, "switch"},
    SWordRow{EEventKind::Switching, "breaker"},
    SWordRow{EEventKind::Switching, "cb"},
    SWordRow{EEventKind::Switching, "tap"},
    SWordRow{EEventKind::Switching, "reclos"},
    SWordRow{EEventKind::Switching, "autoreclos"},
    SWordRow{EEventKind::Switching, "isolator"},
    SWordRow{EEventKind::Switching, "ouvert"},
    SWordRow{EEventKind::Switching, "ferm"},
    SWordRow{EEventKind::Switching, "schalt"},
    SWordRow{EEventKind::Switching, "leistungsschalter"},
    SWordRow{EEventKind::Device, "self"},
    SWordRow{EEventKind::Device, "reset"},
    SWordRow{EEventKind::Device, "power supply"},
    SWordRow{EEventKind::Device, "clock"},
    SWordRow{EEventKind::Device, "time sync"},
    SWordRow{EEventKind::Device, "battery"},
    SWordRow{EEventKind::Device, "watchdog"},
    SWordRow{EEventKind::Device, "setting"},
    SWordRow{EEventKind::Device, "password"},
    SWordRow{EEventKind::Device, "access"},
    SWordRow{EEventKind::Device, "login"},
    SWordRow{EEventKind::Device, "memory"},
    SWordRow{EEventKind::Device, "firmware"},
};

/// Bytes beyond ASCII are letters.
bool IsLetter(char c) {
    return (c >= 'a' && c <= 'z') || static_cast<unsigned char>(c) >= 0x80;
}

std::string InSmallLetters(std::string_view utf8) {
    constexpr unsigned char kLatinLead =
        0xC3; // U+00C0 to U+00FF, whose capitals lie 32 below the small letters
    std::string small(utf8);
    char before = '\0';
    for (char& c : small) {
        const bool isCapital = c >= 'A' && c <= 'Z';
        const auto byte = static_cast<unsigned char>(c);
        const bool isAccented =
            static_cast<unsigned char>(before) == kLatinLead && byte < 0x9F && byte != 0x97;
        before = c;
        c = static_cast<char>(c + (isCapital || isAccented ? 'a' - 'A' : 0));
    }
    return small;
}

bool HasWord(std::string_view small, std::string_view beginning) {
    for (std::size_t at = small.find(beginning); at != std::string_view::npos;
         at = small.find(beginning, at + 1)) {
        if (at == 0 || !IsLetter(small[at - 1])) {
            return true;
        }
    }
    return false;
}

} // namespace

std::string_view EventKindName(EEventKind kind) {
    return kKinds[static_cast<std::size_t>(kind)].name;
}

EEventKind EventKindOf(std::string_view utf8) {
    const std::string small = InSmallLetters(utf8);
    const auto* const row = std::ranges::find_if(
        kWords, [&small](const SWordRow& word) { return HasWord(small, word.beginning); });
    return row == kWords.end() ? EEventKind::Other : row->kind;
}

} // namespace ruvo
