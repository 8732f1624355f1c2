// The lines that a run writes to the error log, and what each means: the one home of these words. The page
// ruvo-log(5), the command explain and the digest show them.
#pragma once

#include "link/seam/link_status.h"
#include "tools/lines/line_form.h"

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace ruvo {

/// What a line is about.
enum class EConcern : std::uint8_t {
    Run,      ///< the run as a whole: it did not begin, or ended early
    Link,     ///< a relay, or all of them, could not be reached or read
    Password, ///< a relay did not accept the login
    Storage,  ///< events that are not in their day file, but safe: in the relay, in a journal, set aside
    Loss,     ///< events or parts of them that are lost or may be, and damaged files
};
inline constexpr std::array kConcerns{EConcern::Run, EConcern::Link, EConcern::Password, EConcern::Storage,
                                      EConcern::Loss};

enum class ESeverity : std::uint8_t {
    Notice,  ///< nothing has to be done
    Warning, ///< somebody should look; nothing is lost yet
    Critical ///< something is lost or damaged, or will be soon
};

/// "run", "link", "password", "storage", "loss".
[[nodiscard]] std::string_view ConcernName(EConcern concern);
/// "notice", "warning", "critical".
[[nodiscard]] std::string_view SeverityName(ESeverity severity);

/// A line, without its time, the details of the connection and the status. Its words name commands as
/// advice.h says.
struct SLineRow {
    EConcern concern = EConcern::Run;
    ESeverity severity = ESeverity::Warning;
    CLineForm form;
    std::string_view happened;
    std::string_view cost;
    std::string_view todo;
    std::string expected = {}; ///< of the INI file or its surroundings, for a line that refuses them
};

/// The words of a row, as the files of the table hold them.
struct SLineWords {
    EConcern concern;
    ESeverity severity;
    std::string_view form;
    std::string_view happened;
    std::string_view cost;
    std::string_view todo;
};

/// Statuses of the comms server that mean the same: "P32LS status: TEXT" at the end of a line.
struct SStatusRow {
    LinkStatus first;
    LinkStatus last;
    std::string_view happened;
    std::string_view todo;

    /// From one status to the next: a reply of the device has its code in the second byte.
    [[nodiscard]] constexpr LinkStatus Step() const {
        return first > kLinkReply && IsReply(first) ? ReplyStatus(1) - ReplyStatus(0) : 1;
    }
};

std::span<const SLineWords> LinesOfRun();
std::span<const SLineWords> LinesOfStorage();
std::span<const SLineWords> LinesOfLoss();

/// All lines, by concern.
[[nodiscard]] const std::vector<SLineRow>& LineTable();
/// All statuses that have a text.
[[nodiscard]] std::span<const SStatusRow> StatusTable();
/// The text of a status, as lines end with it.
[[nodiscard]] std::string_view StatusText(LinkStatus status);

} // namespace ruvo
