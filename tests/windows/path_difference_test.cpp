// Our text rules of full paths against the system's function, over many made-up paths.
#include "platform/files.h"
#include "platform/full_path.h"
#include "platform/full_path_rules.h"
#include "windows/checks.h"

#include <algorithm>
#include <random>

namespace ruvo::test {

namespace {

constexpr int kPathCount = 4000;

class CPathMaker {
public:
    explicit CPathMaker(unsigned seed) : m_random(seed) {}

    std::string Make() {
        std::string path =
            Pick({"", "", "", "C:", "c:", "C:\\", "C:/", "D:", "D:\\", "\\", "\\\\srv\\share\\",
                  "//srv/share/", "\\\\srv", "\\\\?\\C:\\", "\\\\.\\", " ", "x:y"});
        for (unsigned count = Below(7); count > 0; --count) {
            path +=
                Pick({"a",     "b.ini",    "..", ".",         "...",  "",    " ",  "dir.", "dir ", "x. .",
                      " lead", "\xE4\xF6", "*?", "Long Name", "a..b", "..x", ". ", ".. ",  "a:b",  "\"q\""}) +
                Pick({"\\", "\\", "/", "", "\\\\"});
        }
        return path;
    }

private:
    unsigned Below(unsigned limit) { return static_cast<unsigned>(m_random() % limit); }

    template <std::size_t kCount>
    std::string Pick(const char* const (&choices)[kCount]) {
        return choices[Below(kCount)];
    }

    std::mt19937 m_random;
};

/// A path that begins with one slash is one of the host's own file system under Wine, and the root of the
/// current drive on Windows, as in our rules.
bool MeansTheHostsFiles(const std::string& path) {
    return path.starts_with('/') && !path.starts_with("//");
}

/// A folder's name of three dots and more loses one of them under Wine. Our rules keep it: with one dot less
/// it would name the folder above.
bool HasFolderOfDots(const std::string& path) {
    for (std::size_t at = path.find("..."); at != std::string::npos; at = path.find("...", at + 1)) {
        const bool starts = at == 0 || std::string_view("\\/:").find(path[at - 1]) != std::string_view::npos;
        const std::size_t end = path.find_first_not_of('.', at);
        if (starts && end != std::string::npos && (path[end] == '\\' || path[end] == '/'))
            return true;
    }
    return false;
}

/// Several separators right behind a server or its share stay several under Wine. They mean one.
bool HasSeparatorsAroundShare(const std::string& path) {
    std::string text = path;
    std::ranges::replace(text, '/', '\\');
    if (!text.starts_with("\\\\"))
        return false;
    const std::size_t server = text.find('\\', 2);
    const std::size_t share = text.find('\\', text.find_first_not_of('\\', server));
    const auto areSeveral = [&](std::size_t at) {
        return at != std::string::npos && text.substr(at, 2) == "\\\\";
    };
    return areSeveral(server) || areSeveral(share);
}

std::string Ours(const std::string& path, const std::string& folder) {
    const std::string full = FormFullPath(path, folder);
    return full.size() < kMaxPath ? full : std::string();
}

} // namespace

int CompareFullPaths() {
    static_cast<void>(MakeFolder("C:\\work")); // it may be there
    static_cast<void>(MakeFolder("C:\\work\\dir"));
    for (const std::string folder : {"C:\\work\\dir", "C:\\"}) {
        Expect(SetCurrentFolder(folder), "entering " + folder);
        for (int length = 240; length < 262; ++length) {
            const std::string path(static_cast<std::size_t>(length), 'n');
            Equal(Ours(path, folder), FullPath(path), "a name of " + std::to_string(length));
        }
        for (unsigned seed = 1; seed <= kPathCount; ++seed) {
            const std::string path = CPathMaker(seed).Make();
            if (!MeansTheHostsFiles(path) && !HasFolderOfDots(path) && !HasSeparatorsAroundShare(path)) {
                Equal(Ours(path, folder), FullPath(path), "'" + Shown(path) + "' in " + folder);
            }
        }
    }
    return Finish();
}

} // namespace ruvo::test

int main() {
    return ruvo::test::CompareFullPaths();
}
