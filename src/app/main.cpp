// Process entry of the extractor.
#include "app/ruvo_app.h"
#include "platform/end_requests.h"
#include "platform/process_protection.h"
#include "platform/standard_streams.h"

#include <cstdio>
#include <exception>
#include <string>
#include <vector>

namespace {

void Run(const std::vector<std::string>& arguments) {
    try {
        ruvo::CRuvoApp application(ruvo::CRuvoApp::EEndRequests::Heard);
        application.Run(arguments);
    } catch (const std::exception& exception) { // before there is a log
        std::fprintf(stderr, "RUVO cannot start: %s\n", exception.what());
    }
}

} // namespace

int main(int count, char** texts) {
    ruvo::OccupyClosedStandardStreams();
    ruvo::IgnoreClosedPipes();
    ruvo::ProtectProcessMemory();
    const std::vector<std::string> arguments(texts + (count > 0 ? 1 : 0), texts + count);
    ruvo::RunUndisturbed([&arguments] { Run(arguments); });
    return 0;
}
