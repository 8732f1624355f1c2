// Leftovers as text and JSON.
#include "base/json_writer.h"
#include "base/text.h"
#include "platform/full_path.h"
#include "tools/recover/site_leftovers.h"
#include "tools/text_encoding.h"

#include <algorithm>

namespace ruvo {

namespace {

/// In the system's own form, safe to print.
std::string Shown(const std::string& path) {
    return EscapeControls(SystemTextToUtf8(DisplayPath(path)));
}

std::string Plain(const std::string& text) {
    return EscapeControls(SystemTextToUtf8(text));
}

/// FOLDER\FILE as people write it.
std::string DayFileText(std::string file) {
    std::ranges::replace(file, '\\', DisplayPath("C:\\").ends_with('/') ? '/' : '\\');
    return file;
}

std::string VisitText(std::size_t events, const std::string& key, const std::string& begun) {
    return Counted(events, "event") + " of " + Plain(key) + ", visit begun " + Plain(begun);
}

std::string EventRootText(const SRootLeftovers& root) {
    return root.eventRoot.empty() ? "an unknown event root"
                                  : Plain(root.eventRoot) + (root.isThere ? "" : " (does not exist)");
}

void AppendWaiting(std::string& out, const SWaitingVisit& visit) {
    out += "  waiting: " + VisitText(visit.events, visit.info.key, visit.info.begun) + "\n    day file " +
           Plain(DayFileText(visit.info.file)) + "\n    journal " + Shown(visit.journal) + "\n";
}

void AppendSetAside(std::string& out, const SSetAsideFile& file) {
    if (file.header) {
        out += "  set aside: " + VisitText(file.events, file.header->key, file.header->begun) + "\n    " +
               Plain(file.header->reason) + "\n    day file " + Plain(DayFileText(file.header->file)) + "\n";
    } else {
        out +=
            "  set aside: " + Counted(file.events, "event") + "; the header does not say of which day file\n";
    }
    out += "    " + Shown(file.path) + (file.isSound ? "\n" : " (damaged)\n");
}

class CLines {
public:
    explicit CLines(std::string& out) : m_out(out) {}

    void AddRoot(const SRootLeftovers& root) {
        Begin("event_root", root);
        m_json->Key("exists").Bool(root.isThere);
        m_json->Key("readable").Bool(root.found.isRead);
        End();
    }
    void Add(const SRootLeftovers& root, const SSetAsideFile& file) {
        Begin("set_aside", root);
        AddText("file", DisplayPath(file.path));
        m_json->Key("events").Number(file.events);
        m_json->Key("damaged").Bool(!file.isSound);
        const SSetAsideHeader header = file.header.value_or(SSetAsideHeader());
        AddVisit(header.key, header.begun, header.file);
        AddText("reason", header.reason);
        End();
    }
    void Add(const SRootLeftovers& root, const SWaitingVisit& visit) {
        Begin("waiting", root);
        AddText("journal", DisplayPath(visit.journal));
        m_json->Key("events").Number(visit.events);
        AddVisit(visit.info.key, visit.info.begun, visit.info.file);
        End();
    }
    void AddDamaged(const SRootLeftovers& root, const std::string& journal) {
        Begin("damaged_journal", root);
        AddText("journal", DisplayPath(journal));
        End();
    }

private:
    void Begin(std::string_view kind, const SRootLeftovers& root) {
        m_json.emplace(m_out).Open('{');
        m_json->Key("kind").Text(kind);
        AddText("event_root", root.eventRoot);
        AddText("folder", DisplayPath(root.found.folder));
    }
    void AddVisit(const std::string& key, const std::string& begun, const std::string& file) {
        AddText("key", key);
        AddText("begun", begun);
        AddText("day_file", file.empty() ? file : DayFileText(file));
    }
    void AddText(std::string_view name, const std::string& text) {
        m_json->Key(name);
        text.empty() ? m_json->Null() : m_json->Text(SystemTextToUtf8(text));
    }
    void End() {
        m_json->Close('}');
        m_out += '\n';
    }

    std::string& m_out;
    std::optional<CJsonWriter> m_json;
};

} // namespace

std::vector<std::string> DescribeLeftovers(const SSiteLeftovers& leftovers) {
    std::vector<std::string> lines;
    for (const SRootLeftovers& root : leftovers.roots) {
        const std::string of = &root == &leftovers.roots.front() ? "" : " of " + EventRootText(root);
        for (const SSetAsideFile& file : root.found.setAside) {
            lines.push_back(Counted(file.events, "event") + of + (file.events == 1 ? " is" : " are") +
                            " set aside in " + Shown(file.path));
        }
        for (const SWaitingVisit& visit : root.found.waiting) {
            lines.push_back(Counted(visit.events, "event") + of + (visit.events == 1 ? " waits" : " wait") +
                            " in journal " + Shown(visit.journal));
        }
        for (const std::string& journal : root.found.damaged) {
            lines.push_back("journal " + Shown(journal) + of +
                            " is damaged, or was written by another version");
        }
    }
    return lines;
}

std::string LeftoversAsText(const SSiteLeftovers& leftovers) {
    std::string out =
        "State folder: " + (leftovers.stateFolder.empty() ? "none" : Shown(leftovers.stateFolder)) + "\n";
    for (const SRootLeftovers& root : leftovers.roots) {
        out += "Event root: " + EventRootText(root) + "\n  looked in " + Shown(root.found.folder) + "\n";
        if (!root.found.isRead) {
            out += "  this user cannot read it\n";
        } else if (root.found.IsEmpty()) {
            out += "  nothing is left\n";
        }
        std::ranges::for_each(root.found.setAside, [&](const auto& file) { AppendSetAside(out, file); });
        std::ranges::for_each(root.found.waiting, [&](const auto& visit) { AppendWaiting(out, visit); });
        for (const std::string& journal : root.found.damaged) {
            out += "  damaged, or written by another version\n    journal " + Shown(journal) + "\n";
        }
    }
    return out;
}

std::string LeftoversAsJson(const SSiteLeftovers& leftovers) {
    std::string out;
    CLines lines(out);
    for (const SRootLeftovers& root : leftovers.roots) {
        lines.AddRoot(root);
        std::ranges::for_each(root.found.setAside, [&](const auto& file) { lines.Add(root, file); });
        std::ranges::for_each(root.found.waiting, [&](const auto& visit) { lines.Add(root, visit); });
        std::ranges::for_each(root.found.damaged, [&](const auto& path) { lines.AddDamaged(root, path); });
    }
    return out;
}

} // namespace ruvo
