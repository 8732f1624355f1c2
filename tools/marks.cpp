#include "tools/marks.h"

#include "base/json_reader.h"
#include "base/json_writer.h"
#include "ledger/visit_files.h"
#include "paths/path_utilities.h"
#include "platform/files.h"
#include "platform/full_path.h"
#include "platform/state_folder.h"
#include "tools/text_encoding.h"
#include "tools/whole_file.h"

#include <algorithm>

namespace ruvo {

bool IsMarkName(std::string_view name) {
    constexpr std::size_t kLongest = 64;
    constexpr std::string_view kPermitted =
        "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-_.";
    return !name.empty() && name.size() <= kLongest && name.front() != '.' &&
           name.find_first_not_of(kPermitted) == std::string_view::npos;
}

CMarks::CMarks(std::string_view command, std::string_view name) {
    const std::string state = StateFolder();
    if (state.empty()) {
        m_failure = "there is no state folder for the mark";
        return;
    }
    m_folder = state + "\\marks";
    m_path = m_folder + "\\" + std::string(command) + "-" + std::string(name) + ".ndjson";
    CFile file;
    const SFileResult opened = file.Open(m_path, {.read = true, .plain = true});
    if (opened.failure == EFileFailure::NotFound || opened.failure == EFileFailure::BadPath) {
        return;
    }
    if (!opened.Good()) {
        m_failure = SystemTextToUtf8(DisplayPath(m_path)) + ": " +
                    SystemTextToUtf8(SystemErrorText(opened.systemCode));
        return;
    }
    CLineFile lines(file);
    for (std::string_view line; lines.Next(line);) {
        const auto object = CJsonObject::Read(line);
        const auto number = object ? object->Number("number") : std::nullopt;
        if (number) {
            m_marks[object->Text("site")] = {*number, object->Text("begin")};
        }
    }
    if (lines.HasFailed()) {
        m_failure = SystemTextToUtf8(DisplayPath(m_path)) + ": could not be read to the end";
    }
}

std::optional<SMark> CMarks::Of(const std::string& site) const {
    const auto found = m_marks.find(site);
    return found == m_marks.end() ? std::nullopt : std::optional(found->second);
}

std::string ReplaceMarks(const std::string& folder, const std::string& path, const std::string& text) {
    const std::string shown = SystemTextToUtf8(DisplayPath(path));
    if (!MakePrivateFolder(folder)) {
        return shown + ": the folder cannot be made, or another user can write it";
    }
    const std::string failure = ReplaceWholeFile(path, text);
    return failure.empty() ? failure : shown + ": " + failure;
}

std::string CMarks::Save() const {
    std::string text;
    for (const auto& [site, mark] : m_marks) {
        CJsonWriter json(text);
        json.Open('{');
        json.Key("site").Text(site);
        json.Key("number").Number(mark.number);
        json.Key("begin").Text(mark.begin);
        json.Close('}');
        text += '\n';
    }
    return ReplaceMarks(m_folder, m_path, text);
}

} // namespace ruvo
