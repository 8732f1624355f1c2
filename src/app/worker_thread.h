// Work on a thread of its own.
#pragma once

#include <functional>

namespace ruvo {

/// Runs the work, which throws nothing, on a new thread and waits for its end without time-out. False when
/// the thread could not be started: the work has not run then.
[[nodiscard]] bool RunOnWorkerThread(const std::function<void()>& work);

} // namespace ruvo
