// Which calls were made of the server and how they ended.
#pragma once

#include "sim/server/call.h"
#include "sim/server/line_file.h"

#include <optional>
#include <string>
#include <string_view>

namespace ruvo::sim {

/// One line per call: operation, address, cell, status, further inputs; "-" where there is none.
class CCallTrace {
public:
    bool Open(const std::string& path) { return m_file.Open(path); }
    /// `remark` is written at the end of the line; empty for none.
    void Write(const SCall& call, LinkStatus status, std::string_view remark) noexcept {
        WriteCall(call, status, remark);
    }
    /// The call did not reach the server.
    void WriteComFailure(const SCall& call) noexcept { WriteCall(call, std::nullopt, {}); }
    /// A notification of the sink.
    void WriteCompletion(const char* method, LinkStatus status) noexcept;

private:
    static std::string StatusText(LinkStatus status);
    void WriteCall(const SCall& call, std::optional<LinkStatus> status, std::string_view remark) noexcept;

    CLineFile m_file;
};

} // namespace ruvo::sim
