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

bool ReadClocks(const CArguments& arguments, SConsole& console, CRelayClocks& clocks) {
    if (!arguments.Has("--clocks")) {
        return true;
    }
    const std::string failure = clocks.Read(arguments.Get("--clocks"));
    if (!failure.empty()) {
        console.error.Write("--clocks: " + EscapeControls(failure) + "\n");
    }
    return failure.empty();
}

bool ParseZone(const CArguments& arguments, SConsole& console, CZoneRule& zone) {
    if (!arguments.Has("--zone")) {
        return true;
    }
    const bool hasClocks = arguments.Has("--clocks");
    const auto rule = ReadZone(arguments.Get("--zone"));
    if (!hasClocks || !rule) {
        console.error.Write("--zone: " +
                            (hasClocks ? EscapeControls(SystemTextToUtf8(arguments.Get("--zone"))) +
                                             ": expected UTC, an offset, a rule or the name of a zone\n"
                                       : std::string("requires --clocks\n")));
        return false;
    }
    zone = *rule;
    return true;
}

std::string ZoneName(const CArguments& arguments) {
    return !arguments.Has("--clocks") ? std::string()
           : arguments.Has("--zone")  ? SystemTextToUtf8(arguments.Get("--zone"))
                                      : std::string("UTC");
}

void CompleteSources(const CArguments& arguments, const CRelayClocks& clocks, SFoundFiles& found) {
    for (SFoundFile& file : found.files) {
        if (arguments.Has("--site")) {
            file.site = SystemTextToUtf8(arguments.Get("--site"));
        }
        file.clock = clocks.ClockOf(file.site, file.relay);
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
    filter.relay = SystemTextToUtf8(arguments.Get("--relay"));
    filter.match = SystemTextToUtf8(arguments.Get("--match"));
    return ParseBound(arguments, "--since", EDayEdge::Start, filter.sinceText, filter.since, console) &&
           ParseBound(arguments, "--until", EDayEdge::End, filter.untilText, filter.until, console);
}

} // namespace ruvo
