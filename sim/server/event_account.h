// Which events are gone from the relays, shared by all connections and programs at one time.
#pragma once

#include "platform/file.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>

namespace ruvo::sim {

/// Has one line "NAME;NUMBER;" for each event that a relay has handed over, written before the reply leaves.
/// Whoever asks for events holds the file's lock meanwhile, so that no event is handed over twice. Not safe
/// for use by several threads.
class CEventAccount {
public:
    /// Makes the file when it is missing; false when that fails. An empty path keeps no account.
    bool Open(const std::string& path);
    bool IsKept() const { return !m_path.empty(); }

    /// Waits for the lock; how many events the relay has handed over. None when the file cannot be locked or
    /// read.
    std::optional<std::size_t> Begin(const std::string& relay);
    /// Notes the relay's next event. False when it cannot be noted: then it is not to be handed over.
    bool Add(const std::string& relay);
    /// Lets others ask for events.
    void End();

private:
    bool Lock();
    bool ReadOn();

    std::string m_path;
    CFile m_file; ///< open while the lock is held
    std::uint64_t m_length = 0;
    std::uint64_t m_readTo = 0; ///< the end of the last whole line that was read
    std::map<std::string, std::size_t> m_counts;
};

} // namespace ruvo::sim
