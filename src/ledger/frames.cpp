#include "ledger/frames.h"

#include "base/byte_cursor.h"
#include "platform/native_text.h"

#include <algorithm>
#include <array>

namespace ruvo {

namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr std::size_t kReadStep = std::size_t{64} * 1024;
constexpr std::size_t kLargestPayload = std::size_t{16} * 1024 * 1024; // a store frame with a million runs

/// What a byte adds to the checksum when so many others follow it: sixteen are taken at a time.
constexpr std::size_t kSlices = 16;
constexpr auto kChecksumTables = [] {
    std::array<std::array<std::uint32_t, 256>, kSlices> tables{};
    for (std::uint32_t byte = 0; byte != tables[0].size(); ++byte) {
        std::uint32_t sum = byte;
        for (int bit = 0; bit < 8; ++bit) {
            sum = (sum >> 1U) ^ ((sum & 1U) != 0 ? 0xEDB88320U : 0U);
        }
        tables[0][byte] = sum;
    }
    for (std::size_t behind = 1; behind < kSlices; ++behind) {
        for (std::size_t byte = 0; byte != tables[0].size(); ++byte) {
            const std::uint32_t sum = tables[behind - 1][byte];
            tables[behind][byte] = (sum >> 8U) ^ tables[0][sum & 0xFFU];
        }
    }
    return tables;
}();

/// The four bytes from there on as a number.
inline std::uint32_t WordAt(const std::uint8_t* bytes) {
    return std::uint32_t{bytes[0]} | std::uint32_t{bytes[1]} << 8U | std::uint32_t{bytes[2]} << 16U |
           std::uint32_t{bytes[3]} << 24U;
}

inline void SetWord(std::uint8_t* bytes, std::uint32_t word) {
    for (std::size_t i = 0; i < sizeof word; ++i) {
        bytes[i] = static_cast<std::uint8_t>(word >> 8U * i & 0xFFU);
    }
}

/// What four bytes add when so many follow the first of them. Known to the compiler, the number costs nothing
/// to check.
template <std::size_t kBehind>
inline std::uint32_t SumOfWord(std::uint32_t word) {
    return kChecksumTables[kBehind][word & 0xFFU] ^ kChecksumTables[kBehind - 1][word >> 8U & 0xFFU] ^
           kChecksumTables[kBehind - 2][word >> 16U & 0xFFU] ^ kChecksumTables[kBehind - 3][word >> 24U];
}

/// CRC-32, going on from an earlier one. Twice over each record that is kept.
std::uint32_t Checksum(Bytes bytes, std::uint32_t before) {
    std::uint32_t sum = ~before;
    const std::uint8_t* at = bytes.data();
    const std::uint8_t* const end = at + bytes.size();
    for (; static_cast<std::size_t>(end - at) >= kSlices; at += kSlices) {
        sum = SumOfWord<15>(sum ^ WordAt(at)) ^ SumOfWord<11>(WordAt(at + 4)) ^ SumOfWord<7>(WordAt(at + 8)) ^
              SumOfWord<3>(WordAt(at + 12));
    }
    if (end - at >= 8) {
        sum = SumOfWord<7>(sum ^ WordAt(at)) ^ SumOfWord<3>(WordAt(at + 4));
        at += 8;
    }
    for (; at != end; ++at) {
        sum = (sum >> 8U) ^ kChecksumTables[0][(sum ^ *at) & 0xFFU];
    }
    return ~sum;
}

void PutNumber(std::vector<std::uint8_t>& bytes, std::uint64_t value, std::size_t size) {
    std::array<std::uint8_t, sizeof value> number{};
    for (std::uint8_t& byte : number) {
        byte = static_cast<std::uint8_t>(value & 0xFFU);
        value >>= 8U;
    }
    bytes.insert(bytes.end(), number.begin(), number.begin() + static_cast<std::ptrdiff_t>(size));
}

/// In the encoding that every program reads which may bring the journal in.
void PutText(std::vector<std::uint8_t>& bytes, const std::string& text) {
    const std::string stored = StoredText(text).value_or(text);
    PutNumber(bytes, stored.size(), 4);
    bytes.insert(bytes.end(), stored.begin(), stored.end());
}

bool TakeText(CByteCursor& cursor, std::string& text) {
    std::uint32_t size = 0;
    Bytes taken;
    if (!cursor.TakeDoubleWord(size) || !cursor.TakeBytes(size, taken)) {
        return false;
    }
    text = TextOfStored(std::string(taken.begin(), taken.end()));
    return true;
}

/// One block of a record, and its cells' if it has some.
bool IsWholeImage(Bytes image) {
    CByteCursor cursor(image);
    for (const EBlockTag wanted : {EBlockTag::Event, EBlockTag::Cells}) {
        std::uint8_t tag = 0;
        std::uint16_t length = 0;
        Bytes body;
        if (!cursor.TakeByte(tag) || tag != static_cast<std::uint8_t>(wanted) || !cursor.TakeWord(length) ||
            !cursor.TakeBytes(length, body)) {
            return false;
        }
        if (cursor.Remaining() == 0) {
            return true;
        }
    }
    return false;
}

bool TakeLength(CByteCursor& cursor, std::uint64_t& length) {
    std::uint32_t low = 0;
    std::uint32_t high = 0;
    const bool fits = cursor.TakeDoubleWord(low) && cursor.TakeDoubleWord(high);
    length = std::uint64_t{high} << 32U | low;
    return fits;
}

} // namespace

void MakeFrame(std::vector<std::uint8_t>& bytes, EFrame kind, std::uint32_t visit, SChain& chain,
               Bytes payload, Bytes morePayload) {
    const std::size_t size = payload.size() + morePayload.size();
    bytes.resize(kFrameOverhead + size);
    std::uint8_t* const head = bytes.data();
    head[0] = static_cast<std::uint8_t>(kind);
    SetWord(head + 1, visit);
    SetWord(head + 5, chain.position);
    SetWord(head + 9, static_cast<std::uint32_t>(size));
    std::ranges::copy(morePayload, std::ranges::copy(payload, head + kFrameHeadSize).out);
    chain.checksum = Checksum(Bytes(bytes).first(kFrameHeadSize + size), chain.checksum);
    ++chain.position;
    SetWord(head + kFrameHeadSize + size, chain.checksum);
}

std::vector<std::uint8_t> Pack(const SVisitInfo& info) {
    std::vector<std::uint8_t> bytes;
    PutText(bytes, info.key);
    PutText(bytes, info.file);
    PutText(bytes, info.begun);
    PutNumber(bytes, info.length, 8);
    PutNumber(bytes, info.isFileMade ? 1 : 0, 1);
    PutNumber(bytes, info.isFolderMade ? 1 : 0, 1);
    PutText(bytes, info.source);
    return bytes;
}

std::vector<std::uint8_t> Pack(const SStoreInfo& info) {
    std::vector<std::uint8_t> bytes;
    PutNumber(bytes, info.length, 8);
    PutNumber(bytes, info.lastExtended, 4);
    for (const SRecordRun& run : info.records) {
        PutNumber(bytes, run.first, 4);
        PutNumber(bytes, run.count, 4);
    }
    return bytes;
}

std::vector<std::uint8_t> Pack(const SSetAsideInfo& info) {
    std::vector<std::uint8_t> bytes;
    PutText(bytes, info.name);
    PutText(bytes, info.reason);
    return bytes;
}

std::optional<SVisitInfo> UnpackVisit(Bytes payload) {
    CByteCursor cursor(payload);
    SVisitInfo info;
    std::uint8_t file = 0;
    std::uint8_t folder = 0;
    const bool isWhole = TakeText(cursor, info.key) && TakeText(cursor, info.file) &&
                         TakeText(cursor, info.begun) && TakeLength(cursor, info.length) &&
                         cursor.TakeByte(file) && cursor.TakeByte(folder) &&
                         (cursor.Remaining() == 0 || TakeText(cursor, info.source)); // none at first
    info.isFileMade = file != 0;
    info.isFolderMade = folder != 0;
    return isWhole ? std::optional(std::move(info)) : std::nullopt;
}

std::optional<SStoreInfo> UnpackStore(Bytes payload) {
    CByteCursor cursor(payload);
    SStoreInfo info;
    if (!TakeLength(cursor, info.length) || !cursor.TakeDoubleWord(info.lastExtended)) {
        return std::nullopt;
    }
    for (SRecordRun run; cursor.TakeDoubleWord(run.first) && cursor.TakeDoubleWord(run.count);) {
        info.records.push_back(run);
    }
    return info;
}

std::optional<SSetAsideInfo> UnpackSetAside(Bytes payload) {
    CByteCursor cursor(payload);
    SSetAsideInfo info;
    const bool isWhole = TakeText(cursor, info.name) && TakeText(cursor, info.reason);
    return isWhole ? std::optional(std::move(info)) : std::nullopt;
}

std::optional<SRecordPayload> UnpackRecord(Bytes payload) {
    CByteCursor cursor(payload);
    SRecordPayload record;
    if (!cursor.TakeDoubleWord(record.extendedNumber)) {
        return std::nullopt;
    }
    record.image = payload.subspan(payload.size() - cursor.Remaining());
    return IsWholeImage(record.image) ? std::optional(record) : std::nullopt;
}

bool CFrameReader::Next(SFrame& frame) {
    for (;;) {
        if (!Has(kFrameOverhead)) {
            return false;
        }
        CByteCursor head(Bytes(m_bytes).subspan(m_passed));
        std::uint8_t kind = 0;
        std::uint32_t position = 0;
        std::uint32_t length = 0;
        const bool isHead = head.TakeByte(kind) && head.TakeDoubleWord(frame.visit) &&
                            head.TakeDoubleWord(position) && head.TakeDoubleWord(length);
        if (!isHead || kind == 0 || kind > static_cast<std::uint8_t>(kLastFrame) ||
            length > kLargestPayload || !Has(kFrameOverhead + length)) {
            return false;
        }
        frame.kind = static_cast<EFrame>(kind);
        const bool isWanted = !m_visit || *m_visit == frame.visit;
        if (isWanted && !IsChained(frame.kind, frame.visit, position, length)) {
            return false;
        }
        frame.payload = Bytes(m_bytes).subspan(m_passed + kFrameHeadSize, length);
        frame.offset = m_offset;
        m_passed += kFrameOverhead + length;
        m_offset += kFrameOverhead + length;
        if (isWanted) {
            return true;
        }
    }
}

/// Checks the frame at the front of the buffer, and moves its visit's chain on.
bool CFrameReader::IsChained(EFrame kind, std::uint32_t visit, std::uint32_t position, std::size_t length) {
    const bool isFirst = kind == EFrame::Visit;
    const auto known = m_chains.find(visit);
    if (isFirst != (known == m_chains.end())) {
        return false;
    }
    const SChain chain = isFirst ? SChain{} : known->second;
    const Bytes bytes = Bytes(m_bytes).subspan(m_passed);
    std::uint32_t stated = 0;
    CByteCursor end(bytes.subspan(kFrameHeadSize + length));
    const std::uint32_t sum = Checksum(bytes.first(kFrameHeadSize + length), chain.checksum);
    if (position != chain.position || !end.TakeDoubleWord(stated) || stated != sum) {
        return false;
    }
    m_chains.insert_or_assign(known, visit, SChain{position + 1, sum});
    return true;
}

bool CFrameReader::Has(std::size_t count) {
    if (m_bytes.size() - m_passed >= count) {
        return true;
    }
    m_bytes.erase(m_bytes.begin(), m_bytes.begin() + static_cast<std::ptrdiff_t>(m_passed));
    m_passed = 0;
    std::uint64_t reached = 0;
    std::size_t held = m_bytes.size();
    const std::uint64_t left = m_end - std::min(m_end, m_offset);
    const std::uint64_t wanted = std::min<std::uint64_t>(std::max(count, kReadStep), left);
    if (wanted < count || HasFailed()) {
        return false;
    }
    m_failure = m_file.Seek(static_cast<std::int64_t>(m_offset + held), ESeekOrigin::Start, reached);
    if (HasFailed()) {
        return false;
    }
    m_bytes.resize(static_cast<std::size_t>(wanted));
    std::size_t got = 1;
    while (held < m_bytes.size() && got > 0) {
        m_failure = m_file.Read(std::span(m_bytes).subspan(held), got);
        got = HasFailed() ? 0 : got;
        held += got;
    }
    m_bytes.resize(held);
    return held >= count;
}

bool CFrameReader::IsTornAtMost() {
    if (!Has(kFrameHeadSize)) {
        return true;
    }
    CByteCursor head(Bytes(m_bytes).subspan(m_passed + 1));
    std::uint32_t visit = 0;
    std::uint32_t position = 0;
    std::uint32_t length = 0;
    if (!head.TakeDoubleWord(visit) || !head.TakeDoubleWord(position) || !head.TakeDoubleWord(length) ||
        length > kLargestPayload) {
        return false;
    }
    const std::size_t claimed = kFrameOverhead + length;
    static_cast<void>(Has(claimed));
    if (HoldsAnotherHead(Bytes(m_bytes).subspan(m_passed), claimed, visit)) {
        return false; // it is the length that is wrong
    }
    for (m_offset += claimed, m_passed = std::min(m_passed + claimed, m_bytes.size()); Has(1);) {
        const Bytes rest = Bytes(m_bytes).subspan(m_passed);
        if (std::ranges::any_of(rest, [](std::uint8_t byte) { return byte != 0; })) {
            return false;
        }
        m_offset += rest.size();
        m_passed = m_bytes.size();
    }
    return true;
}

/// Whether visit and position of a frame that may come next are within the bytes that a frame claims.
bool CFrameReader::HoldsAnotherHead(Bytes bytes, std::size_t claimed, std::uint32_t visit) const {
    const Bytes within = bytes.first(std::min(claimed, bytes.size())).subspan(kFrameHeadSize);
    std::map<std::uint32_t, SChain> next = m_chains;
    next[next.empty() ? 1 : next.rbegin()->first + 1] = {};
    if (next.contains(visit)) {
        ++next[visit].position;
    }
    return std::ranges::any_of(next, [&](const auto& row) {
        std::vector<std::uint8_t> head;
        PutNumber(head, row.first, 4);
        PutNumber(head, row.second.position, 4);
        return std::search(within.begin(), within.end(), head.begin(), head.end()) != within.end();
    });
}

} // namespace ruvo
