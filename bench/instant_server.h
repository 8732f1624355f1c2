// A comms server that answers at once: its share of what is measured is as small as it can be.
#pragma once

#include "support/hex.h"
#include "support/uniform_server.h"

#include "link/cell_address.h"

#include <cstddef>
#include <cstring>
#include <string>

namespace ruvo::bench {

/// Relays that each have so many events pending; every event is the same.
class CInstantServer final : public test::CUniformServer {
public:
    std::size_t pending = 0;

    CInstantServer() {
        for (const char* hex :
             {"44021201", "3C074523070D10021A", "180454726970", "240107", "18022564", "280105"}) {
            m_list.push_back(Variant::FromBytes(test::Hex(hex)));
        }
        m_event = Variant::FromList(m_list);
    }

    EComResult Do(const char* name, Inputs inputs, Outputs outputs, Variant& status) override {
        std::int32_t answer = 0;
        if (std::strcmp(name, "GetDeviceStatus") == 0) {
            **outputs.begin() = Variant::FromUI1(pending > 0 ? 0x20 : 0);
        } else if (std::strcmp(name, "GetEvent") == 0) {
            --pending;
            *outputs.begin()[0] = Variant::FromUI1(1);
            *outputs.begin()[1] = m_event;
            *outputs.begin()[2] = Variant::FromUI1(1);
        } else if (std::strcmp(name, "GetValue") == 0) {
            answer = AnswerText(*inputs.begin()[1], outputs);
        }
        status = Variant::FromI4(answer);
        return EComResult::Ok;
    }
    EComResult Start(const char*, Inputs, Variant& status) override { return Refuse(status); }
    EComResult Fetch(Outputs, Variant& status) override { return Refuse(status); }

private:
    static EComResult Refuse(Variant& status) {
        status = Variant::FromI4(10);
        return EComResult::Ok;
    }
    static std::int32_t AnswerText(const Variant& cell, Outputs outputs) {
        std::int16_t address = 0;
        if (!cell.ToI2(address) || static_cast<CellAddress>(address) == cells::kSecurityVersion) {
            return 0x0111;
        }
        *outputs.begin()[0] = Variant::FromUI1(0x18);
        *outputs.begin()[1] = Variant::FromUI1(8);
        *outputs.begin()[2] = Variant::FromBytes(test::Hex("3030303031323334"));
        return 0;
    }

    Variant::List m_list;
    Variant m_event;
};

/// The server that the client connects to; one per program.
CInstantServer& InstantServer();

} // namespace ruvo::bench
