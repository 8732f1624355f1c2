// The root of the data values that a relay sends and accepts.
#pragma once

#include "model/values/owned_pointers.h"
#include "model/values/type_codes.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace ruvo {

/// One typed value. Values share nothing: copies are deep, and each belongs to one thread at a time.
class CParlaneData {
public:
    virtual ~CParlaneData() = default;

    /// Writes the wire data (all integers little-endian) to the start of `buffer`, which should have
    /// GetSize() bytes; a shorter one receives the bytes that fit. `size` becomes GetSize(). Returns the type
    /// code too.
    virtual std::uint32_t GetWireBytes(std::span<std::uint8_t> buffer, std::uint32_t& typeCode,
                                       std::size_t& size) const = 0;
    /// Size of the wire data in bytes.
    virtual std::size_t GetSize() const = 0;
    virtual std::unique_ptr<CParlaneData> Clone() const = 0;
    /// The default limits of this kind of value, often of another class; null where the kind has none.
    virtual std::unique_ptr<CParlaneData> CreateMinimum() const = 0;
    virtual std::unique_ptr<CParlaneData> CreateMaximum() const = 0;
    virtual std::unique_ptr<CParlaneData> CreateStep() const = 0;
    /// The value as a number; 0 for kinds that are none.
    virtual std::uint32_t GetUnsigned() const { return 0; }
    virtual double GetFloat() const { return 0.0; }

    std::uint32_t GetTypeCode() const { return m_typeCode; }

protected:
    explicit CParlaneData(std::uint32_t typeCode) : m_typeCode(typeCode) {}
    CParlaneData(const CParlaneData&) = default;
    CParlaneData& operator=(const CParlaneData&) = default;

    /// What every GetWireBytes ends in: hands over `bytes` and reports type and size.
    std::uint32_t PutWireBytes(std::span<const std::uint8_t> bytes, std::span<std::uint8_t> buffer,
                               std::uint32_t& typeCode, std::size_t& size) const;
    /// The same for a number of `wordSize` bytes, little-endian; zeros follow its fourth byte.
    std::uint32_t PutWord(std::uint32_t word, std::size_t wordSize, std::span<std::uint8_t> buffer,
                          std::uint32_t& typeCode, std::size_t& size) const;
    /// The number in the first `count` bytes (4 at most), little-endian; bytes that are not there count as 0.
    static std::uint32_t TakeWord(std::span<const std::uint8_t> data, std::size_t count);

private:
    std::uint32_t m_typeCode;
};

using CParlaneDataArray = COwnedPtrArray<CParlaneData>;
using CParlaneDataList = COwnedPtrList<CParlaneData>;
using CParlaneDataArrayArray = std::vector<CParlaneDataArray>;

/// No data: an empty reply, or a value that is explicitly none. Its limits are of the same kind.
class CParlaneInvalid final : public CParlaneData {
public:
    CParlaneInvalid() : CParlaneData(kTypeInvalid) {}

    std::uint32_t GetWireBytes(std::span<std::uint8_t> buffer, std::uint32_t& typeCode,
                               std::size_t& size) const override;
    std::size_t GetSize() const override { return 0; }
    std::unique_ptr<CParlaneData> Clone() const override;
    std::unique_ptr<CParlaneData> CreateMinimum() const override { return Clone(); }
    std::unique_ptr<CParlaneData> CreateMaximum() const override { return Clone(); }
    std::unique_ptr<CParlaneData> CreateStep() const override { return Clone(); }
};

} // namespace ruvo
