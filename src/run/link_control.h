// Opening and closing the link that the configuration selects. Every failure is logged here.
#pragma once

#include "config/run_context.h"

#include <cstdint>
#include <string>

namespace ruvo {

/// Opens the COM port or dials the modem and hands over the transaction values; true when all of it is done.
bool OpenSerialOrModemLink(CRunContext& context);

/// The same for one relay's Ethernet tunnel; a bus address of 0 means none.
bool OpenEthernetLink(CRunContext& context, const std::string& ip, std::int32_t deviceAddress,
                      std::int32_t busAddress);

/// Hands the seven transaction values to the comms server.
bool ApplyTransactionValues(const CRunContext& context);

/// Closes what is open; does nothing when nothing is.
void CloseLink(CRunContext& context);

} // namespace ruvo
