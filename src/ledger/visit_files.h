// The files of the visit records in an event root's folder: of each run that lasts (or was killed) one, and
// of all that have ended the file of visits, with the one before it.
#pragma once

#include "platform/files.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ruvo {

inline constexpr std::string_view kVisitsName = "visits.ndjson";
/// What kVisitsName was before it became too long.
inline constexpr std::string_view kEarlierVisitsName = "visits-earlier.ndjson";
inline constexpr std::string_view kRunEnding = ".visit";

/// What a file of visits holds at most; one run more begins a new one. So between two and four years of
/// nights are kept, or fewer of very many relays.
struct SVisitBounds {
    std::size_t runs = 732;
    std::uint64_t bytes = std::uint64_t{32} * 1024 * 1024;
};

/// Reads a file line by line. A last line without its end is skipped: it is being written, or the end of a
/// process has torn it.
class CLineFile {
public:
    /// The file stays the caller's; it is read from its beginning.
    explicit CLineFile(CFile& file);
    /// False at the end, and when the file cannot be read.
    [[nodiscard]] bool Next(std::string_view& line);
    [[nodiscard]] bool HasFailed() const { return m_hasFailed; }

private:
    CFile& m_file;
    std::string m_bytes;
    std::size_t m_begin = 0; ///< of the next line
    bool m_isAtEnd = false;
    bool m_hasFailed = false;
};

/// A run's file, cut into its parts, which stay in `text`.
struct SRunFile {
    std::string text;
    std::string_view begin;
    std::vector<std::string_view> entries;
    std::string_view end; ///< empty while the run lasts, and when it was killed
};
/// False when it cannot be read.
[[nodiscard]] bool ReadRunFile(CFile& file, SRunFile& run);

/// The numbers of the runs that have a file in the folder, which may be missing or none, in order; nullopt
/// when it cannot be read.
[[nodiscard]] std::optional<std::vector<std::uint64_t>> RunFilesIn(const std::string& folder);
[[nodiscard]] std::string RunFilePath(const std::string& folder, std::uint64_t number);

/// The largest number of a line; 0 without one. Nullopt when the lines cannot be read; of those that were
/// moved to the earlier file it can do without, as they have smaller numbers as a rule.
[[nodiscard]] std::optional<std::uint64_t> LargestVisitNumber(const std::string& folder);

/// Appends a complete line and flushes it, unless the file has its number already. False when the line is not
/// in the file afterwards.
[[nodiscard]] bool AppendVisit(const std::string& folder, const std::string& line, SVisitBounds bounds);

/// Passes every line of the two files to `take`, the earliest first. False when one of them exists and cannot
/// be read.
[[nodiscard]] bool ForEachVisit(const std::string& folder,
                                const std::function<void(std::string_view line)>& take);

} // namespace ruvo
