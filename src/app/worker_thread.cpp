#include "app/worker_thread.h"

#include <exception>
#include <thread>

namespace ruvo {

bool RunOnWorkerThread(const std::function<void()>& work) {
    try {
        std::thread(std::cref(work)).join();
        return true;
    } catch (const std::exception&) { // no thread left, or no memory for one
        return false;
    }
}

} // namespace ruvo
