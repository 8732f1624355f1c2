// The destination root, and the registry's file where there is no registry.
#include "config/configuration.h"
#include "config/destination_root.h"
#include "platform/full_path.h"
#include "support/fake_system.h"
#include "support/scratch_folder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <utility>

namespace ruvo {

// The boxes shown, and the destination that the two registry values (empty: not there) lead to.
std::string Destination(const std::string& user, const std::string& machine, bool loaded = true) {
    const CScratchFolder folder;
    for (const auto& [variable, value] :
         {std::pair{"RUVO_REGISTRY_USER", user}, {"RUVO_REGISTRY_MACHINE", machine}}) {
        const std::string name = value.empty() ? "Other=" : "Q7SecurityLogs=";
        folder.Write(variable, "[SOFTWARE\\Halvex\\Norvo Q7 Studio]\n" + name + value);
        setenv(variable, folder.Native(variable).c_str(), 1);
    }
    CRunContext context;
    EXPECT_TRUE(LoadConfiguration(folder.Write("site.ini", "[RUVO_GENERAL]\nEventRootDir=C:\\ini root"),
                                  context.Config()));
    ResolveDestinationRoot(context, loaded);
    return std::exchange(g_messageBoxes, "") + context.DestinationRoot() +
           (context.IsDestinationFromRegistry() ? "|registry" : "|file");
}

TEST(Destination, RegistryRules) {
    const CScratchFolder folder;
    const std::string present = folder.Path();
    const std::string unusable = folder.Write("file", "") + "\\below";
    EXPECT_EQ(Destination("", ""), "C:\\ini root|file");
    EXPECT_EQ(Destination("", "", false), "|file");
    EXPECT_EQ(Destination(present, unusable, false), present + "\\RUVO\\|registry");
    EXPECT_EQ(Destination(present + "\\new\\deep\\", ""), present + "\\new\\deep\\RUVO\\|registry");
    EXPECT_EQ(Destination("", unusable), unusable + "\\RUVO\\|registry"); // the machine's goes untested
    EXPECT_EQ(Destination("", "C:\\" + std::string(260, 'x')), "|registry");
    EXPECT_EQ(Destination(unusable, ""), "C:\\ini root|file");
    EXPECT_EQ(Destination("", std::string(100000, 'x')), "|registry");
    EXPECT_EQ(Destination("", std::string(100001, 'x')), "C:\\ini root|file"); // counts as none
    EXPECT_EQ(Destination(present + std::string("\0x", 2), ""), present + "\\RUVO\\|registry");
    const std::string box = "Information|Registry entry with destination path for current user is invalid.\n"
                            "Events will be extracted with use of default application settings.\n"
                            "Destination path: ";
    EXPECT_EQ(Destination(unusable, present), box + folder.Native() + "|" + present + "\\RUVO\\|registry");
    const std::string here = std::filesystem::current_path();
    EXPECT_EQ(Destination(unusable, "q7"), box + here + "/q7|" + FullPath("q7") + "\\RUVO\\|registry");
}

} // namespace ruvo
