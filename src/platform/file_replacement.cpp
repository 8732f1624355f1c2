// The order of steps, which is the same on every system.
#include "platform/file_replacement.h"

#include <random>

namespace ruvo {

namespace {

constexpr std::string_view kLetters = "abcdefghijklmnopqrstuvwxyz012345";
constexpr std::size_t kLetterCount = 6;
constexpr std::string_view kEnding = ".tmp";

/// Hidden, and not what a run or a scheduler takes for an INI file.
std::string NewNameHead(const std::string& oldName) {
    constexpr std::size_t kLongestName = 255;
    constexpr std::size_t kLongestHead = kLongestName - kLetterCount - kEnding.size();
    return ("." + oldName).substr(0, kLongestHead - 1) + ".";
}

SAccessResult WriteDurably(file_replacement::CNewFile& file, std::string_view bytes) {
    const SAccessResult result = file.Write(bytes);
    return result.Good() ? file.Flush() : result;
}

SAccessResult Begin(file_replacement::COldFile& old, file_replacement::CNewFile& file,
                    const std::string& path, file_replacement::EFileKind kind) {
    SAccessResult result = old.Open(path, kind);
    if (result.Good()) {
        result = old.Lock();
    }
    return result.Good() ? file.MakeBeside(old) : result;
}

} // namespace

std::string file_replacement::NewName(const std::string& oldName) {
    std::random_device random;
    std::string name = NewNameHead(oldName);
    for (std::size_t count = 0; count < kLetterCount; ++count) {
        name += kLetters[random() % kLetters.size()];
    }
    return name.append(kEnding);
}

bool file_replacement::IsNewName(std::string_view name, const std::string& oldName) {
    const std::string head = NewNameHead(oldName);
    return name.size() == head.size() + kLetterCount + kEnding.size() && name.starts_with(head) &&
           name.ends_with(kEnding) &&
           name.substr(head.size(), kLetterCount).find_first_not_of(kLetters) == std::string_view::npos;
}

SAccessResult WriteNewPrivateFile(const std::string& path, std::string_view bytes, std::string_view readers) {
    file_replacement::CNewFile file;
    SAccessResult result = file.Make(path, readers);
    if (result.Good()) {
        result = WriteDurably(file, bytes);
    }
    if (result.Good()) {
        file.Keep();
    }
    return result;
}

SAccessResult CanBeExchanged(const std::string& path) {
    return file_replacement::COldFile().Open(path, file_replacement::EFileKind::Secret);
}

SAccessResult CFileExchange::Prepare(const std::string& path, std::string_view bytes) {
    const SAccessResult result = Begin(m_old, m_new, path, file_replacement::EFileKind::Secret);
    return result.Good() ? WriteDurably(m_new, bytes) : result;
}

SAccessResult CFileExchange::Commit(std::string_view oldBytes) {
    if (!m_old.Holds(oldBytes)) {
        return {EAccessFailure::Changed, 0};
    }
    return m_new.TakePlaceOf(m_old);
}

SAccessResult CFileReplacement::Open(const std::string& path) {
    return Begin(m_old, m_new, path, file_replacement::EFileKind::Output);
}

SAccessResult CFileReplacement::Write(std::string_view bytes) {
    return m_new.Write(bytes);
}

SAccessResult CFileReplacement::Commit() {
    const SAccessResult result = m_new.Flush();
    return result.Good() && !IsStream() ? m_new.TakePlaceOf(m_old) : result;
}

} // namespace ruvo
