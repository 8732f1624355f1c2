// Asks our reader of INI text and the system's profile functions the same questions about many made-up files,
// of which each holds some of what makes INI files hard. The two must agree.
#include "platform/files.h"
#include "platform/ini_text.h"
#include "platform/profile.h"
#include "windows/checks.h"
#include "windows/text_reader.h"

#include <cstdlib>
#include <random>
#include <set>

namespace ruvo::test {

namespace {

constexpr std::size_t kCapacity = 100000;
constexpr int kFileCount = 400;

/// Makes INI texts; equal seeds make equal texts on every system.
class CIniMaker {
public:
    explicit CIniMaker(unsigned seed) : m_random(seed) {}

    std::string Make() {
        std::string text = Chance(15) ? "\xEF\xBB\xBF" : "";
        // Behind a byte-order mark the system turns UTF-8 into its code page, while our reader, which has no
        // code page, keeps the bytes. Both give the same as long as the text is ASCII.
        m_asciiOnly = !text.empty();
        const unsigned lines = 5 + Below(40);
        for (unsigned line = 0; line < lines; ++line)
            text += Line() + (line + 1 < lines || Chance(60) ? End() : "");
        return text;
    }

private:
    unsigned Below(unsigned limit) { return static_cast<unsigned>(m_random() % limit); }
    bool Chance(unsigned percent) { return Below(100) < percent; }

    template <std::size_t kCount>
    std::string Pick(const char* const (&choices)[kCount]) {
        return choices[Below(kCount)];
    }

    std::string Blanks() { return Chance(75) ? "" : Pick({" ", "\t", "  ", " \t ", "\v", "\f", "\x1A"}); }

    std::string Odd() {
        const std::string odd = Pick({"\x01", "\x7F", "\xE4", "\xC4", "\xA0", "\x80", "\x81", "\xFF", "\x1A",
                                      "\x85", "\x1F", "\x1C", "\b"});
        return m_asciiOnly && static_cast<unsigned char>(odd[0]) > 0x7F ? "~" : odd;
    }

    std::string End() {
        return Chance(70) ? "\r\n" : Pick({"\n", "\r", "\r\r\n", "\n\r", "\n\n", "\r\n\r\n"});
    }

    std::string SectionName() {
        return Pick({"S", "s", "T", "RUVO_GENERAL", "Ruvo_General", "long name", "a]b", "", " ", "S;x",
                     "\"S\""}) +
               (Chance(8) ? Odd() : "");
    }

    std::string Header() {
        return Blanks() + "[" + Blanks() + SectionName() + Blanks() + (Chance(92) ? "]" : "") +
               (Chance(12) ? Pick({" tail", ";c", "k=5", " ]", "=", "[U]"}) : "");
    }

    std::string Key() {
        return Pick({"K", "k", "K1", "RV001", "rv001", "RV002", "RV003", "in ner", "", ";c", "#h", "\"q\"",
                     "BaudRate", "[k"}) +
               (Chance(6) ? Odd() : "");
    }

    std::string Value() {
        if (Chance(3))
            return std::string(300 + Below(3000), 'x');
        const std::string core = Pick({"", "5", "9600", "a b", "a;b", "a=b", "C:\\srv\\ev", "\\\\s\\h", "x'y",
                                       "x\"y", "'", "\"", "[x]", "%1", "\"in\"", "007", ";"});
        const std::string quote = Chance(75) ? "" : Pick({"\"", "'"});
        const std::string other = Chance(90) ? quote : Pick({"\"", "'", ""});
        return quote + Blanks() + core + (Chance(10) ? Odd() : "") + Blanks() + other +
               (Chance(2) ? std::string(1, '\0') + "behind" : "");
    }

    std::string Line() {
        const unsigned kind = Below(100);
        if (kind < 18)
            return Header();
        if (kind < 22)
            return Blanks() + ";" + Value();
        if (kind < 26)
            return Blanks() + Key(); // no "=" at all
        if (kind < 30)
            return Noise();
        return Blanks() + Key() + Blanks() + "=" + Blanks() + Value() + Blanks();
    }

    std::string Noise() {
        std::string noise;
        for (unsigned i = Below(20); i > 0; --i)
            noise += m_asciiOnly ? static_cast<char>(' ' + Below(95)) : static_cast<char>(1 + Below(255));
        return noise;
    }

    std::mt19937 m_random;
    bool m_asciiOnly = false;
};

using Question = std::pair<std::string, std::string>; // section and key

/// All that the file could answer, and what it surely cannot.
std::set<Question> QuestionsAbout(const CIniText& ini) {
    std::set<std::string> sections{"S", "none", "", "t "};
    std::set<std::string> keys{"K", "rv001", " RV002 ", "none", "\tk"};
    for (const SIniSection& section : ini.Sections()) {
        sections.insert(section.name);
        for (const SIniEntry& entry : section.entries)
            keys.insert(entry.key);
    }
    std::set<Question> questions;
    for (const std::string& section : sections)
        for (const std::string& key : keys)
            questions.emplace(section, key);
    return questions;
}

std::string Joined(const std::vector<std::string>& names) {
    std::string joined;
    for (const std::string& name : names)
        joined += name + "|";
    return joined;
}

void WriteFileBytes(const std::string& path, const std::string& bytes) {
    CFile file;
    std::size_t written = 0;
    if (!file.Open(path, {.write = true, .create = true, .truncate = true}).Good() ||
        !file.Write({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()}, written).Good()) {
        std::printf("cannot write %s\n", path.c_str());
        std::exit(1);
    }
}

/// Wine takes one byte too many off a value that stood in quotes and fills the buffer exactly. The answer
/// that has all of them is the right one.
bool IsExactFitOfQuoted(const std::string& ours, const std::string& system, std::size_t capacity) {
    return ours.size() + 1 == capacity && system == ours.substr(0, ours.size() - 1);
}

void CompareReaders(const std::string& path, const std::string& text) {
    const CProfileReader system(path);
    const STextReader ours = ReadAsText(path);
    const std::string about = "in file '" + Shown(text) + "'";
    for (const std::size_t capacity : {kCapacity, std::size_t{20}, std::size_t{5}})
        Equal(Joined(ours.sectionNames(capacity)), Joined(system.SectionNames(capacity)),
              "section names, capacity " + std::to_string(capacity) + ", " + about);
    for (const auto& [section, key] : QuestionsAbout(CIniText::Parse(text))) {
        for (const std::size_t capacity : {kCapacity, std::size_t{4}}) {
            const std::string mine = ours.read(section, key, " 'd' ", capacity);
            const std::string theirs = system.ReadString(section, key, " 'd' ", capacity);
            if (!IsExactFitOfQuoted(mine, theirs, capacity))
                Equal(mine, theirs,
                      "[" + Shown(section) + "] " + Shown(key) + ", capacity " + std::to_string(capacity) +
                          ", " + about);
        }
    }
}

} // namespace

int CompareIniReaders() {
    const std::string path = TemporaryFolder() + "ini-difference.ini";
    for (unsigned seed = 1; seed <= kFileCount; ++seed) {
        const std::string text = CIniMaker(seed).Make();
        WriteFileBytes(path, text);
        CompareReaders(path, text);
    }
    RemoveFile(path);
    return Finish();
}

} // namespace ruvo::test

int main() {
    return ruvo::test::CompareIniReaders();
}
