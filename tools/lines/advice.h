// What a text advises in the words of the system on which it is read.
#pragma once

#include "platform/system_tools.h"

#include <string>
#include <string_view>

namespace ruvo {

/// The text with this system's own words in the place of its names in braces, such as {disk errors}.
[[nodiscard]] std::string AdviceOf(std::string_view text, ESystemTools system = SystemTools());
/// The same for a page that is read on all systems.
[[nodiscard]] std::string AdviceForAll(std::string_view text);

/// The site that a piece of advice is for.
struct SAdvisedSite {
    std::string name;
    std::string ini; ///< as it is shown
};
/// With the site in the place of SITE.ini and SITE, in commands as one types them.
[[nodiscard]] std::string AdviceForSite(std::string_view text, const SAdvisedSite& site);

} // namespace ruvo
