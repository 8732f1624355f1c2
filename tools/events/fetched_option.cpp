#include "tools/events/fetched_option.h"

#include "base/text.h"
#include "ledger/visit_history.h"
#include "platform/full_path.h"
#include "tools/events/filter_options.h"
#include "tools/sites/fetched_bytes.h"
#include "tools/text_encoding.h"

#include <filesystem>
#include <map>

namespace ruvo {

namespace {

/// The folder above that of the relay.
std::string RootOf(const std::string& path) {
    std::error_code ignored;
    return std::filesystem::absolute(path, ignored).parent_path().parent_path().string();
}

class CFetchedFiles {
public:
    CFetchedFiles(SPeriod period, SConsole& console) : m_period(period), m_console(console) {}

    /// False where nothing of the file counts.
    bool Keep(SFoundFile& file) {
        const std::string root = RootOf(file.path);
        auto known = m_roots.find(root);
        if (known == m_roots.end()) {
            known = m_roots.emplace(root, ReadRoot(root)).first;
        }
        SFetchedBytes bytes = known->second.Of(file.path);
        m_wholeCount += bytes.isWhole ? 1 : 0;
        const bool isKept = !bytes.IsEmpty();
        file.fetched = std::make_shared<const SFetchedBytes>(std::move(bytes));
        return isKept;
    }
    void TellWhole() const {
        if (m_wholeCount > 0) {
            m_console.error.Write("ruvoctl: " + Counted(m_wholeCount, "day file") +
                                  " without a record of when its events came in: taken by the UTC day in its "
                                  "name\n");
        }
    }

private:
    CFetchedBytes ReadRoot(const std::string& root) {
        CFetchedBytes fetched(m_period);
        const CVisitHistory history(FullPath(root));
        const bool isWhole =
            history.ForEach([&fetched](const SVisitLine& run, ERunState /*state*/) { fetched.Add(run); });
        if (history.Found() == EHistory::NotReadable || !isWhole) {
            m_console.error.Write("ruvoctl: " + EscapeControls(SystemTextToUtf8(root)) +
                                  ": this user cannot read the records of its visits\n");
        }
        return fetched;
    }

    SPeriod m_period;
    SConsole& m_console;
    std::map<std::string, CFetchedBytes> m_roots;
    std::size_t m_wholeCount = 0;
};

} // namespace

bool KeepFetched(const CArguments& arguments, SConsole& console, SFoundFiles& found) {
    std::string time;
    if (!ParseTimeOption(arguments, "--fetched", time, console)) {
        return false;
    }
    if (const auto period = ParsePeriod(arguments.Get("--fetched"))) {
        CFetchedFiles files(*period, console);
        std::erase_if(found.files, [&files](SFoundFile& file) { return !files.Keep(file); });
        files.TellWhole();
    }
    return true;
}

} // namespace ruvo
