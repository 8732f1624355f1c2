// What lines mean: every text that a run can write has its row, every row a text, and a line is found however
// a person has it.
#include "support/case_table.h"
#include "support/scratch_folder.h"
#include "tools/run_tool.h"

#include "config/result_messages.h"
#include "config/run_context.h"
#include "log/connection_details.h"
#include "log/error_log.h"
#include "log/ledger_lines.h"
#include "log/run_texts.h"
#include "log/visit_lines.h"
#include "model/status/status.h"
#include "tools/lines/explain.h"

#include <gtest/gtest.h>

#include <regex>
#include <set>

namespace ruvo::test {

namespace {

/// A log with every line that a run can write, by the functions that write them.
class EveryLine : public testing::Test {
protected:
    EveryLine() {
        ResetErrorLog();
        ResetConnectionDetails();
        fields.errorLogPath = folder.Path("run.log");
        fields.errorLogPathGiven = true;
        context.Config() = CRuvoConfig(fields);
        ResolveErrorLogPath(context, true);
    }
    ~EveryLine() override { ResetErrorLog(); }

    void WriteRun() {
        const CRuvoConfig& config = context.Config();
        for (const std::string& line :
             {std::string(kAlreadyRunning), RunEndedText("SIGTERM", 1), RunEndedText("SIGTERM", 2),
              ExceptionText("Unhandled", "x"), ExceptionText("Fatal", "x"),
              OpenIncompleteText(PortPlaceText("COM1")), OpenIncompleteText(RelayPlaceText("10.0.0.5", 1, 2)),
              LoginProbeFailedText(context)})
            LogMessage(line, false);
        fields.useEthernet = 1;
        context.Config() = CRuvoConfig(fields);
        LogMessage(LoginProbeFailedText(context), false);
        for (const std::string& line : {std::string(kInsufficientLevel), std::string(kInvalidPassword),
                                        std::string(kInvalidUserPassword), std::string(kBlockedTemporarily),
                                        std::string(kBlockedPermanently), std::string(kUnknownPasswordError),
                                        UnrecognizedPasswordCodeText(7)})
            LogMessage(line, true);
        for (const std::string& line :
             {OpenPortFailedText("COM1", "9600"), ModemConnectFailedText(config),
              EthernetFailedText("TNLC=\"a\""), std::string(kTransactionValuesFailed),
              std::string(kHangUpFailed), std::string(kClosePortFailed)})
            LogStatusMessage(line, kLinkBusy);
        for (unsigned code = 0; code <= 255; ++code)
            for (const LinkStatus status : {code, ReplyStatus(static_cast<std::uint8_t>(code))})
                LogStatusMessage(ExtractionProblemText(context), status);
        for (std::size_t code = 1; code < kResultMessages.size(); ++code)
            if (!std::set<std::size_t>{1, 2, 3, 5, 8, 9, 10, 11}.contains(code)) // which nothing yields
                LogMessage(ResultMessage(static_cast<EResultCode>(code)), false);
    }
    void WriteVisits() {
        for (const ERefusal cause : {ERefusal::UnfitName, ERefusal::DiskFull, ERefusal::NoMoreFiles})
            Log([&](SExtractionReport& report) { report.refusal = {cause, "C:\\x"}; });
        ForEachCase<1>("tools/log_refusals.txt", [&](auto& reason) {
            Log([&](SExtractionReport& report) { report.refusal = {ERefusal::FileNotHeld, reason}; });
        });
        for (const EVisitEnd end : {EVisitEnd::LimitReached, EVisitEnd::JournalFull, EVisitEnd::JournalFailed,
                                    EVisitEnd::DiskFull, EVisitEnd::NoMoreFiles})
            Log([&](SExtractionReport& report) { report.end = end; });
        for (const std::size_t count : {1U, 2U})
            Log([&](SExtractionReport& report) {
                const CSimpleEventRecord record(0, 0, std::uint8_t{5}, CParlaneIEC870(), "Trip", nullptr, "",
                                                "", "", std::uint16_t{1}, "", CParlaneDataList());
                for (std::size_t kind = 0; kind < CIncompleteRecords::kMostKinds + count; ++kind)
                    for (std::size_t i = 0; i < count; ++i)
                        report.incomplete.Add(record, {kind + 1, "cell " + std::to_string(kind)});
                CheckStatus(CStatus(0x0211), 0, 222, 526, kNoErrorCode, report.columnErrors);
                report.failedWrite = CFileException(EFileCause::DiskFull, "C:\\x",
                                                    "The name of day file /x could not be flushed");
                report.tornAfter = 7;
                report.isNameUnread = true;
                report.eventsWaiting = report.eventsPassedOver = report.eventsLost = report.recordsUnflushed =
                    report.eventsTaken = count;
            });
        for (int outcome = 0; outcome <= static_cast<int>(ELedgerOutcome::NotSetAside); ++outcome)
            for (const std::size_t events : {1U, 2U})
                LogLedgerReport({static_cast<ELedgerOutcome>(outcome), events, "C:\\p", "C:\\j", "K", "B",
                                 outcome == static_cast<int>(ELedgerOutcome::NotSetAside)
                                     ? "set-aside file /p cannot be written: No space left on device"
                                     : "the names of the folders could not be flushed"});
    }
    template <class TSet>
    static void Log(const TSet& set) {
        SExtractionReport report;
        report.dayFile = "C:\\ev\\d\\f.evt";
        set(report);
        LogVisit(report);
    }

    CScratchFolder folder;
    SRuvoConfigFields fields;
    CRunContext context;
};

/// The texts in a source file that stand in lines of the log: all but formats and single marks.
std::vector<std::string> TextsOf(const std::string& source) {
    static const std::regex kText(R"re("((?:[^"\\]|\\.)*)")re");
    std::ifstream file(std::string(RUVO_TEST_DATA) + "/../src/" + source);
    std::vector<std::string> texts;
    for (std::string line; std::getline(file, line);) {
        line.resize(std::min({line.size(), line.find("//"), line.find("#include")}));
        for (std::sregex_iterator at(line.begin(), line.end(), kText), end; at != end; ++at) {
            std::string text = std::regex_replace(at->str(1), std::regex(R"(\\")"), "\"");
            if (text.size() > 2 && text.find('%') == std::string::npos)
                texts.push_back(std::move(text));
        }
    }
    return texts;
}

} // namespace

TEST_F(EveryLine, HasItsRowAndEveryRowItsLine) {
    WriteRun();
    WriteVisits();
    CLogReader reader;
    ASSERT_TRUE(reader.Open(ErrorLogPath()).Good());
    std::set<const SLineRow*> rows;
    std::set<const SStatusRow*> statuses;
    for (SLogLine line; reader.Next(line);) {
        const auto meaning = Explain(line);
        ASSERT_TRUE(meaning) << line.message;
        EXPECT_TRUE(line.status.empty() || meaning->status) << line.status;
        rows.insert(meaning->line);
        statuses.insert(meaning->status);
    }
    for (const SLineRow& row : LineTable())
        EXPECT_TRUE(rows.contains(&row)) << row.form.Text();
    for (const SStatusRow& row : StatusTable())
        EXPECT_TRUE(statuses.contains(&row)) << StatusText(row.first);
    const std::string log = folder.Read("run.log");
    for (const char* source : {"log/visit_lines.cpp", "log/ledger_lines.cpp", "log/run_texts.cpp",
                               "log/run_texts.h", "dayfile/held_day_file.cpp", "ledger/visit_custody.cpp"})
        for (const std::string& text : TextsOf(source))
            EXPECT_TRUE(Contains(log, text)) << source;
}

TEST(Advice, NamesWhatTheSystemHas) {
    std::string todo;
    for (const SLineRow& row : LineTable())
        todo +=
            std::string(row.happened) + "\n" + std::string(row.cost) + "\n" + std::string(row.todo) + "\n";
    const std::regex posix(
        "systemctl|journalctl|reboot|dmesg|smartctl|\"(df|ls|ps|kill|free) |\\bmode\\b|root\\b");
    const std::regex windows(
        "Event Viewer|ruvoctl schedule|Explorer|Manager|\"(dir|icacls|taskkill|chkdsk)|powershell");
    std::smatch found;
    const std::string here = AdviceOf(todo, ESystemTools::Posix);
    EXPECT_FALSE(std::regex_search(here, found, windows)) << found.str();
    EXPECT_TRUE(Contains(here, "\"systemctl start ruvo@SITE\""));
    const std::string there =
        std::regex_replace(AdviceOf(todo, ESystemTools::Windows), std::regex("event root"), "");
    EXPECT_FALSE(std::regex_search(there, found, posix)) << found.str();
    EXPECT_TRUE(Contains(there, "\"ruvoctl visit SITE.ini\""));
    EXPECT_EQ((here + there + AdviceForAll(todo)).find_first_of("{}"), std::string::npos);
    EXPECT_EQ(AdviceForAll("At {memory}."), "At \"free -m\" (Windows: the Task Manager).");
    EXPECT_EQ(AdviceForSite("In SITE.ini: \"ruvoctl check SITE.ini\", \"x -u ruvo@SITE\".",
                            {"yard", "/a b/yard.ini"}),
              "In /a b/yard.ini: \"ruvoctl check '/a b/yard.ini'\", \"x -u ruvo@yard\".");
}

TEST(Explain, FindsALineHoweverAPersonHasIt) {
    ForEachCase<4>("tools/explain_lines.txt", [](auto& line, auto& row, auto& concern, auto& severity) {
        const auto meaning = ExplainText(line);
        ASSERT_EQ(meaning ? meaning->line->form.Text() : "-", row);
        if (meaning) {
            EXPECT_EQ(ConcernName(meaning->Concern()), concern);
            EXPECT_EQ(SeverityName(meaning->Severity()), severity);
        }
    });
}

TEST(Explain, ReadsLogsAndSaysWhatItDoesNotKnow) {
    const SOutcome many = RunTool(
        {"explain", "-"}, 100, "2026/11/25 02:00:11 Invalid password.\r\n\r\nInvalid password.\nwhat\nwhy\n");
    EXPECT_EQ(many.status, 1);
    EXPECT_TRUE(Contains(many.out, "1 other line means the same"));
    EXPECT_TRUE(Contains(many.out, "Not a line that ruvo writes"));
    EXPECT_EQ(RunTool({"explain", "Invalid", "password."}).status, 0);
    const SOutcome all = RunTool({"explain"});
    for (const SLineRow& row : LineTable())
        EXPECT_TRUE(Contains(all.out, row.form.Text() + "\n"));
}

} // namespace ruvo::test
