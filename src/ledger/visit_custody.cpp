#include "ledger/visit_custody.h"

#include "dayfile/day_file_reader.h"
#include "dayfile/day_file_writer.h"
#include "ledger/waiting_time.h"
#include "platform/clock.h"
#include "platform/full_path.h"

#include <array>
#include <exception>
#include <utility>

namespace ruvo {

namespace {

using Image = std::span<const std::uint8_t>;

/// The most that the frames after the last record take.
constexpr std::size_t kClosingFrames = 4096;

} // namespace

std::optional<SHoldFailure> CVisitCustody::Begin(const std::string& path) {
    m_begunAt = std::chrono::steady_clock::now();
    if (auto failure = m_file.Hold(path)) {
        return failure;
    }
    if (m_ledger != nullptr && !m_ledger->BringInto(m_file)) {
        return SHoldFailure{EFileCause::Generic,
                            "Events of an earlier visit still wait for day file " + DisplayPath(path)};
    }
    const std::uint64_t length = m_file.LengthNow();
    if (auto failure = RefuseTornFile(length)) {
        return failure;
    }
    m_begun = UtcText(UtcTime());
    return m_ledger != nullptr ? BeginEntry(length) : std::nullopt;
}

/// In the run's journal; where that fails, in a new one.
std::optional<SHoldFailure> CVisitCustody::BeginEntry(std::uint64_t length) {
    SVisitInfo info{.key = m_key,
                    .file = m_ledger->BelowRoot(m_file.Path()),
                    .begun = m_begun,
                    .length = length,
                    .isFileMade = m_file.IsMade(),
                    .isFolderMade = m_file.IsFolderMade(),
                    .source = m_source};
    while ((m_journal = m_ledger->Journal()) != nullptr) {
        m_visit = m_ledger->NextVisit();
        m_entryOffset = m_journal->End();
        m_ledger->NoteOpen(m_file.Path());
        if (HasRoom() && m_journal->Append(EFrame::Visit, m_visit, m_chain, Pack(info))) {
            break;
        }
        m_ledger->NoteClosed(m_file.Path());
        if (m_journal->Failure().failure == EFileFailure::DiskFull) {
            const std::string where = DisplayPath(std::exchange(m_journal, nullptr)->Path());
            return SHoldFailure{EFileCause::DiskFull, "There is no room for journal " + where};
        }
        m_journal->GiveUp();
    }
    return std::nullopt;
}

/// Nothing is written after a torn record: where it ended could then never be found again.
std::optional<SHoldFailure> CVisitCustody::RefuseTornFile(std::uint64_t length) const {
    if (length == 0) {
        return std::nullopt;
    }
    const SDayFileEnd end = ReadDayFileEnd(m_file.Path());
    const std::string name = "Day file " + DisplayPath(m_file.Path());
    if (!end.isRead) {
        return SHoldFailure{EFileCause::Generic, name + " cannot be read to its end"};
    }
    if (end.torn) {
        return SHoldFailure{EFileCause::InvalidFile,
                            name + " does not end with a whole record: damage at byte " +
                                std::to_string(*end.torn)};
    }
    return std::nullopt;
}

bool CVisitCustody::HasRoom() {
    return !IsJournaled() || m_journal->Reserve(kLargestRecordFrame + kClosingFrames);
}

bool CVisitCustody::Keep(std::span<const std::uint8_t> image, std::uint32_t extendedNumber) {
    if (IsJournaled()) {
        const std::array number{static_cast<std::uint8_t>(extendedNumber & 0xFFU),
                                static_cast<std::uint8_t>(extendedNumber >> 8U & 0xFFU),
                                static_cast<std::uint8_t>(extendedNumber >> 16U & 0xFFU),
                                static_cast<std::uint8_t>(extendedNumber >> 24U)};
        if (m_journal->Append(EFrame::Record, m_visit, m_chain, number, image)) {
            m_lastExtended = extendedNumber != 0 ? extendedNumber : m_lastExtended;
            ++m_framedCount;
            return true;
        }
    }
    m_images.resize(m_ends.empty() ? 0 : m_ends.back()); // the rest of a record for which there was no memory
    m_images.insert(m_images.end(), image.begin(), image.end());
    m_ends.push_back(m_images.size());
    m_lastExtended = extendedNumber != 0 ? extendedNumber : m_lastExtended;
    return m_journal == nullptr;
}

void CVisitCustody::Lose(ELostCause cause) noexcept {
    const std::array payload{static_cast<std::uint8_t>(cause)};
    try {
        static_cast<void>(IsJournaled() && m_journal->Append(EFrame::Lost, m_visit, m_chain, payload));
    } catch (
        const std::exception&) { // NOLINT(bugprone-empty-catch): no memory; the visit's own count is right
    }
}

bool CVisitCustody::AnnounceStore() {
    m_storeAt = m_file.LengthNow();
    const SStoreInfo store{*m_storeAt, m_lastExtended, {{0, m_framedCount}}};
    return IsJournaled() && m_journal->Append(EFrame::Store, m_visit, m_chain, Pack(store)) &&
           m_journal->Flush();
}

/// With a journal that has failed there is no store frame; the length in the visit frame keeps a later run
/// from writing anything twice.
void CVisitCustody::Store() {
    if (!m_storeAt) {
        static_cast<void>(AnnounceStore());
    }
    try {
        m_file.StartAt(*m_storeAt, MakeEventListHeader(m_lastExtended + 1, kEventListText));
        m_isStoring = true;
        const auto add = [this](Image image) { m_file.Add(image); };
        AddFramed(add);
        AddUnframed(add);
        // What a set-aside file or the memory has, too, is finished here and now.
        const bool isInJournalAlone = IsJournaled() && m_ends.empty() && m_source.empty();
        m_file.Finish(isInJournalAlone ? ERootNames::FlushedLater : ERootNames::FlushedNow);
        m_isSettled = true;
    } catch (const std::exception&) { // of the file, or no memory; what is whole stays
        m_mayBeTorn = !m_file.CutBack();
        throw;
    }
}

void CVisitCustody::LeaveOpen() {
    if (IsJournaled()) {
        static_cast<void>(m_journal->Flush());
    } else if (KeptCount() > 0) {
        Store();
    }
}

/// From a failed journal, which cannot name the file, the records are taken back once the file has them: else
/// the next run would store them. Those that cannot be read wait there.
void CVisitCustody::SetAside(const std::string& reason) {
    CSetAsideFile file;
    if (m_ledger == nullptr || KeptCount() == 0) {
        return;
    }
    const std::string folder = m_ledger->FolderForSetAside();
    if (folder.empty()) {
        return;
    }
    if (!file.Make(folder, m_file.Path())) {
        TellNotSetAside(file);
        return;
    }
    // One whose name an end of the machine can take is no place for what a journal has.
    const bool isSafe = file.FlushName();
    if (!isSafe && m_ends.empty()) {
        file.Remove();
        TellNotSetAside(file);
        return;
    }
    const bool isNamed = isSafe && IsJournaled() && NameSetAside(file.Name(), reason);
    const bool takesFramed = isNamed || ((isSafe || m_framedCount == 0) && CanReadFramed());
    if (!takesFramed && m_ends.empty()) {
        return;
    }
    file.Start(m_lastExtended, {m_ledger->BelowRoot(m_file.Path()), m_key, m_begun, reason});
    if (!CopyTo(file, takesFramed)) {
        TellNotSetAside(file);
        return;
    }
    m_setAsideCount = (takesFramed ? m_framedCount : 0) + m_ends.size();
    m_ledger->Tell({ELedgerOutcome::SetAside,
                    m_setAsideCount,
                    file.Path(),
                    {},
                    m_key,
                    m_begun,
                    WithUnflushedName(reason, file)});
    m_isSettled = takesFramed; // once the log has the name
    if (!isNamed && takesFramed && m_journal != nullptr && m_journal->TakeBack(m_entryOffset)) {
        m_ledger->NoteClosed(m_file.Path());
        m_journal = nullptr;
    }
}

/// False, with the cause in the file, unless all of it is on the disk.
bool CVisitCustody::CopyTo(CSetAsideFile& file, bool takesFramed) {
    const auto add = [&file](Image image) { file.Add(image); };
    try {
        if (takesFramed) {
            AddFramed(add);
        }
    } catch (const CFileException&) {
        file.GiveUp(kUnreadJournal);
    }
    AddUnframed(add);
    return file.Finish();
}

bool CVisitCustody::CanReadFramed() {
    try {
        AddFramed([](Image) {});
        return true;
    } catch (const CFileException&) {
        return false;
    }
}

void CVisitCustody::TellNotSetAside(const CSetAsideFile& file) const {
    m_ledger->Tell({ELedgerOutcome::NotSetAside, 0, file.Path(), {}, m_key, m_begun, NotSetAsideText(file)});
}

bool CVisitCustody::NameSetAside(const std::string& name, const std::string& reason) {
    return m_journal->Append(EFrame::SetAside, m_visit, m_chain, Pack(SSetAsideInfo{name, reason})) &&
           m_journal->Flush();
}

template <class Add>
void CVisitCustody::AddFramed(Add add) {
    if (m_framedCount == 0) {
        return;
    }
    std::uint32_t added = 0;
    CFrameReader reader(m_journal->File(), m_entryOffset, m_visit, m_journal->End());
    for (SFrame frame; added < m_framedCount && reader.Next(frame);) {
        const auto record = frame.kind == EFrame::Record ? UnpackRecord(frame.payload) : std::nullopt;
        if (record) {
            add(record->image);
            ++added;
        }
    }
    if (added < m_framedCount) {
        throw CFileException(EFileCause::Generic, 0, m_journal->Path());
    }
}

template <class Add>
void CVisitCustody::AddUnframed(Add add) {
    std::size_t begin = 0;
    for (const std::size_t end : m_ends) {
        add(std::span(m_images).subspan(begin, end - begin));
        begin = end;
    }
}

std::size_t CVisitCustody::StoredCount() const {
    const std::size_t count = m_isStoring ? m_file.StoredCount() : 0;
    const std::size_t waiting = m_file.HasFlushFailed() ? m_framedCount : 0;
    return count > waiting ? count - waiting : 0;
}

std::size_t CVisitCustody::WaitingCount() const {
    const std::size_t certain = m_isStoring && !m_file.HasFlushFailed() ? m_file.StoredCount() : 0;
    return !m_isSettled && m_framedCount > certain ? m_framedCount - certain : 0;
}

void CVisitCustody::End() {
    if (m_journal != nullptr && m_chain.position > 0) {
        const bool isSettled = m_isSettled || m_framedCount == 0;
        if (isSettled && m_file.AreRootNamesLeft()) {
            m_ledger->CloseLater({m_visit,
                                  m_chain,
                                  m_begunAt,
                                  {ELedgerOutcome::Waits, m_framedCount, m_file.Path(), m_journal->Path(),
                                   m_key, m_begun, "the names of the folders could not be flushed"}});
        } else if (isSettled && m_journal->Append(EFrame::Done, m_visit, m_chain, {})) {
            m_ledger->NoteClosed(m_file.Path());
        }
    }
    m_journal = nullptr;
    m_file.Release();
    if (m_ledger != nullptr) {
        m_ledger->CloseWhatIsDue();
    }
}

} // namespace ruvo
