#include "platform/posix/place.h"

#include <array>
#include <cerrno>
#include <climits>
#include <fcntl.h>
#include <sys/vfs.h>
#include <unistd.h>
#include <vector>

namespace ruvo {

namespace {

constexpr int kMostLinks = 40; // as many as the system follows; more are a circle

// The steps of a path that are still to be taken, the next one last.
class CPathSteps {
public:
    void PutFirst(const std::string& native) {
        if (native.ends_with('/')) {
            m_steps.emplace_back("."); // a path that ends so means a folder
        }
        for (std::size_t end = native.size(); end != std::string::npos;) {
            const std::size_t separator = end == 0 ? std::string::npos : native.rfind('/', end - 1);
            const std::size_t begin = separator + 1; // 0 when there is none
            if (begin < end) {
                m_steps.push_back(native.substr(begin, end - begin));
            }
            end = separator;
        }
    }
    bool IsAtEnd() const { return m_steps.empty(); }
    std::string Next() {
        std::string step = std::move(m_steps.back());
        m_steps.pop_back();
        return step;
    }

private:
    std::vector<std::string> m_steps;
};

CDescriptor OpenStep(int folder, const char* name, int flags = 0) {
    return CDescriptor(openat(folder, name, O_PATH | O_NOFOLLOW | O_CLOEXEC | flags));
}

bool EnterRoot(SPlace& place) {
    place.folderPath = '/';
    place.folder = OpenStep(AT_FDCWD, "/");
    return place.folder.IsOpen();
}

// Another user who may write the folder can have put a link there to redirect the path.
bool IsFollowed(const struct stat& link, ELinks links) {
    return links == ELinks::All || IsTrustedOwner(link);
}

// Follows a link: its target's steps come next.
bool Follow(const CDescriptor& link, SPlace& place, CPathSteps& steps) {
    std::array<char, PATH_MAX> target{};
    const ssize_t size = readlinkat(link.Get(), "", target.data(), target.size());
    if (size <= 0 || static_cast<std::size_t>(size) == target.size()) {
        errno = size < 0 ? errno : ENAMETOOLONG;
        return false;
    }
    steps.PutFirst({target.data(), static_cast<std::size_t>(size)});
    return target.front() != '/' || EnterRoot(place);
}

} // namespace

bool IsTrustedOwner(const struct stat& status) {
    return status.st_uid == 0 || status.st_uid == geteuid();
}

CDescriptor::~CDescriptor() {
    if (IsOpen()) {
        close(m_descriptor);
    }
}

SPlace::SPlace(const std::string& native) {
    const std::size_t begin = native.rfind('/') + 1; // 0 when there is none
    folderPath = begin == 0 ? "./" : native.substr(0, begin);
    name = native.substr(begin);
    folder = CDescriptor(open(folderPath.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
}

SPlace SPlace::InPlainFolder(const std::string& native) {
    SPlace place;
    const std::size_t begin = native.rfind('/') + 1; // 0 when there is none
    place.folderPath = begin == 0 ? "./" : native.substr(0, begin);
    place.name = native.substr(begin);
    // With its separator at the end a link would be followed.
    const std::string folder = begin <= 1 ? place.folderPath : native.substr(0, begin - 1);
    place.folder = CDescriptor(open(folder.c_str(), O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    return place;
}

CDescriptor SPlace::Open(int flags, mode_t mode) const {
    constexpr int kAlways = O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY;
    return CDescriptor(openat(folder.Get(), name.c_str(), flags | kAlways, mode));
}

CDescriptor SPlace::OpenFolder() const {
    return CDescriptor(openat(folder.Get(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
}

bool SPlace::Examine(struct stat& status) const {
    return fstatat(folder.Get(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0;
}

bool SPlace::IsSameFile(const CDescriptor& file) const {
    struct stat named = {};
    struct stat opened = {};
    return Examine(named) && fstat(file.Get(), &opened) == 0 && named.st_dev == opened.st_dev &&
           named.st_ino == opened.st_ino;
}

void SPlace::Remove() const {
    static_cast<void>(unlinkat(folder.Get(), name.c_str(), 0));
}

void SPlace::Flush() const {
    static_cast<void>(fsync(OpenFolder().Get()));
}

bool SPlace::IsDescriptorLink() const {
    constexpr decltype(std::declval<struct statfs>().f_type) kProcessFileSystem = 0x9FA0;
    struct statfs system = {};
    struct stat target = {};
    return fstatfs(folder.Get(), &system) == 0 && system.f_type == kProcessFileSystem &&
           fstatat(folder.Get(), name.c_str(), &target, 0) == 0 && !S_ISREG(target.st_mode) &&
           !S_ISDIR(target.st_mode);
}

bool FindPlace(const std::string& native, ELinks links, SPlace& place) {
    std::array<char, PATH_MAX> current{};
    CPathSteps steps;
    steps.PutFirst(native);
    if (!native.starts_with('/')) {
        if (getcwd(current.data(), current.size()) == nullptr) {
            return false;
        }
        steps.PutFirst(current.data());
    }
    if (!EnterRoot(place)) {
        return false;
    }
    for (int linksSeen = 0; !steps.IsAtEnd();) {
        place.name = steps.Next();
        CDescriptor step = OpenStep(place.folder.Get(), place.name.c_str());
        struct stat status = {};
        if (!step.IsOpen()) {
            return errno == ENOENT && steps.IsAtEnd(); // a file that is still to be made
        }
        if (fstat(step.Get(), &status) != 0) {
            return false;
        }
        if (S_ISLNK(status.st_mode) && !(steps.IsAtEnd() && place.IsDescriptorLink())) {
            errno = ELOOP;
            if (++linksSeen > kMostLinks || !IsFollowed(status, links) || !Follow(step, place, steps)) {
                return false;
            }
        } else if (!steps.IsAtEnd()) {
            // Opened as a folder, which also mounts what is mounted at its first use.
            place.folder = OpenStep(place.folder.Get(), place.name.c_str(), O_DIRECTORY);
            place.folderPath += place.name + '/';
            if (!place.folder.IsOpen()) {
                return false;
            }
        }
    }
    return true;
}

} // namespace ruvo
