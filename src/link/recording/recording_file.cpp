#include "link/recording/recording_file.h"

#include "link/recording/recorded_value.h"
#include "platform/clock.h"
#include "platform/files.h"

namespace ruvo {

namespace {

constexpr std::size_t kEndRoom = 64; // for a gap and the end

/// Puts a number at the end of the name, before its extension.
std::string NumberedPath(const std::string& path, unsigned number) {
    if (number == 1) {
        return path;
    }
    const std::size_t name = path.find_last_of('\\') + 1;
    const std::size_t dot = path.rfind('.');
    const std::size_t end = dot == std::string::npos || dot <= name ? path.size() : dot;
    return path.substr(0, end) + "-" + std::to_string(number) + path.substr(end);
}

} // namespace

SFileResult CRecordingFile::Make(const SRecordingPlan& plan) {
    constexpr unsigned kMostNumbers = 9999;
    constexpr SOpenMode kNewFile{
        .write = true, .create = true, .plain = true, .exclusive = true, .ownerOnly = true};
    SFileResult result;
    m_leastFree = plan.leastFree;
    m_longest = plan.longest;
    m_folder = plan.path.substr(0, plan.path.find_last_of('\\') + 1);
    for (unsigned number = 1; number <= kMostNumbers; ++number) {
        m_path = NumberedPath(plan.path, number);
        result = m_file.Open(m_path, kNewFile);
        if (result.failure != EFileFailure::Exists) {
            break;
        }
    }
    m_hasEnded = !result.Good() || !WriteHead();
    return result;
}

bool CRecordingFile::WriteHead() {
    Variant::Bytes head(kRecordingMark.begin(), kRecordingMark.end());
    head.push_back(kRecordingVersion);
    AppendNumber(head, static_cast<std::uint64_t>(UnixSeconds()));
    std::size_t count = 0;
    const bool isWritten = m_file.Write(head, count).Good();
    m_length = count;
    return isWritten;
}

bool CRecordingFile::HasRoom() const {
    return FreeSpace(m_folder).bytes.value_or(m_leastFree) >= m_leastFree;
}

/// What a full disk takes of an entry is taken back: the next one must not follow a part of it.
bool CRecordingFile::Write(ERecordingEntry kind, std::span<const std::uint8_t> body) {
    Variant::Bytes entry;
    entry.reserve(body.size() + sizeof(std::uint64_t) + 1);
    AppendNumber(entry, body.size() + 1);
    entry.push_back(static_cast<std::uint8_t>(kind));
    entry.insert(entry.end(), body.begin(), body.end());
    std::size_t count = 0;
    std::uint64_t position = 0;
    if (m_file.Write(entry, count).Good()) {
        m_length += entry.size();
        return true;
    }
    m_hasEnded = !m_file.SetLength(m_length).Good() ||
                 !m_file.Seek(static_cast<std::int64_t>(m_length), ESeekOrigin::Start, position).Good();
    return false;
}

void CRecordingFile::Append(ERecordingEntry kind, std::span<const std::uint8_t> body) noexcept {
    if (m_hasEnded) {
        return;
    }
    try {
        if (body.size() >= kMaxRecordingEntry || !HasRoom()) {
            ++m_leftOut;
            return;
        }
        if (m_length + body.size() + kEndRoom > m_longest) {
            End(ERecordingEnd::Full);
            return;
        }
        if (m_leftOut > 0) {
            Variant::Bytes gap;
            AppendNumber(gap, m_leftOut);
            if (!Write(ERecordingEntry::Gap, gap)) {
                ++m_leftOut;
                return;
            }
            m_leftOut = 0;
        }
        m_leftOut += Write(kind, body) ? 0 : 1;
    } catch (...) { // no memory for it
        ++m_leftOut;
    }
}

void CRecordingFile::End(ERecordingEnd end) noexcept {
    if (m_hasEnded) {
        return;
    }
    try {
        const auto body = static_cast<std::uint8_t>(end);
        Write(ERecordingEntry::End, {&body, 1});
    } catch (...) { // NOLINT(bugprone-empty-catch): the file ends all the same
    }
    m_hasEnded = true;
    static_cast<void>(m_file.Close());
}

} // namespace ruvo
