#include "platform/mapped_part.h"

#include "platform/posix/file_failures.h"
#include "platform/posix/file_handle.h"

#include <atomic>
#include <csetjmp>
#include <csignal>
#include <cstring>
#include <sys/mman.h>
#include <unistd.h>

namespace ruvo {

namespace {

// Where this thread goes on when the system cannot give it a page of a mapped file.
thread_local sigjmp_buf* t_onFault = nullptr;
struct sigaction g_before = {};

// A fault that is not of a store below is left to the one who handled it before: the access is tried again.
void OnFault(int signal, siginfo_t* info, void* /*context*/) {
    if (t_onFault != nullptr) {
        siglongjmp(*t_onFault, 1); // NOLINT(cert-err52-cpp): there is no other way back
    }
    sigaction(signal, &g_before, nullptr);
    if (info->si_code <= 0) { // it was sent, and would not come again
        raise(signal);
    }
}

bool CatchFaults() {
    static const bool isCaught = [] {
        struct sigaction action = {};
        action.sa_sigaction = OnFault;
        action.sa_flags = SA_SIGINFO | SA_NODEFER | SA_ONSTACK; // the jump leaves the mask as it was
        sigemptyset(&action.sa_mask);
        return sigaction(SIGBUS, &action, &g_before) == 0;
    }();
    return isCaught;
}

// Word by word, in this order and no other.
void CopyForwards(std::uint8_t* to, const std::uint8_t* from, std::size_t size) {
    constexpr std::size_t kWord = sizeof(std::uint64_t);
    for (; size >= kWord; size -= kWord, to += kWord, from += kWord) {
        std::memcpy(to, from, kWord);
        std::atomic_signal_fence(std::memory_order_seq_cst);
    }
    for (; size > 0; --size) {
        std::memcpy(to++, from++, 1);
        std::atomic_signal_fence(std::memory_order_seq_cst);
    }
}

} // namespace

bool CMappedPart::Map(CFile& file, std::uint64_t offset, std::size_t size) noexcept {
    static const auto page = static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
    Unmap();
    const std::uint64_t begin = offset - offset % page;
    const std::size_t whole = size + static_cast<std::size_t>(offset - begin);
    void* const memory = CatchFaults() ? mmap(nullptr, whole, PROT_READ | PROT_WRITE, MAP_SHARED,
                                              file.m_handle->descriptor, static_cast<off_t>(begin))
                                       : MAP_FAILED;
    if (memory == MAP_FAILED) {
        return false;
    }
    m_memory = static_cast<std::uint8_t*>(memory);
    m_offset = begin;
    m_size = whole;
    return true;
}

SFileResult CMappedPart::Store(std::uint64_t offset, std::span<const std::uint8_t> bytes) noexcept {
    sigjmp_buf fault;
    if (sigsetjmp(fault, 0) != 0) {
        t_onFault = nullptr;
        return Failed(EIO); // the system does not say more
    }
    t_onFault = &fault;
    std::atomic_signal_fence(std::memory_order_seq_cst);
    CopyForwards(m_memory + (offset - m_offset), bytes.data(), bytes.size());
    t_onFault = nullptr;
    return {};
}

void CMappedPart::Unmap() noexcept {
    if (m_memory != nullptr) {
        munmap(m_memory, m_size);
        m_memory = nullptr;
        m_size = 0;
    }
}

} // namespace ruvo
