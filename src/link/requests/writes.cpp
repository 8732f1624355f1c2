// The writing requests of the client.
#include "link/channel/request_pattern.h"

#include "link/login/security_time.h"
#include "link/requests/reply_values.h"

namespace ruvo {

LinkStatus CP32Wrap::WriteWithSecurityEvents(CellAddress cell, const CParlaneData& value, EWriteSlot slot) {
    const std::lock_guard lock(m_commandLock);
    ResetCompletion();
    Variant packed;
    if (!PackValue(value, packed)) {
        return kLinkBadReply;
    }
    const CParlaneIEC870 time = SecurityTimeStamp();
    LogWrite(cell, time, value);
    const LinkStatus status = CallServer([&](IP32ls& server, Variant& result) {
        return slot == EWriteSlot::ChangeSetting
                   ? server.ChangeSetting(Address(), CellVariant(cell), packed, result)
                   : server.SetValue(Address(), CellVariant(cell), packed, result);
    });
    LogReply(cell, time, status);
    return status;
}

LinkStatus CP32Wrap::ChangeSetting(CProgressMonitor* monitor, CellAddress cell, const CParlaneData& value) {
    return RunRequest(monitor, "ChangeSetting",
                      [&] { return WriteWithSecurityEvents(cell, value, EWriteSlot::ChangeSetting); });
}

LinkStatus CP32Wrap::SetValue(CProgressMonitor* monitor, CellAddress cell, const CParlaneData& value) {
    return RunRequest(monitor, "SetValue",
                      [&] { return WriteWithSecurityEvents(cell, value, EWriteSlot::SetValue); });
}

LinkStatus CP32Wrap::ResetCell(CProgressMonitor* monitor, CellAddress cell) {
    return RunRequest(monitor, "ResetCell", [&] {
        const std::lock_guard lock(m_commandLock);
        ResetCompletion();
        LogReset(cell, SecurityTimeStamp());
        return CallServer([&](IP32ls& server, Variant& status) {
            return server.ResetCell(Address(), CellVariant(cell), status);
        });
    });
}

/// A login's write: no security event and no repetition, so that no password ever reaches a trace. The caller
/// holds the command lock, since several writes can make one login.
LinkStatus CP32Wrap::WriteCredential(const CommandLock& /*held*/, CellAddress cell, const CParlaneData& value,
                                     EWriteSlot slot) {
    if (IsEntryAborted()) {
        return kLinkAborted;
    }
    if (m_enteringPassword) { // the reads of the entry have taken the caller's monitor back
        StoreMonitor(m_entryMonitor);
    }
    ResetCompletion();
    Variant packed;
    if (!PackValue(value, packed)) {
        return kLinkBadReply;
    }
    const LinkStatus status = CallServer([&](IP32ls& server, Variant& result) {
        return slot == EWriteSlot::ChangeSetting
                   ? server.ChangeSetting(Address(), CellVariant(cell), packed, result)
                   : server.SetValue(Address(), CellVariant(cell), packed, result);
    });
    packed.WipeBytes();
    return status;
}

LinkStatus CP32Wrap::SetBlockedValue(CProgressMonitor* monitor, CellAddress cell,
                                     std::span<const std::uint8_t> bytes) {
    const auto write = [&](IP32ls& server, Variant& status) {
        const Variant block = Variant::FromBytes(Variant::Bytes(bytes.begin(), bytes.end()));
        return server.SetBlockedValue(Address(), CellVariant(cell), block, status);
    };
    return RunWrite(monitor, "SetBlockedValue", write, cell);
}

LinkStatus CP32Wrap::SetRealTime(CProgressMonitor* monitor, const CParlaneIEC870& time) {
    Variant packed;
    return RunRequest(monitor, "SetRealTime", [&] {
        if (!PackValue(time, packed)) {
            return kLinkBadReply;
        }
        return RunPass(
            [&](IP32ls& server, Variant& status) { return server.SetRealTime(Address(), packed, status); },
            [] { return true; });
    });
}

LinkStatus CP32Wrap::ChangeDeviceAddress(CProgressMonitor* monitor, std::uint8_t newAddress,
                                         const std::string& serialNumber) {
    const auto write = [&](IP32ls& server, Variant& status) {
        return server.ChangeDeviceAddress(Address(), Variant::FromUI1(newAddress),
                                          Variant::FromText(serialNumber), status);
    };
    return RunWrite(monitor, "ChangeDeviceAddress", write);
}

LinkStatus CP32Wrap::SelectSettingGroup(CProgressMonitor* monitor, std::uint8_t group) {
    const auto write = [&](IP32ls& server, Variant& status) {
        return server.SelectSettingGroup(Address(), Variant::FromUI1(group), status);
    };
    return RunWrite(monitor, "SelectSettingGroup", write);
}

} // namespace ruvo
