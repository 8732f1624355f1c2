// The client's event sink: what the server calls to report progress and completion.
#pragma once

#include "link/seam/ip32ls.h"

namespace ruvo {

/// Stateless; looks the client's channel up at every event, so a late one after the client is gone is lost
/// harmlessly.
class CP32lsSink_v2 final : public IP32lsSink_v2 {
public:
    void OnProgress(const Variant& done, const Variant& total) noexcept override;
    void OnCommandComplete(const Variant& status) noexcept override;
    void OnCommandCompleteAlt(const Variant& status) noexcept override;
    void OnLineStatus(const Variant& status) noexcept override;
    void OnTransferProgress(const Variant& value) noexcept override;
};

} // namespace ruvo
