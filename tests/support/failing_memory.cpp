// A file of its own, since g++ takes pairs of these that it has inlined for mismatched.
#include "failing_memory.h"

#include <cstdlib>
#include <new>

void* operator new(std::size_t size) {
    void* const memory = ruvo::test::CFailingMemory::Fails() ? nullptr : std::malloc(size == 0 ? 1 : size);
    if (memory == nullptr)
        throw std::bad_alloc();
    return memory;
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
