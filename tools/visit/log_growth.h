// What others add to the error log.
#pragma once

#include <cstdint>
#include <string>

namespace ruvo {

class CLogGrowth {
public:
    /// Of a log that may be missing; its full path.
    explicit CLogGrowth(std::string path);

    /// What the log has now beyond what it had then, in the system's encoding. All of it when it was replaced
    /// meanwhile.
    [[nodiscard]] std::string Added() const;

private:
    std::string m_path;
    std::uint64_t m_length;
};

/// Whether the lines tell of a run that a request has ended.
[[nodiscard]] bool TellOfRequestedEnd(const std::string& lines);

} // namespace ruvo
