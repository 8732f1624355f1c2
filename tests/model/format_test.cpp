#include "model/format/formatter.h"
#include "model/relay_values.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <new>
#include <vector>

namespace {
thread_local std::size_t g_allocations = 0;
} // namespace

// Not to be inlined: compilers then take malloc and delete for a mismatch.
[[gnu::noinline]] void* operator new(std::size_t size) {
    ++g_allocations;
    if (void* memory = std::malloc(size > 0 ? size : 1)) {
        return memory;
    }
    throw std::bad_alloc();
}
[[gnu::noinline]] void operator delete(void* memory) noexcept {
    std::free(memory);
}
[[gnu::noinline]] void operator delete(void* memory, std::size_t /*size*/) noexcept {
    std::free(memory);
}

namespace ruvo {
namespace {

using namespace test;

/// Values joined with "+".
CParlaneDataList FromWords(const std::string& words) {
    CParlaneDataList values;
    std::istringstream text(words);
    for (std::string word; std::getline(text, word, '+');) {
        values.push_back(FromWord(word));
    }
    return values;
}

std::string Format(const char* format, const std::string& words, bool& success,
                   const SLocale* locale = nullptr) {
    std::array<char, 400> buffer;
    success = true;
    const std::size_t length =
        FormatValues(locale, buffer.data(), buffer.size(), format, FromWords(words), success);
    EXPECT_EQ(buffer.at(length), '\0');
    return {buffer.data(), length};
}

struct SCase {
    const char* name;
    const char* format;
    const char* arguments; ///< lists of values, one list for each use of the format
    std::string want;      ///< the results, joined with ";"
    bool success = true;
};

void Check(const std::vector<SCase>& cases) {
    for (const SCase& row : cases) {
        std::string all;
        std::istringstream lists(row.arguments);
        for (std::string words; lists >> words;) {
            bool success = false;
            all += (all.empty() ? "" : ";") + Format(row.format, words, success);
            EXPECT_EQ(success, row.success) << row.name;
        }
        EXPECT_EQ(all, row.want) << row.name;
    }
}

TEST(Format, Integers) {
    Check({{"a digit at least", "%d|%.0i|%-05d|", "i0+i0+i5 i-2147483648+i5+i-5",
            "0|0|5    |;-2147483648|5|-5   |"},
           {"signs", "% +d|% d", "i0+i5 i-5+i-5", "+0| 5;-5|-5"},
           {"zeros behind the sign", "%06d", "i5 i-5", "000005;-00005"},
           {"precision rules zeros out", "%+06.3d", "i5", "  +005"},
           {"short size keeps the sign", "%hd", "i98304 i98303", "-32768;32767"},
           {"signed takes Int alone", "%d", "u7 s3", "0;0", false},
           {"precision in width", "%+5.2u", "u7 u1000", "   07; 1000"},
           {"negative as bits", "%u %x", "i-2+i-2", "4294967294 FFFFFFFE", false},
           {"every unsigned", "%lu", "44_02_02_01 T4294967295 x300 i9 b5", "258;4294967295;300;9;5"},
           {"no integer, no value", "%u%x", "f1", "00", false},
           {"hexadecimal", "%x|%#X|%#08x", "u2748+u255+u255 u0+u0+u0", "ABC|0XFF|0X0000FF;0|0|00000000"},
           {"short size, character, bits", "%hu|%03c|%016.16b", "u65537+u321+20_02_05_80",
            "1|  A|1000000000000101"}});
}

TEST(Format, TextsAndGrammar) {
    Check({{"cut, padded, no zeros", "%05.2s|%-5s|", "18_03_41_42_43+s3", "   AB|xxx  |"},
           {"kinds of text", "%s %.2s %s", "1C_03_41_42_43+1C_03_41_42_43+64_02_0A_FF", "*** ** 0AFF"},
           {"no text", "<%s>", "u1", "<>", false},
           {"width from a value", "%*d|%*d|", "i4+i7+i-4+i7", "   7|7   |"},
           {"precision from a value", "%.*d|%0*.*d", "i3+i7+i4+i-1+i7", "007|0007"},
           {"width of a wrong type is 0", "%*d", "u4+i7", "7", false},
           {"a bare point is precision 0", "%.s|", "s3", "|"},
           {"unknown letter uses no value", "100%%%q%5yz%d", "i5", "100%z5"},
           {"ends inside", "ab%-05.3l", "i5", "ab"},
           {"hostile width", "%99999999999d", "i5", std::string(399, ' ')},
           {"hostile precision", "%.99999999999d", "i5", std::string(399, '0')},
           {"hostile decimals", "%.4294967297f", "f1", "1." + std::string(397, '0')},
           {"hostile digits", "%.99999999k", "V0", std::string(399, ' ')},
           {"hostile width value", "%*d", "i-2147483648+i5", "5" + std::string(398, ' ')}});
}

TEST(Format, FloatingNumbers) {
    Check({{"default precision", "%f", "f0.5 f0 f-0.0", "0.500000;0.000000;0.000000"},
           {"large ones show fewer decimals", "%f", "f1234567.891 f10", "1234567.875;10.00000"},
           {"half of an odd precision", "%.3f|%.5f", "f1234.5+f1234.5 f12.5+f12.5",
            "1234.50|1234.500;12.50|12.5000"},
           {"l is nothing to them", "%le|%lf", "f1234.5+f0.5", "1235|0.500000"},
           {"no decimals, half up", "%.0f", "f12 f0.4 f0.5 f2.5 f9.5", "12.;0.;1.;3.;10."},
           {"carries", "%.1f", "f9.96 f-0.96 f0.0625 f0.00625", "10.0;-1.0;0.1;0.0"},
           {"signs and zeros", "%+08.2f|% .1f|%.3f", "f-1.5+f1.5+f0.0625", "-0001.50| 1.5|0.063"},
           {"largest", "%f", "f3.40282347e38", "340282346638528859811704183484516925440.000"},
           {"denormal", "%.50f", "f1.4e-45", "0." + std::string(44, '0') + "140130"},
           {"no digits", "%05f%e", "f-inf+finf fnan+fnan", " -InfInf;  NaNNaN"},
           {"no number", "%f %e", "i5", "0.000000 0.000", false},
           {"fixed", "%e", "f-0.0 f-0.25 f123.4 f1234", "0.000;-.2500;123.4;1234"},
           {"carry within the fixed form", "%e", "f0.99996 f999.96", "1.000;1000"},
           {"engineering", "%e", "f12345 f0.05 f1e-20", "12.35e3;50.00e-3;10.00e-21"},
           {"carries to it and in it", "%e", "f9999.6 f0.099996 f999960", "10.00e3;100.0e-3;1.000e6"},
           {"all digits are whole", "%.3e|%.2e", "f123456+f123456", "123e3|120e3"},
           {"precision 0, zeros", "%.0e|%.0e|%+08e", "f7+f50+f0.5", "7|50e0|+00.5000"}});
}

TEST(Format, NumbersWithUnits) {
    Check({{"fixed", "%k", "V230.5 V-230.5 A0.25", " 230.5 V;-230.5 V; .2500 A"},
           {"no point", "%k", "V1234 V-1234", "  1234 V; -1234 V"},
           {"zero", "%k", "V0 V-0.0 %0", "     0 V;     0 V;     0%"},
           {"nine digits", "%lk", "V230.5 V0", " 230.500000 V;          0 V"},
           {"prefixes", "%k", "V75e-18 V1.5e-15 V1.5e-12 V1.5e-9 V1.5e-6 V1.5e-3",
            " 75.00aV; 1.500fV; 1.500pV; 1.500nV; 1.500uV; 1.500mV"},
           {"prefixes upwards", "%k", "V12345 V1.5e6 V1.5e9 V1.5e12 V1.5e15 V1.5e18",
            " 12.35kV; 1.500MV; 1.500GV; 1.500TV; 1.500PV; 1.500EV"},
           {"no prefix at 0", "%.2k", "V123 %123", "  120 V;  120%"},
           {"carries", "%k", "A9999.6 A0.099996", " 10.00kA; 100.0mA"},
           {"beyond them", "%k", "V5e21 V1e-19 V999.96e18", " 5.000e21V; 100.0e-21V; 1.000e21V"},
           {"no prefix", "%k", "%50 %12345 ^12345 _5 ?5", " 50.00%; 12.35e3%; 12.35e3ft; 5.000; 5.000"},
           {"one digit", "%.0k", "%50 A9.6 V2.5 V0", "  50%;  10 A;  3 V;  0 V"},
           {"exact value below the half", "%k", "V1.0005", " 1.000 V"},
           {"width and zeros", "%-+10k|%010k", "A1.5+A1.5 A-1.5+A-1.5",
            "+1.500 A  | 001.500 A;-1.500 A  |-001.500 A"},
           {"no number", "%k", "f5", "     0", false}});
}

TEST(Format, Units) {
    // 12345 in every unit behind its digits, from code 0 on; the last two codes have no unit.
    std::istringstream shown(
        "kA kV kdeg kOhm kW kVA kVAr km ks e3:1 kCel kHz e3% e3PU kA2 e3 kWh kVAh kVArh "
        "kmin kS kV/Hz kHz/s kmi e3ft e3in e3hr e3d e3j e3A2s e3m/s e3rev/s e3K e3F e3 e3");
    std::uint8_t unit = 0;
    for (std::string want; shown >> want; ++unit) {
        bool success = true;
        std::array<char, 40> text;
        const CParlaneNumber number(12345, unit, ENumberForm::Long);
        FormatValue(nullptr, text.data(), text.size(), "%k", &number, success);
        EXPECT_EQ(text.data(), " 12.35" + want);
    }
    EXPECT_EQ(unit, 36);
}

TEST(Format, Times) {
    const std::string longTime = "Monday 05 February 2024 13:07:09.045 GMT", bad = "Illegal time value";
    Check({{"plain", "%t", "t", "Monday 05 February 2024 13:07:09 GMT"},
           {"long, size letter in front and behind", "%ltl|%tl", "t+t", longTime + "l|" + longTime},
           {"captions", "%#t", "t", "Date: Monday 05 February 2024 Time: 13:07:09 GMT"},
           {"weekday not given", "%t", "t4005", "05 February 2024 13:07:09 GMT"},
           {"Monday is replaced", "%t", "t4036", "Sunday 04 February 2024 13:07:09 GMT"},
           {"others stay", "%t", "t4229", "Sunday 05 February 2024 13:07:09 GMT"},
           {"no such date", "%t", "t4063", "Monday 31 February 0024 13:07:09 GMT"},
           {"no such second", "%t", "t1255", "Monday 05 February 0024 13:07:65 GMT"},
           {"flags and limits", "%.3t|%t", "t2187+t3151",
            "Monday 05 February 2024 13:59:09 GMT|Monday 05 February 2024 23:07:09 st"},
           {"years", "%t", "t6080 t6079",
            "Tuesday 05 February 1980 13:07:09 GMT;Sunday 05 February 2079 13:07:09 GMT"},
           {"last month and year", "%t", "t5012 t6099",
            "Thursday 05 December 2024 13:07:09 GMT;Friday 05 February 1999 13:07:09 GMT"},
           {"minute 60, hour 24, day 0", "%t", "t2060 t3024 t4032", bad + ";" + bad + ";" + bad},
           {"months 0 and 13, year 100", "%#t", "t5000 t5013 t6100", bad + ";" + bad + ";" + bad},
           {"width", "%020t", "t5013", "  " + bad},
           {"no time", "%t", "i1", bad, false}});
}

TEST(Format, Locales) {
    bool success = true;
    EXPECT_EQ(Format("%t", "t", success, &GetLocaleByCode("de")), "Montag 05 Februar 2024 13:07:09 GMT");
    EXPECT_EQ(Format("%k", "V230.5", success, &GetLocaleByCode("es")), " 230,5 V");
    const std::array<const char*, 6> codes{"uk", "fr", "de", "es", "ru", "xx"};
    for (std::size_t i = 0; i < codes.size(); ++i) {
        EXPECT_EQ(&GetLocale(i), &GetLocaleByCode(codes.at(i)));
        EXPECT_EQ(GetLocale(i).yearNumber, i < 5 ? 1948 : 1997);
    }
    EXPECT_EQ(&GetCurrentLocale(), &GetLocaleByCode("uk"));
    SLocale american = GetLocale(0);
    american.dateOrder = {EDatePart::Month, EDatePart::Day, EDatePart::Year};
    american.longWeekdays = american.longMonths = american.showCentury = american.clock24 = false;
    EXPECT_EQ(Format("%t", "t", success, &american), "Mon Feb 05 24 01:07:09 GMT");
    american.showAmPm = true;
    american.showWeekday = false;
    EXPECT_EQ(Format("%t", "t3000", success, &american), "Feb 05 24 12:07:09 AM GMT");
    EXPECT_EQ(Format("%t", "t3012", success, &american), "Feb 05 24 12:07:09 PM GMT");
    american.clock24 = true;
    EXPECT_EQ(Format("%t", "t", success, &american), "Feb 05 24 13:07:09 GMT")
        << "no mark on a 24-hour clock";
}

/// A language's text in UTF-8, from the code page of the language.
std::string Utf8(std::string_view text, bool isCyrillic) {
    std::string utf8;
    for (const char c : text) {
        const auto octet = static_cast<unsigned char>(c);
        const unsigned point = octet < 0x80 || !isCyrillic ? octet : octet - 0xC0U + 0x410U;
        utf8 += point < 0x80 ? "" : std::string(1, static_cast<char>(0xC0U | point >> 6U));
        utf8 += static_cast<char>(point < 0x80 ? point : 0x80U | (point & 0x3FU));
    }
    return utf8;
}

TEST(Format, WordsOfTheLocales) {
    const std::string english = "Monday Tuesday Wednesday Thursday Friday Saturday Sunday Mon Tue Wed Thu "
                                "Fri Sat Sun January February "
                                "March April May June July August September October November December Jan "
                                "Feb Mar Apr May Jun Jul Aug "
                                "Sep Oct Nov Dec Date: Illegal time value|Invalid|AM PM GMT st Time: .:.6";
    const std::array<std::string, 2> cases[] = {
        {"", english},
        {"uk", english},
        {"fr", "lundi mardi mercredi jeudi vendredi samedi dimanche lun mar mer jeu ven sam dim janvier "
               "février mars "
               "avril mai juin juillet août septembre octobre novembre décembre jan fév mar avr mai jun jul "
               "aoû sep "
               "oct nov déc Date : Heure incorrecte|Incorrect|AM PM GMT st Heure : ,:.6"},
        {"de",
         "Montag Dienstag Mittwoch Donnerstag Freitag Samstag Sonntag Mo Di Mi Do Fr Sa So Januar Februar "
         "März "
         "April Mai Juni Juli August September Oktober November Dezember Jan Feb Mär Apr Mai Jun Jul Aug Sep "
         "Okt Nov Dez Datum: Ungültige Zeitangabe|Ungültig|AM PM GMT st Zeit: ,:.6"},
        {"es", "lunes martes miércoles jueves viernes sábado domingo lun mar mié jue vie sáb dom enero "
               "febrero marzo "
               "abril mayo junio julio agosto septiembre octubre noviembre diciembre ene feb mar abr may jun "
               "jul ago "
               "sep oct nov dic Fecha: Hora no válida|No válido|AM PM GMT st Hora: ,:.6"},
        {"ru",
         "Понедельник Вторник Среда Четверг Пятница Суббота Воскресенье Пн Вт Ср Чт Пт Сб Вс Январь Февраль "
         "Март Апрель Май Июнь Июль Август Сентябрь Октябрь Ноябрь Декабрь Янв Фев Мар Апр Май Июн Июл Авг "
         "Сен "
         "Окт Ноя Дек Дата: Недопустимое время|Недопустимо|AM PM GMT st Время: .:.6"}};
    for (const auto& [code, want] : cases) {
        const SLocale& l = GetLocaleByCode(code);
        std::string words;
        const auto add = [&](const auto& names) {
            for (const std::string_view name : names)
                words += std::string(name) + " ";
        };
        add(l.weekdays), add(l.shortWeekdays), add(l.months), add(l.shortMonths);
        words +=
            std::string(l.dateCaption) + " " + std::string(l.badTime) + "|" + std::string(l.invalid) + "|";
        add(std::array{l.am, l.pm, l.standardTime, l.summerTime, l.timeCaption});
        words +=
            {l.decimalPoint, l.timeSeparator, l.fractionSeparator, static_cast<char>('0' + l.floatPrecision)};
        EXPECT_EQ(Utf8(words, code == "ru"), want);
    }
}

TEST(Format, NativeArguments) {
    std::array<char, 150> text;
    const char* null = nullptr;
    FormatText(nullptr, text.data(), text.size(), "%f %e %d %u %x %*.*d %s %s %.2s %k %d %t <%s><%5s>",
               1234567.891, 1e-320, -1, -1, 255U, 5, 3, 7, "a", null, std::string_view("xyz"),
               SFormatNumber{-5e-324, 1}, "no integer", CParlaneIEC870(kMonday), 7);
    EXPECT_STREQ(text.data(), "1234567.891 10.00e-321 -1 4294967295 FF   007 a (null) xy -4.941e-324V 0 "
                              "Monday 05 February 2024 13:07:09 GMT <><     >")
        << "a text that is none or missing is empty, a null pointer is not";
}

TEST(Format, CapacityCutsAnywhere) {
    const Value value = FromWord("V12345");
    const std::string whole = "U = |  12.35kV|!";
    for (std::size_t capacity = 0; capacity <= whole.size() + 2; ++capacity) {
        std::array<char, 40> buffer;
        buffer.fill('~');
        bool success = true;
        FormatValue(nullptr, buffer.data(), capacity, "U = |%9k|!", value.get(), success);
        const std::string want = capacity > 0 ? whole.substr(0, capacity - 1) : "~~~";
        EXPECT_EQ(std::string(buffer.data(), want.size()), want);
        EXPECT_EQ(capacity > 0 ? buffer.at(want.size()) : '\0', '\0');
        EXPECT_EQ(buffer.at(capacity), '~');
    }
}

TEST(Format, NumbersAllocateNothing) {
    const CParlaneDataList values = FromWords("i-5+u7+u4294967295+f1e-40+f3e38+V0.3333333+V-1e300+t");
    std::array<char, 2000> buffer;
    bool success = true;
    const std::size_t before = g_allocations;
    const std::size_t length = FormatValues(&GetCurrentLocale(), buffer.data(), buffer.size(),
                                            "%d %x %b %.200f %.100e %.400k %lk %lt", values, success);
    EXPECT_EQ(g_allocations, before);
    EXPECT_TRUE(success);
    EXPECT_GT(length, 600U);
}

} // namespace
} // namespace ruvo
