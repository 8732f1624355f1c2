#include "tools/events/filter_options.h"

#include "tools/text_encoding.h"

namespace ruvo {

namespace {

bool ParseTime(const CArguments& arguments, std::string_view name, EDayEdge edge, std::optional<TimeKey>& key,
               SConsole& console) {
    if (!arguments.Has(name)) {
        return true;
    }
    key = ParseTimeKey(arguments.Get(name), edge);
    if (!key) {
        console.error.Write(std::string(name) + ": " + EscapeControls(arguments.Get(name)) +
                            ": expected a date such as 2026-11-16 or a time such as 2026-11-16T03:12:45\n");
    }
    return key.has_value();
}

} // namespace

void NameSite(const CArguments& arguments, SFoundFiles& found) {
    if (arguments.Has("--site")) {
        for (SFoundFile& file : found.files) {
            file.site = SystemTextToUtf8(arguments.Get("--site"));
        }
    }
}

bool ParseFilterOptions(const CArguments& arguments, SConsole& console, SEventFilter& filter) {
    filter.relay = arguments.Get("--relay");
    filter.match = arguments.Get("--match");
    return ParseTime(arguments, "--since", EDayEdge::Start, filter.since, console) &&
           ParseTime(arguments, "--until", EDayEdge::End, filter.until, console);
}

} // namespace ruvo
