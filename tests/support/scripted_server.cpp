#include "support/scripted_server.h"

#include <array>
#include <stdexcept>

namespace ruvo::test {

namespace {

CScriptedServer* g_server = nullptr;

/// Gives the call its inputs; its whole line.
std::string AddInputs(SCall& call, std::initializer_list<const Variant*> inputs) {
    std::string line = call.name;
    for (const Variant* input : inputs) {
        call.inputs.push_back(*input);
        line += " " + Describe(*input);
    }
    return line;
}

class CScriptedConnection final : public IServerConnection {
public:
    IP32ls& Server() override { return *g_server; }
    bool Advise(IP32lsSink_v2& sink, std::uint32_t& cookie) override {
        g_server->sink = &sink;
        cookie = 7;
        return !g_server->refuseAdvise;
    }
    void Unadvise(std::uint32_t cookie) override {
        if (cookie != 7)
            throw std::logic_error("foreign cookie");
        g_server->sink = nullptr;
    }
};

Variant ListOf(const std::vector<std::string>& values) {
    Variant::List list;
    for (const std::string& value : values)
        list.push_back(value.empty() ? Variant() : Tagged(value));
    return Variant::FromList(std::move(list));
}

} // namespace

Variant Tagged(std::string_view hex) {
    return Variant::FromBytes(Hex(hex));
}

Variant List(std::initializer_list<std::string_view> values) {
    return ListOf(std::vector<std::string>(values.begin(), values.end()));
}

std::string TextHex(std::string_view text) {
    const char head[] = {0x18, static_cast<char>(text.size())};
    return HexDigits(std::string_view(head, 2)) + HexDigits(text);
}

std::string Describe(const Variant& value) {
    std::int32_t number = 0;
    if (value.IsEmpty())
        return "EMPTY";
    if (const std::string* text = value.AsText())
        return "BSTR(\"" + *text + "\")";
    if (const Variant::Bytes* bytes = value.AsBytes())
        return HexDigits(*bytes);
    if (const Variant::Words* words = value.AsWords()) {
        std::string text = "WORDS(";
        for (const std::int16_t word : *words)
            text += HexDigits(std::array{word >> 8, word & 0xFF});
        return text + ")";
    }
    if (!value.ToI4(number))
        return "OTHER";
    if (value == Variant::FromI2(static_cast<std::int16_t>(number)))
        return "I2(" + HexDigits(std::array{number >> 8, number & 0xFF}) + ")";
    return (value == Variant::FromI4(number) ? "I4(" : "UI1(") + std::to_string(number) + ")";
}

CellAddress SCall::Cell() const {
    std::int16_t cell = 0;
    return inputs.size() > 1 && inputs[1].ToI2(cell) ? static_cast<CellAddress>(cell) : CellAddress{0};
}

CScriptedServer::CScriptedServer() {
    g_server = this;
}
CScriptedServer::~CScriptedServer() {
    g_server = nullptr;
}

EComResult CScriptedServer::Do(const char* name, Inputs inputs, Outputs outputs, Variant& status) {
    SCall call{name, {}, outputs};
    const std::string line = AddInputs(call, inputs);
    return Run(std::move(call), line, status);
}

EComResult CScriptedServer::Run(SCall call, const std::string& line, Variant& status) {
    std::string label = call.name;
    if (call.inputs.size() > 1)
        label += " " + HexDigits(std::array{ColumnOf(call.Cell())}) + "." +
                 HexDigits(std::array{RowOf(call.Cell())});
    calls.push_back(label);
    lines.push_back(line);
    std::optional<std::int64_t> scripted;
    if (onCall)
        scripted = onCall(call);
    for (const std::string& key : {label, call.name})
        if (const auto found = statuses.find(key); !scripted && found != statuses.end())
            scripted = found->second;
    const std::int64_t answer = scripted ? *scripted : Answer(call);
    if (answer == kComFailure)
        return EComResult::Failed;
    status = answer == kNoNumber ? Variant::Other() : Variant::FromI4(static_cast<std::int32_t>(answer));
    return EComResult::Ok;
}

EComResult CScriptedServer::Start(const char* name, Inputs inputs, Variant& status) {
    m_started = SCall{name, {}, {}};
    const std::string line = AddInputs(m_started, inputs);
    const EComResult result = Run(m_started, line, status);
    std::int32_t number = 0;
    if (completeInside && result == EComResult::Ok && (!status.ToI4(number) || number == 0))
        sink->OnCommandComplete(Variant::FromI4(0));
    return result;
}

EComResult CScriptedServer::Fetch(const char* name, Outputs outputs, Variant& status) {
    return Run(SCall{name, m_started.inputs, outputs}, name, status);
}

std::int64_t CScriptedServer::Answer(SCall& call) {
    constexpr std::int64_t kNoSuchCell = 0x0111;
    const CellAddress cell = call.Cell();
    if (call.name == "GetValue") {
        if (!values.contains(cell))
            return kNoSuchCell;
        const auto bytes = Hex(values[cell]);
        *call.outputs[0] = Variant::FromUI1(bytes[0]);
        *call.outputs[1] = Variant::FromUI1(bytes[1]);
        *call.outputs[2] = Variant::FromBytes({bytes.begin() + 2, bytes.end()});
    } else if (call.name == "GetSettingLimits") {
        if (!limits.contains(cell))
            return kNoSuchCell;
        *call.outputs[0] = ListOf(limits[cell]);
    } else if (call.name == "FetchStrings") {
        *call.outputs[0] = ListOf(strings[cell]);
    } else if (call.name == "GetText") {
        if (!texts.contains(cell))
            return kNoSuchCell;
        *call.outputs[0] = Tagged(texts[cell]);
    } else if (call.name == "FetchColumnTextAndValues") {
        const auto& lists = columns[static_cast<std::uint8_t>(cell)];
        for (std::size_t i = 0; i < lists.size(); ++i)
            *call.outputs[i] = lists[i];
    } else if (call.name == "GetDeviceStatus") {
        *call.outputs[0] = Variant::FromUI1(events.empty() ? 0x00 : 0x20);
    } else if (call.name == "GetEvent") {
        if (events.empty())
            return 14;
        *call.outputs[0] = Variant::FromUI1(events.front().kind);
        *call.outputs[1] = events.front().values;
        events.pop_front();
        *call.outputs[2] = Variant::FromUI1(1);
    }
    return 0;
}

} // namespace ruvo::test

namespace ruvo {

std::unique_ptr<IServerConnection> ConnectToServer() {
    if (test::g_server == nullptr || test::g_server->refuseConnection)
        return nullptr;
    return std::make_unique<test::CScriptedConnection>();
}

} // namespace ruvo
