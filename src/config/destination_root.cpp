#include "config/destination_root.h"

#include "config/configuration.h"
#include "paths/path_utilities.h"
#include "platform/full_path.h"
#include "platform/message_box.h"
#include "platform/registry.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace ruvo {

namespace {

constexpr std::size_t kRegistryCapacity = 100000; // of the buffer that takes the value

constexpr std::string_view kStudioKey = R"(SOFTWARE\Halvex\Norvo Q7 Studio)";
constexpr std::string_view kDestinationValue = "Q7SecurityLogs";
constexpr std::string_view kRegistrySubfolder = R"(\RUVO\)";

std::optional<std::string> RegistryDestination(ERegistryRoot root) {
    std::optional<std::string> value =
        ReadRegistryValue(root, kStudioKey, kDestinationValue, kRegistryCapacity);
    if (value) {
        value->resize(std::min(value->size(), value->find('\0')));
    }
    return value;
}

// Looks at the very folder that would be used.
bool IsUsableFolder(const std::string& folder) {
    const std::string full = FullFolderPath(folder);
    std::string firstCreated;
    return DirectoryExists(full) || CreateDirectoryPath(full, firstCreated);
}

// A folder that cannot be made absolute leaves the root empty, which the write test then refuses.
void ApplyRegistryDestination(CRunContext& context, const std::string& folder) {
    std::string root = FullFolderPath(folder);
    if (!root.empty()) {
        root += kRegistrySubfolder;
    }
    context.SetDestinationRoot(std::move(root));
    context.SetDestinationFromRegistry(true);
}

void ReportInvalidUserDestination(const std::string& machineFolder) {
    ShowMessageBox(EMessageIcon::Information, "Information",
                   "Registry entry with destination path for current user is invalid.\n"
                   "Events will be extracted with use of default application settings.\n"
                   "Destination path: " +
                       DisplayPath(FullPath(machineFolder)));
}

} // namespace

void ResolveDestinationRoot(CRunContext& context, bool configurationLoaded) {
    context.SetDestinationFromRegistry(false);
    if (configurationLoaded) {
        context.SetDestinationRoot(context.Config().EventRoot());
    }
    const std::optional<std::string> userFolder = RegistryDestination(ERegistryRoot::CurrentUser);
    if (userFolder && IsUsableFolder(*userFolder)) {
        ApplyRegistryDestination(context, *userFolder);
        return;
    }
    const std::optional<std::string> machineFolder = RegistryDestination(ERegistryRoot::LocalMachine);
    if (!machineFolder) {
        return;
    }
    if (userFolder) {
        ReportInvalidUserDestination(*machineFolder);
    }
    ApplyRegistryDestination(context, *machineFolder);
}

} // namespace ruvo
