#include "model/format/locale_record.h"

namespace ruvo {
namespace {

constexpr std::size_t kFallback = 0;
constexpr std::size_t kRecordCount = 6;

constexpr SLocale English(std::string_view code, int yearNumber) {
    return {
        .code = code,
        .decimalPoint = '.',
        .floatPrecision = 6,
        .dateOrder = {EDatePart::Day, EDatePart::Month, EDatePart::Year},
        .showWeekday = true,
        .longWeekdays = true,
        .longMonths = true,
        .showCentury = true,
        .yearNumber = yearNumber,
        .weekdays = {"Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday", "Sunday"},
        .shortWeekdays = {"Mon", "Tue", "Wed", "Thu", "Fri", "Sat", "Sun"},
        .months = {"January", "February", "March", "April", "May", "June", "July", "August", "September",
                   "October", "November", "December"},
        .shortMonths = {"Jan", "Feb", "Mar", "Apr", "May", "Jun", "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"},
        .dateCaption = "Date:",
        .badTime = "Illegal time value",
        .invalid = "Invalid",
        .clock24 = true,
        .showAmPm = false,
        .am = "AM",
        .pm = "PM",
        .standardTime = "GMT",
        .summerTime = "st",
        .timeSeparator = ':',
        .fractionSeparator = '.',
        .timeCaption = "Time:"};
}

constexpr SLocale French() {
    SLocale locale = English("fr", 1948);
    locale.decimalPoint = ',';
    locale.weekdays = {"lundi", "mardi", "mercredi", "jeudi", "vendredi", "samedi", "dimanche"};
    locale.shortWeekdays = {"lun", "mar", "mer", "jeu", "ven", "sam", "dim"};
    locale.months = {"janvier", "f\351vrier", "mars",      "avril",   "mai",      "juin",
                     "juillet", "ao\373t",    "septembre", "octobre", "novembre", "d\351cembre"};
    locale.shortMonths = {"jan", "f\351v", "mar", "avr", "mai", "jun",
                          "jul", "ao\373", "sep", "oct", "nov", "d\351c"};
    locale.dateCaption = "Date :";
    locale.badTime = "Heure incorrecte";
    locale.invalid = "Incorrect";
    locale.timeCaption = "Heure :";
    return locale;
}

constexpr SLocale German() {
    SLocale locale = English("de", 1948);
    locale.decimalPoint = ',';
    locale.weekdays = {"Montag", "Dienstag", "Mittwoch", "Donnerstag", "Freitag", "Samstag", "Sonntag"};
    locale.shortWeekdays = {"Mo", "Di", "Mi", "Do", "Fr", "Sa", "So"};
    locale.months = {"Januar", "Februar", "M\344rz",   "April",   "Mai",      "Juni",
                     "Juli",   "August",  "September", "Oktober", "November", "Dezember"};
    locale.shortMonths = {"Jan", "Feb", "M\344r", "Apr", "Mai", "Jun",
                          "Jul", "Aug", "Sep",    "Okt", "Nov", "Dez"};
    locale.dateCaption = "Datum:";
    locale.badTime = "Ung\374ltige Zeitangabe";
    locale.invalid = "Ung\374ltig";
    locale.timeCaption = "Zeit:";
    return locale;
}

constexpr SLocale Spanish() {
    SLocale locale = English("es", 1948);
    locale.decimalPoint = ',';
    locale.weekdays = {"lunes", "martes", "mi\351rcoles", "jueves", "viernes", "s\341bado", "domingo"};
    locale.shortWeekdays = {"lun", "mar", "mi\351", "jue", "vie", "s\341b", "dom"};
    locale.months = {"enero", "febrero", "marzo",      "abril",   "mayo",      "junio",
                     "julio", "agosto",  "septiembre", "octubre", "noviembre", "diciembre"};
    locale.shortMonths = {"ene", "feb", "mar", "abr", "may", "jun", "jul", "ago", "sep", "oct", "nov", "dic"};
    locale.dateCaption = "Fecha:";
    locale.badTime = "Hora no v\341lida";
    locale.invalid = "No v\341lido";
    locale.timeCaption = "Hora:";
    return locale;
}

constexpr SLocale Russian() {
    SLocale locale = English("ru", 1948);
    locale.weekdays = {"\317\356\355\345\344\345\353\374\355\350\352",  // ponedelnik
                       "\302\362\356\360\355\350\352",                  // vtornik
                       "\321\360\345\344\340",                          // sreda
                       "\327\345\362\342\345\360\343",                  // chetverg
                       "\317\377\362\355\350\366\340",                  // pyatnitsa
                       "\321\363\341\341\356\362\340",                  // subbota
                       "\302\356\361\352\360\345\361\345\355\374\345"}; // voskresenye
    locale.shortWeekdays = {"\317\355", "\302\362", "\321\360", "\327\362",
                            "\317\362", "\321\341", "\302\361"};
    locale.months = {"\337\355\342\340\360\374",         // yanvar
                     "\324\345\342\360\340\353\374",     // fevral
                     "\314\340\360\362",                 // mart
                     "\300\357\360\345\353\374",         // aprel
                     "\314\340\351",                     // may
                     "\310\376\355\374",                 // iyun
                     "\310\376\353\374",                 // iyul
                     "\300\342\343\363\361\362",         // avgust
                     "\321\345\355\362\377\341\360\374", // sentyabr
                     "\316\352\362\377\341\360\374",     // oktyabr
                     "\315\356\377\341\360\374",         // noyabr
                     "\304\345\352\340\341\360\374"};    // dekabr
    locale.shortMonths = {"\337\355\342", "\324\345\342", "\314\340\360", "\300\357\360",
                          "\314\340\351", "\310\376\355", "\310\376\353", "\300\342\343",
                          "\321\345\355", "\316\352\362", "\315\356\377", "\304\345\352"};
    locale.dateCaption = "\304\340\362\340:";
    locale.badTime = "\315\345\344\356\357\363\361\362\350\354\356\345 \342\360\345\354\377";
    locale.invalid = "\315\345\344\356\357\363\361\362\350\354\356";
    locale.timeCaption = "\302\360\345\354\377:";
    return locale;
}

constexpr std::array<SLocale, kRecordCount> kLocales{English("", 1997), English("uk", 1948), French(),
                                                     German(),          Spanish(),           Russian()};

/// Process-wide; nothing changes it at run time.
constexpr std::size_t kCurrentIndex = 0;

} // namespace

const SLocale& GetFallbackLocale() {
    return kLocales[kFallback];
}

const SLocale& GetLocale(std::size_t index) {
    return kLocales[index < kRecordCount - 1 ? index + 1 : kFallback];
}

const SLocale& GetLocaleByCode(std::string_view code) {
    for (std::size_t i = kFallback + 1; i < kRecordCount; ++i) {
        if (kLocales[i].code == code) {
            return kLocales[i];
        }
    }
    return GetFallbackLocale();
}

const SLocale& GetCurrentLocale() {
    return GetLocale(kCurrentIndex);
}

} // namespace ruvo
