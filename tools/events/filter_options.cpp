#include "tools/events/filter_options.h"

#include "tools/given_time.h"
#include "tools/text_encoding.h"

namespace ruvo {

namespace {

bool ParseBound(const CArguments& arguments, std::string_view name, EDayEdge edge, std::string& text,
                std::optional<TimeKey>& key, SConsole& console) {
    if (!ParseTimeOption(arguments, name, text, console)) {
        return false;
    }
    key = text.empty() ? std::nullopt : ParseTimeKey(text, edge);
    return true;
}

} // namespace

void NameSite(const CArguments& arguments, SFoundFiles& found) {
    if (arguments.Has("--site")) {
        for (SFoundFile& file : found.files) {
            file.site = SystemTextToUtf8(arguments.Get("--site"));
        }
    }
}

bool ParseTimeOption(const CArguments& arguments, std::string_view name, std::string& time,
                     SConsole& console) {
    if (!arguments.Has(name)) {
        return true;
    }
    const auto parsed = ParseGivenTime(arguments.Get(name));
    time = parsed.value_or(time);
    if (!parsed) {
        console.error.Write(std::string(name) + ": " + EscapeControls(SystemTextToUtf8(arguments.Get(name))) +
                            ": expected " + std::string(kTimeForms) + "\n");
    }
    return parsed.has_value();
}

bool ParseFilterOptions(const CArguments& arguments, SConsole& console, SEventFilter& filter) {
    filter.relay = arguments.Get("--relay");
    filter.match = arguments.Get("--match");
    return ParseBound(arguments, "--since", EDayEdge::Start, filter.sinceText, filter.since, console) &&
           ParseBound(arguments, "--until", EDayEdge::End, filter.untilText, filter.until, console);
}

} // namespace ruvo
