#include "tools/events/fetched_option.h"

#include "base/text.h"
#include "ledger/visit_history.h"
#include "platform/full_path.h"
#include "tools/events/filter_options.h"
#include "tools/file_path.h"
#include "tools/sites/fetched_bytes.h"
#include "tools/text_encoding.h"

#include <filesystem>
#include <map>

namespace ruvo {

namespace {

/// The folder above that of the relay.
std::string RootOf(const std::string& path) {
    std::error_code ignored;
    return std::filesystem::absolute(FilePath(path), ignored).parent_path().parent_path().string();
}

} // namespace

bool ParseFetchedOption(const CArguments& arguments, SConsole& console, std::optional<SPeriod>& period) {
    std::string time;
    if (!ParseTimeOption(arguments, "--fetched", time, console)) {
        return false;
    }
    period = ParsePeriod(arguments.Get("--fetched"));
    return true;
}

CFetchedBytes ReadFetchedBytes(const std::string& fullEventRoot, SPeriod period, SConsole& console) {
    CFetchedBytes fetched(period);
    const CVisitHistory history(fullEventRoot);
    const bool isWhole =
        history.ForEach([&fetched](const SVisitLine& run, ERunState /*state*/) { fetched.Add(run); });
    if (history.Found() == EHistory::NotReadable || !isWhole) {
        console.error.Write("ruvoctl: " + EscapeControls(SystemTextToUtf8(DisplayPath(fullEventRoot))) +
                            ": this user cannot read the records of its visits\n");
    }
    return fetched;
}

void TellWholeFiles(std::size_t count, SConsole& console) {
    if (count > 0) {
        console.error.Write("ruvoctl: " + Counted(count, "day file") +
                            " without a record of when its events came in: taken by the UTC day in its "
                            "name\n");
    }
}

bool KeepFetched(const CArguments& arguments, SConsole& console, SFoundFiles& found) {
    std::optional<SPeriod> period;
    if (!ParseFetchedOption(arguments, console, period)) {
        return false;
    }
    if (!period) {
        return true;
    }
    std::map<std::string, CFetchedBytes> roots;
    std::size_t wholeCount = 0;
    std::erase_if(found.files, [&](SFoundFile& file) {
        const std::string root = RootOf(file.path);
        auto known = roots.find(root);
        if (known == roots.end()) {
            known = roots.emplace(root, ReadFetchedBytes(FullPath(root), *period, console)).first;
        }
        SFetchedBytes bytes = known->second.Of(file.path);
        wholeCount += bytes.isWhole ? 1 : 0;
        const bool isLeftOut = bytes.IsEmpty();
        file.fetched = std::make_shared<const SFetchedBytes>(std::move(bytes));
        return isLeftOut;
    });
    TellWholeFiles(wholeCount, console);
    return true;
}

} // namespace ruvo
