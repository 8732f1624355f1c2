#include "fuzz/support/byte_server.h"

#include "fuzz/support/require.h"

#include "link/client.h"
#include "link/seam/known_cells.h"
#include "support/hex.h"

#include <array>

namespace ruvo {

namespace {

fuzz::CByteServer* g_server = nullptr;

class CConnection final : public IServerConnection {
public:
    IP32ls& Server() override { return *g_server; }
    bool Advise(IP32lsSink_v2& sink, std::uint32_t& cookie) override {
        g_server->sink = &sink;
        cookie = 1;
        return true;
    }
    void Unadvise(std::uint32_t /*cookie*/) override { g_server->sink = nullptr; }
};

constexpr unsigned kLastUsual = 0x1F;
constexpr unsigned kLastShaped = 0x9F;
constexpr unsigned kLastAny = 0xDF;
constexpr std::int32_t kNotResponding = 8;

/// Statuses that mean something to the client; the last nibble of the byte chooses.
constexpr std::array<std::int32_t, 12> kStatuses{18,     14,     254,    255,    0x0111, 0x0411,
                                                 0x0511, 0x0611, 0x0D11, 0x0911, 0x0211, 10};

Variant Bytes(std::string_view hex) {
    return Variant::FromBytes(test::Hex(hex));
}

/// What a relay says of itself in a text cell.
std::string_view UsualText(CellAddress cell) {
    switch (cell) {
    case cells::kModel:
        return "464433314130"; // FD31A0
    case cells::kSerialNumber:
        return "303031323334"; // 001234
    default:
        return "466565646572"; // Feeder
    }
}

} // namespace

std::unique_ptr<IServerConnection> ConnectToServer() {
    return g_server != nullptr ? std::make_unique<CConnection>() : nullptr;
}

namespace fuzz {

CByteServer::CByteServer(CInput input) : m_input(input) {
    g_server = this;
}

CByteServer::~CByteServer() {
    g_server = nullptr;
}

EComResult CByteServer::Do(const char* name, Inputs inputs, Outputs outputs, Variant& status) {
    const EComResult result = Answer(name, inputs, outputs, status);
    std::int32_t number = 0;
    const bool good = result == EComResult::Ok && status.ToI4(number) && number == 0;
    m_openPorts += good && std::string_view(name) == "OpenPort" ? 1 : 0;
    m_openPorts -= std::string_view(name) == "ClosePort" ? 1 : 0;
    if (good && m_isRunning && std::string_view(name) == "Abort") {
        Complete();
    }
    return result;
}

/// A command that was started well completes inside the call, or once it is aborted.
EComResult CByteServer::Start(const char* name, Inputs inputs, Variant& status) {
    constexpr std::uint8_t kHang = 0xFF;
    m_started = name;
    const EComResult result = Answer(name, inputs, {}, status);
    std::int32_t number = 0;
    if (result != EComResult::Ok || !status.ToI4(number) || number != 0) {
        return result;
    }
    m_isRunning = true;
    if (m_input.TakeByte() == kHang) {
        m_abortRequested = true;
        CP32Wrap::GetInstance()->RequestAbort();
    } else {
        Complete();
    }
    return result;
}

EComResult CByteServer::Fetch(const char* /*name*/, Outputs outputs, Variant& status) {
    Require(!m_isRunning, "nothing is fetched from a command that runs");
    return Answer(m_started, {}, outputs, status);
}

void CByteServer::Complete() {
    m_isRunning = false;
    Require(sink != nullptr, "a command is started with a sink in place");
    const unsigned how = m_input.TakeByte();
    if (how <= kLastUsual) {
        sink->OnCommandComplete(Variant::FromI4(0));
    } else if (how <= kLastShaped) {
        sink->OnProgress(TakeAny(1), TakeAny(1));
        sink->OnTransferProgress(TakeAny(1));
        sink->OnCommandCompleteAlt(Variant::FromI4(0));
    } else {
        sink->OnLineStatus(TakeAny(1));
        sink->OnCommandComplete(TakeAny(1));
    }
}

EComResult CByteServer::Answer(std::string_view name, Inputs inputs, Outputs outputs, Variant& status) {
    Require(!m_isBusy, "one call at a time");
    m_isBusy = true;
    ++m_calls;
    const bool isOver = m_input.IsEmpty();
    const unsigned how = m_input.TakeByte();
    status = Variant::FromI4(isOver ? kNotResponding : 0);
    EComResult result = EComResult::Ok;
    if (how > kLastAny) {
        result = Fail(how - kLastAny - 1, status);
    }
    if (how <= kLastUsual) {
        FillUsual(name, inputs, outputs);
    } else if (how <= kLastShaped) {
        FillShaped(name, outputs);
    } else if (how <= kLastAny) {
        for (Variant* output : outputs) {
            *output = TakeAny(2);
        }
    }
    m_isBusy = false;
    return result;
}

EComResult CByteServer::Fail(unsigned how, Variant& status) {
    if (how < kStatuses.size()) {
        status = Variant::FromI4(kStatuses[how]);
    } else if (how < 0x14) {
        status = Variant::FromI4(static_cast<std::int32_t>(m_input.TakeLong()));
    } else if (how < 0x1A) {
        status = TakeAny(1);
    } else if (how < 0x1D) {
        m_abortRequested = true;
        CP32Wrap::GetInstance()->RequestAbort();
    } else {
        return EComResult::Failed;
    }
    return EComResult::Ok;
}

void CByteServer::FillUsual(std::string_view name, Inputs inputs, Outputs outputs) {
    static const Variant kEvent = Variant::FromList(
        {Bytes("44020103"), Bytes("3C07BD1B0C03100B1A"), Bytes("18045472 6970"), Bytes("2C04DC857B01")});
    static const std::array kColumn{Variant::FromList({Bytes("44020205")}),
                                    Variant::FromList({Bytes("1805492025642E")}),
                                    Variant::FromList({Bytes("280105")})};
    static const Variant kText = Variant::FromList({Bytes("18024F6E")});
    Variant* const* const out = outputs.begin();
    std::int16_t cell = 0;
    if (name == "GetValue" && inputs.begin()[1]->ToI2(cell)) {
        *out[0] = Variant::FromUI1(0x18);
        *out[1] = Variant::FromUI1(6);
        *out[2] = Bytes(UsualText(static_cast<CellAddress>(cell)));
    } else if (name == "GetDeviceStatus") {
        *out[0] = Variant::FromUI1(0x20);
    } else if (name == "GetEvent") {
        *out[0] = Variant::FromUI1(0);
        *out[1] = kEvent;
        *out[2] = Variant::FromUI1(1);
    } else if (name == "GetColumnTextAndValues" && outputs.size() == kColumn.size()) {
        for (std::size_t i = 0; i < kColumn.size(); ++i) {
            *out[i] = kColumn.at(i);
        }
    } else {
        for (Variant* output : outputs) {
            *output = kText;
        }
    }
}

void CByteServer::FillShaped(std::string_view name, Outputs outputs) {
    Variant* const* const out = outputs.begin();
    if (name == "GetValue") {
        *out[0] = Variant::FromUI1(m_input.TakeByte());
        *out[1] = Variant::FromUI1(m_input.TakeByte());
        const auto bytes = m_input.TakeBytes(m_input.TakeByte());
        *out[2] = Variant::FromBytes({bytes.begin(), bytes.end()});
    } else if (name == "GetDeviceStatus") {
        *out[0] = Variant::FromUI1(m_input.TakeByte());
    } else if (name == "GetEvent") {
        *out[0] = Variant::FromUI1(m_input.TakeByte());
        *out[1] = TakeList();
        *out[2] = Variant::FromUI1(m_input.TakeByte());
    } else if (name == "GetText") {
        *out[0] = Variant::FromBytes(m_input.TakeTaggedBytes());
    } else {
        for (Variant* output : outputs) {
            *output = TakeList();
        }
    }
}

Variant CByteServer::TakeList() {
    Variant::List list;
    for (unsigned count = m_input.TakeByte() & 0x0FU; count > 0; --count) {
        list.push_back(Variant::FromBytes(m_input.TakeTaggedBytes()));
    }
    return Variant::FromList(std::move(list));
}

/// A variant of any kind. Lists hold lists to a depth.
Variant CByteServer::TakeAny(int depth) {
    const unsigned kind = m_input.TakeByte() % 10;
    switch (kind) {
    case 0:
        return {};
    case 1:
        return Variant::FromUI1(m_input.TakeByte());
    case 2:
        return Variant::FromI2(static_cast<std::int16_t>(m_input.TakeWord()));
    case 3:
        return Variant::FromI4(static_cast<std::int32_t>(m_input.TakeLong()));
    case 4:
        return Variant::FromText(m_input.TakeText());
    case 5: {
        const auto bytes = m_input.TakeBytes(m_input.TakeByte());
        return Variant::FromBytes({bytes.begin(), bytes.end()});
    }
    case 6:
        return Variant::FromWords(Variant::Words(1, static_cast<std::int16_t>(m_input.TakeWord())));
    case 7:
        return Variant::FromBytes(m_input.TakeTaggedBytes());
    case 8: {
        Variant::List list;
        for (unsigned count = depth > 0 ? m_input.TakeByte() & 0x0FU : 0; count > 0; --count) {
            list.push_back(TakeAny(depth - 1));
        }
        return Variant::FromList(std::move(list));
    }
    default:
        return Variant::Other();
    }
}

} // namespace fuzz

} // namespace ruvo
