// Every question of profile_observed.txt gets the answer that was recorded; then what that file cannot hold.
#include "platform/ini_text.h"
#include "platform/profile.h"
#include "platform/text_file.h"
#include "support/scratch_folder.h"

#include <gtest/gtest.h>
#include <map>
#include <regex>
#include <sys/stat.h>

namespace ruvo {
namespace {

std::string Unescape(const std::string& text) {
    static const std::map<char, char> kShort{{'r', '\r'}, {'n', '\n'}, {'t', '\t'}, {'0', '\0'}};
    std::string bytes;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text.substr(i, 2) == "\\x") {
            bytes += static_cast<char>(std::stoi(text.substr(i + 2, 2), nullptr, 16));
            i += 3;
        } else {
            bytes += text[i] == '\\' ? kShort.at(text[++i]) : text[i];
        }
    }
    return bytes;
}

TEST(Profile, GivesTheRecordedAnswers) {
    const std::regex get(
        R"(  get \[(.*)\] '(.*?)'( default (NULL|'(.*?)'))?( size (\d+))? -> '(.*)' ret .*)");
    const std::regex names(R"(  names size (\d+) -> ret (\d+) '(.*)')");
    const CScratchFolder folder;
    std::string file;
    std::ifstream observed(RUVO_TEST_DATA "/platform/profile_observed.txt");
    ASSERT_TRUE(observed);
    for (std::string line; std::getline(observed, line);) {
        file = line.starts_with("##") ? "" : line.starts_with("file: ") ? Unescape(line.substr(6)) : file;
        const CProfileReader reader(folder.Write("a.ini", file));
        if (std::smatch part; std::regex_match(line, part, get)) {
            const std::string fallback = part[3].matched ? Unescape(part[5]) : "<def>";
            const std::size_t size = part[7].matched ? std::stoul(part[7]) : 8192;
            EXPECT_EQ(reader.ReadString(Unescape(part[1]), Unescape(part[2]), fallback, size),
                      Unescape(part[8]))
                << line;
        } else if (std::regex_match(line, part, names)) {
            std::string list; // as the buffer holds it: a list that was cut lacks the NUL of its last name
            for (const std::string& name : reader.SectionNames(std::stoul(part[1])))
                list += name + '\0';
            list.resize(std::min(list.size(), std::stoul(part[1]) - 2));
            EXPECT_EQ(list, Unescape(part[3]).substr(0, std::stoul(part[2]))) << line;
        } else {
            EXPECT_FALSE(line.starts_with("  ")) << "not understood: " << line;
        }
    }
}

TEST(CIniText, FindsAllOccurrencesAndSkipsAByteOrderMark) {
    const CIniText ini = CIniText::Parse("\xEF\xBB\xBF[S]\nK=1\r\n\r\nk\r[T]\nK=x\n[s]\n K =\xC3\xA4\nL=4\n");
    std::map<std::size_t, std::optional<std::string>> found;
    for (const SIniEntry* const entry : ini.FindAll(" S", "K "))
        found[entry->line] = entry->value;
    EXPECT_EQ(found, (decltype(found){{2, "1"}, {4, std::nullopt}, {8, "\xC3\xA4"}}));
    const CIniText twice = CIniText::Parse("[S]\n;C=\nB=\nD\nA=1\n[s]\nA=2\n");
    ASSERT_NE(twice.FindEntry("S", "A"), nullptr);
    EXPECT_EQ(twice.FindEntry("S", "A")->value, "1") << "however early the section has it again";
    EXPECT_EQ(twice.KeyNames(" s "), (std::vector<std::string>{"B", "D", "A"}));
}

// Each text is one that a parser or an index of quadratic cost would not finish before the test's time limit.
TEST(CIniText, TakesLargeAndBinaryTextsInLinearTime) {
    std::string repeated, headers, binary;
    for (unsigned i = 0; i < 300000; ++i) {
        repeated += "RV001=5\n";
        headers += "[a]\n";
        binary += static_cast<char>(i * 2654435761U >> 13);
    }
    for (const std::string& text :
         {repeated, headers, binary, std::string(5000000, '\0'), std::string(5000000, '[')}) {
        const CIniText ini = CIniText::Parse(text);
        for (int i = 0; i < 5000; ++i)
            ASSERT_EQ(ini.FindEntry(i % 2 == 0 ? "" : "a", "RV001") != nullptr,
                      i % 2 == 0 && text == repeated);
    }
}

TEST(CProfileReader, CutsListsAndCleansDefaults) {
    const CScratchFolder folder;
    const CProfileReader reader(folder.Write("a.ini", "[abc]\n[de]\n"));
    using Names = std::vector<std::string>;
    EXPECT_EQ(reader.SectionNames(6), Names{"abc"}); // three letters, their NUL, and two for the cut
    EXPECT_EQ(reader.SectionNames(7), (Names{"abc", "d"}));
    EXPECT_EQ(reader.SectionNames(2), Names{});
    for (const auto& [given, clean] :
         {std::pair("'quoted' ", "quoted"), {"''", ""}, {"'", "'"}, {"xax", "xax"}, {"'a\"", "'a\""}})
        EXPECT_EQ(reader.ReadString("S", "A", given, 99), clean);
}

TEST(CProfileReader, AnswersForWhatIsNoReadableFile) {
    const CScratchFolder folder;
    mkfifo(folder.Native("pipe").c_str(), 0600);
    folder.Write("large", "[S]\nA=1\n");
    std::filesystem::resize_file(folder.Native("large"), 4'194'305);
    const std::string paths[] = {folder.Path("none"),   folder.Path(),
                                 folder.Path("pipe"),   folder.Path("large"),
                                 "C:\\dev\\zero",
                                 "C:\\proc\\self\\mem", // its reading fails
                                 "D:\\x.ini",           ""};
    for (const std::string& path : paths) {
        const CProfileReader reader(path);
        EXPECT_TRUE(reader.SectionNames(301).empty() && reader.ReadString("S", "A", "d", 9) == "d") << path;
        std::string bytes = "before";
        EXPECT_FALSE(reader.Text() != nullptr || ReadTextFileBytes(path, bytes) || !bytes.empty()) << path;
    }
    std::filesystem::resize_file(folder.Native("large"), 4'194'304);
    std::string bytes = "before";
    EXPECT_TRUE(ReadTextFileBytes(folder.Path("large"), bytes) && bytes.size() == 4'194'304);
}

} // namespace
} // namespace ruvo
