#include "tools/lines/advice.h"

#include <algorithm>
#include <array>

namespace ruvo {

namespace {

struct SNamed {
    std::string_view name;
    std::string_view posix;
    std::string_view windows;
};
constexpr std::array kNamed{
    SNamed{"{visit now}", "\"systemctl start ruvo@SITE\"", "\"ruvoctl visit SITE.ini\""},
    SNamed{"{visits' log}", "\"journalctl -u ruvo@SITE\"",
           "the entries of ruvo in the Event Viewer's log Application"},
    SNamed{
        "{who ended it}",
        "\"journalctl -u ruvo@SITE\" says who did; \"timed out\" there means that a visit took longer than "
        "its limit",
        "the Event Viewer's log System says whether the machine was shut down, and \"ruvoctl "
        "schedule SITE.ini --show\" how the last visit of the task ended: it has a limit of 12 hours"},
    SNamed{"{what ended it}", "\"journalctl -u ruvo@SITE\", \"last reboot\"",
           "the Event Viewer's logs Application (source ruvo) and System"},
    SNamed{"{is it scheduled}", "Is the timer on", "Is there a task, is it enabled"},
    SNamed{"{schedule}", "\"systemctl list-timers 'ruvo@*'\"", "\"ruvoctl schedule SITE.ini --show\""},
    SNamed{"{scheduler}", "service manager", "task scheduler"},
    SNamed{"{running}", "\"ps -C ruvo -o pid,lstart,args\"", "\"powershell (Get-Process RUVO).StartTime\""},
    SNamed{"{end it}", "\"kill PID\"", "\"taskkill /IM RUVO.exe\""},
    SNamed{"{memory}", "\"free -m\"", "the Task Manager"},
    SNamed{"{room}", "\"df -h\"", "This PC in the Explorer"},
    SNamed{"{room of folder}", "\"df -h FOLDER\"", "\"dir FOLDER\""},
    SNamed{"{room for files}", "\"df -i FOLDER\"", "\"dir FOLDER\""},
    SNamed{"{disk errors}", "\"dmesg\"", "the Event Viewer's log System"},
    SNamed{"{disk check}", "\"smartctl -a\"", "\"chkdsk /scan\""},
    SNamed{"{look at it}", "\"ls -ld\" the file and its folder", "\"dir /a\" the file and its folder"},
    SNamed{"{rights of journal}", "\"ls -l JOURNAL\": it must belong to the user of the visits",
           "\"icacls JOURNAL\": the account of the visits must be able to read and write it"},
    SNamed{"{administrator}", "root", "an administrator"},
    SNamed{"{owner and mode}", "owner and mode", "the permissions"},
};

/// Calls `take` with each text between names, and each name's row.
template <class TText, class TName>
void ForEachPart(std::string_view text, const TText& takeText, const TName& takeName) {
    while (!text.empty()) {
        const std::size_t begin = std::min(text.find('{'), text.size());
        takeText(text.substr(0, begin));
        text.remove_prefix(begin);
        const auto* const row = std::ranges::find_if(
            kNamed, [text](const SNamed& known) { return text.starts_with(known.name); });
        if (row != kNamed.end()) {
            takeName(*row);
            text.remove_prefix(row->name.size());
        } else if (!text.empty()) {
            takeText(text.substr(0, 1));
            text.remove_prefix(1);
        }
    }
}

void Replace(std::string& text, std::string_view meant, std::string_view with) {
    for (std::size_t at = 0; (at = text.find(meant, at)) != std::string::npos; at += with.size()) {
        text.replace(at, meant.size(), with);
    }
}

} // namespace

std::string AdviceOf(std::string_view text, ESystemTools system) {
    std::string out;
    ForEachPart(
        text, [&out](std::string_view part) { out += part; },
        [&](const SNamed& row) { out += system == ESystemTools::Windows ? row.windows : row.posix; });
    return out;
}

std::string AdviceForAll(std::string_view text) {
    std::string out;
    ForEachPart(
        text, [&out](std::string_view part) { out += part; },
        [&out](const SNamed& row) {
            out.append(row.posix).append(" (Windows: ").append(row.windows).append(")");
        });
    return out;
}

std::string AdviceForSite(std::string_view text, const SAdvisedSite& site) {
    std::string out;
    for (bool isCommand = false; !text.empty(); isCommand = !isCommand) {
        const std::size_t end = std::min(text.find('"'), text.size());
        std::string part(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
        Replace(part, "SITE.ini", isCommand ? ShellWord(site.ini) : site.ini);
        Replace(part, "@SITE", "@" + site.name);
        // A command that has quotes of its own stands in others.
        const std::string_view quote = !isCommand ? "" : part.find('"') == std::string::npos ? "\"" : "'";
        out.append(quote).append(part).append(quote);
    }
    return out;
}

} // namespace ruvo
