// A part of an open file in the memory of the process: what is stored there is in the file at once, without a
// call of the system, and outlasts an end of the process as a write does.
#pragma once

#include "platform/file.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace ruvo {

class CMappedPart {
public:
    CMappedPart() = default;
    CMappedPart(const CMappedPart&) = delete;
    CMappedPart& operator=(const CMappedPart&) = delete;
    ~CMappedPart() { Unmap(); }

    /// Maps so many bytes from the offset on, or somewhat before it, in place of what was mapped. The file is
    /// open for reading and writing; it may be shorter. False where files cannot be mapped.
    [[nodiscard]] bool Map(CFile& file, std::uint64_t offset, std::size_t size) noexcept;
    [[nodiscard]] bool Covers(std::uint64_t offset, std::size_t size) const {
        return offset >= m_offset && offset - m_offset <= m_size && size <= m_size - (offset - m_offset);
    }
    /// Stores bytes in a place that is covered and has been written before, from the first to the last: an
    /// end of the process leaves a beginning of them. Fails when the disk does or the file has been cut;
    /// then, too, a beginning may be there.
    SFileResult Store(std::uint64_t offset, std::span<const std::uint8_t> bytes) noexcept;
    void Unmap() noexcept;

private:
    std::uint8_t* m_memory = nullptr;
    std::uint64_t m_offset = 0;
    std::size_t m_size = 0;
};

} // namespace ruvo
