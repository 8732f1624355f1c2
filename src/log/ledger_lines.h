// The lines about the ledger: what became of the events of earlier visits, and of those that are set aside.
#pragma once

#include "ledger/ledger_report.h"

#include <string>

namespace ruvo {

std::string LedgerText(const SLedgerReport& report);

/// Writes the line, which is on the disk when this returns.
void LogLedgerReport(const SLedgerReport& report) noexcept;

} // namespace ruvo
