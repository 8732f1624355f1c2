#include "link/login/password_entry.h"

#include "link/seam/known_cells.h"
#include "model/values/parlane_integers.h"
#include "model/values/parlane_text.h"
#include "platform/trace.h"

#include <algorithm>
#include <cstdio>

namespace ruvo {

namespace {

/// Copies a text into a record field: at most the field's size less its NUL.
template <std::size_t Size>
void CopyField(char (&field)[Size], const CParlaneData* value) {
    std::fill(std::begin(field), std::end(field), '\0');
    const auto* text = dynamic_cast<const CParlaneText*>(value);
    if (text != nullptr) {
        text->GetText().copy(field, Size - 1);
    }
}

/// A value of the same type and size holding 0; null for a type that the guard cell does not use.
std::unique_ptr<CParlaneData> MakeZero(const CParlaneData& value) {
    if (const auto* number = dynamic_cast<const CParlaneUint*>(&value)) {
        return std::make_unique<CParlaneUint>(0U, number->GetSize());
    }
    if (const auto* number = dynamic_cast<const CParlaneInt*>(&value)) {
        return std::make_unique<CParlaneInt>(0, number->GetSize());
    }
    if (const auto* index = dynamic_cast<const CParlaneStringIndex*>(&value)) {
        return std::make_unique<CParlaneStringIndex>(std::uint16_t{0}, index->GetSize());
    }
    return nullptr;
}

/// An application's callback may do anything; our own callers are promised a status.
template <class Login>
LinkStatus Caught(Login login) {
    try {
        return login();
    } catch (...) {
        TraceError("CP32Wrap::EnterPassword : Exception occured during method execution");
        return kLinkAborted;
    }
}

} // namespace

void CPasswordEntry::ProcessPasswordRequest(CProgressMonitor* monitor, LinkStatus& status,
                                            bool& passwordEntered, bool& repeat, const std::string& message,
                                            CellAddress cell) {
    // A request made during an entry must not start a second one: a hostile relay would recurse us to death.
    if (IsPasswordRequest(status) && !m_parts.channel.IsEntering()) {
        if (cell == 0) {
            TraceInfo("%s", message.c_str());
        } else {
            TraceInfo("P32Wrap::ProcessPasswordRequest: Password requested for cell %02X.%02X. %s",
                      ColumnOf(cell), RowOf(cell), message.c_str());
        }
        status = EnterPassword(monitor, passwordEntered);
        if (IsWriteGood(status)) {
            passwordEntered = true;
            return;
        }
    }
    repeat = false;
}

LinkStatus CPasswordEntry::EnterPassword(CProgressMonitor* monitor, bool passwordEntered) {
    std::unique_ptr<CParlaneData> guardValue;
    const CChannel::SBeforeEntry before = m_parts.channel.BeginEntry(monitor);
    const LinkStatus status = Caught([&] {
        ClearPasswordGuard(guardValue);
        return EnterPasswordByGeneration(passwordEntered);
    });
    // Inside the entry, where an abort can be ignored: the guard must not stay cleared.
    RestorePasswordGuard(guardValue.get());
    return m_parts.channel.EndEntry(before) ? kLinkAborted : status;
}

LinkStatus CPasswordEntry::RunLogin(const std::function<LinkStatus()>& login) {
    const CChannel::SBeforeEntry before = m_parts.channel.BeginEntry(m_parts.channel.EntryMonitor());
    const LinkStatus status = Caught(login);
    return m_parts.channel.EndEntry(before) ? kLinkAborted : status;
}

/// The present value of the guard cell, or null.
std::unique_ptr<CParlaneData> CPasswordEntry::ReadPasswordGuard() {
    constexpr std::size_t kLimitCount = 5; // only a full set of limits begins with the present value
    CParlaneDataArray limits;
    LinkStatus status = m_parts.cells.ReadLimits(cells::kPasswordGuard, limits);
    if (status == kLinkGood && limits.size() == kLimitCount) {
        return std::move(limits.front());
    }
    return status == kLinkAborted ? nullptr : m_parts.cells.ReadFirstValue(cells::kPasswordGuard, status);
}

/// Clears the guard cell. `saved` becomes the value to write back afterwards, and stays null when there is
/// nothing to restore.
void CPasswordEntry::ClearPasswordGuard(std::unique_ptr<CParlaneData>& saved) {
    std::unique_ptr<CParlaneData> value = ReadPasswordGuard();
    const std::unique_ptr<CParlaneData> zero =
        value == nullptr || value->GetUnsigned() == 0 ? nullptr : MakeZero(*value);
    if (zero == nullptr) {
        return;
    }
    saved = std::move(value); // before the write: the relay may have taken it even when we never hear of that
    const LinkStatus written =
        m_parts.writes.ChangeSetting(m_parts.channel.EntryMonitor(), cells::kPasswordGuard, *zero);
    LinkStatus status = kLinkGood;
    const std::unique_ptr<CParlaneData> now = m_parts.cells.ReadFirstValue(cells::kPasswordGuard, status);
    // Where no answer came through, the cell itself shows whether it was cleared.
    const bool isAnswered = written == kLinkGood || IsReply(written);
    const bool isCleared =
        !isAnswered && now != nullptr && now->GetUnsigned() == 0 && MakeZero(*now) != nullptr;
    if (!IsWriteGood(written) && !isCleared) {
        saved.reset();
    }
}

void CPasswordEntry::RestorePasswordGuard(const CParlaneData* saved) noexcept {
    if (saved == nullptr) {
        return;
    }
    m_parts.channel.SetAbortIgnored(true);
    try {
        const LinkStatus restored =
            m_parts.writes.ChangeSetting(m_parts.channel.EntryMonitor(), cells::kPasswordGuard, *saved);
        if (!IsWriteGood(restored)) {
            TraceError("CP32Wrap::EnterPassword : Cell BF.03 could not be restored");
        }
    } catch (...) { // nothing that could still be done for the cell
    }
    m_parts.channel.SetAbortIgnored(false);
}

/// Gathers the facts about the relay. `version` becomes its access-control generation, or 0 when it states
/// none.
SPasswordRequest CPasswordEntry::BuildPasswordRequest(std::uint8_t securityColumn, std::uint32_t& version) {
    SPasswordRequest request{};
    LinkStatus status = kLinkGood;
    CopyField(request.description, m_parts.cells.ReadFirstValue(cells::kDescription, status).get());
    CopyField(request.plant, m_parts.cells.ReadFirstValue(cells::kPlant, status).get());
    CopyField(request.model, m_parts.cells.ReadFirstValue(cells::kModel, status).get());
    CopyField(request.serialNumber, m_parts.cells.ReadFirstValue(cells::kSerialNumber, status).get());
    CopyField(request.software, m_parts.cells.ReadFirstValue(cells::kSoftware, status).get());
    const std::unique_ptr<CParlaneData> generation =
        m_parts.cells.ReadFirstValue(cells::kSecurityVersion, status);
    version = generation == nullptr ? 0 : generation->GetUnsigned();
    if (generation != nullptr) {
        const CellAddress cell = MakeCellAddress(securityColumn, rows::kDisplayText);
        CopyField(request.displayText, m_parts.cells.ReadFirstValue(cell, status).get());
    } else { // the value is not used, but the request is part of the login's sequence
        m_parts.cells.ReadFirstValue(cells::kSecondIdentification, status);
    }
    return request;
}

LinkStatus CPasswordEntry::EnterPasswordByGeneration(bool passwordEntered) {
    LinkStatus status = kLinkGood;
    const std::unique_ptr<CParlaneData> value = m_parts.cells.ReadFirstValue(cells::kSecurityColumn, status);
    const auto column = static_cast<std::uint8_t>(value == nullptr ? 0 : value->GetUnsigned() & 0xFFU);
    std::uint32_t versionBefore = 0;
    const SPasswordRequest request = BuildPasswordRequest(column, versionBefore);
    std::uint32_t version = 0;
    if (m_parts.cells.ExtractCSVersion(version) != kLinkGood) {
        version = 0;
    }
    // What could not be read because of an abort says nothing of the relay.
    if (m_parts.channel.IsEntryAborted()) {
        return kLinkAborted;
    }
    if (version == 0 && versionBefore != 0) { // one bad answer must not send the password as it is
        TraceError("CP32Wrap::EnterPassword : Cell 00.DF gave %d before and gives no version now",
                   static_cast<int>(versionBefore));
        return kLinkAborted;
    }
    switch (version) {
    case 0:
        return m_passwordLogin.EnterNonCyberSecurityPassword(request, passwordEntered);
    case 1:
        return m_passwordLogin.EnterCyberSecurityPassword(request, passwordEntered, column);
    case 2:
        return m_userLogin.EnterCyberSecurityBrickIntegratedLoginAndPassword(request, passwordEntered,
                                                                             column);
    default:
        return m_userLogin.EnterCyberSecurityBrickIntegratedLoginAndPasswordCSEd3(request, passwordEntered,
                                                                                  column);
    }
}

} // namespace ruvo
