// The layout of a recording: what the bytes of its file mean. docs/reporting.md describes it for people.
// Numbers that are written here stand in files of users: never renumber.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace ruvo {

/// The first bytes of a recording.
inline constexpr std::string_view kRecordingMark = "RUVOREC\n";
inline constexpr std::uint8_t kRecordingVersion = 1;

/// A file grows no longer.
inline constexpr std::uint64_t kMaxRecording = std::uint64_t{256} * 1024 * 1024;
/// One entry has no more bytes: what is longer is left out, and counted as such.
inline constexpr std::size_t kMaxRecordingEntry = std::size_t{1} * 1024 * 1024;

enum class ERecordingEntry : std::uint8_t {
    Call = 1,  ///< a call begins: number, time, thread, slot, inputs
    Reply = 2, ///< it has come back: number, time, thread, whether it got through, status, outputs
    Event = 3, ///< the server reports to the sink: time, thread, slot, values
    Gap = 4,   ///< entries were left out: how many
    End = 5,   ///< nothing follows: ERecordingEnd
};

enum class ERecordingEnd : std::uint8_t {
    Closed = 1, ///< the client let the server go
    Full = 2,   ///< the file has reached its greatest length
};

enum class EValueKind : std::uint8_t {
    Empty = 0,
    UI1 = 1,
    I2 = 2,
    I4 = 3,
    Text = 4,
    Bytes = 5,
    Words = 6,
    List = 7,
    Other = 8,  ///< a value of a type that the interface has no use for
    Masked = 9, ///< stands for a value that may be a password: EMaskedForm, type code, length + 1
};

/// What a masked value was.
enum class EMaskedForm : std::uint8_t {
    Tagged = 1, ///< type code, length and data
    Bytes = 2,  ///< other bytes
    Text = 3,
    Other = 4, ///< any other kind
};

/// Lists in lists go no deeper.
inline constexpr unsigned kMaxValueDepth = 8;
/// No operation has more values on one side.
inline constexpr std::size_t kMaxCallValues = 16;

/// Slots of the sink's interface.
inline constexpr std::uint8_t kFirstSinkSlot = 7;
inline constexpr std::array<std::string_view, 5> kSinkNames{
    "OnProgress", "OnCommandComplete", "OnCommandCompleteAlt", "OnLineStatus", "OnTransferProgress"};

} // namespace ruvo
