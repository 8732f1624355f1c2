// A relay's access control: who may do what, and how often one may guess.
#pragma once

#include "sim/file/substation.h"
#include "sim/relay/user_login.h"

#include <cstdint>
#include <memory>
#include <optional>

namespace ruvo::sim {

enum class EAccess : std::uint8_t { Read, Write, Event };

/// The state of one relay's login. Time is counted in requests, so that runs repeat exactly.
class CAccessControl {
public:
    /// Borrows the model, which must outlive this. None: everything is open.
    explicit CAccessControl(const std::optional<SAccess>& model);

    /// To be called once per request to the relay, before it is answered.
    void CountRequest();
    /// Status that refuses the access: a password is wanted. 0 when the access is open.
    LinkStatus Check(EAccess access, CellAddress cell) const;

    /// Whether a write to the cell is a step of a login rather than a change of data.
    bool IsLoginCell(CellAddress cell) const;
    /// A write to a login cell; its status.
    LinkStatus WriteLoginCell(CellAddress cell, std::uint8_t type, const Variant::Bytes& data);
    void Logout() { m_loggedIn = false; }

    /// The attempts left and the blocking time, where the relay has such cells.
    std::optional<SCell> FindCell(CellAddress cell) const;

private:
    bool IsProtected(EAccess access, CellAddress cell) const;
    bool IsAlwaysOpen(CellAddress cell) const;
    LinkStatus Login(std::uint8_t type, const Variant::Bytes& data);
    SPasswordResult CheckPassword(std::uint8_t type, const Variant::Bytes& data) const;
    void Accept(bool levelTooLow);
    void Reject();

    const std::optional<SAccess>& m_model;
    std::unique_ptr<CUserLogin> m_users; ///< null for relays that know no users
    bool m_loggedIn = false;
    bool m_levelTooLow = false; ///< of the login: it opens nothing
    bool m_blocked = false;
    std::uint32_t m_wrongPasswords = 0;
    std::uint32_t m_requestsSinceLogin = 0;
    std::uint32_t m_blockedRequestsLeft = 0;
};

} // namespace ruvo::sim
