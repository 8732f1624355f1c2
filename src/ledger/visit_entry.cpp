#include "ledger/visit_entry.h"

#include "base/json_reader.h"
#include "base/json_writer.h"

#include <algorithm>
#include <array>

namespace ruvo {

namespace {

constexpr std::string_view kRecoverKind = "recover"; // a visit names none
constexpr std::array<std::string_view, 4> kEndNames{"whole", "signal", "killed", "not begun"};

struct STextMember {
    std::string_view name;
    std::string SVisitEntry::*text;
};
struct SNumberMember {
    std::string_view name;
    std::uint64_t SVisitEntry::*number;
};
// Never rename: the files of two years hold these.
constexpr std::array kTexts{
    STextMember{"key", &SVisitEntry::key},     STextMember{"address", &SVisitEntry::address},
    STextMember{"link", &SVisitEntry::link},   STextMember{"name", &SVisitEntry::name},
    STextMember{"plant", &SVisitEntry::plant}, STextMember{"begin", &SVisitEntry::begin},
    STextMember{"end", &SVisitEntry::end}};
constexpr std::array kNumbers{
    SNumberMember{"taken", &SVisitEntry::taken},       SNumberMember{"stored", &SVisitEntry::stored},
    SNumberMember{"lost", &SVisitEntry::lost},         SNumberMember{"set_aside", &SVisitEntry::setAside},
    SNumberMember{"waiting", &SVisitEntry::waiting},   SNumberMember{"recovered", &SVisitEntry::recovered},
    SNumberMember{"log_lines", &SVisitEntry::logLines}};

void WriteText(CJsonWriter& json, std::string_view name, const std::string& text) {
    json.Key(name);
    text.empty() ? json.Null() : json.Text(text);
}

SVisitLine HeadOf(const CJsonObject& object) {
    SVisitLine line;
    line.number = object.Number("number").value_or(0);
    line.kind = object.Text("kind") == kRecoverKind ? ERunKind::Recover : ERunKind::Visit;
    line.iniPath = object.Text("ini");
    line.process = object.Number("process").value_or(0);
    line.attempt = object.Number("attempt").value_or(1);
    line.begin = object.Text("begin");
    line.end = object.Text("end");
    const auto* const ended = std::ranges::find(kEndNames, object.Text("ended"));
    line.ended = ended == kEndNames.end() ? ERunEnd::Killed : static_cast<ERunEnd>(ended - kEndNames.begin());
    line.signal = object.Text("signal");
    line.result = object.Number("result").value_or(0);
    line.logLines = object.Number("log_lines").value_or(0);
    line.notVisited = object.Number("not_visited").value_or(0);
    return line;
}

/// The inside of an object.
std::string_view MembersOf(std::string_view object) {
    return object.substr(1, object.size() - 2);
}

} // namespace

std::string_view RunEndName(ERunEnd end) {
    return kEndNames.at(static_cast<std::size_t>(end));
}

std::string AsJson(const SVisitEntry& entry) {
    std::string out;
    CJsonWriter json(out);
    json.Open('{');
    for (const STextMember& member : kTexts) {
        WriteText(json, member.name, entry.*member.text);
    }
    json.Key("reached").Bool(entry.isReached);
    for (const SNumberMember& member : kNumbers) {
        json.Key(member.name).Number(entry.*member.number);
    }
    WriteText(json, "day_file", entry.dayFile);
    json.Key("from").Number(entry.from);
    json.Key("to").Number(entry.to);
    if (entry.recoveredIn) {
        json.Key("recovered_in").Open('{');
        WriteText(json, "day_file", entry.recoveredIn->dayFile);
        json.Key("from").Number(entry.recoveredIn->from);
        json.Key("to").Number(entry.recoveredIn->to);
        json.Close('}');
    }
    json.Key("status").Number(entry.status);
    WriteText(json, "status_text", entry.statusText);
    WriteText(json, "last_reached", entry.lastReached);
    json.Close('}');
    return out;
}

std::optional<SVisitEntry> ReadVisitEntry(std::string_view json) {
    const auto object = CJsonObject::Read(json);
    SVisitEntry entry;
    if (!object || (entry.key = object->Text("key")).empty()) {
        return std::nullopt;
    }
    for (const STextMember& member : kTexts) {
        entry.*member.text = object->Text(member.name);
    }
    for (const SNumberMember& member : kNumbers) {
        entry.*member.number = object->Number(member.name).value_or(0);
    }
    entry.isReached = object->IsTrue("reached");
    entry.dayFile = object->Text("day_file");
    entry.from = object->Number("from").value_or(0);
    entry.to = object->Number("to").value_or(0);
    if (const auto place = CJsonObject::Read(object->Value("recovered_in"))) {
        entry.recoveredIn = {.dayFile = place->Text("day_file"),
                             .from = place->Number("from").value_or(0),
                             .to = place->Number("to").value_or(0)};
    }
    entry.status = static_cast<std::uint32_t>(object->Number("status").value_or(0));
    entry.statusText = object->Text("status_text");
    entry.lastReached = object->Text("last_reached");
    return entry;
}

std::string BeginAsJson(const SVisitLine& line) {
    std::string out;
    CJsonWriter json(out);
    json.Open('{');
    json.Key("number").Number(line.number);
    if (line.kind == ERunKind::Recover) {
        json.Key("kind").Text(kRecoverKind);
    }
    json.Key("ini").Text(line.iniPath);
    json.Key("process").Number(line.process);
    json.Key("attempt").Number(line.attempt);
    json.Key("begin").Text(line.begin);
    json.Close('}');
    return out;
}

std::string EndAsJson(const SVisitLine& line) {
    std::string out;
    CJsonWriter json(out);
    json.Open('{');
    json.Key("ended").Text(RunEndName(line.ended));
    WriteText(json, "end", line.end);
    if (line.ended == ERunEnd::Signal) {
        json.Key("signal").Text(line.signal);
        json.Key("not_visited").Number(line.notVisited);
    }
    if (line.ended == ERunEnd::NotBegun) {
        json.Key("result").Number(line.result);
    }
    json.Key("log_lines").Number(line.logLines);
    json.Close('}');
    return out;
}

std::string LineAsJson(std::string_view begin, const std::vector<std::string_view>& entries,
                       std::string_view end) {
    if (!CJsonObject::Read(begin) || !NumberOf(begin)) {
        return {};
    }
    const std::string killed = EndAsJson({});
    std::string line = "{";
    line.append(MembersOf(begin)).append(",").append(MembersOf(IsRunEnd(end) ? end : killed));
    line += ",\"relays\":[";
    std::string_view separator;
    for (const std::string_view entry : entries) {
        if (CJsonObject::Read(entry)) {
            line.append(separator).append(entry);
            separator = ",";
        }
    }
    return line + "]}";
}

std::optional<SVisitLine> ReadWantedLine(std::string_view json,
                                         const std::function<bool(const SVisitLine& head)>& isWanted) {
    const auto object = NumberOf(json) ? CJsonObject::Read(json) : std::nullopt;
    if (!object) {
        return std::nullopt;
    }
    SVisitLine line = HeadOf(*object);
    if (!isWanted(line)) {
        return std::nullopt;
    }
    for (const std::string_view item : JsonItems(object->Value("relays"))) {
        if (auto entry = ReadVisitEntry(item)) {
            line.entries.push_back(*std::move(entry));
        }
    }
    return line;
}

std::optional<SVisitLine> ReadVisitLine(std::string_view json, bool withEntries) {
    if (withEntries) {
        return ReadWantedLine(json, [](const SVisitLine& /*head*/) { return true; });
    }
    const auto object = NumberOf(json) ? CJsonObject::Read(json) : std::nullopt;
    return object ? std::optional(HeadOf(*object)) : std::nullopt;
}

std::optional<std::uint64_t> NumberOf(std::string_view json) {
    constexpr std::string_view kFront = "{\"number\":";
    if (!json.starts_with(kFront)) {
        return std::nullopt;
    }
    json.remove_prefix(kFront.size());
    constexpr std::size_t kMostDigits = 19;
    std::uint64_t number = 0;
    std::size_t size = 0;
    for (; size < kMostDigits && size < json.size() && json[size] >= '0' && json[size] <= '9'; ++size) {
        number = number * 10 + static_cast<std::uint64_t>(json[size] - '0');
    }
    const bool isWhole = size > 0 && size < json.size() && (json[size] == ',' || json[size] == '}');
    return isWhole ? std::optional(number) : std::nullopt;
}

bool IsRunEnd(std::string_view json) {
    return json.starts_with("{\"ended\":") && CJsonObject::Read(json);
}

} // namespace ruvo
