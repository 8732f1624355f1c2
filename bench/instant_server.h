// A comms server that answers at once: its share of what is measured is as small as it can be.
#pragma once

#include "support/hex.h"
#include "support/uniform_server.h"

#include "link/seam/known_cells.h"
#include "model/values/type_codes.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

namespace ruvo::bench {

/// What the events of a run are like; texts are as long as a relay's usually are.
enum class EEventForm : std::uint8_t {
    Extended, ///< one value, which becomes a cell
    Simple,   ///< a format text and a value for it
};

/// Relays that each have so many events pending, all of one form. Opening a port leads to the next relay.
class CInstantServer final : public test::CUniformServer {
public:
    std::size_t pending = 0;
    std::size_t pendingPerPort = 0;
    EEventForm form = EEventForm::Simple;

    CInstantServer() {
        const Variant place = Variant::FromBytes(test::Hex("44021201"));
        const Variant time = Variant::FromBytes(test::Hex("3C074523070D10021A"));
        const Variant number = Variant::FromBytes(test::Hex("240107"));
        m_events[0] = Variant::FromList({place, time, Text("Overcurrent I> Trip = %lu A"), number});
        m_events[1] =
            Variant::FromList({place, time, Text("Overcurrent I> Stage 1 Trip"), number,
                               Text("Fault current %ld A"), Variant::FromBytes(test::Hex("280105"))});
    }

    EComResult Do(const char* name, Inputs inputs, Outputs outputs, Variant& status) override {
        std::int32_t answer = 0;
        if (std::strcmp(name, "GetDeviceStatus") == 0) {
            **outputs.begin() = Variant::FromUI1(pending > 0 ? 0x20 : 0);
        } else if (std::strcmp(name, "GetEvent") == 0) {
            --pending;
            *outputs.begin()[0] = Variant::FromUI1(static_cast<std::uint8_t>(form));
            *outputs.begin()[1] = m_events[static_cast<std::size_t>(form)];
            *outputs.begin()[2] = Variant::FromUI1(1);
        } else if (std::strcmp(name, "GetValue") == 0) {
            answer = AnswerText(*inputs.begin()[1], outputs);
        } else if (std::strcmp(name, "OpenPort") == 0) {
            ++m_port;
            pending = pendingPerPort;
        }
        status = Variant::FromI4(answer);
        return EComResult::Ok;
    }
    EComResult Start(const char*, Inputs, Variant& status) override { return Refuse(status); }
    EComResult Fetch(const char*, Outputs, Variant& status) override { return Refuse(status); }

private:
    static EComResult Refuse(Variant& status) {
        status = Variant::FromI4(10);
        return EComResult::Ok;
    }
    static Variant Text(std::string_view text) {
        Variant::Bytes bytes{kTypeText, static_cast<std::uint8_t>(text.size())};
        bytes.insert(bytes.end(), text.begin(), text.end());
        return Variant::FromBytes(std::move(bytes));
    }
    /// Every text of a relay is eight digits, others for each port.
    std::int32_t AnswerText(const Variant& cell, Outputs outputs) const {
        constexpr std::size_t kFirstText = 10'001'234;
        std::int16_t address = 0;
        if (!cell.ToI2(address) || static_cast<CellAddress>(address) == cells::kSecurityVersion) {
            return 0x0111;
        }
        const std::string text = std::to_string(kFirstText + m_port);
        *outputs.begin()[0] = Variant::FromUI1(kTypeText);
        *outputs.begin()[1] = Variant::FromUI1(static_cast<std::uint8_t>(text.size()));
        *outputs.begin()[2] = Variant::FromBytes({text.begin(), text.end()});
        return 0;
    }

    std::array<Variant, 2> m_events;
    std::size_t m_port = 0;
};

/// The server that the client connects to; one per program.
CInstantServer& InstantServer();

} // namespace ruvo::bench
