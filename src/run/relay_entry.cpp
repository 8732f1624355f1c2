#include "run/relay_entry.h"

#include "base/code_page.h"
#include "base/text.h"
#include "dayfile/held_day_file.h"
#include "extraction/extraction_report.h"
#include "ledger/ledger_report.h"
#include "ledger/visit_record.h"
#include "link/client.h"
#include "log/error_log.h"
#include "log/status_to_string_id.h"
#include "model/status/string_table.h"

#include <algorithm>
#include <exception>

namespace ruvo {

namespace {

/// A relay's words; nothing in them steers a terminal.
std::string Readable(const std::string& relayText) {
    return Cp1252ToUtf8(Trim(BlankControlCharacters(relayText), kBlank));
}

/// FOLDER/FILE of a path below the event root.
std::string PlaceOf(const std::string& dayFile) {
    const std::size_t file = dayFile.rfind('\\');
    const std::size_t folder = file == std::string::npos || file == 0 ? file : dayFile.rfind('\\', file - 1);
    std::string place = folder == std::string::npos ? dayFile : dayFile.substr(folder + 1);
    std::ranges::replace(place, '\\', '/');
    return SystemTextToUtf8(place);
}

} // namespace

CRelayEntry::CRelayEntry(CVisitRecord* record, const std::string& key, const std::string& address,
                         ELink link) noexcept
    : m_record(record) {
    Gather([&] {
        static_cast<void>(CP32Wrap::GetInstance()->TakeAccount()); // of the relay before
        m_entry.key = SystemTextToUtf8(key);
        m_entry.address = SystemTextToUtf8(address);
        m_entry.link = LinkRow(link).name;
        m_entry.begin = RecordedNow();
        m_linesBefore = ErrorLogLines();
    });
}

void CRelayEntry::Note(const SExtractionReport& report, LinkStatus ended, const CHeldDayFile& file) noexcept {
    Gather([&] {
        m_isRead = !report.passwordDeclined;
        m_entry.name = Readable(report.name);
        m_entry.plant = Readable(report.plant);
        m_entry.taken = report.eventsTaken;
        m_entry.stored = report.recordsWritten;
        m_entry.lost = report.eventsLost + report.eventsPassedOver;
        m_entry.setAside = report.eventsSetAside;
        m_entry.waiting = report.eventsWaiting;
        if (report.recordsWritten > 0) {
            m_entry.dayFile = PlaceOf(report.dayFile);
            m_entry.from = file.WrittenFrom();
            m_entry.to = file.WrittenTo();
        }
        SetStatus(ended);
    });
}

void CRelayEntry::Add() noexcept {
    Gather([&] {
        const SRequestAccount account = CP32Wrap::GetInstance()->TakeAccount();
        m_entry.isReached = account.hasRelayAnswered;
        if (!m_isRead) { // the status of the login, or of the link
            SetStatus(account.lastFailure);
        }
        m_entry.end = RecordedNow();
        m_entry.logLines = ErrorLogLines() - m_linesBefore;
        m_record->Add(std::move(m_entry));
    });
}

void CRelayEntry::AddUnreached(LinkStatus failure, std::uint64_t logLines) noexcept {
    Gather([&] {
        SetStatus(failure);
        m_entry.end = m_entry.begin;
        m_entry.logLines = logLines;
        m_record->Add(std::move(m_entry));
    });
}

/// What cannot be gathered is left out, and with it the entry.
template <class Action>
void CRelayEntry::Gather(Action action) noexcept {
    if (m_record == nullptr) {
        return;
    }
    try {
        action();
    } catch (const std::exception&) { // no memory
        m_record = nullptr;
    }
}

void CRelayEntry::SetStatus(LinkStatus status) {
    const char* const text = status == kLinkGood ? nullptr : LoadStringText(StatusToStringId(status));
    m_entry.status = status;
    m_entry.statusText = text == nullptr ? std::string() : Readable(text);
}

void NoteRecovered(CVisitRecord* record, const SLedgerReport& report) noexcept {
    if (record == nullptr || !report.IsStored()) {
        return;
    }
    try {
        record->AddRecovered(report.key, report.events,
                             report.to > 0
                                 ? std::optional(SStoredBytes{
                                       .dayFile = PlaceOf(report.path), .from = report.from, .to = report.to})
                                 : std::nullopt);
    } catch (const std::exception&) { // NOLINT(bugprone-empty-catch): no memory; the log has the number
    }
}

} // namespace ruvo
