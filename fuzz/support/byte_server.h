// A comms server that is played by bytes: they decide how each call ends and what it delivers. When they run
// out no relay answers any more, so that every run ends.
#pragma once

#include "fuzz/support/input.h"
#include "support/uniform_server.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace ruvo::fuzz {

/// Each call takes a byte that says how it is answered: up to 1F as a well-behaved relay would; up to 9F with
/// values of the right shape made of further bytes; up to DF with values of any shape; beyond, it fails in
/// one way or another.
class CByteServer final : public test::CUniformServer {
public:
    /// The one that the client connects to, as long as it lives.
    explicit CByteServer(CInput input);
    CByteServer(const CByteServer&) = delete;
    CByteServer& operator=(const CByteServer&) = delete;
    ~CByteServer();

    IP32lsSink_v2* sink = nullptr;

    EComResult Do(const char* name, Inputs inputs, Outputs outputs, Variant& status) override;
    EComResult Start(const char* name, Inputs inputs, Variant& status) override;
    EComResult Fetch(const char* name, Outputs outputs, Variant& status) override;

    [[nodiscard]] std::size_t CallCount() const { return m_calls; }
    [[nodiscard]] bool WasAbortRequested() const { return m_abortRequested; }
    /// Ports opened less ports closed.
    [[nodiscard]] int OpenPorts() const { return m_openPorts; }

private:
    EComResult Answer(std::string_view name, Inputs inputs, Outputs outputs, Variant& status);
    EComResult Fail(unsigned how, Variant& status);
    void FillUsual(std::string_view name, Inputs inputs, Outputs outputs);
    void FillShaped(std::string_view name, Outputs outputs);
    Variant TakeAny(int depth);
    Variant TakeList();
    void Complete();

    CInput m_input;
    std::string m_started;
    std::size_t m_calls = 0;
    int m_openPorts = 0;
    bool m_isBusy = false;
    bool m_isRunning = false; ///< a started command has not completed yet
    bool m_abortRequested = false;
};

} // namespace ruvo::fuzz
