#include "sim/file/event_generator.h"

#include "model/records/event_kinds.h"
#include "model/values/type_codes.h"
#include "sim/file/tagged_value.h"

#include <algorithm>
#include <array>
#include <chrono>

namespace ruvo::sim {
namespace {

constexpr std::array<std::string_view, 6> kTexts{"Relay picked up", "Trip output",  "Breaker open",
                                                 "Setting changed", "Alarm raised", "Self test done"};
constexpr std::uint32_t kMaxGap = 600000; // milliseconds between two events
constexpr CellAddress kNoCell = 0x0030;

// SplitMix64. The library's distributions differ from system to system, and one seed must produce the same
// events on all.
class CRandom {
public:
    explicit CRandom(std::uint64_t seed) : m_state(seed) {}

    std::uint64_t Next() {
        m_state += 0x9E3779B97F4A7C15U;
        std::uint64_t mixed = m_state;
        mixed = (mixed ^ (mixed >> 30U)) * 0xBF58476D1CE4E5B9U;
        mixed = (mixed ^ (mixed >> 27U)) * 0x94D049BB133111EBU;
        return mixed ^ (mixed >> 31U);
    }
    std::size_t Below(std::size_t count) { return static_cast<std::size_t>(Next() % count); }

private:
    std::uint64_t m_state;
};

Variant TimeValue(std::uint64_t milliseconds) {
    using namespace std::chrono;
    const auto moment = sys_days(year(2026) / 1 / 1) + std::chrono::milliseconds(milliseconds);
    const auto day = floor<days>(moment);
    const year_month_day date(day);
    const auto minuteOfDay = static_cast<unsigned>(floor<minutes>(moment - day).count());
    const auto inMinute = static_cast<std::uint64_t>((moment - floor<minutes>(moment)).count());
    Variant::Bytes octets = LittleEndian(inMinute, 2);
    octets.push_back(static_cast<std::uint8_t>(minuteOfDay % 60));
    octets.push_back(static_cast<std::uint8_t>(minuteOfDay / 60));
    octets.push_back(static_cast<std::uint8_t>(static_cast<unsigned>(date.day())));
    octets.push_back(static_cast<std::uint8_t>(static_cast<unsigned>(date.month())));
    octets.push_back(static_cast<std::uint8_t>(static_cast<int>(date.year()) % 100));
    return TaggedValue(kTypeIEC870, octets);
}

Variant TextValue(std::string_view text) {
    return TaggedValue(kTypeText, Variant::Bytes(text.begin(), text.end()));
}

class CGenerator {
public:
    CGenerator(const SGeneratorPlan& plan, const SRelay& relay)
        : m_plan(plan), m_relay(relay), m_random(plan.seed) {
        for (const auto& [address, cell] : relay.cells) {
            const bool text = cell.type == kTypeText || cell.label.has_value();
            if (text && cell.replyCode == 0) {
                m_textCells.push_back(address);
            }
            if (ColumnOf(address) != 0 && cell.listed && cell.replyCode == 0 && !cell.data.empty()) {
                m_valueCells.push_back(address);
            }
        }
    }

    /// Why events of a kind cannot be made for this relay; empty when they can.
    std::string Error() const {
        const auto lacks = [this](bool SEventKind::*element, bool present) {
            return !present && std::any_of(m_plan.kinds.begin(), m_plan.kinds.end(),
                                           [&](std::uint8_t kind) { return kEventKinds[kind].*element; });
        };
        if (lacks(&SEventKind::hasRecord, !m_relay.records.empty())) {
            return "generate: kinds 3 and 5 need a [[relay.record]]";
        }
        return lacks(&SEventKind::hasFormatCell, !m_textCells.empty())
                   ? "generate: kind 2 needs a text cell or a label"
                   : "";
    }

    SEvent Next(std::size_t number) {
        m_time += m_random.Below(kMaxGap) + 1;
        const CellAddress cell =
            m_valueCells.empty() ? kNoCell : m_valueCells[m_random.Below(m_valueCells.size())];
        SEvent event;
        event.kind = m_plan.kinds[m_random.Below(m_plan.kinds.size())];
        event.values = {TaggedMenu(cell), TimeValue(m_time), TextValue(kTexts[m_random.Below(kTexts.size())]),
                        ValueOf(cell)};
        AddKindElements(event, number);
        return event;
    }

private:
    Variant ValueOf(CellAddress address) {
        const auto found = m_relay.cells.find(address);
        if (found == m_relay.cells.end()) {
            return TaggedUnsigned(static_cast<std::uint32_t>(m_random.Below(65536)), 2);
        }
        return FirstValueOf(found->second);
    }

    void AddKindElements(SEvent& event, std::size_t number) {
        const SEventKind& kind = kEventKinds[event.kind];
        if (kind.hasId) {
            event.values.push_back(TaggedUnsigned(static_cast<std::uint32_t>(number), 4));
        }
        if (kind.hasRecord) {
            const SRecord& record = m_relay.records[m_random.Below(m_relay.records.size())];
            event.values.push_back(TaggedMenu(MakeCellAddress(record.column, 0)));
            event.values.push_back(TaggedUnsigned(record.number, 2));
        }
        if (kind.hasFormatText) {
            event.values.push_back(TextValue("Event %u"));
            event.values.push_back(TaggedUnsigned(static_cast<std::uint32_t>(number), 4));
        }
        if (kind.hasFormatCell) {
            event.values.push_back(TaggedMenu(m_textCells[m_random.Below(m_textCells.size())]));
        }
    }

    const SGeneratorPlan& m_plan;
    const SRelay& m_relay;
    CRandom m_random;
    std::uint64_t m_time = 0;
    std::vector<CellAddress> m_textCells;
    std::vector<CellAddress> m_valueCells;
};

} // namespace

std::string GenerateEvents(const SGeneratorPlan& plan, SRelay& relay) {
    CGenerator generator(plan, relay);
    std::string error = generator.Error();
    for (std::size_t i = 1; error.empty() && i <= plan.count; ++i) {
        relay.events.push_back(generator.Next(i));
    }
    return error;
}

} // namespace ruvo::sim
