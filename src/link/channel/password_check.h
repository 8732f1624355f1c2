// What a request asks after each pass: whether the relay requires a password first.
#pragma once

#include "link/seam/cell_address.h"
#include "link/seam/link_status.h"

#include <string>

namespace ruvo {

class CProgressMonitor;

/// The password check. The requests know the password entry by this alone, since the entry makes requests.
class IPasswordCheck {
public:
    /// When `status` asks for a password, enters it and puts the entry's result into `status`. `repeat` stays
    /// true only when the request is to run again; `passwordEntered` then becomes true. `message` goes to the
    /// trace, with the cell's address where `cell` is not 0.
    virtual void ProcessPasswordRequest(CProgressMonitor* monitor, LinkStatus& status, bool& passwordEntered,
                                        bool& repeat, const std::string& message, CellAddress cell) = 0;

protected:
    ~IPasswordCheck() = default; // a check is never deleted through this interface
};

} // namespace ruvo
