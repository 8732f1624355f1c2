// The chapter on the keys of the INI file.
#pragma once

#include <string>

namespace ruvo {

/// From the tables that loading and the rules go by.
std::string KeyChapter();

} // namespace ruvo
