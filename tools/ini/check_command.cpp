// ruvoctl check: the check-only mode of the extractor for people and scripts.
#include "app/load_and_check.h"
#include "config/configuration.h"
#include "link/p32_wrap.h"
#include "platform/com_runtime.h"
#include "platform/file_access.h"
#include "platform/full_path.h"
#include "platform/ini_text.h"
#include "platform/profile.h"
#include "tools/command.h"
#include "tools/ini/ini_findings.h"
#include "tools/ini/program_folder.h"
#include "tools/text_encoding.h"

#include <algorithm>
#include <array>

namespace ruvo {

namespace {

constexpr std::array kOptions{
    SOption{EOptionKind::Positional, "INI", "the INI file; a relative path counts from the current folder"},
};

constexpr std::string_view kNotes =
    "Takes the steps of a run up to the first relay: reads the file, proves that events and error log can "
    "be\n"
    "written, applies the rules and starts the comms server. Relative paths in the file count from the "
    "program's\n"
    "folder, as in a run. Prints the outcome, the lines behind it, and warnings.\n"
    "Exit status: the result code; 0 is success.\n\n"
    "Example:\n"
    "  ruvoctl check site.ini";

EResultCode TryCommsServer() {
    if (!StartComRuntime()) {
        return EResultCode::CommsServerFailed;
    }
    const bool started = CP32Wrap::CreateInstance() == kLinkGood;
    CP32Wrap::DestroyInstance();
    StopComRuntime();
    return started ? EResultCode::Success : EResultCode::CommsServerFailed;
}

EResultCode CheckFile(const std::string& fullPath, std::vector<SIniFinding>& blockedPlaces) {
    const CProgramFolder inProgramFolder;
    CRunContext context;
    const EResultCode code = LoadAndCheck(context, fullPath, true);
    if (!context.DestinationRoot().empty() && code != EResultCode::EventRootInvalid &&
        code != EResultCode::RegistryDestinationInvalid) {
        blockedPlaces = FindBlockedPlaces(FullPath(context.DestinationRoot()));
    }
    return code == EResultCode::Success ? TryCommsServer() : code;
}

void PrintFindings(CTextOutput& out, const std::string& file, std::string_view prefix,
                   const std::vector<SIniFinding>& findings) {
    for (const SIniFinding& finding : findings) {
        const std::string place = finding.line > 0 ? file + ":" + std::to_string(finding.line) : file;
        const std::string line = place + ": " + std::string(prefix) + finding.text;
        out.Write(EscapeControls(SystemTextToUtf8(line)) + "\n");
    }
}

/// What a reader of the file could learn that is nobody else's business.
std::vector<SIniFinding> FindOpenPasswords(const std::string& fullPath, const CIniText& ini) {
    const auto holdsText = [](const SIniEntry& entry) {
        return !entry.IsComment() && entry.value && !entry.value->empty();
    };
    const bool holdsPasswords = std::ranges::any_of(ini.Sections(), [&](const SIniSection& section) {
        return EqualIniNames(section.name, kPasswordsSection) &&
               std::ranges::any_of(section.entries, holdsText);
    });
    if (!holdsPasswords || !IsReadableByEveryone(fullPath).value_or(false)) {
        return {};
    }
    return {{0,
             "every user of this machine can read the passwords in this file; \"chmod 600\" leaves it to its "
             "owner, \"chmod 640\" to its group too"}};
}

int RunCheck(const CArguments& arguments, SConsole& console) {
    const std::string typed = arguments.Get("INI");
    const std::string fullPath = FullPath(typed);
    std::vector<SIniFinding> blockedPlaces;
    const EResultCode code =
        fullPath.empty() ? EResultCode::IniFileNotOpened : CheckFile(fullPath, blockedPlaces);
    console.out.Write(std::string(ResultMessage(code)) + "\n");
    std::string text;
    if (!ReadTextFile(fullPath, text)) {
        text.clear(); // then there is nothing to point at but the file itself
    }
    const CIniText ini = CIniText::Parse(text);
    PrintFindings(console.out, typed, "", FindCauses(code, ini));
    PrintFindings(console.out, typed, "warning: ", FindOddities(ini));
    PrintFindings(console.out, typed, "warning: ", FindOpenPasswords(fullPath, ini));
    PrintFindings(console.out, typed, "warning: ", blockedPlaces);
    return static_cast<int>(code);
}

} // namespace

SCommand CheckCommand() {
    return {"check", "Check an INI file as a run would", kNotes, kOptions, RunCheck};
}

} // namespace ruvo
