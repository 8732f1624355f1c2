#include "tools/archive/new_records.h"

#include "base/json_reader.h"
#include "base/json_writer.h"
#include "ledger/visit_files.h"
#include "paths/path_utilities.h"
#include "platform/files.h"
#include "platform/full_path.h"
#include "platform/state_folder.h"
#include "tools/file_path.h"
#include "tools/marks.h"
#include "tools/text_encoding.h"
#include "tools/whole_file.h"

#include <charconv>
#include <filesystem>
#include <span>
#include <system_error>

namespace ruvo {

namespace {

std::uint64_t AddBytes(std::uint64_t digest, std::span<const std::uint8_t> bytes) {
    for (const std::uint8_t byte : bytes) {
        digest = AddToDigest(digest, byte);
    }
    return digest;
}

/// JSON's readers take no number of 64 bits for granted.
std::uint64_t NumberOf(const std::string& digits) {
    std::uint64_t number = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), number);
    return number;
}

} // namespace

CNewRecords::CNewRecords(std::string_view name) {
    const std::string state = StateFolder();
    if (state.empty()) {
        m_failure = "there is no state folder for the marks";
        return;
    }
    m_folder = state + "\\marks";
    m_path = m_folder + "\\archive-" + std::string(name) + ".ndjson";
    ReadMarks();
}

void CNewRecords::ReadMarks() {
    CFile file;
    const SFileResult opened = file.Open(m_path, {.read = true, .plain = true});
    if (opened.failure == EFileFailure::NotFound || opened.failure == EFileFailure::BadPath) {
        return; // nothing was written yet
    }
    const std::string shown = SystemTextToUtf8(DisplayPath(m_path));
    if (!opened.Good()) {
        m_failure = shown + ": " + SystemTextToUtf8(SystemErrorText(opened.systemCode));
        return;
    }
    CLineFile lines(file);
    for (std::string_view line; lines.Next(line);) {
        if (const auto object = CJsonObject::Read(line)) {
            m_marks[object->Text("file")] = {
                .end = NumberOf(object->Text("end")),
                .digest = NumberOf(object->Text("digest")),
                .size = NumberOf(object->Text("size")),
                .changed = static_cast<std::int64_t>(NumberOf(object->Text("changed")))};
        }
    }
    m_failure = lines.HasFailed() ? shown + ": could not be read to the end" : "";
}

bool CNewRecords::StillBegins(const std::string& path, const SMark& mark) {
    CDayFileReader reader;
    std::uint64_t end = 0;
    std::uint64_t digest = kEmptyDigest;
    if (reader.Open(path).Good()) {
        for (SDayFileItem item; end < mark.end && reader.Next(item) && !item.damage;) {
            digest = AddBytes(digest, item.bytes);
            end = item.offset + item.bytes.size();
        }
    }
    return end == mark.end && digest == mark.digest;
}

bool CNewRecords::Begin(const std::string& path, std::uint64_t size, std::int64_t changed) {
    std::error_code ignored;
    m_file =
        SystemTextToUtf8(std::filesystem::weakly_canonical(FilePath(OwnSpelling(path)), ignored).string());
    m_mark = {.size = size, .changed = changed};
    m_from = 0;
    m_isSound = true;
    const auto known = m_marks.find(m_file);
    if (known == m_marks.end()) {
        return true;
    }
    if (known->second.size == size && known->second.changed == changed) {
        return false;
    }
    m_from = StillBegins(path, known->second) ? known->second.end : 0;
    return true;
}

bool CNewRecords::IsNew(const SDayFileItem& item) {
    m_isSound = m_isSound && !item.damage;
    if (m_isSound) {
        m_mark.end = item.offset + item.bytes.size();
        m_mark.digest = AddBytes(m_mark.digest, item.bytes);
    }
    return item.record != nullptr && item.offset >= m_from;
}

void CNewRecords::End() {
    m_marks[m_file] = m_mark;
}

std::string CNewRecords::Save() const {
    std::string text;
    for (const auto& [file, mark] : m_marks) {
        CJsonWriter json(text);
        json.Open('{');
        json.Key("file").Text(file);
        json.Key("end").Text(std::to_string(mark.end));
        json.Key("digest").Text(std::to_string(mark.digest));
        json.Key("size").Text(std::to_string(mark.size));
        json.Key("changed").Text(std::to_string(static_cast<std::uint64_t>(mark.changed)));
        json.Close('}');
        text += '\n';
    }
    return ReplaceMarks(m_folder, m_path, text);
}

} // namespace ruvo
