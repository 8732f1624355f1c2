#include "link/channel/sink.h"

#include "link/channel/channel.h"

namespace ruvo {

namespace {

LinkStatus StatusOf(const Variant& variant) {
    std::int32_t number = 0;
    return variant.ToI4(number) ? static_cast<LinkStatus>(number) : kLinkComFailure;
}

/// Reports to the channel, if there is a client. The server learns of no failure in it, and its thread is not
/// kept.
template <class Report>
void PassOn(Report report) noexcept {
    const std::shared_ptr<CChannel> channel = HoldChannel();
    if (channel == nullptr) {
        return;
    }
    const CCommandMutex::CNoWaitScope noWaiting;
    channel->Stay().NoteReturn();
    try {
        report(*channel);
    } catch (...) { // NOLINT(bugprone-empty-catch): the handler's own trouble
    }
}

} // namespace

void CP32lsSink_v2::OnProgress(const Variant& done, const Variant& total) noexcept {
    std::int32_t doneCount = 0;
    std::int32_t totalCount = 0;
    if (done.ToI4(doneCount) && total.ToI4(totalCount)) {
        PassOn([&](CChannel& channel) {
            channel.Monitor().ReportProgress(static_cast<std::uint32_t>(doneCount),
                                             static_cast<std::uint32_t>(totalCount));
        });
    }
}

void CP32lsSink_v2::OnCommandComplete(const Variant& status) noexcept {
    // A status that is no number still ends the command: nothing else would ever wake its wait.
    PassOn([&](CChannel& channel) { channel.ReportCompletion(StatusOf(status)); });
}

void CP32lsSink_v2::OnCommandCompleteAlt(const Variant& status) noexcept {
    OnCommandComplete(status);
}

void CP32lsSink_v2::OnLineStatus(const Variant& status) noexcept {
    PassOn([&](CChannel& channel) { channel.ReportLineStatus(StatusOf(status)); });
}

void CP32lsSink_v2::OnTransferProgress(const Variant& value) noexcept {
    std::int32_t number = 0;
    if (value.ToI4(number)) {
        PassOn([&](CChannel& channel) { channel.Monitor().ReportTransfer(number); });
    }
}

} // namespace ruvo
