// A comms server whose operations all end in a few places: what tests and benchmarks put behind the seam.
#pragma once

#include "link/seam/server_connection.h"
#include "link/seam/uniform_server.h"

namespace ruvo::test {

class CUniformServer : public ruvo::CUniformServer {
public:
    /// Answers an operation that is called once.
    virtual EComResult Do(const char* name, Inputs inputs, Outputs outputs, Variant& status) = 0;
    /// Answers the start of an operation that is fetched later, and the fetching of the last one started;
    /// a start is named without its first word.
    virtual EComResult Start(const char* name, Inputs inputs, Variant& status) = 0;
    virtual EComResult Fetch(const char* name, Outputs outputs, Variant& status) = 0;

    Com Call(EOperation operation, Inputs inputs, Outputs outputs, Variant& status) override {
        constexpr std::string_view kStart = "Start";
        const std::string_view name = OperationRow(operation).name;
        if (OperationRow(operation).runsOn)
            return Start(name.data() + (name.starts_with(kStart) ? kStart.size() : 0), inputs, status);
        return name.starts_with("Fetch") ? Fetch(name.data(), outputs, status)
                                         : Do(name.data(), inputs, outputs, status);
    }

protected:
    ~CUniformServer() = default;
};

} // namespace ruvo::test
