#include "platform/event_log.h"

#include "platform/windows/wide_text.h"

#include <array>

namespace ruvo {

namespace {

struct SKind {
    WORD type;
    DWORD severity; ///< the upper two bits of a message's number
};

/// In the order of ESystemEventKind.
constexpr std::array kKinds{SKind{EVENTLOG_INFORMATION_TYPE, 1}, SKind{EVENTLOG_WARNING_TYPE, 2},
                            SKind{EVENTLOG_ERROR_TYPE, 3}};
constexpr unsigned kSeverityShift = 30;

} // namespace

void WriteSystemEvent(ESystemEventKind kind, std::uint16_t number, const std::string& utf8) {
    const HANDLE source = RegisterEventSourceW(nullptr, L"ruvo");
    if (source == nullptr) {
        return; // the service that keeps the log does not run; the visit's exit status still tells
    }
    const SKind& row = kKinds[static_cast<std::size_t>(kind)];
    const std::wstring text = WideOfUtf8(utf8);
    std::array<const wchar_t*, 1> texts{text.c_str()};
    ReportEventW(source, row.type, 0, row.severity << kSeverityShift | number, nullptr,
                 static_cast<WORD>(texts.size()), 0, texts.data(), nullptr);
    DeregisterEventSource(source);
}

} // namespace ruvo
