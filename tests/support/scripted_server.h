// A comms server that tests script: cells, events and statuses come from tables, every call is noted. Linking
// it takes the place of the connector.
#pragma once

#include "support/hex.h"
#include "support/uniform_server.h"

#include "link/seam/cell_address.h"
#include "link/seam/server_connection.h"

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace ruvo::test {

Variant Tagged(std::string_view hex);
/// A value list of tagged values in hex; an empty text is an empty variant.
Variant List(std::initializer_list<std::string_view> values);
/// Tagged text.
std::string TextHex(std::string_view text);

/// Kind and value in one word: UI1(5), I2(BF15) in hexadecimal, I4(7), BSTR("x"), bytes and words as
/// hexadecimal digits, EMPTY; OTHER for what no operation takes.
std::string Describe(const Variant& value);

struct SCall {
    std::string name; ///< of the slot that was called
    std::vector<Variant> inputs;
    std::vector<Variant*> outputs;
    CellAddress Cell() const;
};

struct SScriptedEvent {
    std::uint8_t kind;
    Variant values;
};

class CScriptedServer final : public CUniformServer {
public:
    static constexpr std::int64_t kComFailure = -1;
    static constexpr std::int64_t kNoNumber = -2; ///< the call gets through, its status is no number

    CScriptedServer();
    ~CScriptedServer();

    bool refuseConnection = false;
    bool refuseAdvise = false;
    bool completeInside = true; ///< started commands complete inside the call; else the test completes them
    std::map<CellAddress, std::string> values; ///< tagged hex of the one value
    std::map<CellAddress, std::vector<std::string>> limits;
    std::map<CellAddress, std::vector<std::string>> strings;
    std::map<CellAddress, std::string> texts;
    std::map<std::uint8_t, std::vector<Variant>> columns; ///< locations, texts, values
    std::deque<SScriptedEvent> events;
    std::map<std::string, std::int64_t> statuses; ///< by "Name" or "Name CC.RR": instead of the answer
    /// Asked before everything else: a status instead of the scripted answer, or none.
    std::function<std::optional<std::int64_t>(SCall&)> onCall;
    std::vector<std::string> calls; ///< "Name" or "Name CC.RR"
    std::vector<std::string> lines; ///< the same calls whole: the name and every input, as Describe tells it
    IP32lsSink_v2* sink = nullptr;

    EComResult Do(const char* name, Inputs inputs, Outputs outputs, Variant& status) override;
    EComResult Start(const char* name, Inputs inputs, Variant& status) override;
    EComResult Fetch(const char* name, Outputs outputs, Variant& status) override;

private:
    EComResult Run(SCall call, const std::string& line, Variant& status);
    std::int64_t Answer(SCall& call);

    SCall m_started;
};

} // namespace ruvo::test
