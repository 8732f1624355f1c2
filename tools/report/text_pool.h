// Keeps each text, or each list of numbers, once.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <unordered_map>
#include <vector>

namespace ruvo {

/// Gives equal items equal numbers, from 0 on in the order of their first use.
template <class TMap>
class TPool {
public:
    using Index = std::uint32_t;
    using Item = typename TMap::key_type;

    Index Add(Item item) {
        const auto [entry, isNew] =
            m_indexes.try_emplace(std::move(item), static_cast<Index>(m_items.size()));
        if (isNew) {
            m_items.push_back(&entry->first); // a map's entries stay where they are
        }
        return entry->second;
    }
    [[nodiscard]] const std::vector<const Item*>& Items() const { return m_items; }

private:
    TMap m_indexes;
    std::vector<const Item*> m_items;
};

using CTextPool = TPool<std::unordered_map<std::string, std::uint32_t>>;
using CListPool = TPool<std::map<std::vector<std::uint32_t>, std::uint32_t>>;

} // namespace ruvo
