#include "tools/whole_file.h"

#include "platform/files.h"

#include <algorithm>
#include <array>

namespace ruvo {

namespace {

struct SFailureText {
    EAccessFailure failure;
    std::string_view text;
};
/// Of the others the system's own words are enough.
constexpr std::array kFailureTexts{
    SFailureText{
        EAccessFailure::ForeignLink,
        "a link on the way, or the pipe there, belongs to another user and is not used; name another place"},
    SFailureText{EAccessFailure::NotWritable, "you may not write the file that is there"},
    SFailureText{EAccessFailure::NotMade, "no file can be made in that folder"},
    SFailureText{EAccessFailure::InUse, "another program writes it right now; try again"},
    SFailureText{EAccessFailure::NotLikeOld,
                 "the new file cannot be given the owner and the permissions of the old one; do it as the "
                 "file's owner, or as root"},
    SFailureText{EAccessFailure::NotExchanged, "the new file cannot take the place of the old one"},
};

} // namespace

std::string TellOutputFailure(const SAccessResult& result) {
    const auto* const row = std::ranges::find(kFailureTexts, result.failure, &SFailureText::failure);
    const std::string system =
        result.systemCode == 0 ? std::string("not a regular file") : SystemErrorText(result.systemCode);
    if (row == kFailureTexts.end()) {
        return system;
    }
    return result.systemCode == 0 ? std::string(row->text) : std::string(row->text) + " (" + system + ")";
}

std::string ReplaceWholeFile(const std::string& path, std::string_view text) {
    CFileReplacement file;
    SAccessResult result = file.Open(path);
    if (result.Good()) {
        result = file.Write(text);
    }
    if (result.Good()) {
        result = file.Commit();
    }
    return result.Good() ? std::string() : TellOutputFailure(result);
}

} // namespace ruvo
