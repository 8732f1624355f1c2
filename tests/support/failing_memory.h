// Memory that fails once when told to. The operator new of failing_memory.cpp takes the place of the
// library's.
#pragma once

#include <atomic>
#include <cstddef>

namespace ruvo::test {

/// Counts the allocations of what is under test, on all its threads, and lets the one of that number fail.
class CFailingMemory {
public:
    /// From here to the object's end; counted from 1, 0 for none.
    explicit CFailingMemory(std::size_t failing) {
        s_count = 0;
        s_failing = failing;
        s_armed = true;
    }
    ~CFailingMemory() { s_armed = false; }

    static std::size_t Count() { return s_count; }
    static bool Fails() { return s_armed && t_exempt == 0 && ++s_count == s_failing; }

    /// What belongs to the test, and not to what is tested.
    struct SExempt {
        SExempt() { ++t_exempt; }
        ~SExempt() { --t_exempt; }
    };

private:
    static inline std::atomic<std::size_t> s_count = 0;
    static inline std::atomic<std::size_t> s_failing = 0;
    static inline std::atomic<bool> s_armed = false;
    static inline thread_local unsigned t_exempt = 0;
};

} // namespace ruvo::test
