// The calls of a recording, each with all that came of it.
#pragma once

#include "link/recording/recording.h"
#include "link/seam/link_status.h"

#include <map>
#include <optional>
#include <vector>

namespace ruvo {

/// A call. One that runs on has its completion and the outputs of its Fetch... operation, which is no call of
/// its own.
struct SWholeCall {
    const SOperationRow* operation = nullptr;
    std::vector<SRecordedValue> inputs;
    std::optional<LinkStatus> status;      ///< none: the call did not get through, or its status is no number
    std::optional<LinkStatus> completion;  ///< of one that runs on
    std::optional<LinkStatus> fetchStatus; ///< likewise
    std::vector<SRecordedValue> outputs;

    /// The input is a number of that kind.
    [[nodiscard]] std::optional<std::int32_t> NumberAt(std::size_t input, EValueKind kind) const;
};

class CWholeCalls {
public:
    /// Borrows the reader.
    explicit CWholeCalls(CRecordingReader& reader) : m_reader(reader) {}

    /// The next call that is complete, in the order in which they were completed.
    [[nodiscard]] bool Next(SWholeCall& call);
    /// How many entries the recording has left out.
    [[nodiscard]] std::uint64_t LeftOut() const { return m_leftOut; }

private:
    bool TakeReply(const SRecordingEntry& entry, SWholeCall& call);
    bool TakeEvent(const SRecordingEntry& entry, SWholeCall& call);

    CRecordingReader& m_reader;
    std::map<std::uint64_t, SWholeCall> m_open; ///< by number, without their reply
    std::optional<SWholeCall> m_running;        ///< started
    std::uint64_t m_leftOut = 0;
};

} // namespace ruvo
