// What a recording tells of one relay.
#pragma once

#include "link/seam/cell_address.h"
#include "link/seam/link_status.h"
#include "tools/recording/whole_calls.h"

#include <compare>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <tuple>
#include <vector>

namespace ruvo {

enum class ELinkKind : std::uint8_t { Serial, Modem, Ethernet };

/// What is open: a port, a number, or an IP address and a bus.
struct SOpenLink {
    ELinkKind kind = ELinkKind::Serial;
    std::string name;
    int bus = 0;
    auto operator<=>(const SOpenLink&) const = default; // NOLINT(modernize-use-nullptr): the compiler's 0
};

/// A cell as it answered. Its values borrow the recording's bytes.
struct SCellFacts {
    std::optional<std::vector<SRecordedValue>> packed; ///< type, size, data
    std::optional<SRecordedValue> tagged; ///< the value in its other form, where only that one was seen
    std::optional<SRecordedValue> label;
    std::optional<SRecordedValue> limits;
    std::optional<SRecordedValue> strings;
    std::uint8_t refusal = 0; ///< the reply code, where nothing else was ever answered
    bool isWritable = false;

    [[nodiscard]] bool IsAnswered() const {
        return packed || tagged || label || limits || strings || isWritable;
    }
};

/// Locations, texts, values and limits of a column, as far as they were listed.
using SListingFacts = std::map<std::string, SRecordedValue>;

struct SEventFacts {
    std::int32_t kind = 0;
    SRecordedValue values;
    bool isMore = false;
};

/// Which record was selected in the column at that time; none when none was.
using RecordNumber = std::optional<std::uint32_t>;
using CellKey = std::tuple<std::uint8_t, RecordNumber, CellAddress>; // column, record, cell
using ColumnKey = std::pair<std::uint8_t, RecordNumber>;

/// A call as a fault of the simulator would find it.
struct SNotedCall {
    const SOperationRow* operation = nullptr;
    std::optional<CellAddress> cell; ///< of a column, its row 00
    RecordNumber record;
    std::optional<LinkStatus> status; ///< of the relay: the completion of one that runs on
    bool isOfServer = false;          ///< the status is that of a start: the relay was not asked
    bool isLoggedIn = false;          ///< before it
    bool isLogin = false;
    std::optional<std::size_t> uselessOutput; ///< from 1: the first one of an unsupported type
};

/// Collects what one relay has answered.
class CRelayFacts {
public:
    CRelayFacts(SOpenLink at, std::uint8_t number) : link(std::move(at)), address(number) {}

    void Take(const SWholeCall& call);

    SOpenLink link;
    std::uint8_t address = 0;
    std::map<CellKey, SCellFacts> cells;
    std::map<ColumnKey, SListingFacts> listings;
    std::set<ColumnKey> records; ///< that were selected
    std::vector<SEventFacts> events;
    std::vector<SNotedCall> calls;
    std::uint8_t statusByte = 0;
    bool hasMoreEvents = false; ///< it said so last
    bool protectsEvents = false;
    std::set<CellAddress> protectedCells;
    std::uint8_t passwordReply = 0; ///< 0 when it never asked
    bool hasAccepted = false;       ///< a password
    bool hasRejected = false;
    bool hasAnswered = false;
    std::set<std::string> changed; ///< cells whose value was not the same every time

private:
    SCellFacts& FactsOf(CellAddress cell);
    RecordNumber SelectedIn(CellAddress cell) const;
    SNotedCall Note(const SWholeCall& call) const;
    void TakeOutputs(const SWholeCall& call, std::optional<CellAddress> cell);
    void TakeAnswer(const SWholeCall& call, CellAddress cell);
    void TakeListing(const SWholeCall& call, std::uint8_t column);
    void TakeWrite(const SWholeCall& call, CellAddress cell, LinkStatus status);
    void TakeLogin(CellAddress cell, LinkStatus status);
    void TakeSelection(const SRecordedValue& value, std::uint8_t column);
    void TakeEvent(const SWholeCall& call);
    void TakeRefusal(const SNotedCall& noted);
    void SetOnce(std::optional<SRecordedValue>& fact, const SRecordedValue& value, CellAddress cell);

    std::map<std::uint8_t, std::uint32_t> m_selected; ///< record by column
    bool m_isLoggedIn = false;
};

/// The first output of an unsupported type, from 1; none where there is none.
[[nodiscard]] std::optional<std::size_t> UselessOutput(const std::vector<SRecordedValue>& outputs);
/// Whether writing to the cell is a step of a login.
[[nodiscard]] bool IsLoginCell(CellAddress cell);

} // namespace ruvo
