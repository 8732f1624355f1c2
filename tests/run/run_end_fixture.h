// A run that is asked to end, and the requests for it.
#pragma once

#include "extraction/extraction_fixture.h"
#include "run/run_fixture.h"

#include "platform/environment.h"
#include "run/end_watch.h"

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>

namespace ruvo::test {

/// Requests that a test makes.
class CScriptedRequests final : public IEndRequests {
public:
    void Add(EWake wake) {
        const std::lock_guard guard(m_mutex);
        m_wakes.push_back(wake);
        m_changed.notify_all();
    }
    EWake Wait(std::chrono::milliseconds most, const char*& name) override {
        if (onWait)
            onWait();
        std::unique_lock lock(m_mutex);
        waits += (most == kForever ? "ever" : std::to_string(most.count())) + " ";
        m_changed.wait(lock, [this] { return !m_wakes.empty(); });
        const EWake wake = m_wakes.front();
        if (wake != EWake::Stopped)
            m_wakes.pop_front();
        name = wake == EWake::Request ? "SIGTERM" : name;
        return wake;
    }
    bool Skip(std::chrono::milliseconds time) override {
        waits += "+" + std::to_string(time.count()) + " ";
        return true;
    }
    void Stop() override { Add(EWake::Stopped); }
    void Release() override {}

    std::string waits; ///< how long it was waited, "+" where requests did not count
    std::function<void()> onWait;

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<EWake> m_wakes;
};

class RunEnd : public Run {
protected:
    RunEnd() {
        SetUsableState(true);
        fields.serialEntries = fields.modemEntries = {{"RV001", 5}, {"RV002", 200}};
        server.values = {{0x0006, TextHex("AB12-X")}, {0x0008, TextHex("00001234")}};
    }
    void SetEvents(int count) { server.events.assign(static_cast<std::size_t>(count), kTrip); }

    void SetUsableState(bool isUsable) const {
        SetEnvironmentValue("RUVO_STATE_DIR", isUsable ? m_state : m_noFolder);
    }
    /// The events of all day files.
    std::size_t Stored() const {
        const std::string day = folder.Read("ev/AB12-00001234/AB12-00001234-2026-11-16-DEV.evt");
        std::size_t count = 0;
        for (std::size_t at = 0; (at = day.find("Trip", at)) != std::string::npos; ++at)
            ++count;
        return count;
    }
    /// Lets the end be asked for in the so manieth of those calls.
    void AskAt(const std::string& name, int nth) {
        server.onCall = [this, name, nth, seen = 0](SCall&) mutable -> std::optional<std::int64_t> {
            if (server.calls.back().starts_with(name) && ++seen == nth)
                end->Ask("SIGHUP");
            return std::nullopt;
        };
    }

    const SScriptedEvent kTrip = Event(1, {"240107", TextHex("%d"), "280105"});
    const std::string m_state = folder.Native("state");
    const std::string m_noFolder = folder.Native((folder.Write("file", ""), "file/none"));
    const std::string kNext = " Connection details - COM Port: COM3, device address: 5.|";
};

} // namespace ruvo::test
