#include "sim/server/fault_table.h"

#include <algorithm>

namespace ruvo::sim {
namespace {

bool Matches(const SFault& fault, const SCall& call, const std::string& relay) {
    return fault.operation == call.operation && (fault.relay.empty() || fault.relay == relay) &&
           (!fault.cell || fault.cell == call.cell);
}

Variant Truncated(const Variant& value, std::size_t size) {
    if (const Variant::Bytes* bytes = value.AsBytes()) {
        return Variant::FromBytes(Variant::Bytes(
            bytes->begin(), bytes->begin() + static_cast<std::ptrdiff_t>(std::min(size, bytes->size()))));
    }
    if (const Variant::List* list = value.AsList()) {
        Variant::List cut;
        std::transform(list->begin(), list->end(), std::back_inserter(cut),
                       [size](const Variant& item) { return Truncated(item, size); });
        return Variant::FromList(std::move(cut));
    }
    return value;
}

} // namespace

CFaultTable::CFaultTable(const std::vector<SFault>& faults) : m_faults(faults), m_calls(faults.size(), 0) {}

SFault CFaultTable::Match(const SCall& call, const std::string& relay) {
    const SFault* hit = nullptr;
    std::uint32_t delay = 0;
    for (std::size_t i = 0; i < m_faults.size(); ++i) {
        const SFault& fault = m_faults[i];
        if (!Matches(fault, call, relay)) {
            continue;
        }
        // Every watcher counts, hit or not, so that "the third call" means the same to each.
        const std::uint64_t number = ++m_calls[i];
        if (number >= fault.firstCall && number <= fault.lastCall) {
            hit = hit == nullptr ? &fault : hit;
            delay += fault.delay;
        }
    }
    SFault result = hit == nullptr ? SFault{} : *hit;
    result.delay = delay;
    return result;
}

void DamageOutputs(const SFault& fault, Variant::List& outputs) {
    for (std::size_t i = 0; i < outputs.size(); ++i) {
        if (fault.truncate) {
            outputs[i] = Truncated(outputs[i], *fault.truncate);
        }
        if (fault.wrongType && *fault.wrongType == i + 1) {
            outputs[i] = Variant::Other();
        }
    }
}

} // namespace ruvo::sim
