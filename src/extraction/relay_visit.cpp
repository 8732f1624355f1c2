#include "extraction/relay_visit.h"

#include "dayfile/day_file_writer.h"
#include "extraction/cell_reading.h"
#include "extraction/event_conversion.h"
#include "extraction/event_file_names.h"
#include "extraction/password_state.h"
#include "ledger/visit_custody.h"
#include "link/client.h"
#include "link/seam/known_cells.h"
#include "model/records/event_kinds.h"
#include "paths/path_utilities.h"
#include "platform/files.h"
#include "platform/full_path.h"
#include "platform/native_text.h"

#include <exception>
#include <new>

namespace ruvo {

namespace {

/// One visit to one relay.
class CVisit {
public:
    CVisit(std::uint32_t deviceAddress, std::int32_t maxEvents, const SVisitLimits& limits,
           SExtractionReport& report, CVisitCustody& custody)
        : m_deviceAddress(deviceAddress), m_maxEvents(maxEvents), m_limits(limits), m_report(report),
          m_custody(custody) {}

    void Run(const std::string& eventRoot);
    /// Completes the report, however the visit ended.
    void FinishReport();

private:
    bool NameFile(const std::string& eventRoot);
    bool HasRoom(const std::string& eventRoot);
    bool HoldFile();
    bool AreEventsPending();
    bool IsRunEnding() const { return m_limits.isEnding != nullptr && *m_limits.isEnding; }
    static bool HasCutShort() { return CP32Wrap::GetInstance()->HasCutShort(); }
    void ReadEvents(CEventConverter& converter);
    bool MayReadMore();
    void HandleEvent(CEventConverter& converter, std::uint8_t kind, CParlaneDataArray& values);
    void AccountForLost();
    bool HasRoomForMore();
    void RefreshKeepGoing();
    void WriteFile();
    std::size_t Count() const { return m_custody.KeptCount(); }

    std::uint32_t m_deviceAddress;
    std::int32_t m_maxEvents;
    SVisitLimits m_limits;
    SExtractionReport& m_report;
    bool m_isNameWhole = true;
    std::string m_path;
    CVisitCustody& m_custody;
    std::vector<std::uint8_t> m_image;              ///< of the record at hand
    std::size_t m_lostCount = 0;                    ///< events that the custody knows to be lost
    ELostCause m_lostCause = ELostCause::Malformed; ///< of the event at hand, if no record is made of it
    std::size_t m_bytesAtLastLook = 0;              ///< at the room on the disk
    bool m_hasJournalFailed = false;
    bool m_isCutShort = false; ///< a request was aborted since the run is to end
    CStatus m_status;
    std::uint8_t m_keepGoing = 1;
    std::size_t m_eventsTaken = 0;
    std::size_t m_bytesGathered = 0;
    std::size_t m_passedOver = 0;
};

void CVisit::Run(const std::string& eventRoot) {
    if (!NameFile(eventRoot)) {
        return;
    }
    SRecordTexts texts;
    texts.plant = ReadSystemText(RowOf(cells::kPlant));
    m_report.plant = texts.plant;
    texts.description = ReadSystemText(RowOf(cells::kDescription));
    texts.model = ReadSystemText(RowOf(cells::kModel));
    if (!AreEventsPending()) {
        return;
    }
    m_report.isUnvisited = IsRunEnding();
    if (m_report.isUnvisited || !HasRoom(eventRoot) || !HoldFile()) {
        return;
    }
    CEventConverter converter(m_deviceAddress, std::move(texts), m_report.columnErrors);
    std::exception_ptr failure;
    try {
        ReadEvents(converter);
    } catch (const CStatus&) {
        AccountForLost();
        m_isCutShort = HasCutShort();
        if (!m_isCutShort) {
            m_custody.SetAside("the visit was aborted");
            throw;
        }
    } catch (const std::exception&) { // the gathered events are nowhere else: write them first
        failure = std::current_exception();
    }
    AccountForLost();
    if (m_report.passwordDeclined) {
        m_custody.SetAside("a password was refused");
    } else if (Count() > 0) {
        WriteFile();
    }
    if (failure) {
        std::rethrow_exception(failure);
    }
}

/// A relay whose names would lead out of its own folder, or to no file at all, is refused before any event is
/// taken from it.
bool CVisit::NameFile(const std::string& eventRoot) {
    const std::string folder = MakeDeviceFolderName(&m_isNameWhole);
    const std::string file = MakeEventFileName(&m_isNameWhole);
    m_report.name = m_isNameWhole ? folder : std::string();
    m_path = eventRoot + "\\" + NativeRelayText(folder) + "\\" + NativeRelayText(file);
    if (IsSafeFileName(folder) && IsSafeFileName(file) && !FullPath(m_path).empty()) {
        return true;
    }
    m_report.refusal = {ERefusal::UnfitName, folder};
    return false;
}

/// A disk that is full already would cost every relay of the run its events.
bool CVisit::HasRoom(const std::string& eventRoot) {
    const SFreeSpace room = FreeSpace(eventRoot);
    const bool isFull = room.bytes.value_or(kLeastFreeSpace) < kLeastFreeSpace;
    if (isFull || room.files.value_or(kLeastFreeFiles) < kLeastFreeFiles) {
        m_report.refusal = {isFull ? ERefusal::DiskFull : ERefusal::NoMoreFiles, eventRoot};
        return false;
    }
    return true;
}

/// Proves that the events will have a place while they are still safe in the relay, and keeps it.
bool CVisit::HoldFile() {
    const std::optional<SHoldFailure> failure = m_custody.Begin(m_path);
    if (failure) {
        m_report.refusal = {ERefusal::FileNotHeld, failure->why};
    }
    return !failure;
}

bool CVisit::AreEventsPending() {
    std::uint8_t statusByte = 0;
    m_status = ToStatusWord(CP32Wrap::GetInstance()->GetDeviceStatus(nullptr, statusByte));
    return IsAcceptable(m_status, 0) && (statusByte & kEventsPending) != 0;
}

void CVisit::ReadEvents(CEventConverter& converter) {
    CParlaneDataArray values; // emptied by each request, with its memory kept
    CP32Wrap& link = *CP32Wrap::GetInstance();
    do {
        std::uint8_t kind = 0;
        m_lostCause = ELostCause::Malformed;
        m_status = ToStatusWord(link.GetEvent(nullptr, kind, values, m_keepGoing));
        m_eventsTaken += link.IsEventHandedOver() ? 1 : 0; // even if its reply is malformed
        if (PasswordState().callbackCalled && !PasswordState().accepted) {
            m_isCutShort = PasswordState().unanswered && HasCutShort();
            m_report.passwordDeclined = !m_isCutShort;
            return;
        }
        if (IsAcceptable(m_status, 0)) {
            HandleEvent(converter, kind, values);
        }
        AccountForLost();
        if (IsAcceptable(m_status, 0)) {
            RefreshKeepGoing();
        }
        if (m_maxEvents != kNoEventLimit && Count() == static_cast<std::size_t>(m_maxEvents)) {
            m_keepGoing = 0;
        }
    } while (IsAcceptable(m_status, 0) && m_keepGoing != 0 && MayReadMore());
}

/// Ends a visit that would outgrow the memory, or the time that the run has.
bool CVisit::MayReadMore() {
    if (!HasRoomForMore()) {
        return false;
    }
    if (m_eventsTaken < m_limits.events && m_bytesGathered < m_limits.bytes && !IsRunEnding()) {
        return true;
    }
    m_report.end = EVisitEnd::LimitReached;
    return false;
}

void CVisit::HandleEvent(CEventConverter& converter, std::uint8_t kind, CParlaneDataArray& values) {
    try {
        m_lostCause = ELostCause::RecordNotRead;
        if (const std::unique_ptr<CEventRecord> record = converter.Convert(kind, values, m_status)) {
            m_lostCause = ELostCause::Malformed;
            m_bytesGathered += record->GetImageSize();
            m_image.clear();
            SerialiseRecord(*record, m_image, m_report.incomplete);
            m_hasJournalFailed = !m_custody.Keep(m_image, ExtendedNumber(*record));
        } else if (FindEventKind(kind) == nullptr) {
            m_lostCause = ELostCause::UnknownKind;
            ++m_passedOver;
        }
    } catch (const std::bad_alloc&) {
        m_lostCause = ELostCause::NoMemory;
        throw;
    } catch (const CMalformedEvent&) {
        m_lostCause = ELostCause::Malformed;
        m_status = CStatus(kLinkDisobeysProtocol);
    }
}

/// Every event that is taken is kept, or known to be lost, before the next request.
void CVisit::AccountForLost() {
    for (; Count() + m_lostCount < m_eventsTaken; ++m_lostCount) {
        m_custody.Lose(m_lostCause);
    }
}

/// Ends a visit when there is no room for its events in the journal or on the day file's disk.
bool CVisit::HasRoomForMore() {
    constexpr std::size_t kBytesBetweenLooks = std::size_t{64} * 1024;
    if (m_hasJournalFailed || !m_custody.HasRoom()) {
        m_report.end = m_custody.IsJournalFull() ? EVisitEnd::JournalFull : EVisitEnd::JournalFailed;
        return false;
    }
    if (m_bytesGathered - m_bytesAtLastLook >= kBytesBetweenLooks) {
        m_bytesAtLastLook = m_bytesGathered;
        const std::uint64_t needed = m_bytesGathered + kMaxRecordImage;
        const SFreeSpace room = FreeSpace(m_path);
        const bool isFull = room.bytes.value_or(needed) < needed;
        if (isFull || room.files.value_or(1) < 1) {
            m_report.end = isFull ? EVisitEnd::DiskFull : EVisitEnd::NoMoreFiles;
            return false;
        }
    }
    return true;
}

/// Asks the relay whether more events are pending, unless the event itself was marked as the last.
void CVisit::RefreshKeepGoing() {
    std::uint8_t statusByte = 0;
    m_status = ToStatusWord(CP32Wrap::GetInstance()->GetDeviceStatus(nullptr, statusByte));
    if (IsAcceptable(m_status, 0) && m_keepGoing != 0) {
        m_keepGoing = statusByte & kEventsPending;
    }
}

void CVisit::WriteFile() {
    try {
        m_isCutShort ? m_custody.LeaveOpen() : m_custody.Store();
    } catch (const CFileException& failure) {
        m_report.failedWrite = failure;
        if (m_custody.MayBeTorn()) {
            m_report.tornAfter = m_custody.File().FoundLength();
        }
    }
    m_report.isNameUnread = !m_isNameWhole; // else the events would not be found there
}

void CVisit::FinishReport() {
    m_report.eventsTaken = m_eventsTaken;
    m_report.dayFile = std::move(m_path);
    m_report.recordsWritten = m_custody.StoredCount();
    m_report.recordsUnflushed = m_custody.UnflushedCount();
    m_report.eventsWaiting = m_custody.WaitingCount();
    m_report.eventsSetAside = m_custody.SetAsideCount();
    m_report.eventsLost = m_eventsTaken - m_passedOver - m_report.recordsWritten - m_report.eventsWaiting -
                          m_report.eventsSetAside;
    m_report.eventsPassedOver = m_passedOver;
    // A declined password has been reported already; status 18 is only how it was returned. An abort before
    // the relay has answered has not.
    if (m_status != CStatus() && (!m_report.passwordDeclined || PasswordState().unanswered)) {
        m_report.endStatus = m_status.GetValue();
    }
}

} // namespace

void ExtractEventsToFile(std::uint32_t deviceAddress, const std::string& eventRoot, std::int32_t maxEvents,
                         SExtractionReport* report, SVisitLimits limits, CVisitCustody* custody) {
    SExtractionReport ownReport;
    CVisitCustody ownCustody;
    CVisit visit(deviceAddress, maxEvents, limits, report != nullptr ? *report : ownReport,
                 custody != nullptr ? *custody : ownCustody);
    try {
        visit.Run(eventRoot);
    } catch (...) {
        visit.FinishReport();
        throw;
    }
    visit.FinishReport();
}

} // namespace ruvo
