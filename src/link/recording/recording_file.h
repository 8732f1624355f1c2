// The file of a recording as it is written.
#pragma once

#include "link/recording/recording_format.h"
#include "platform/file.h"

#include <cstdint>
#include <span>
#include <string>

namespace ruvo {

/// Where a recording is to be, and what it leaves free.
struct SRecordingPlan {
    std::string path;            ///< full; empty for no recording
    std::uint64_t leastFree = 0; ///< with fewer bytes free on the disk nothing is written
    std::uint64_t longest = kMaxRecording;
};

/// A new file that its owner alone may read. Only whole entries are in it, but for the last one of a process
/// that was killed. What cannot be written is left out, and never reported but by a gap in the file.
class CRecordingFile {
public:
    /// Makes the file. One that exists, and whatever else has its name, stays, and a number is added to the
    /// name: NAME-2.EXTENSION. The failure of the last attempt.
    SFileResult Make(const SRecordingPlan& plan);
    [[nodiscard]] const std::string& Path() const { return m_path; }

    /// Writes an entry, unless there is no room for it.
    void Append(ERecordingEntry kind, std::span<const std::uint8_t> body) noexcept;
    void End(ERecordingEnd end) noexcept;

private:
    bool HasRoom() const;
    bool Write(ERecordingEntry kind, std::span<const std::uint8_t> body);
    bool WriteHead();

    CFile m_file;
    std::string m_path;
    std::string m_folder;
    std::uint64_t m_leastFree = 0;
    std::uint64_t m_longest = 0;
    std::uint64_t m_length = 0;
    std::uint64_t m_leftOut = 0; ///< entries since the last that was written
    bool m_hasEnded = true;
};

} // namespace ruvo
