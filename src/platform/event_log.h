// The system's log of events, where it keeps one for all programs (Windows: the log "Application").
#pragma once

#include <cstdint>
#include <string>

namespace ruvo {

enum class ESystemEventKind : std::uint8_t { Information, Warning, Error };

/// Writes one entry of the source "ruvo". The number is one of the system's message file; the text is UTF-8.
/// On systems with a journal, what a program prints is there already, and nothing is written.
void WriteSystemEvent(ESystemEventKind kind, std::uint16_t number, const std::string& utf8);

} // namespace ruvo
