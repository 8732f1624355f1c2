#include "app/call_recording.h"

#include "base/text.h"
#include "extraction/relay_visit.h"
#include "ledger/root_folder.h"
#include "link/recording/recorded_connection.h"
#include "paths/path_utilities.h"
#include "platform/environment.h"
#include "platform/full_path.h"
#include "platform/registry.h"
#include "platform/standard_error.h"
#include "platform/state_folder.h"

#include <algorithm>
#include <optional>
#include <vector>

namespace ruvo {

namespace {

/// A thousand times what a visit begins with: the recording is the first to do without.
constexpr std::uint64_t kLeftFree = 1024 * kLeastFreeSpace;

/// Both with their links resolved.
bool IsIn(const std::string& folder, const std::string& root) {
    if (root.empty()) {
        return false;
    }
    const std::string below = ToUpperText(root.ends_with('\\') ? root : root + "\\");
    return ToUpperText(folder + "\\").starts_with(below);
}

/// Of this run and, as far as the state folder knows, of others; nullopt when that cannot be read.
std::optional<std::vector<std::string>> EventRoots(const std::string& eventRoot) {
    const auto folders = RootFoldersIn(StateFolder());
    if (!folders) {
        return std::nullopt;
    }
    std::vector<std::string> roots{ResolvedFolder(eventRoot)};
    for (const std::string& folder : *folders) {
        const auto root = EventRootOf(folder);
        if (!root) {
            return std::nullopt;
        }
        roots.push_back(ResolvedFolder(FullPath(*root)));
    }
    return roots;
}

std::string WhyRefused(const std::string& path, const std::string& eventRoot) {
    const std::string folder = ResolvedFolder(ParentFolder(path));
    if (path.empty() || folder.empty()) {
        return "its folder does not exist";
    }
    const auto roots = EventRoots(eventRoot);
    if (!roots) {
        return "the event roots are not known: the state folder " + DisplayPath(StateFolder()) +
               " cannot be read in whole";
    }
    const bool isInRoot =
        std::ranges::any_of(*roots, [&](const std::string& root) { return IsIn(folder, root); });
    return isInRoot ? "it would be in an event root" : "";
}

} // namespace

std::string AskedRecording() {
    constexpr const char* kName = "RUVO_RECORD";
    constexpr const char* kKey = R"(SOFTWARE\Halvex\Norvo Q7 Studio)";
    constexpr std::size_t kCapacity = 4096;
    if (const auto named = EnvironmentValue(kName)) {
        return *named;
    }
    for (const ERegistryRoot root : {ERegistryRoot::CurrentUser, ERegistryRoot::LocalMachine}) {
        if (const auto named = ReadRegistryValue(root, kKey, kName, kCapacity)) {
            return named->substr(0, named->find('\0'));
        }
    }
    return {};
}

void PlanRecording(const std::string& eventRoot) {
    SRecordingPlan& plan = PlannedRecording();
    plan = {};
    const std::string asked = AskedRecording();
    if (asked.empty()) {
        return;
    }
    const std::string path = FullPath(asked);
    const std::string why = WhyRefused(path, eventRoot);
    if (why.empty()) {
        plan.path = path;
        plan.leastFree = kLeftFree;
    } else {
        WriteStandardError("ruvo: " + DisplayPath(asked) + ": no recording is made: " + why);
    }
}

} // namespace ruvo
