// What a relay of a substation file would answer by itself, and the faults that make it answer otherwise.
#include "link/seam/known_cells.h"
#include "model/values/type_codes.h"
#include "tools/recording/relay_table.h"
#include "tools/recording/toml_text.h"

#include <map>
#include <utility>

namespace ruvo {

namespace {

using enum EOperation;

class CExpectation {
public:
    explicit CExpectation(const CRelayFacts& relay) : m_relay(relay) {}

    /// The status that the call would get; none where it depends on more than is known here.
    std::optional<LinkStatus> Of(const SNotedCall& call) {
        if (call.isLogin) {
            const bool isRejected = m_relay.hasRejected && !m_relay.hasAccepted;
            return isRejected && IsPasswordCell(*call.cell) ? kReplyRejected : kLinkGood;
        }
        if (call.operation->operation == ResetCell && call.cell == cells::kPassword) {
            return kLinkGood;
        }
        if (!call.isLoggedIn && IsProtected(call)) {
            return ReplyStatus(m_relay.passwordReply);
        }
        switch (call.operation->target) {
        case ETarget::Cell:
            return call.cell ? OfCell(call) : std::nullopt;
        case ETarget::Column:
            return call.cell ? OfColumn(call) : std::nullopt;
        case ETarget::Relay:
            return OfRelay(call);
        case ETarget::Link:
            break;
        }
        return std::nullopt;
    }

private:
    static bool IsPasswordCell(CellAddress cell) {
        return cell == cells::kPassword || cell == cells::kSecurityPassword;
    }

    bool IsProtected(const SNotedCall& call) const {
        return (call.operation->operation == GetEvent && m_relay.protectsEvents) ||
               (call.cell && m_relay.protectedCells.contains(*call.cell));
    }

    std::optional<LinkStatus> OfRelay(const SNotedCall& call) {
        if (call.operation->operation == GetEvent) {
            const std::size_t events = m_relay.events.size() + (m_relay.hasMoreEvents ? 1 : 0);
            const bool isThere = m_taken < events;
            m_taken += call.status == kLinkGood ? 1 : 0;
            return isThere ? kLinkGood : kReplyNoData;
        }
        const bool isSimple =
            call.operation->operation == GetDeviceStatus || call.operation->operation == GetValues;
        return isSimple ? std::optional(kLinkGood) : std::nullopt;
    }

    const SCellFacts* Find(const SNotedCall& call) const {
        const std::uint8_t column = ColumnOf(*call.cell);
        auto found = m_relay.cells.find({column, call.record, *call.cell});
        if (found == m_relay.cells.end()) {
            found = m_relay.cells.find({column, std::nullopt, *call.cell});
        }
        return found == m_relay.cells.end() ? nullptr : &found->second;
    }

    std::optional<LinkStatus> OfCell(const SNotedCall& call) const {
        const SCellFacts* const facts = Find(call);
        const EOperation operation = call.operation->operation;
        if (facts == nullptr) {
            return kReplyNoSuchCell;
        }
        if (!facts->IsAnswered()) {
            return ReplyStatus(facts->refusal);
        }
        if (operation == GetText) {
            const bool isText = facts->packed && facts->packed->front().number == kTypeText;
            return facts->label || isText ? kLinkGood : kReplyNoData;
        }
        const bool isRead =
            operation == GetValue || operation == GetSettingLimits || operation == StartGetStrings;
        if (isRead) {
            return kLinkGood;
        }
        if (RowOf(*call.cell) == rows::kSelectRecord && call.status == kReplyRejected) {
            return std::nullopt; // which records there are decides
        }
        return facts->isWritable ? kLinkGood : kReplyNotSettable;
    }

    std::optional<LinkStatus> OfColumn(const SNotedCall& call) const {
        return m_relay.listings.contains({ColumnOf(*call.cell), call.record}) ? kLinkGood : kReplyNoSuchCell;
    }

    const CRelayFacts& m_relay;
    std::size_t m_taken = 0;
};

} // namespace

std::string FaultTable(const SFaultText& fault) {
    std::string text = "\n[[fault]]\noperation = " + TomlText(fault.operation.name) + "\n";
    text += fault.relay.empty() ? "" : "relay = " + TomlText(fault.relay) + "\n";
    if (fault.cell && fault.operation.target == ETarget::Cell) {
        text += "cell = " + TomlText(TomlCell(*fault.cell)) + "\n";
    } else if (fault.cell) {
        text += "column = " + TomlText(TomlColumn(ColumnOf(*fault.cell))) + "\n";
    }
    text += "call = " + std::to_string(fault.number) + "\n";
    if (fault.uselessOutput) {
        return text + "wrong_type = " + std::to_string(*fault.uselessOutput) + "\n";
    }
    constexpr LinkStatus kLargest = 0xFFFF; // a client takes what is larger for a failure to reach the server
    if (fault.status.value_or(kLargest + 1) > kLargest) {
        return text + "com_failure = true\n";
    }
    return text + (fault.isCompletion ? "completion = " : "status = ") + std::to_string(*fault.status) + "\n";
}

std::string FaultTables(const CRelayFacts& relay) {
    std::map<std::pair<EOperation, std::optional<CellAddress>>, std::uint64_t> numbers;
    std::string text;
    CExpectation expectation(relay);
    for (const SNotedCall& call : relay.calls) {
        const std::uint64_t number = ++numbers[{call.operation->operation, call.cell}];
        const std::optional<LinkStatus> expected = expectation.Of(call);
        const bool isAsExpected =
            !call.isOfServer && !call.uselessOutput && (!expected || expected == call.status);
        if (!isAsExpected) {
            text += FaultTable({.operation = *call.operation,
                                .relay = NameOf(relay),
                                .cell = call.cell,
                                .number = number,
                                .status = call.status,
                                .isCompletion = call.operation->runsOn && !call.isOfServer,
                                .uselessOutput = call.uselessOutput});
        }
    }
    return text;
}

} // namespace ruvo
