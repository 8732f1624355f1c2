// The order of steps, which is the same on every system.
#include "platform/file_replacement.h"

#include <random>

namespace ruvo {

namespace {

constexpr std::string_view kLetters = "abcdefghijklmnopqrstuvwxyz012345";
constexpr std::size_t kLetterCount = 6;
constexpr std::string_view kEnding = ".tmp";

/// Hidden, and not what a run or a scheduler takes for an INI file.
std::string TemporaryNamePrefix(const std::string& oldName) {
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
    return result.Good() ? file.CreateBeside(old) : result;
}

} // namespace

std::string file_replacement::TemporaryName(const std::string& oldName) {
    std::random_device random;
    std::string name = TemporaryNamePrefix(oldName);
    for (std::size_t count = 0; count < kLetterCount; ++count) {
        name += kLetters[random() % kLetters.size()];
    }
    return name.append(kEnding);
}

bool file_replacement::IsTemporaryName(std::string_view name, const std::string& oldName) {
    const std::string head = TemporaryNamePrefix(oldName);
    return name.size() == head.size() + kLetterCount + kEnding.size() && name.starts_with(head) &&
           name.ends_with(kEnding) &&
           name.substr(head.size(), kLetterCount).find_first_not_of(kLetters) == std::string_view::npos;
}

SAccessResult WriteNewPrivateFile(const std::string& path, std::string_view bytes, std::string_view readers) {
    file_replacement::CNewFile file;
    SAccessResult result = file.Create(path, readers);
    if (result.Good()) {
        result = WriteDurably(file, bytes);
    }
    if (result.Good()) {
        file.Keep();
    }
    return result;
}

SAccessResult CheckReplaceable(const std::string& path) {
    return file_replacement::COldFile().Open(path, file_replacement::EFileKind::Secret);
}

SAccessResult CSecretFileReplacement::Prepare(const std::string& path, std::string_view bytes) {
    const SAccessResult result = Begin(m_old, m_new, path, file_replacement::EFileKind::Secret);
    return result.Good() ? WriteDurably(m_new, bytes) : result;
}

SAccessResult CSecretFileReplacement::Commit(std::string_view oldBytes) {
    if (!m_old.Contains(oldBytes)) {
        return {EAccessFailure::Changed, 0};
    }
    return m_new.Replace(m_old);
}

SAccessResult COutputFileReplacement::Open(const std::string& path) {
    return Begin(m_old, m_new, path, file_replacement::EFileKind::Output);
}

SAccessResult COutputFileReplacement::Write(std::string_view bytes) {
    return m_new.Write(bytes);
}

SAccessResult COutputFileReplacement::Commit() {
    const SAccessResult result = m_new.Flush();
    return result.Good() && !IsStream() ? m_new.Replace(m_old) : result;
}

} // namespace ruvo
