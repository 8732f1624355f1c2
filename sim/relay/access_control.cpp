#include "sim/relay/access_control.h"

#include "link/seam/known_cells.h"
#include "link/seam/link_status.h"
#include "model/values/type_codes.h"
#include "sim/file/tagged_value.h"

#include <algorithm>

namespace ruvo::sim {
namespace {

constexpr unsigned kEncipheredGeneration = 1;
constexpr std::uint8_t kProtocolColumn = 0xBF;

SCell NumberCell(std::uint32_t value) {
    return MakeValueCell(kTypeUint, LittleEndian(value, 2));
}

} // namespace

CAccessControl::CAccessControl(const std::optional<SAccess>& model) : m_model(model) {
    if (model && model->generation > kEncipheredGeneration) {
        m_users = std::make_unique<CUserLogin>(*model);
    }
}

void CAccessControl::CountRequest() {
    if (m_loggedIn && m_model->forgetAfter != 0 && ++m_requestsSinceLogin > m_model->forgetAfter) {
        m_loggedIn = false;
    }
    const bool waiting = m_blocked && m_model->blocking == EBlocking::Temporary;
    if (waiting && (m_blockedRequestsLeft == 0 || --m_blockedRequestsLeft == 0)) {
        m_blocked = false;
        m_wrongPasswords = 0;
    }
}

LinkStatus CAccessControl::Check(EAccess access, CellAddress cell) const {
    if (!m_model || !IsProtected(access, cell) || (m_loggedIn && !m_levelTooLow)) {
        return kLinkGood;
    }
    return ReplyStatus(m_model->passwordReply);
}

bool CAccessControl::IsProtected(EAccess access, CellAddress cell) const {
    const SProtection& protection = m_model->protection;
    if (access == EAccess::Event) {
        return protection.events;
    }
    const bool named =
        std::find(protection.cells.begin(), protection.cells.end(), cell) != protection.cells.end();
    const bool kind = access == EAccess::Read ? protection.reads : protection.writes;
    return named || (kind && !IsAlwaysOpen(cell));
}

// A login itself reads and writes these columns, so they cannot wait for a login.
bool CAccessControl::IsAlwaysOpen(CellAddress cell) const {
    const std::uint8_t column = ColumnOf(cell);
    return column == 0 || column == kProtocolColumn ||
           (m_model->generation >= kEncipheredGeneration && column == m_model->securityColumn);
}

bool CAccessControl::IsLoginCell(CellAddress cell) const {
    if (!m_model) {
        return false;
    }
    if (m_model->generation == 0) {
        return cell == cells::kPassword;
    }
    const bool user = cell == cells::kUserName || cell == cells::kSalt;
    return cell == cells::kSecurityPassword || (user && m_users);
}

LinkStatus CAccessControl::WriteLoginCell(CellAddress cell, std::uint8_t type, const Variant::Bytes& data) {
    if (cell == cells::kUserName) {
        return m_users->SetName(type, data);
    }
    return cell == cells::kSalt ? m_users->SetSalt(type, data) : Login(type, data);
}

LinkStatus CAccessControl::Login(std::uint8_t type, const Variant::Bytes& data) {
    if (m_model->notSettable) {
        return kReplyNotSettable;
    }
    if (m_blocked) {
        // Relays that know users have no reply for it; the client sees that no attempts are left.
        return m_users ? kReplyRejected : kReplyBlocked;
    }
    const SPasswordResult result = m_users ? m_users->CheckDigest(type, data) : CheckPassword(type, data);
    if (result.status == kLinkGood) {
        Accept(result.levelTooLow || m_model->levelTooLow);
    } else if (result.status == kReplyRejected) {
        Reject();
    }
    return result.status;
}

SPasswordResult CAccessControl::CheckPassword(std::uint8_t type, const Variant::Bytes& data) const {
    const std::uint32_t wantedType = m_model->generation == 0 ? kTypePassword : kTypeEncryptedPassword;
    return {type == wantedType && data == m_model->password ? kLinkGood : kReplyRejected};
}

// A right password also forgives the wrong ones before it.
void CAccessControl::Accept(bool levelTooLow) {
    m_loggedIn = true;
    m_levelTooLow = levelTooLow;
    m_wrongPasswords = 0;
    m_requestsSinceLogin = 0;
}

void CAccessControl::Reject() {
    ++m_wrongPasswords;
    if (m_model->attempts != 0 && m_wrongPasswords >= m_model->attempts) {
        m_blocked = true;
        // One more than its length, since the next request counts down before it is answered.
        m_blockedRequestsLeft = m_model->blockedRequests + 1;
    }
}

// Made when asked for, since both change with every attempt and request.
std::optional<SCell> CAccessControl::FindCell(CellAddress cell) const {
    if (!m_model || m_model->generation == 0 || ColumnOf(cell) != m_model->securityColumn) {
        return std::nullopt;
    }
    if (RowOf(cell) == rows::kAttemptsLeft && m_model->attempts != 0) {
        return NumberCell(m_blocked ? 0 : m_model->attempts - m_wrongPasswords);
    }
    if (RowOf(cell) == rows::kBlockingTime && !(m_blocked && m_model->blocking == EBlocking::Permanent)) {
        return NumberCell(m_blocked ? m_blockedRequestsLeft : 0);
    }
    return std::nullopt;
}

} // namespace ruvo::sim
