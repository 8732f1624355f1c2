// One relay as it answers: cells, columns, login and waiting events.
#pragma once

#include "sim/file/substation.h"
#include "sim/relay/access_control.h"
#include "sim/relay/answer.h"

#include <cstddef>

namespace ruvo::sim {

/// Answers requests; changes stay for as long as the relay lives. Not safe for use by several threads.
class CSimulatedRelay {
public:
    /// Borrows the model, which must outlive this.
    explicit CSimulatedRelay(const SRelay& model);

    const SRelay& Model() const { return m_model; }
    std::optional<SSerialAddress>& SerialAddress() { return m_serial; }
    std::optional<SModemAddress>& ModemAddress() { return m_modem; }
    std::optional<SEthernetAddress>& EthernetAddress() { return m_ethernet; }

    /// The first `count` events were handed over in earlier runs.
    void SkipEvents(std::size_t count);
    void CountRequest() { m_access.CountRequest(); }

    SAnswer Value(CellAddress cell) const;  ///< type, size, data
    SAnswer Text(CellAddress cell) const;   ///< one tagged text
    SAnswer Limits(CellAddress cell) const; ///< list of tagged values
    SAnswer Strings(CellAddress cell) const;
    SAnswer Values(const Variant::Words& wanted) const; ///< list of the cells' first values

    enum class EListing : std::uint8_t { TextAndValues, Text, Values, Limits };
    SAnswer Column(std::uint8_t column, EListing listing) const;
    SAnswer Headings() const; ///< locations and labels of the cells in row 00

    SAnswer Change(CellAddress cell, const Variant::Bytes& tagged);
    SAnswer ChangeBytes(CellAddress cell, const Variant::Bytes& data);
    SAnswer Reset(CellAddress cell);

    SAnswer NextEvent(); ///< kind, values, more-events flag; a good status means that the event is gone
    SAnswer StatusByte() const;

private:
    struct SFound {
        LinkStatus status = kLinkGood;
        SCell cell;
    };
    SFound Find(CellAddress cell, EAccess access) const;
    std::optional<SCell> FindUnchecked(CellAddress cell) const;
    const SRecord* SelectedRecord(std::uint8_t column) const;
    SListing MakeListing(std::uint8_t column) const;
    void AddToListing(CellAddress address, const SCell& cell, bool unsignedLocations,
                      SListing& listing) const;
    LinkStatus Store(CellAddress cell, const SCell& before, const Variant::Bytes& data);
    bool HasEvents() const;
    bool IsUnknownRecord(CellAddress cell, const Variant::Bytes& data) const;

    const SRelay& m_model;
    std::optional<SSerialAddress> m_serial;
    std::optional<SModemAddress> m_modem;
    std::optional<SEthernetAddress> m_ethernet;
    CellMap m_cells;
    CAccessControl m_access;
    std::size_t m_nextEvent = 0;
};

} // namespace ruvo::sim
