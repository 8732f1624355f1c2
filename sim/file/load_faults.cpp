#include "sim/file/load_tables.h"
#include "sim/file/substation_error.h"

#include <algorithm>

namespace ruvo::sim {
namespace {

constexpr std::int64_t kMaxStatus = 65535;
constexpr std::int64_t kMaxByte = 255;
constexpr std::int64_t kMaxDelay = 600000;
constexpr std::int64_t kMaxOutput = 4;

const SOperationRow& ReadOperation(CTableReader& table) {
    const std::string name = table.RequireText("operation");
    const SOperationRow* row = FindOperation(name);
    if (row == nullptr) {
        throw CSubstationError(table.Find("operation")->line, "there is no operation \"" + name + "\"");
    }
    return *row;
}

void ReadTarget(CTableReader& table, const SOperationRow& row, const std::vector<SRelay>& relays,
                SFault& fault) {
    fault.relay = table.Text("relay").value_or("");
    const bool known = std::any_of(relays.begin(), relays.end(),
                                   [&](const SRelay& relay) { return relay.name == fault.relay; });
    if (!fault.relay.empty() && (!known || row.target == ETarget::Link)) {
        throw CSubstationError(table.Find("relay")->line,
                               known ? std::string(row.name) + " makes no request to a relay"
                                     : "there is no relay \"" + fault.relay + "\"");
    }
    if (row.target == ETarget::Cell) {
        if (const auto cell = table.Text("cell")) {
            fault.cell = ParseCellAddress(*cell, table.Line());
        }
    }
    if (row.target == ETarget::Column) {
        if (const auto column = table.Text("column")) {
            fault.cell = MakeCellAddress(ParseColumn(*column, table.Line()), 0);
        }
    }
}

void ReadCalls(CTableReader& table, SFault& fault) {
    const auto call = table.Integer("call", 1, INT64_MAX);
    const auto from = table.Integer("from", 1, INT64_MAX);
    if (call && from) {
        throw CSubstationError(table.Line(), "[[fault]] takes \"call\" or \"from\", not both");
    }
    fault.firstCall = static_cast<std::uint64_t>(call.value_or(from.value_or(1)));
    fault.lastCall = call ? fault.firstCall : UINT64_MAX;
}

void ReadStatus(CTableReader& table, SFault& fault) {
    const auto status = table.Integer("status", 0, kMaxStatus);
    const auto reply = table.Integer("reply", 1, kMaxByte);
    if (status && reply) {
        throw CSubstationError(table.Line(), "[[fault]] takes \"status\" or \"reply\", not both");
    }
    if (status) {
        fault.status = static_cast<LinkStatus>(*status);
    }
    if (reply) {
        fault.status = ReplyStatus(static_cast<std::uint8_t>(*reply));
    }
}

void ReadCompletion(CTableReader& table, const SOperationRow& row, SFault& fault) {
    fault.hangs = table.Flag("hang", false);
    if (const auto completion = table.Integer("completion", 0, kMaxStatus)) {
        fault.completion = static_cast<LinkStatus>(*completion);
    }
    if ((fault.hangs || fault.completion) && !row.runsOn) {
        throw CSubstationError(table.Line(), std::string(row.name) +
                                                 " is complete when its call returns: "
                                                 "neither \"hang\" nor \"completion\" applies");
    }
}

void ReadReplyDamage(CTableReader& table, SFault& fault) {
    if (const auto output = table.Integer("wrong_type", 0, kMaxOutput)) {
        fault.wrongType = static_cast<std::uint8_t>(*output);
    }
    if (const auto bytes = table.Integer("truncate", 0, kMaxByte)) {
        fault.truncate = static_cast<std::size_t>(*bytes);
    }
}

bool HasEffect(const SFault& fault) {
    return fault.delay != 0 || fault.comFailure || fault.hangs || fault.status || fault.completion ||
           fault.wrongType || fault.truncate;
}

} // namespace

SFault ReadFault(const STomlNode& node, const std::vector<SRelay>& relays) {
    CTableReader table(node, "[[fault]]");
    SFault fault;
    const SOperationRow& row = ReadOperation(table);
    fault.operation = row.operation;
    ReadTarget(table, row, relays, fault);
    ReadCalls(table, fault);
    ReadStatus(table, fault);
    ReadCompletion(table, row, fault);
    ReadReplyDamage(table, fault);
    fault.delay = static_cast<std::uint32_t>(table.Integer("delay", 0, kMaxDelay).value_or(0));
    fault.comFailure = table.Flag("com_failure", false);
    table.RejectUnknownKeys();
    // A fault without an effect is a mistake in the file.
    if (!HasEffect(fault)) {
        throw CSubstationError(node.line, "[[fault]] needs an effect, such as \"status\" or \"delay\"");
    }
    return fault;
}

} // namespace ruvo::sim
