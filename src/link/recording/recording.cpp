#include "link/recording/recording.h"

#include "platform/file.h"

#include <algorithm>

namespace ruvo {

namespace {

constexpr std::uint64_t kLatest = 253'402'300'799; // the last second of the year 9999

bool TakeValues(CByteCursor& cursor, std::vector<SRecordedValue>& values) {
    std::uint64_t count = 0;
    if (!TakeNumber(cursor, count) || count > kMaxCallValues) {
        return false;
    }
    values.resize(static_cast<std::size_t>(count));
    return std::ranges::all_of(values, [&](SRecordedValue& value) { return TakeValue(cursor, value); });
}

/// When and on which thread.
bool TakeMoment(CByteCursor& cursor, SRecordingEntry& entry) {
    return TakeNumber(cursor, entry.time) && TakeNumber(cursor, entry.thread);
}

} // namespace

bool IsRecording(std::span<const std::uint8_t> bytes) {
    return bytes.size() >= kRecordingMark.size() &&
           std::equal(kRecordingMark.begin(), kRecordingMark.end(), bytes.begin());
}

ERecordingRead ReadRecordingFile(const std::string& path, Variant::Bytes& bytes) {
    constexpr std::size_t kBlock = std::size_t{64} * 1024;
    CFile file;
    std::size_t held = 0;
    bytes.clear();
    if (!file.Open(path, {.read = true}).Good()) {
        return ERecordingRead::Unreadable;
    }
    for (std::size_t count = 1; count != 0; held += count) {
        bytes.resize(held + kBlock);
        if (!file.Read(std::span(bytes).subspan(held), count).Good() || held + count > kMaxRecording) {
            return ERecordingRead::Unreadable;
        }
        if (held == 0 && !IsRecording(std::span(bytes).first(count))) {
            return ERecordingRead::NoRecording;
        }
    }
    bytes.resize(held);
    return ERecordingRead::Read;
}

CRecordingReader::CRecordingReader(std::span<const std::uint8_t> bytes)
    : m_size(bytes.size()), m_cursor(bytes) {
    if (IsRecording(bytes)) {
        TakeHead();
    } else {
        m_error = "no recording";
    }
}

void CRecordingReader::TakeHead() {
    std::span<const std::uint8_t> mark;
    std::uint8_t version = 0;
    std::uint64_t begin = 0;
    const bool hasVersion = m_cursor.TakeBytes(kRecordingMark.size(), mark) && m_cursor.TakeByte(version);
    if (hasVersion && version != kRecordingVersion) {
        m_error = "a recording of version " + std::to_string(version) + "; this program reads version " +
                  std::to_string(kRecordingVersion);
    } else if (!hasVersion || !TakeNumber(m_cursor, begin) || begin > kLatest) {
        m_error = "its beginning is cut short";
    }
    m_begin = static_cast<std::int64_t>(std::min(begin, kLatest));
}

bool CRecordingReader::Next(SRecordingEntry& entry) {
    if (!m_error.empty() || m_cursor.Remaining() == 0) {
        return false;
    }
    const std::string place = "byte " + std::to_string(m_size - m_cursor.Remaining()) + ": ";
    std::span<const std::uint8_t> bytes;
    std::uint64_t length = 0;
    if (m_isWhole) {
        m_error = place + "something follows the end";
    } else if (!TakeNumber(m_cursor, length) || length > m_cursor.Remaining() ||
               !m_cursor.TakeBytes(static_cast<std::size_t>(length), bytes)) {
        m_error = place + "the entry is cut short";
    } else if (length > kMaxRecordingEntry || !TakeEntry(bytes, entry)) {
        m_error = place + "no entry of a recording";
    }
    return m_error.empty();
}

bool CRecordingReader::TakeEntry(std::span<const std::uint8_t> bytes, SRecordingEntry& entry) {
    CByteCursor cursor(bytes);
    std::uint8_t kind = 0;
    entry = {};
    if (!cursor.TakeByte(kind)) {
        return false;
    }
    entry.kind = static_cast<ERecordingEntry>(kind);
    const bool isTaken = TakeBody(cursor, entry) && cursor.Remaining() == 0;
    m_isWhole = m_isWhole && isTaken;
    return isTaken;
}

bool CRecordingReader::TakeBody(CByteCursor& cursor, SRecordingEntry& entry) {
    std::uint8_t end = 0;
    switch (entry.kind) {
    case ERecordingEntry::Call:
        return TakeCall(cursor, entry);
    case ERecordingEntry::Reply:
        return TakeReply(cursor, entry);
    case ERecordingEntry::Event:
        return TakeMoment(cursor, entry) && cursor.TakeByte(entry.slot) && entry.slot >= kFirstSinkSlot &&
               entry.slot < kFirstSinkSlot + kSinkNames.size() && TakeValues(cursor, entry.values);
    case ERecordingEntry::Gap:
        return TakeNumber(cursor, entry.number) && entry.number > 0;
    case ERecordingEntry::End:
        m_isWhole = cursor.TakeByte(end) && (end == static_cast<std::uint8_t>(ERecordingEnd::Closed) ||
                                             end == static_cast<std::uint8_t>(ERecordingEnd::Full));
        entry.end = static_cast<ERecordingEnd>(end);
        return m_isWhole;
    }
    return false;
}

bool CRecordingReader::TakeCall(CByteCursor& cursor, SRecordingEntry& entry) {
    std::uint8_t slot = 0;
    if (!TakeNumber(cursor, entry.number) || !TakeMoment(cursor, entry) || !cursor.TakeByte(slot)) {
        return false;
    }
    entry.operation = FindOperationInSlot(slot);
    m_open[entry.number] = entry.operation;
    return entry.operation != nullptr && TakeValues(cursor, entry.values);
}

bool CRecordingReader::TakeReply(CByteCursor& cursor, SRecordingEntry& entry) {
    std::uint8_t isThrough = 0;
    if (!TakeNumber(cursor, entry.number) || !TakeMoment(cursor, entry) || !cursor.TakeByte(isThrough) ||
        isThrough > 1) {
        return false;
    }
    if (const auto call = m_open.find(entry.number); call != m_open.end()) {
        entry.operation = call->second;
        m_open.erase(call);
    }
    entry.isThrough = isThrough == 1;
    return !entry.isThrough || (TakeValue(cursor, entry.status) && TakeValues(cursor, entry.values));
}

} // namespace ruvo
