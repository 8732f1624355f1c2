#include "tools/ini/ini_edit.h"

#include "app/program_folder.h"
#include "config/configuration.h"
#include "config/result_messages.h"
#include "config/validation.h"
#include "platform/files.h"
#include "platform/full_path.h"
#include "platform/text_file.h"
#include "tools/ini/diagnostics.h"
#include "tools/ini/ini_document.h"
#include "tools/lines/advice.h"
#include "tools/text_encoding.h"
#include "tools/typed_path.h"

#include <algorithm>
#include <array>
#include <utility>

namespace ruvo {

namespace {

struct SFailureText {
    EAccessFailure failure;
    std::string_view text;
};
constexpr std::array kFailureTexts{
    SFailureText{EAccessFailure::NotFound,
                 "the INI file does not exist or is not a regular file; ruvoctl new creates one"},
    SFailureText{EAccessFailure::NotWritable,
                 "no permission to write the file; run as its owner or as {administrator}"},
    SFailureText{EAccessFailure::HardLinked,
                 "the file has another hard link, which would keep the old text; remove that link first"},
    SFailureText{EAccessFailure::Exists, "the file exists and is never overwritten; use another name"},
    SFailureText{EAccessFailure::NotCreated,
                 "cannot create a file in that folder; use an existing, writable folder"},
    SFailureText{
        EAccessFailure::PermissionsNotKept,
        "cannot set the owner and permissions of the old file on the new one; run as the file's owner or as {administrator}"},
    SFailureText{EAccessFailure::InUse,
                 "the file is being edited by another process; nothing was changed, try again"},
    SFailureText{EAccessFailure::Changed,
                 "the file was changed by another process meanwhile; nothing was changed, try again"},
    SFailureText{EAccessFailure::NotWritten, "cannot write the new text; nothing was changed"},
    SFailureText{EAccessFailure::NotReplaced, "cannot replace the file; it is unchanged"},
};

constexpr std::string_view kNotReadable =
    "cannot read the INI file; expected a readable text file of at most 4 MB (ruvoctl new creates one)";
static_assert(kLargestTextFile == std::size_t{4} * 1024 * 1024); // as the two texts say
constexpr std::string_view kTooLarge = "the file would grow beyond 4 MB, the most that a run reads";
constexpr std::string_view kOddLayout =
    "the layout of the file does not allow editing this entry alone; edit it by hand and run ruvoctl check";
int Refuse(SConsole& console, std::string_view why) {
    console.error.Write("ruvoctl: " + std::string(why) + "\n");
    return kExitFailed;
}

/// The result of checking the file's rules.
EResultCode RulesCode(const std::string& path) {
    const CProgramFolder inProgramFolder; // relative paths in the file are resolved there
    CRuvoConfig config;
    const bool isLoaded = LoadConfiguration(path, config);
    config.WipePasswords();
    return isLoaded ? ValidateConfiguration(config) : EResultCode::IniFileNotOpened;
}

std::string_view Apply(CIniDocument& document, const SIniEdit& edit) {
    const CIniText before = document.Ini();
    if (edit.value) {
        document.Set(edit.section, edit.key, *edit.value);
    } else {
        document.Remove(edit.section, edit.key);
    }
    // Parsed again from the bytes, as a run will.
    const CIniDocument after(document.Bytes());
    const SIniChange change{edit.section, edit.key, edit.value ? &*edit.value : nullptr};
    return IsOnlyChange(before, after.Ini(), change) ? std::string_view() : kOddLayout;
}

std::string_view ApplyAll(CIniDocument& document, const std::vector<SIniEdit>& edits) {
    std::string_view mistake = document.WhyNotEditable();
    for (const SIniEdit& edit : edits) {
        if (mistake.empty()) {
            mistake = Apply(document, edit);
        }
    }
    return mistake.empty() && document.Bytes().size() > kLargestTextFile ? kTooLarge : mistake;
}

/// The message of a code, and the first line that causes it.
std::string ResultCodeText(EResultCode code, const CIniText& ini) {
    const std::vector<SDiagnostic> diagnostics = ExplainResultCode(code, ini);
    std::string text(ResultMessage(code));
    if (!diagnostics.empty()) {
        text += " " + EscapeControls(SystemTextToUtf8(diagnostics.front().text));
    }
    return text;
}

int ReplaceIni(const std::string& path, const std::string& oldBytes, const CIniDocument& document,
               SConsole& console) {
    CSecretFileReplacement replacement;
    SAccessResult result = replacement.Prepare(path, document.Bytes());
    if (!result.Good()) {
        return Refuse(console, AccessFailureText(result));
    }
    const EResultCode after = RulesCode(replacement.NewPath());
    if (after != EResultCode::Success && RulesCode(path) == EResultCode::Success) {
        return Refuse(console,
                      "the file would no longer pass check: " + ResultCodeText(after, document.Ini()));
    }
    result = replacement.Commit(oldBytes);
    if (!result.Good()) {
        return Refuse(console, AccessFailureText(result));
    }
    if (after != EResultCode::Success) {
        console.error.Write("ruvoctl: warning: the file does not pass check yet: " +
                            ResultCodeText(after, document.Ini()) + "\n");
    }
    return kExitGood;
}

} // namespace

std::string AccessFailureText(const SAccessResult& result) {
    const auto* const row = std::ranges::find(kFailureTexts, result.failure, &SFailureText::failure);
    const std::string text = row == kFailureTexts.end() ? "" : AdviceOf(row->text);
    return result.systemCode == 0 ? text : text + " (" + SystemErrorText(result.systemCode) + ")";
}

int EditIniFile(const std::string& typedPath, SConsole& console, const MakeIniPlan& makePlan) {
    const std::string path = TypedPath(typedPath);
    std::string bytes;
    if (path.empty() || !ReadTextFileBytes(path, bytes)) {
        return Refuse(console, kNotReadable);
    }
    if (const SAccessResult can = CheckReplaceable(path); !can.Good()) { // before a password is typed
        return Refuse(console, AccessFailureText(can));
    }
    CIniDocument document(bytes);
    const SIniPlan plan = makePlan(document.Ini());
    if (!plan.refusal.empty()) {
        return Refuse(console, plan.refusal);
    }
    if (!plan.edits.empty()) {
        if (const std::string_view mistake = ApplyAll(document, plan.edits); !mistake.empty()) {
            return Refuse(console, mistake);
        }
        if (const int status = ReplaceIni(path, bytes, document, console); status != kExitGood) {
            return status;
        }
    }
    console.out.Write(EscapeControls(SystemTextToUtf8(typedPath)) + ": " + plan.done + "\n");
    return kExitGood;
}

} // namespace ruvo
