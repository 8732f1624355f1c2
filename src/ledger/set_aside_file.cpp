#include "ledger/set_aside_file.h"

#include "base/text.h"
#include "dayfile/header_parser.h"
#include "dayfile/held_day_file.h"
#include "ledger/journal_file.h"
#include "paths/path_utilities.h"
#include "platform/full_path.h"
#include "platform/native_text.h"

#include <algorithm>

namespace ruvo {

namespace {

constexpr std::size_t kPieceSize = std::size_t{64} * 1024;
constexpr std::string_view kTitle = "set aside";
constexpr const char* kNotNamed = "its name could not be flushed";
constexpr char kSeparator = '|'; // which no path may hold

/// The name of a day file without its ending, short enough for what follows it.
std::string StemOf(const std::string& dayFile) {
    constexpr std::size_t kLongest = 150;
    std::string stem = dayFile.substr(dayFile.rfind('\\') + 1);
    stem.resize(std::min(stem.size(), stem.rfind('.')));
    std::size_t end = std::min(stem.size(), kLongest);
    while (end > 0 && end < stem.size() && (static_cast<unsigned char>(stem[end]) & 0xC0U) == 0x80U) {
        --end; // no character is cut
    }
    return stem.substr(0, end);
}

std::string FreeText(const SSetAsideHeader& header) {
    std::string text(kTitle);
    for (const std::string* part : {&header.file, &header.key, &header.begun, &header.reason}) {
        text += kSeparator + BlankControlCharacters(StoredText(*part).value_or(*part));
    }
    return text;
}

bool IsTaken(const std::string& path) {
    return !IsAbsent(path) || IsLink(path);
}

} // namespace

bool IsSafeName(const std::string& name) {
    return !name.empty() && name != "." && name != ".." && !HasForbiddenCharacter(name) &&
           std::ranges::none_of(name, [](char c) { return IsControlCharacter(c) || c == '\\' || c == ':'; });
}

bool IsSafePlace(const std::string& file) {
    const std::size_t separator = file.find('\\');
    return separator != std::string::npos && IsSafeName(file.substr(0, separator)) &&
           IsSafeName(file.substr(separator + 1));
}

bool IsSetAsideName(const std::string& name) {
    return IsSafeName(name) && name.ends_with(kSetAsideEnding);
}

std::optional<SSetAsideHeader> ReadSetAsideHeader(const std::string& path) {
    CFile file;
    std::vector<std::uint8_t> bytes(kMaxHeaderSize);
    std::size_t held = 0;
    bool isRead = file.Open(path, {.read = true, .plain = true}).Good();
    for (std::size_t got = 1; isRead && got > 0 && held < bytes.size(); held += got) {
        isRead = file.Read(std::span(bytes).subspan(held), got).Good();
    }
    bytes.resize(held);
    const SParsedHeader parsed = ParseDayFileHeader(bytes);
    if (!isRead || parsed.fault || parsed.size < 3) {
        return std::nullopt;
    }
    constexpr std::string_view kLineEnd = "\r\n";
    std::string text(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(parsed.size - 1));
    text.resize(text.size() - kLineEnd.size());
    text.erase(0, text.rfind('\n') + 1);
    SSetAsideHeader header;
    std::string title;
    std::size_t at = 0;
    for (std::string* part : {&title, &header.file, &header.key, &header.begun, &header.reason}) {
        const std::size_t end = std::min(text.find(kSeparator, at), text.size());
        *part = at <= text.size() ? TextOfStored(text.substr(at, end - at)) : std::string();
        at = end + 1;
    }
    return title == kTitle && IsSafePlace(header.file) ? std::optional(header) : std::nullopt;
}

std::string FreeSetAsidePath(const std::string& folder, const std::string& name) {
    constexpr int kMostNames = 10'000;
    const std::string begin = folder + "\\" + StemOf(name) + "-";
    for (int number = 1; number <= kMostNames; ++number) {
        std::string path = begin + std::to_string(number) + std::string(kSetAsideEnding);
        if (!IsTaken(path) && !IsTaken(path + std::string(kAppendedEnding))) {
            return path;
        }
    }
    return {};
}

bool CSetAsideFile::Check(SFileResult result) {
    if (m_why.empty() && !result.Good()) {
        m_why = SystemErrorText(result.systemCode);
    }
    return m_why.empty();
}

/// Another run may make one of the same name at the same time: only one of them gets the lock.
bool CSetAsideFile::TryOpen(bool isNew) {
    std::uint64_t length = 0;
    const SOpenMode mode{
        .read = true, .write = true, .create = true, .plain = true, .removable = true, .ownerOnly = true};
    return Check(m_file.Open(m_path, mode)) && m_file.TryLock() != EFileLock::HeldByAnother &&
           m_file.IsAt(m_path) && Check(m_file.GetLength(length)) && (!isNew || length == 0);
}

bool CSetAsideFile::Make(const std::string& folder, const std::string& dayFile) {
    constexpr int kMostAttempts = 10; // another run may take the same name at the same time
    m_folder = folder;
    for (int attempt = 0; attempt < kMostAttempts && m_why.empty(); ++attempt) {
        m_path = FreeSetAsidePath(folder, dayFile);
        if (!m_path.empty() && TryOpen(true)) {
            return true;
        }
    }
    m_why = m_why.empty() ? "all names are taken" : m_why;
    return false;
}

bool CSetAsideFile::Open(const std::string& folder, const std::string& name) {
    m_folder = folder;
    m_path = folder + "\\" + name;
    const bool isOpen = TryOpen(false) && Check(m_file.SetLength(0));
    m_why = isOpen || !m_why.empty() ? m_why : "another run holds the file";
    return isOpen;
}

void CSetAsideFile::Start(std::uint32_t lastExtended, const SSetAsideHeader& header) {
    const std::string bytes = COffFile::HeaderBytes(MakeEventListHeader(lastExtended + 1, FreeText(header)));
    m_piece.assign(bytes.begin(), bytes.end());
}

void CSetAsideFile::Add(std::span<const std::uint8_t> image) {
    m_piece.insert(m_piece.end(), image.begin(), image.end());
    if (m_piece.size() >= kPieceSize) {
        WritePiece();
    }
}

void CSetAsideFile::GiveUp(std::string_view why) {
    m_why = m_why.empty() ? why : m_why;
}

void CSetAsideFile::WritePiece() {
    std::size_t count = 0;
    static_cast<void>(m_why.empty() && Check(m_file.Write(m_piece, count)));
    m_piece.clear();
}

bool CSetAsideFile::Finish() {
    WritePiece();
    return m_why.empty() && Check(m_file.FlushToDisk());
}

bool CSetAsideFile::FlushName() {
    m_isNamed = m_isNamed || FlushFolder(m_folder);
    return m_isNamed;
}

bool MarkAppended(const std::string& folder, const std::string& name) {
    const std::string path = folder + "\\" + name;
    const bool isMarked = RenameFile(path, path + std::string(kAppendedEnding)) || !IsTaken(path);
    return FlushFolder(folder) && isMarked;
}

bool IsMarkedAppended(const std::string& folder, const std::string& name) {
    return IsTaken(folder + "\\" + name + std::string(kAppendedEnding));
}

SListedFiles SetAsideFilesIn(const std::string& folder) {
    return ListFiles(folder, kSetAsideEnding);
}

void RemoveEmptySetAsideFiles(const std::string& folder) {
    const std::vector<std::string> files = SetAsideFilesIn(folder).paths;
    if (!files.empty() && JournalsIn(folder).AreNone()) {
        std::ranges::for_each(files, [](const std::string& path) { RemoveEmptyDayFile(path, false); });
    }
}

std::string WithUnflushedName(const std::string& reason, CSetAsideFile& file) {
    return file.FlushName() ? reason : reason + "; " + kNotNamed;
}

std::string NotSetAsideText(const CSetAsideFile& file) {
    return "set-aside file " + DisplayPath(file.Path()) +
           " cannot be written: " + (file.Why().empty() ? kNotNamed : file.Why());
}

} // namespace ruvo
