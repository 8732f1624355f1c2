// Names of all letters, and the access lists of files: what a program with its texts in UTF-8 has of this
// system.
#include "platform/file_replacement.h"
#include "platform/file_trust.h"
#include "platform/files.h"
#include "platform/full_path.h"
#include "platform/native_text.h"
#include "platform/profile.h"
#include "platform/windows/access_list.h"
#include "windows/checks.h"

#include <algorithm>
#include <sddl.h>

namespace ruvo::test {

namespace {

std::string g_folder; ///< of this test's own, without a separator at its end

std::string In(const std::string& name) {
    return g_folder + "\\" + name;
}

bool Write(const std::string& path, std::string_view text) {
    CFile file;
    std::size_t count = 0;
    return file.Open(path, {.write = true, .create = true}).Good() &&
           file.Write({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()}, count).Good() &&
           file.Close().Good();
}

/// What a new file with passwords is made with, and what is made of the lists of others. Wine keeps of a list
/// what POSIX permissions can say.
void CheckAccessLists() {
    const std::string text = PrivateDescriptorText();
    const std::size_t end = text.find("D:P");
    const std::string user = text.substr(2, end - 2);
    Expect(text.starts_with("O:S-1-5-") && end != std::string::npos, "the owner: " + text);
    Equal(text.substr(std::min(end, text.size())), "D:P(A;;FA;;;" + user + ")(A;;FA;;;BA)(A;;FA;;;SY)",
          "a protected list of three");
    Expect(WriteNewPrivateFile(In("private"), "x", {}).Good() &&
               IsReadableByEveryone(In("private")) == false && IsGuarded(In("private"), 0),
           "a private file");
    Expect(IsReadableByEveryone(In("usual")) == true && !IsReadableByEveryone(In("none")),
           "a usual file, and none");
    const std::pair<std::string, bool> cases[] = {{"(A;;FA;;;SY)(A;;FA;;;BA)", false},
                                                  {"(A;;FA;;;BA)(A;;FA;;;" + user + ")", false},
                                                  {"(A;;FA;;;BA)(A;;FR;;;WD)", true}};
    for (const auto& [list, everyUser] : cases) { // what follows "D:", and whether every user may read
        const std::string path = In("list");
        SECURITY_ATTRIBUTES security = {sizeof security, nullptr, FALSE};
        const std::string whole = "O:" + user + "D:P" + list;
        Expect(ConvertStringSecurityDescriptorToSecurityDescriptorA(
                   whole.c_str(), SDDL_REVISION_1, &security.lpSecurityDescriptor, nullptr) != FALSE,
               whole);
        CloseHandle(CreateFileA(path.c_str(), GENERIC_WRITE, 0, &security, CREATE_NEW, 0, nullptr));
        LocalFree(security.lpSecurityDescriptor);
        Expect(!LetsOthers(path, FILE_WRITE_DATA), list + ": who may write");
        Expect(LetsEveryUser(path, FILE_READ_DATA) == everyUser, list + ": who may read");
        DeleteFileA(path.c_str());
    }
    Expect(LetsOthers(In("none"), FILE_WRITE_DATA) && !LetsEveryUser(In("none"), FILE_READ_DATA),
           "what cannot be looked at");
}

/// The last: it stays so.
void CheckUtf8Texts() {
    Expect(TextOfStored("Gr\xFCn") == "Gr\xFCn" && StoredText("Gr\xFCn") == "Gr\xFCn" &&
               NativeTextToUtf8("Gr\xFCn") == "Gr\xC3\xBCn",
           "texts in the system's code page");
    UseUtf8Texts();
    const std::string omega = "\xCE\xA9";
    Expect(TextOfStored("Gr\xFCn") == "Gr\xC3\xBCn" && StoredText("Gr\xC3\xBCn") == "Gr\xFCn" &&
               !StoredText(omega) && NativeRelayText("\xE4\t") == "\xC3\xA4 ",
           "texts in UTF-8");
    std::vector<SFolderEntry> entries;
    Expect(MakeFolder(In(omega)).Good() && ListFolder(In(omega), entries) && entries.empty(),
           "a folder with any letters");
    Equal(FullPath(In(omega) + "\\..\\" + omega), In(omega), "its full path");
    Expect(ListFolder(g_folder, entries) && std::ranges::count(entries, omega, &SFolderEntry::name) == 1,
           "its name");
    const std::string ini = In(omega) + "\\s.ini";
    Expect(Write(ini, "[Gr\xFCn]\r\nK\xE4=\xDF\r\n"), "an INI file in it");
    const CProfileReader reader(ini);
    Equal(reader.ReadString("Gr\xC3\xBCn", "K\xC3\xA4", "", 100), "\xC3\x9F", "a value in it");
    Expect(reader.KeyNames("Gr\xC3\xBCn") == std::vector<std::string>{"K\xC3\xA4"}, "a key in it");
    Equal(OwnSpelling(In("USUAL")), In("usual"), "a file in other letters");
    Equal(OwnSpelling(In("USUAL\\x\\Y")), In("usual\\x\\Y"), "what does not exist");
    Equal(OwnSpelling(ini), ini, "a name that no file of the extractor can hold");
    Expect(RemoveFile(ini) && RemoveEmptyFolder(In(omega)), "removing them");
}

void CheckPatterns() {
    const std::vector<std::string> names{"a.evt", "b.EVT", "c.evtx", "d", "\xC3\xA4.evt"};
    for (const std::string& name : names)
        Expect(Write(In(name), "x"), name);
    const std::pair<std::string, std::string> cases[] = {
        {"*.evt", "a.evt b.EVT \xC3\xA4.evt "},
        {"*.EVT?", "c.evtx "},
        {"?.evt", "a.evt b.EVT \xC3\xA4.evt "},
        {"\xC3\x84*", "\xC3\xA4.evt "},
        {"*v*x", "c.evtx "},
        {"?", "d "},
        {"a.evt", "a.evt "},
        {"*.none", "*.none "},
        {"*l", "usual "},
        {"*.*", "a.evt b.EVT c.evtx d private usual \xC3\xA4.evt "},
        {"b.evt", "b.evt "}};
    for (const auto& [pattern, wanted] : cases) {
        std::string found;
        for (const std::string& path : FilesOfPattern(In(pattern)))
            found += (path.starts_with(In("")) ? path.substr(In("").size()) : path) + " ";
        Equal(found, wanted, "the pattern " + pattern);
    }
    for (const std::string& name : names)
        RemoveFile(In(name));
}

} // namespace

int CheckNames() {
    g_folder = TemporaryFolder() + "ruvo-names-" + std::to_string(GetCurrentProcessId());
    Expect(MakeFolder(g_folder).Good() && Write(In("usual"), "x"), "a folder for the test");
    CheckAccessLists();
    CheckUtf8Texts();
    CheckPatterns();
    Expect(RemoveFile(In("usual")) && RemoveFile(In("private")) && RemoveEmptyFolder(g_folder),
           "nothing is left");
    return Finish();
}

} // namespace ruvo::test

int main() {
    return ruvo::test::CheckNames();
}
