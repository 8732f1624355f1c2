// Process entry of the extractor.
#include "app/ruvo_app.h"
#include "platform/process_protection.h"
#include "platform/standard_streams.h"

#include <string>
#include <vector>

int main(int count, char** texts) {
    ruvo::OccupyClosedStandardStreams();
    ruvo::SurviveClosedPipes();
    ruvo::ProtectProcessMemory();
    const std::vector<std::string> arguments(texts + (count > 0 ? 1 : 0), texts + count);
    ruvo::CRuvoApp application;
    application.Run(arguments);
    return 0;
}
