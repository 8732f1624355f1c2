#include "run/extraction_run.h"

#include "base/secret.h"
#include "config/ethernet_entry.h"
#include "config/ini_keys.h"
#include "extraction/password_state.h"
#include "extraction/relay_visit.h"
#include "ledger/visit_custody.h"
#include "ledger/visit_record.h"
#include "link/client.h"
#include "log/connection_details.h"
#include "log/error_log.h"
#include "log/ledger_lines.h"
#include "log/log_reserve.h"
#include "log/run_texts.h"
#include "log/visit_lines.h"
#include "model/status/status.h"
#include "run/link_control.h"
#include "run/login_probe.h"
#include "run/password_callbacks.h"
#include "run/relay_entry.h"
#include "run/run_end.h"

#include <exception>
#include <optional>
#include <utility>

namespace ruvo {

namespace {

void LogUnhandled(const std::exception& exception, bool withDetails = true) noexcept {
    WithLogReserve([&] { LogMessage(ExceptionText("Unhandled", exception.what()), withDetails); });
}

/// What all visits of a run share.
struct SRun {
    CRunContext& context;
    CRunLedger& ledger;
    CRunEnd& end;
    CVisitRecord* record; ///< null where none is kept
};

/// Extracts the events, and logs every problem. False when the run's end came before the first event.
bool ExtractAndReport(const SRun& run, std::int32_t deviceAddress, CVisitCustody& custody,
                      CRelayEntry& entry) {
    const CRunContext& context = run.context;
    SExtractionReport report;
    std::optional<LinkStatus> raised;
    try {
        ExtractEventsToFile(static_cast<std::uint32_t>(deviceAddress), context.DestinationRoot(),
                            kNoEventLimit, &report, {.isEnding = &run.end.AskedFlag()}, &custody);
    } catch (const CStatus& status) {
        raised = status.GetValue();
        report.isUnvisited = CP32Wrap::GetInstance()->HasCutShort(); // it came before the first event
    } catch (const std::exception& exception) {
        LogUnhandled(exception);
    }
    const LinkStatus ended = raised.value_or(report.endStatus);
    if (ended != kLinkGood && !CP32Wrap::GetInstance()->HasCutShort()) {
        WithLogReserve([&] { LogStatusMessage(ExtractionProblemText(context), ended); });
    }
    LogVisit(report);
    entry.Note(report, ended, custody.File());
    return !report.isUnvisited;
}

/// What ended runs have taken comes first; trouble with it keeps no relay from being visited.
void BringInEarlierEvents(CRunLedger& ledger) {
    try {
        ledger.BringIn();
    } catch (const std::exception& exception) {
        LogUnhandled(exception, false); // no relay is being visited
    }
}

/// The run's thread does not come back for what its visit has taken, or its ledger has left to close.
void KeepAbandoned(CVisitCustody& custody, CRunLedger& ledger) noexcept {
    try {
        custody.LeaveOpen();
    } catch (const std::exception&) {
        SExtractionReport report;
        report.eventsLost = custody.KeptCount() - custody.StoredCount() - custody.WaitingCount();
        LogVisit(report);
    }
    ledger.CloseAll();
}

/// Handles one relay, which the open link reaches: login, then its events. Throws nothing. False when the
/// run's end came before.
bool VisitRelay(const SRun& run, const std::string& key, std::int32_t deviceAddress, CRelayEntry& entry) {
    CP32Wrap& link = *CP32Wrap::GetInstance();
    bool isVisited = true;
    try {
        const CWipeAtScopeEnd wipe(PasswordState().currentPassword);
        PrepareLogin(run.context.Config(), key);
        run.context.SetDeviceAddress(deviceAddress);
        link.SetDeviceAddress(static_cast<std::uint8_t>(deviceAddress & 0xFF));
        if (!TestDeviceConnection(run.context)) {
            isVisited = !link.HasCutShort();
        } else if (run.end.IsAsked()) {
            isVisited = false;
        } else {
            CVisitCustody custody(&run.ledger, key);
            run.end.WhenAbandoned([&] { KeepAbandoned(custody, run.ledger); });
            isVisited = ExtractAndReport(run, deviceAddress, custody, entry);
            custody.End(); // the log says how the visit ended
        }
    } catch (const std::exception& exception) { // one relay's trouble is never the next one's
        LogUnhandled(exception);
    }
    run.end.WhenAbandoned([&run] { run.ledger.CloseAll(); });
    if (isVisited) {
        run.end.NoteVisited();
    }
    return isVisited;
}

void VisitEthernetRelay(const SRun& run, const std::string& key, const std::string& entry) {
    const std::int32_t bus = ParseEthernetBusAddress(entry);
    const std::int32_t device = ParseEthernetDeviceAddress(entry);
    CRelayEntry record(run.record, key, entry, ELink::Ethernet);
    bool isVisited = true;
    try {
        const std::string ip = ParseEthernetIp(entry);
        if (OpenEthernetLink(run.context, ip, device, bus)) {
            SConnectionDetails& details = ConnectionDetails();
            details.ipAddress = ip;
            details.deviceAddress = device;
            details.busAddress = bus;
            isVisited = VisitRelay(run, key, device, record);
        } else {
            run.end.NoteVisited();
        }
    } catch (const std::exception& exception) { // the next relay has a tunnel of its own
        LogUnhandled(exception);
    }
    if (isVisited) {
        record.Add();
    }
    CloseLink(run.context);
}

void VisitEthernetRelays(const SRun& run) {
    for (const auto& [key, entry] : run.context.Config().EthernetEntries()) {
        if (!run.end.IsAsked()) {
            VisitEthernetRelay(run, key, entry);
        }
    }
}

/// Without the link no relay is reached, for the same reason; an end of the run is none.
void AddUnreached(const SRun& run, const AddressEntries& entries, ELink kind, std::uint64_t logLines) {
    if (run.record == nullptr || run.end.IsAsked()) {
        return;
    }
    const SRequestAccount account = CP32Wrap::GetInstance()->TakeAccount();
    for (const auto& [key, address] : entries) {
        CRelayEntry(run.record, key, std::to_string(address), kind)
            .AddUnreached(account.lastFailure, std::exchange(logLines, 0)); // the first has them all
    }
}

void VisitRelays(const SRun& run, const AddressEntries& entries) {
    const ELink kind = SelectedLink(run.context.Config());
    if (run.end.IsAsked()) {
        return;
    }
    const std::uint64_t linesBefore = ErrorLogLines();
    if (!OpenSerialOrModemLink(run.context)) {
        AddUnreached(run, entries, kind, ErrorLogLines() - linesBefore);
        return;
    }
    for (const auto& [key, address] : entries) {
        if (!run.end.IsAsked()) {
            CRelayEntry entry(run.record, key, std::to_string(address), kind);
            ConnectionDetails().deviceAddress = address;
            if (VisitRelay(run, key, address, entry)) {
                entry.Add();
            }
        }
    }
}

} // namespace

void RunExtraction(CRunContext& context, CRunEnd& end, CVisitRecord* record) {
    const CRuvoConfig& config = context.Config();
    const ELink link = SelectedLink(config);
    const AddressEntries& entries = link == ELink::Modem ? config.ModemEntries() : config.SerialEntries();
    end.Begin(link == ELink::Ethernet ? config.EthernetEntries().size() : entries.size());
    CP32Wrap::SetGetPasswordCallback(&PasswordCallback);
    CP32Wrap::SetPasswordAcceptedCallback(&PasswordAcceptedCallback);
    CRunLedger ledger(context.DestinationRoot(), [record](const SLedgerReport& report) {
        LogLedgerReport(report);
        NoteRecovered(record, report);
    });
    BringInEarlierEvents(ledger);
    SConnectionDetails& details = ConnectionDetails();
    details.ethernetLink = link == ELink::Ethernet;
    details.serialLink = link == ELink::Serial;
    details.comPort = config.CommPort();
    details.modemName = config.TapiModemName();
    const SRun run{context, ledger, end, record};
    if (link == ELink::Ethernet) {
        VisitEthernetRelays(run);
    } else {
        VisitRelays(run, entries);
    }
    end.WhenAbandoned(nullptr);
}

} // namespace ruvo
