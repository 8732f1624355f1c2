#include "link/channel/sink.h"

#include "link/client.h"
#include "link/seam/link_status.h"

namespace ruvo {

namespace {

LinkStatus StatusOf(const Variant& variant) {
    std::int32_t number = 0;
    return variant.ToI4(number) ? static_cast<LinkStatus>(number) : kLinkComFailure;
}

} // namespace

/// Tells the client, if there is one. The server learns of no failure in it, and its thread is not kept.
template <class Tell>
void CP32lsSink_v2::Deliver(Tell tell) noexcept {
    const std::shared_ptr<CP32Wrap> wrap = CP32Wrap::HoldInstance();
    if (wrap == nullptr) {
        return;
    }
    const CCommandMutex::CNoWaiting noWaiting;
    try {
        tell(*wrap);
    } catch (...) { // NOLINT(bugprone-empty-catch): the handler's own trouble
    }
}

void CP32lsSink_v2::OnProgress(const Variant& done, const Variant& total) noexcept {
    std::int32_t doneCount = 0;
    std::int32_t totalCount = 0;
    if (done.ToI4(doneCount) && total.ToI4(totalCount)) {
        Deliver([&](CP32Wrap& wrap) {
            wrap.ReportProgress(static_cast<std::uint32_t>(doneCount),
                                static_cast<std::uint32_t>(totalCount));
        });
    }
}

void CP32lsSink_v2::OnCommandComplete(const Variant& status) noexcept {
    // A status that is no number still ends the command: nothing else would ever wake its wait.
    Deliver([&](CP32Wrap& wrap) { wrap.m_events.SignalCompletion(StatusOf(status)); });
}

void CP32lsSink_v2::OnCommandCompleteAlt(const Variant& status) noexcept {
    OnCommandComplete(status);
}

void CP32lsSink_v2::OnLineStatus(const Variant& status) noexcept {
    Deliver([&](CP32Wrap& wrap) { wrap.ReportLineStatus(StatusOf(status)); });
}

void CP32lsSink_v2::OnTransferProgress(const Variant& value) noexcept {
    std::int32_t number = 0;
    if (value.ToI4(number)) {
        Deliver([&](CP32Wrap& wrap) { wrap.ReportTransfer(number); });
    }
}

} // namespace ruvo
