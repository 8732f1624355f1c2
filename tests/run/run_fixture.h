// A run over the relays behind a scripted comms server, and the log that it writes.
#pragma once

#include "support/linked_test.h"
#include "support/scratch_folder.h"

#include "extraction/password_state.h"
#include "ledger/visit_history.h"
#include "ledger/visit_record.h"
#include "log/connection_details.h"
#include "log/error_log.h"
#include "run/extraction_run.h"
#include "run/link_control.h"
#include "run/run_end.h"

#include <optional>

namespace ruvo::test {

class Run : public LinkedTest {
protected:
    Run() {
        ResetErrorLog();
        ResetConnectionDetails();
        PasswordState() = SPasswordState{};
        fields.errorLogPath = folder.Path("run.log");
        fields.errorLogPathGiven = true;
        fields.commPort = "COM3";
        fields.baudRate = 19200;
        fields.tapiModemName = "Acme 56k";
        fields.tapiNumberToDial = "555";
    }
    ~Run() override { g_onTime = nullptr; }

    /// The log's lines without their time stamps, each ended by "|".
    std::string RunAll(const char* endedBy = nullptr) {
        end.emplace();
        if (endedBy != nullptr)
            end->Ask(endedBy);
        return VisitAll();
    }
    std::string VisitAll() {
        std::filesystem::remove(folder.Native("run.log"));
        context = CRunContext();
        context.Config() = CRuvoConfig(fields);
        context.SetDestinationRoot(folder.Path("ev"));
        ResolveErrorLogPath(context, true);
        server.calls.clear();
        server.lines.clear();
        RunExtraction(context, *end, kept);
        CloseLink(context);
        end->Finish();
        std::string lines;
        const std::string log = folder.Read("run.log");
        for (std::size_t at = 0; at < log.size(); at = log.find("\r\n", at) + 2)
            lines += log.substr(at + 20, log.find("\r\n", at) - at - 20) + "|";
        return lines;
    }
    /// The log of a run whose record is kept; `entries` become those of that.
    std::string RunRecorded() {
        std::filesystem::create_directories(folder.Native("ev"));
        CVisitRecord record(folder.Path("ev"), folder.Path("site.ini"));
        record.Begin();
        kept = &record;
        const std::string log = RunAll();
        kept = nullptr;
        record.End({});
        const auto last = SummariseVisits(folder.Path("ev"), folder.Path("site.ini")).last;
        entries = last.value_or(SVisitLine()).entries;
        return log;
    }
    /// All calls, whole but for those that read values.
    std::string Calls() const {
        std::string all;
        for (std::size_t i = 0; i < server.calls.size(); ++i)
            all += (server.calls[i].starts_with("GetValue") ? server.calls[i] : server.lines[i]) + ";";
        return all;
    }

    CScratchFolder folder;
    SRuvoConfigFields fields;
    CRunContext context;
    std::optional<CRunEnd> end;
    CVisitRecord* kept = nullptr;
    std::vector<SVisitEntry> entries;
};

} // namespace ruvo::test
