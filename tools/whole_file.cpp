#include "tools/whole_file.h"

#include "platform/files.h"
#include "tools/lines/advice.h"

#include <algorithm>
#include <array>

namespace ruvo {

namespace {

struct SFailureText {
    EAccessFailure failure;
    std::string_view text;
};
/// For every other failure the system's own text is enough.
constexpr std::array kFailureTexts{
    SFailureText{
        EAccessFailure::UntrustedLink,
        "a symbolic link in the path, or the pipe itself, belongs to another user; use another path"},
    SFailureText{EAccessFailure::NotWritable, "no permission to write the existing file"},
    SFailureText{EAccessFailure::NotCreated, "cannot create a file in that folder"},
    SFailureText{EAccessFailure::InUse, "another program is writing the file; try again"},
    SFailureText{EAccessFailure::PermissionsNotKept,
                 "cannot set the owner and permissions of the old file on the new one; "
                 "run as the file's owner or as {administrator}"},
    SFailureText{EAccessFailure::NotReplaced, "cannot replace the old file"},
};

} // namespace

std::string OutputFailureText(const SAccessResult& result) {
    const auto* const row = std::ranges::find(kFailureTexts, result.failure, &SFailureText::failure);
    std::string system =
        result.systemCode == 0 ? std::string("not a regular file") : SystemErrorText(result.systemCode);
    if (row == kFailureTexts.end()) {
        return system;
    }
    const std::string text = AdviceOf(row->text);
    return result.systemCode == 0 ? text : text + " (" + system + ")";
}

std::string ReplaceWholeFile(const std::string& path, std::string_view text) {
    COutputFileReplacement file;
    SAccessResult result = file.Open(path);
    if (result.Good()) {
        result = file.Write(text);
    }
    if (result.Good()) {
        result = file.Commit();
    }
    return result.Good() ? std::string() : OutputFailureText(result);
}

} // namespace ruvo
