#include "eventfiles/day_file_reader.h"

#include <algorithm>
#include <cstring>

namespace ruvo {

namespace {

/// A record and the block behind it are looked at together.
constexpr std::size_t kWindowSize = kMaxRecordImage + kBlockHeadSize + kMaxBlockSize;
constexpr std::size_t kBufferSize = std::size_t{1024} * 1024;
static_assert(kBufferSize > 2 * kWindowSize && kWindowSize > kMaxHeaderSize);

// Bytes made to look like the beginnings of long records, again and again, would each cost a long parse. So
// parsing is paid for: a sound file uses an eighth of what its bytes earn.
constexpr std::uint64_t kFirstBudget = std::uint64_t{1024} * 1024;
constexpr std::uint64_t kBudgetPerByte = 8;

} // namespace

CDayFileReader::CDayFileReader() : m_buffer(kBufferSize) {}

SFileResult CDayFileReader::Open(const std::string& path) {
    m_at = SProgress{};
    m_at.parseBudget = kFirstBudget;
    return m_file.Open(path, {.read = true});
}

bool CDayFileReader::Next(SDayFileItem& item) {
    item = SDayFileItem{};
    if (!m_at.headerTaken) {
        m_at.headerTaken = true;
        if (TakeHeader(item)) {
            return true;
        }
    }
    if (Window().empty()) {
        return ReportReadFailure(item);
    }
    item.offset = m_at.offset;
    TakeRecord(item);
    return true;
}

/// True when there is something to say about the header.
bool CDayFileReader::TakeHeader(SDayFileItem& item) {
    const Bytes window = Window();
    if (window.empty() && m_at.readFailed) {
        return false;
    }
    const SParsedHeader header = ParseDayFileHeader(window);
    if (!header.fault) {
        Advance(header.size);
        return false;
    }
    SkipDamage(*header.fault, 0, item);
    return true;
}

void CDayFileReader::TakeRecord(SDayFileItem& item) {
    const Bytes window = Window();
    SParsedRecord parsed = Parse(window);
    // Values of no known type may be what a wrong length made of other bytes: the record then needs a
    // witness.
    const bool isSound = parsed.record != nullptr && (!parsed.unknownValues || parsed.size == window.size() ||
                                                      Parse(window.subspan(parsed.size)).isFirstBlockSound);
    if (!isSound) {
        SkipDamage(parsed.record ? EDayFileFault::UnknownValue : parsed.fault, 1, item);
        return;
    }
    if (parsed.unknownValues) {
        item.damage = SDayFileDamage{m_at.offset + parsed.unknownValues->offset, parsed.unknownValues->length,
                                     EDayFileFault::UnknownValue};
    }
    item.record = std::move(parsed.record);
    item.isExtended = parsed.isExtended;
    Advance(parsed.size);
}

/// Moves to where reading can go on, at least `known` bytes ahead, or to the end.
void CDayFileReader::SkipDamage(EDayFileFault fault, std::size_t known, SDayFileItem& item) {
    const std::uint64_t start = m_at.offset;
    Advance(known);
    while (!Window().empty() && !CanResume()) {
        Advance(1);
    }
    item.offset = start;
    item.damage = SDayFileDamage{start, m_at.offset - start, fault};
}

/// Parses the record at the start of the bytes, as long as the work stays in proportion to the bytes passed.
SParsedRecord CDayFileReader::Parse(Bytes bytes) {
    const std::size_t cost = std::min(ParseCost(bytes), bytes.size());
    if (cost > m_at.parseBudget) {
        return {};
    }
    m_at.parseBudget -= cost;
    return ParseDayFileRecord(bytes);
}

/// A record alone could be chance, bytes inside a value that look like one. Its witness is the end of the
/// file or a sound block behind its first one; an extended record brings that block along.
bool CDayFileReader::CanResume() {
    const Bytes window = Window();
    if (!LooksLikeRecord(window)) {
        return false;
    }
    const SParsedRecord parsed = Parse(window);
    if (parsed.record == nullptr) {
        return false;
    }
    return parsed.isExtended || parsed.size == window.size() ||
           Parse(window.subspan(parsed.size)).isFirstBlockSound;
}

/// What could not be read is no part of the file's bytes: the report has no length.
bool CDayFileReader::ReportReadFailure(SDayFileItem& item) {
    if (!m_at.readFailed) {
        return false;
    }
    m_at.readFailed = false;
    item.offset = m_at.offset;
    item.damage = SDayFileDamage{m_at.offset, 0, EDayFileFault::ReadFailed};
    return true;
}

CDayFileReader::Bytes CDayFileReader::Window() {
    if (m_at.end - m_at.begin < kWindowSize && !m_at.atEnd) {
        Refill();
    }
    return Bytes(m_buffer).subspan(m_at.begin, std::min(m_at.end - m_at.begin, kWindowSize));
}

void CDayFileReader::Refill() {
    std::memmove(m_buffer.data(), m_buffer.data() + m_at.begin, m_at.end - m_at.begin);
    m_at.end -= m_at.begin;
    m_at.begin = 0;
    while (!m_at.atEnd && m_at.end < m_buffer.size()) {
        std::size_t count = 0;
        m_at.readFailed = !m_file.Read(std::span(m_buffer).subspan(m_at.end), count).Good();
        m_at.atEnd = m_at.readFailed || count == 0;
        m_at.end += count;
    }
}

void CDayFileReader::Advance(std::size_t count) {
    m_at.begin += count;
    m_at.offset += count;
    m_at.parseBudget += kBudgetPerByte * count;
}

} // namespace ruvo
