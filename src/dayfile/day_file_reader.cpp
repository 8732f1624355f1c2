#include "dayfile/day_file_reader.h"

#include "dayfile/header_parser.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace ruvo {

namespace {

/// A record, one that begins within it, and the block after that are looked at together.
constexpr std::size_t kWindowSize = 2 * kMaxRecordImage + kBlockHeadSize + kMaxBlockSize;
constexpr std::size_t kBufferSize = std::size_t{1024} * 1024;
static_assert(kBufferSize > 2 * kWindowSize && kWindowSize > kMaxHeaderSize);

// Bytes made to look like the beginnings of long records, again and again, would each cost a long parse. So
// parsing is paid for: a sound file uses an eighth of what its bytes earn.
constexpr std::uint64_t kFirstBudget = std::uint64_t{1024} * 1024;
constexpr std::uint64_t kBudgetPerByte = 8;

} // namespace

CDayFileReader::CDayFileReader() : m_buffer(std::make_unique_for_overwrite<std::uint8_t[]>(kBufferSize)) {}

SFileResult CDayFileReader::Open(const std::string& path, SOpenMode mode) {
    m_at = SProgress{};
    m_at.parseBudget = kFirstBudget;
    return m_file.Open(path, mode);
}

bool CDayFileReader::Next(SDayFileItem& item) {
    item = SDayFileItem{};
    if (!m_at.headerRead) {
        m_at.headerRead = true;
        if (ReadHeader(item)) {
            return true;
        }
    }
    if (Window().empty()) {
        return ReportReadFailure(item);
    }
    item.offset = m_at.offset;
    ReadRecord(item);
    return true;
}

/// True when there is something to say about the header.
bool CDayFileReader::ReadHeader(SDayFileItem& item) {
    const Bytes window = Window();
    if (window.empty()) { // no file yet: a run has made it and has still to write, or was ended before
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

void CDayFileReader::ReadRecord(SDayFileItem& item) {
    const Bytes window = Window();
    SParsedRecord parsed = std::exchange(m_at.ahead, {});
    if (parsed.record == nullptr) {
        parsed = Parse(window);
    }
    if (parsed.record == nullptr) {
        SkipDamage(parsed.fault, 1, item);
        return;
    }
    const Bytes behind = window.subspan(parsed.size);
    SParsedRecord ahead = LooksLikeBlock(behind) ? Parse(behind) : SParsedRecord{};
    if (!behind.empty() && !ahead.isFirstBlockSound && SkipDoubtful(parsed, item)) {
        return;
    }
    if (parsed.unknownValues) {
        item.damage = SDayFileDamage{m_at.offset + parsed.unknownValues->offset, parsed.unknownValues->length,
                                     EDayFileFault::UnknownValue};
    }
    item.record = std::move(parsed.record);
    item.isExtended = parsed.isExtended;
    item.bytes = window.first(parsed.size);
    Advance(parsed.size);
    // In a sound file each record is the witness of the one before: it is parsed once for both.
    m_at.ahead = std::move(ahead);
}

/// For a record without a witness after it: true when it has to be damage, which is then reported.
bool CDayFileReader::SkipDoubtful(const SParsedRecord& parsed, SDayFileItem& item) {
    // Values of no known type may be what a wrong length made of other bytes.
    if (parsed.unknownValues) {
        SkipDamage(EDayFileFault::UnknownValue, 1, item);
        return true;
    }
    const std::size_t within = FindRecordWithin(parsed.size);
    if (within > 0) {
        SkipDamage(EDayFileFault::RecordWithin, within, item);
    }
    return within > 0;
}

/// A torn record with others after it is as long as it says only by the first bytes of those. Returns where
/// they begin within the next `size` bytes, so that they lead, back to back, past the end of those; 0 for
/// nowhere.
std::size_t CDayFileReader::FindRecordWithin(std::size_t size) {
    const Bytes window = Window();
    for (std::size_t at = 1; at < size; ++at) {
        std::size_t end = at;
        std::size_t step = 1;
        while (end < size && step > 0) {
            step = ResumableSize(window.subspan(end));
            end += step;
        }
        if (end > size) {
            return at;
        }
    }
    return 0;
}

/// Moves to where reading can go on, at least `known` bytes ahead, or to the end.
void CDayFileReader::SkipDamage(EDayFileFault fault, std::size_t known, SDayFileItem& item) {
    const std::uint64_t start = m_at.offset;
    Advance(known);
    while (!Window().empty() && ResumableSize(Window()) == 0) {
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

/// Size of the record at the start of the bytes if reading can go on there, else 0. A record alone could be
/// chance, bytes inside a value that look like one. Its witness is the end of the file or a sound block
/// after its first one; an extended record brings that block along.
std::size_t CDayFileReader::ResumableSize(Bytes bytes) {
    if (!LooksLikeRecord(bytes)) {
        return 0;
    }
    const SParsedRecord parsed = Parse(bytes);
    if (parsed.record == nullptr) {
        return 0;
    }
    const bool hasWitness = parsed.isExtended || parsed.size == bytes.size() ||
                            Parse(bytes.subspan(parsed.size)).isFirstBlockSound;
    return hasWitness ? parsed.size : 0;
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
    return Bytes(m_buffer.get() + m_at.begin, std::min(m_at.end - m_at.begin, kWindowSize));
}

void CDayFileReader::Refill() {
    std::memmove(m_buffer.get(), m_buffer.get() + m_at.begin, m_at.end - m_at.begin);
    m_at.end -= m_at.begin;
    m_at.begin = 0;
    while (!m_at.atEnd && m_at.end < kBufferSize) {
        std::size_t count = 0;
        m_at.readFailed =
            !m_file.Read(std::span(m_buffer.get() + m_at.end, kBufferSize - m_at.end), count).Good();
        m_at.atEnd = m_at.readFailed || count == 0;
        m_at.end += count;
    }
}

void CDayFileReader::Advance(std::size_t count) {
    m_at.begin += count;
    m_at.offset += count;
    m_at.parseBudget += kBudgetPerByte * count;
}

SDayFileEnd ReadDayFileEnd(const std::string& path) {
    SDayFileEnd end;
    CDayFileReader reader;
    end.isRead = reader.Open(path, {.read = true, .plain = true}).Good();
    for (SDayFileItem item; end.isRead && reader.Next(item);) {
        // Damage with a record after it was at the file's end in an earlier run.
        end.isRead = !item.IsReadFailure();
        end.torn = item.record == nullptr ? std::optional(item.damage->offset) : std::nullopt;
    }
    return end;
}

} // namespace ruvo
