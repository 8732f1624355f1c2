#include "link/requests/writes.h"

#include "link/requests/reply_values.h"

namespace ruvo {

LinkStatus CWrites::CallWrite(EOperation operation, CellAddress cell, const Variant& packed) {
    return m_pattern.Channel().CallServer([&](IP32ls& server, Variant& status) {
        return operation == EOperation::ChangeSetting
                   ? server.ChangeSetting(m_pattern.Address(), CellVariant(cell), packed, status)
                   : server.SetValue(m_pattern.Address(), CellVariant(cell), packed, status);
    });
}

LinkStatus CWrites::WriteWithSecurityEvents(CellAddress cell, const CParlaneData& value,
                                            EOperation operation) {
    const CChannel::CommandLock lock(m_pattern.Channel().Lock());
    m_pattern.Channel().ResetCompletion();
    Variant packed;
    if (!PackValue(value, packed)) {
        return kLinkBadReply;
    }
    const CParlaneIEC870 time = SecurityTimeStamp();
    m_events.LogWrite(cell, time, value);
    const LinkStatus status = CallWrite(operation, cell, packed);
    m_events.LogReply(cell, time, status);
    return status;
}

LinkStatus CWrites::ChangeSetting(CProgressMonitor* monitor, CellAddress cell, const CParlaneData& value) {
    return m_pattern.RunRequest(monitor, "ChangeSetting", [&] {
        return WriteWithSecurityEvents(cell, value, EOperation::ChangeSetting);
    });
}

LinkStatus CWrites::SetValue(CProgressMonitor* monitor, CellAddress cell, const CParlaneData& value) {
    return m_pattern.RunRequest(monitor, "SetValue",
                                [&] { return WriteWithSecurityEvents(cell, value, EOperation::SetValue); });
}

LinkStatus CWrites::ResetCell(CProgressMonitor* monitor, CellAddress cell) {
    return m_pattern.RunRequest(monitor, "ResetCell", [&] {
        const CChannel::CommandLock lock(m_pattern.Channel().Lock());
        m_pattern.Channel().ResetCompletion();
        m_events.LogReset(cell, SecurityTimeStamp());
        return m_pattern.Channel().CallServer([&](IP32ls& server, Variant& status) {
            return server.ResetCell(m_pattern.Address(), CellVariant(cell), status);
        });
    });
}

LinkStatus CWrites::WriteCredential(const CChannel::CommandLock& /*held*/, CellAddress cell,
                                    const CParlaneData& value, EOperation operation) {
    CChannel& channel = m_pattern.Channel();
    if (channel.IsEntryAborted()) {
        return kLinkAborted;
    }
    if (channel.IsEntering()) { // the reads of the entry have taken the caller's monitor back
        channel.Monitor().Store(channel.EntryMonitor());
    }
    channel.ResetCompletion();
    Variant packed;
    if (!PackValue(value, packed)) {
        return kLinkBadReply;
    }
    const LinkStatus status = CallWrite(operation, cell, packed);
    packed.WipeBytes();
    return status;
}

LinkStatus CWrites::SetBlockedValue(CProgressMonitor* monitor, CellAddress cell,
                                    std::span<const std::uint8_t> bytes) {
    const auto write = [&](IP32ls& server, Variant& status) {
        const Variant block = Variant::FromBytes(Variant::Bytes(bytes.begin(), bytes.end()));
        return server.SetBlockedValue(m_pattern.Address(), CellVariant(cell), block, status);
    };
    return m_pattern.RunWrite(monitor, "SetBlockedValue", write, cell);
}

LinkStatus CWrites::SetRealTime(CProgressMonitor* monitor, const CParlaneIEC870& time) {
    Variant packed;
    return m_pattern.RunRequest(monitor, "SetRealTime", [&] {
        if (!PackValue(time, packed)) {
            return kLinkBadReply;
        }
        return m_pattern.RunPass(
            [&](IP32ls& server, Variant& status) {
                return server.SetRealTime(m_pattern.Address(), packed, status);
            },
            [] { return true; });
    });
}

LinkStatus CWrites::ChangeDeviceAddress(CProgressMonitor* monitor, std::uint8_t newAddress,
                                        const std::string& serialNumber) {
    const auto write = [&](IP32ls& server, Variant& status) {
        return server.ChangeDeviceAddress(m_pattern.Address(), Variant::FromUI1(newAddress),
                                          Variant::FromText(serialNumber), status);
    };
    return m_pattern.RunWrite(monitor, "ChangeDeviceAddress", write);
}

LinkStatus CWrites::SelectSettingGroup(CProgressMonitor* monitor, std::uint8_t group) {
    const auto write = [&](IP32ls& server, Variant& status) {
        return server.SelectSettingGroup(m_pattern.Address(), Variant::FromUI1(group), status);
    };
    return m_pattern.RunWrite(monitor, "SelectSettingGroup", write);
}

} // namespace ruvo
