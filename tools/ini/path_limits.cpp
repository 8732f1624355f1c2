#include "tools/ini/path_limits.h"

#include "platform/full_path.h"
#include "platform/native_text.h"

namespace ruvo {

std::string WhyNoRunOpens(const std::string& path) {
    if (NamesDevice(path)) {
        return "expected another name: CON, PRN, AUX, NUL, COM1 to COM9 and LPT1 to LPT9 are devices, with any ending, too";
    }
    if (!StoredText(path)) {
        return "expected only characters of this system's code page; the extractor finds no file whose path has others";
    }
    return {};
}

} // namespace ruvo
