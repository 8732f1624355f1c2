// The signals that ask a process to end.
#pragma once

#include <array>
#include <csignal>

namespace ruvo {

struct SSignalRow {
    int number;
    const char* name;
};

inline constexpr std::array kEndSignals{SSignalRow{SIGTERM, "SIGTERM"}, SSignalRow{SIGINT, "SIGINT"},
                                        SSignalRow{SIGHUP, "SIGHUP"}};

} // namespace ruvo
