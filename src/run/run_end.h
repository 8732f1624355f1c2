// Whether a run is to end before it has visited every relay, and what the log says about it.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <utility>

namespace ruvo {

/// Shared by the thread of the run and the one that is asked to end it.
class CRunEnd {
public:
    enum class EStage : std::uint8_t { NotBegun, Visiting, Over };

    /// The run is to end, since `name` was asked for: the event under way is finished, and no further relay
    /// is visited. The first name counts; it must stay.
    void Ask(const char* name);
    bool IsAsked() const { return m_isAsked; }
    /// The same for a visit, which looks at it after each event.
    const std::atomic<bool>& AskedFlag() const { return m_isAsked; }
    const char* Name() const { return m_name; }

    // --- by the thread of the run ---
    void Begin(std::size_t relays);
    void NoteVisited() { ++m_visited; }
    /// Everything is done; an end before the last relay is reported in the log.
    void Finish() noexcept;

    /// What is to be done for the visit under way when its thread is abandoned in the server; may be null.
    void WhenAbandoned(std::function<void()> action) { m_whenAbandoned = std::move(action); }
    /// The same for the run as a whole, after that.
    void WhenRunAbandoned(std::function<void()> action) { m_whenRunAbandoned = std::move(action); }
    EStage Stage() const { return m_stage; }
    /// Relays that an early end leaves out.
    std::size_t NotVisited() const { return m_relays - m_visited; }
    /// Writes the line of the log, once, whichever thread calls it first.
    void WriteEndLine() noexcept;
    /// By the thread that ends the process: the run's does not come back.
    void Abandon() noexcept;

private:
    std::atomic<const char*> m_name = nullptr;
    std::atomic<bool> m_isAsked = false;
    std::atomic<bool> m_isWritten = false;
    std::atomic<EStage> m_stage = EStage::NotBegun;
    std::atomic<std::size_t> m_relays = 0;
    std::atomic<std::size_t> m_visited = 0;
    std::function<void()> m_whenAbandoned;
    std::function<void()> m_whenRunAbandoned;
};

} // namespace ruvo
