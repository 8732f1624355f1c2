#include "config/configuration.h"
#include "config/duplicate_key.h"
#include "config/ethernet_entry.h"
#include "config/result_messages.h"
#include "config/scramble.h"
#include "config/scramble_keys.h"
#include "config/validation.h"
#include "platform/full_path.h"
#include "platform/ini_text.h"
#include "support/case_table.h"
#include "support/fake_system.h"
#include "support/scratch_folder.h"

#include <gtest/gtest.h>
#include <regex>

namespace ruvo {

// An INI text written on one line: blanks are line breaks, and section names lack their prefix.
std::string Ini(std::string text) {
    std::replace(text.begin(), text.end(), ' ', '\n');
    return std::regex_replace(text, std::regex("\\[(\\w+)\\]"), "[RUVO_$1]");
}

// Loads a file of that text, which stays until the next one.
CRuvoConfig Load(const std::string& ini) {
    static const CScratchFolder folder;
    CRuvoConfig config;
    EXPECT_TRUE(LoadConfiguration(folder.Write("site.ini", ini), config)) << ini;
    return config;
}

void ExpectCode(const std::string& ini, int want) {
    EXPECT_EQ(static_cast<int>(ValidateConfiguration(Load(Ini("[GENERAL] " + ini)))), want) << ini;
}

TEST(Load, WhatHasNoSectionFails) {
    const CScratchFolder folder;
    CRuvoConfig config;
    for (const char* ini : {"", "\r\n", "UseEthernet=1\n", "[]\nUseEthernet=1\n", "; [RUVO_GENERAL]\n"}) {
        EXPECT_FALSE(LoadConfiguration(folder.Write("site.ini", ini), config)) << ini;
        EXPECT_EQ(config.IniPath() + config.ErrorLogPath() + config.CommPort(), folder.Path("site.ini"));
    }
    for (const SGeneralKey& key : kGeneralKeys) {
        const auto* const number = std::get_if<IntegerField>(&key.field);
        EXPECT_TRUE(number == nullptr || config.Fields().**number == 0) << key.name;
    }
    EXPECT_FALSE(config.IsErrorLogPathGiven());
    EXPECT_FALSE(LoadConfiguration("C:\\no.ini", config) || LoadConfiguration(folder.Path(), config));
}

TEST(Load, Integers) {
    std::istringstream keys(
        "UseEthernet= 0 2 BaudRate= 9600 0 ElevenBits= 1 2 BusyHoldoff= 50 70000 BusyCount= 100 70000 "
        "ResetResponse= 100 70000 Response= 100 70000 TryCount= 3 70000 TransmitDelay= 5 70000 "
        "GlobalTransmit= 10 70000 UseModem= 0 2 TAPI_LineAddress= 0 0 TAPI_UseCountryAndAreaCodes= 0 2");
    std::string key;
    std::int32_t absent = -1, notANumber = -1;
    for (const auto ask : {&CRuvoConfig::UseEthernet, &CRuvoConfig::BaudRate, &CRuvoConfig::ElevenBits,
                           &CRuvoConfig::BusyHoldoff, &CRuvoConfig::BusyCount, &CRuvoConfig::ResetResponse,
                           &CRuvoConfig::Response, &CRuvoConfig::TryCount, &CRuvoConfig::TransmitDelay,
                           &CRuvoConfig::GlobalTransmit, &CRuvoConfig::UseModem,
                           &CRuvoConfig::TapiLineAddress, &CRuvoConfig::TapiUseCountryAndAreaCodes}) {
        keys >> key >> absent >> notANumber;
        EXPECT_EQ((Load("[RUVO_SERIAL]\n").*ask)(), absent) << key;
        const auto expect = [&](std::int32_t want, const std::string& texts) {
            std::istringstream rest(texts); // the second occurrence must not count
            for (std::string text; std::getline(rest, text, '|');)
                EXPECT_EQ((Load("[ruvo_General]\n" + key + text + "\n" + key + "7").*ask)(), want) << text;
        };
        expect(absent, "|  |\"\"|");
        expect(123, "123| \"123\" ");
        expect(2147483647, "2147483647|2147483648|4294967296|" + std::string(1023, '9') + "x");
        expect(notANumber, "0123|00|-1|+5|1 2|0x10|1;c|yes|" + std::string(1022, '9') + "x");
    }
    EXPECT_TRUE(IsNumericText("007", true) && !IsNumericText("", true));
}

TEST(Load, Texts) {
    const std::string here = FullPath(".");
    const std::string cut(300, 'n');
    const auto expect = [](const std::string& lines, const std::string& root, const std::string& log) {
        const CRuvoConfig config = Load("[RUVO_GENERAL]\n" + lines);
        EXPECT_EQ(config.EventRoot() + "|" + config.ErrorLogPath(), root + "|" + log) << lines;
        EXPECT_EQ(config.IsErrorLogPathGiven(), lines.find("ErrorLog") != std::string::npos) << lines;
    };
    expect("", here, here + "\\RUVO_Errors.log");
    expect("EventRootDir=C:/a//b/../c\\/\\", "C:\\a\\c", "C:\\a\\c\\RUVO_Errors.log");
    expect("EventRootDir=C:\\", "C:", "C:\\RUVO_Errors.log");
    expect("EventRootDir=ev\nErrorLogPathname=l\\run.log", here + "\\ev", here + "\\l\\run.log");
    expect("EventRootDir=" + cut + "nnn", "", "");
    expect("EventRootDir=" + cut + "nnn" + "\nErrorLogPathname=" + cut + "nnn", "", cut);
    EXPECT_EQ(Load(Ini("[GENERAL] CommPort=")).CommPort(), "COM1");
    const CRuvoConfig config = Load(Ini("[GENERAL] CommPort=\"COM7\" TAPI_AreaCode=017 TAPI_CountryCode=44 "
                                        "TAPI_NumberToDial=+1 TAPI_ModemName=" +
                                        cut + "nnn"));
    EXPECT_EQ(config.CommPort() + config.TapiModemName(), "COM7" + cut);
    EXPECT_EQ(config.TapiNumberToDial() + config.TapiCountryCode() + config.TapiAreaCode(), "+144017");
}

TEST(Load, Entries) {
    const std::string lines =
        " RV010=7 rv001=5 RV1=5 RV0002=5 RV002=x RV003= RV004=0 RV999=300 RV001=6 X=5 RV006 RV006=6 ;RV007=7";
    const AddressEntries addresses{{"RV001", 5}, {"RV004", 0}, {"RV010", 7}, {"RV999", 300}};
    EXPECT_EQ(Load(Ini("[SERIAL]" + lines + " [SERIAL] RV020=3")).SerialEntries(), addresses);
    EXPECT_EQ(Load(Ini("[MODEM]" + lines)).ModemEntries(), addresses);
    TextEntries texts{{"RV001", "5"}, {"RV002", "x"}, {"RV004", "0"}, {"RV010", "7"}, {"RV999", "300"}};
    EXPECT_EQ(Load(Ini("[ETHERNET]" + lines)).EthernetEntries(), texts);
    EXPECT_EQ(RelayKey(kRelayKeyCount - 1) + RelayKey(70), "RV999RV070");
    const std::string passwords = " RV000=300000000000000000000X RV001=300000000000000000000 RV003= ";
    texts = {{"RV000", ""}};
    EXPECT_EQ(Load(Ini("[PASSWORDS] RV002=390000000000000000000X" + passwords)).Passwords(), texts);
}

TEST(ResultCodes, EveryRuleInItsOrder) {
    test::ForEachCase<2>("config/result_codes.txt",
                         [](auto& code, auto& ini) { ExpectCode(ini, std::stoi(code)); });
    ExpectCode("EventRootDir=" + std::string(290, 'x') + " [SERIAL] RV001=5", 27);
}

TEST(ResultCodes, TheMessagesThatUsersAndScriptsKnow) {
    std::ifstream lines(RUVO_TEST_DATA "/config/result_messages.txt");
    int code = 0;
    for (std::string line; std::getline(lines, line); ++code)
        EXPECT_EQ(ResultMessage(static_cast<EResultCode>(code)), line) << code;
    EXPECT_EQ(code, 39);
    EXPECT_EQ(ResultMessage(static_cast<EResultCode>(code)), "");
}

// What reading, deleting the first occurrence from a copy and reading again would say.
TEST(Duplicates, AsDeletingAndReadingAgainTells) {
    test::ForEachCase<2>("config/duplicate_keys.txt", [](auto& isTwice, auto& text) {
        const CIniText ini = CIniText::Parse(Ini(text));
        EXPECT_EQ(static_cast<int>(HasDuplicateKey(&ini, "ruvo_s", "K")), std::stoi(isTwice));
    });
    EXPECT_EQ(static_cast<int>(HasDuplicateKey(nullptr, "S", "K")), 2);
}

TEST(EthernetEntry, Fields) {
    test::ForEachCase<5>("config/ethernet_entries.txt",
                         [](auto& entry, auto& ip, auto& isValid, auto& device, auto& bus) {
                             EXPECT_EQ(ParseEthernetIp(entry), ip);
                             EXPECT_EQ(IsValidIpAddress(ParseEthernetIp(entry)), isValid == "1");
                             EXPECT_EQ(ParseEthernetDeviceAddress(entry), std::stoi(device));
                             EXPECT_EQ(ParseEthernetBusAddress(entry), std::stoi(bus));
                         });
}

// The cipher written a second time, on its own, to hold the program's against.
std::string ScrambledByHand(unsigned index, const std::string& plain) {
    std::array<std::uint32_t, 4> key{}, word{};
    for (std::size_t i = 0; i < 16; ++i)
        key[i / 4] |= std::uint32_t{kScrambleKeys[index * 16 + i]} << 8 * (i % 4);
    for (std::size_t i = 0; i < plain.size(); ++i)
        word[i / 4] |= std::uint32_t{static_cast<unsigned char>(plain[i])} << (24 - 8 * (i % 4));
    for (std::uint32_t cycle = 1; cycle <= 32; ++cycle) {
        const std::uint32_t sum = cycle * 0x9E3779B9U;
        word[0] += ((word[1] << 4) + key[0]) ^ (word[1] + sum) ^ ((word[1] >> 5) + key[1]);
        word[1] += ((word[0] << 4) + key[2]) ^ (word[0] + sum) ^ ((word[0] >> 5) + key[3]);
    }
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%X%zX%.10u%.10u", index, plain.size(), word[0], word[1]);
    return text.data();
}

std::string Unscrambled(const std::string& text) {
    std::string plain = "########!";
    const int code = UnscramblePassword(text.c_str(), plain.data());
    return code == 0 ? plain.c_str() : plain + std::to_string(code);
}

TEST(Scramble, EveryLengthAndEveryKeyComesBack) {
    unsigned keys = 0;
    for (g_unixSeconds = 1; g_unixSeconds <= 300; ++g_unixSeconds) {
        const char* const plain = &"Pa\xE4 ,=9z"[g_unixSeconds % 9];
        std::string text(24, '#'), again = text;
        ASSERT_EQ(ScramblePassword(plain, text.data()) | ScramblePassword(plain, again.data()), 0);
        ASSERT_EQ(text, again); // still the same second
        const std::size_t index = std::string("0123456789ABCDEF").find(text[0]);
        ASSERT_EQ(text, ScrambledByHand(static_cast<unsigned>(index), plain) + std::string("\0#", 2));
        ASSERT_EQ(Unscrambled(text), plain);
        keys |= 1U << index;
    }
    EXPECT_EQ(keys, 0xFFFFU);
}

TEST(Scramble, OurKeysStayAsTheyAre) { // under others no password of any site's INI file could be read
    if (!std::string_view(RUVO_KEY_TABLE).empty())
        GTEST_SKIP() << "this build has a site's own";
    std::uint64_t hash = 0xCBF29CE484222325; // FNV-1a
    for (const std::uint8_t byte : kScrambleKeys)
        hash = (hash ^ byte) * 0x100000001B3;
    EXPECT_EQ(hash, 0x1DCF46BFFA668FCEU);
}

TEST(Scramble, WhatItCanHaveWritten) {
    const std::string most = "4294967295", more = "4294967296";
    EXPECT_TRUE(IsScrambledText("08" + most + most) && IsScrambledText("F0" + std::string(20, '0')));
    for (const std::string& text :
         {"08" + most + most + "0", "x8" + most + most, "0/" + most + most, "09" + most + most,
          "08" + more + most, "08" + most + more, "08" + most + "000000000x", "08" + most + most.substr(1)})
        EXPECT_FALSE(IsScrambledText(text)) << text;
}

TEST(Scramble, RefusalsAndOddTexts) {
    g_debugOutput.clear();
    std::string out = "untouched";
    EXPECT_EQ(ScramblePassword("ninechars", out.data()), -1);
    EXPECT_EQ(ScramblePassword(nullptr, out.data()), -1);
    EXPECT_EQ(ScramblePassword("AAAA", nullptr), -1);
    EXPECT_EQ(UnscramblePassword(nullptr, out.data()), -1);
    EXPECT_EQ(UnscramblePassword(ScrambledByHand(0, "").c_str(), nullptr), -1);
    EXPECT_EQ(out + g_debugOutput, "untouchedttt2Debugttt2Debugttt2Debug");
    const std::string digits = ScrambledByHand(0, "Secret12").substr(2);
    EXPECT_EQ(Unscrambled("x8" + digits), "Secret12"); // no digit: key 0
    EXPECT_EQ(Unscrambled("a" + ScrambledByHand(10, "abc").substr(1)), "abc");
    EXPECT_EQ(Unscrambled("03" + digits), "Sec");
    EXPECT_EQ(Unscrambled("0x" + digits), "");
    EXPECT_EQ(Unscrambled("09" + digits), "########!-1");
    EXPECT_EQ(Unscrambled("08" + digits.substr(0, 19)), "########!-1");
    EXPECT_EQ(Unscrambled("08" + digits + "9"), "Secret12");
    EXPECT_EQ(Unscrambled("0842949672964294967297"), Unscrambled("0800000000000000000001")); // modulo 2^32
    EXPECT_EQ(Unscrambled("0812x456789012345 7890"), Unscrambled("0800000000120000012345"));
}

} // namespace ruvo
