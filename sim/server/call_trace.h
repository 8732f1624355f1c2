// The two files that a substation may keep: which events are gone, and which calls were made.
#pragma once

#include "platform/files.h"
#include "sim/server/call.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace ruvo::sim {

/// A file that only grows, line by line. Not safe for use by several threads.
class CLineFile {
public:
    /// Opens the file, made when it is missing; false when that fails. An empty path keeps nothing.
    bool Open(const std::string& path);
    /// Appends the text and a line end in one piece.
    void Append(const std::string& line);

private:
    CFile m_file;
};

/// Remembers from run to run how many events each relay has handed over: one line "NAME;" per event. A line
/// cut short by a crash has no ";" and does not count.
class CEventState {
public:
    bool Open(const std::string& path);
    std::size_t HandedOver(const std::string& relay) const;
    void NoteHandedOver(const std::string& relay) { m_file.Append(relay + ";"); }

private:
    std::string m_before; ///< the file as it was
    CLineFile m_file;
};

/// One line per call: operation, address, cell, status, further inputs; "-" where there is none.
class CCallTrace {
public:
    bool Open(const std::string& path) { return m_file.Open(path); }
    /// `remark` stands at the end of the line; empty for none.
    void Note(const SCall& call, Status status, std::string_view remark) noexcept {
        NoteText(call, status, remark);
    }
    /// The call did not reach the server.
    void NoteComFailure(const SCall& call) noexcept { NoteText(call, std::nullopt, {}); }
    /// A notification of the sink.
    void NoteCompletion(const char* method, Status status) noexcept;

private:
    static std::string StatusText(Status status);
    void NoteText(const SCall& call, std::optional<Status> status, std::string_view remark) noexcept;

    CLineFile m_file;
};

} // namespace ruvo::sim
