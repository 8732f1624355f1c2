#include "run/extraction_run.h"

#include "base/secret.h"
#include "config/ethernet_entry.h"
#include "config/ini_keys.h"
#include "extraction/password_state.h"
#include "extraction/relay_visit.h"
#include "ledger/visit_custody.h"
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

#include <exception>
#include <optional>

namespace ruvo {

namespace {

void LogUnhandled(const std::exception& exception, bool withDetails = true) noexcept {
    WithLogReserve([&] { LogMessage(ExceptionText("Unhandled", exception.what()), withDetails); });
}

/// Extracts the events, and logs every problem.
void ExtractAndReport(const CRunContext& context, std::int32_t deviceAddress, CVisitCustody& custody) {
    SExtractionReport report;
    std::optional<LinkStatus> raised;
    try {
        ExtractEventsToFile(static_cast<std::uint32_t>(deviceAddress), context.DestinationRoot(),
                            kNoEventLimit, &report, {}, &custody);
    } catch (const CStatus& status) {
        raised = status.GetValue();
    } catch (const std::exception& exception) {
        LogUnhandled(exception);
    }
    const LinkStatus ended = raised.value_or(report.endStatus);
    if (ended != kLinkGood) {
        WithLogReserve([&] { LogStatusMessage(ExtractionProblemText(context), ended); });
    }
    LogVisit(report);
}

/// What ended runs have taken comes first; trouble with it keeps no relay from being visited.
void BringInEarlierEvents(CRunLedger& ledger) {
    try {
        ledger.BringIn();
    } catch (const std::exception& exception) {
        LogUnhandled(exception, false); // no relay is being visited
    }
}

void VisitEthernetRelay(CRunContext& context, const std::string& key, const std::string& entry,
                        CRunLedger& ledger) {
    const std::int32_t bus = ParseEthernetBusAddress(entry);
    const std::int32_t device = ParseEthernetDeviceAddress(entry);
    try {
        const std::string ip = ParseEthernetIp(entry);
        if (OpenEthernetLink(context, ip, device, bus)) {
            SConnectionDetails& details = ConnectionDetails();
            details.ipAddress = ip;
            details.deviceAddress = device;
            details.busAddress = bus;
            ExtractDevice(context, key, device, &ledger);
        }
    } catch (const std::exception& exception) { // the next relay has a tunnel of its own
        LogUnhandled(exception);
    }
    CloseLink(context);
}

void VisitAll(CRunContext& context, const AddressEntries& entries, CRunLedger& ledger) {
    for (const auto& [key, address] : entries) {
        ConnectionDetails().deviceAddress = address;
        ExtractDevice(context, key, address, &ledger);
    }
}

} // namespace

void ExtractDevice(CRunContext& context, const std::string& key, std::int32_t deviceAddress,
                   CRunLedger* ledger) {
    try {
        const CWipeAtScopeEnd wipe(PasswordState().currentPassword);
        PrepareLogin(context.Config(), key);
        context.SetDeviceAddress(deviceAddress);
        CP32Wrap::GetInstance()->SetDeviceAddress(static_cast<std::uint8_t>(deviceAddress & 0xFF));
        if (TestDeviceConnection(context)) {
            CVisitCustody custody(ledger, key);
            ExtractAndReport(context, deviceAddress, custody);
            custody.End(); // the log has what it has to tell
        }
    } catch (const std::exception& exception) { // one relay's trouble is never the next one's
        LogUnhandled(exception);
    }
}

void RunExtraction(CRunContext& context) {
    SConnectionDetails& details = ConnectionDetails();
    details.ethernetLink = false;
    details.serialLink = false;
    CP32Wrap::SetGetPasswordCallback(&PasswordCallback);
    CP32Wrap::SetPasswordAcceptedCallback(&PasswordAcceptedCallback);
    const CRuvoConfig& config = context.Config();
    CRunLedger ledger(context.DestinationRoot(), &LogLedgerReport);
    BringInEarlierEvents(ledger);
    const ELink link = SelectedLink(config);
    if (link == ELink::Ethernet) {
        details.ethernetLink = true;
        for (const auto& [key, entry] : config.EthernetEntries()) {
            VisitEthernetRelay(context, key, entry, ledger);
        }
        return;
    }
    if (!OpenSerialOrModemLink(context)) {
        return;
    }
    if (link == ELink::Modem) {
        details.modemName = config.TapiModemName();
        VisitAll(context, config.ModemEntries(), ledger);
    } else {
        details.serialLink = true;
        details.comPort = config.CommPort();
        VisitAll(context, config.SerialEntries(), ledger);
    }
}

} // namespace ruvo
