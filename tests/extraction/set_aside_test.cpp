// A visit that writes nothing into the day file: its records are in a file of their own, which the log names.
#include "extraction/extraction_fixture.h"
#include "support/fake_system.h"

#include "ledger/visit_custody.h"
#include "model/status/status.h"
#include "platform/environment.h"
#include "platform/file.h"

#include <filesystem>

namespace ruvo::test {

class SetAside : public Extraction {
protected:
    SetAside() {
        std::filesystem::create_directory(folder.Native("ev"));
        UseState("state");
    }
    /// Those that the system gives to what one user alone may read.
    std::filesystem::perms PermissionsOfOwn() const {
        CFile file;
        EXPECT_TRUE(
            file.Open(folder.Path("own"), {.write = true, .create = true, .plain = true, .ownerOnly = true})
                .Good());
        return std::filesystem::status(folder.Native("own")).permissions();
    }
    void UseState(const std::string& name) const {
        SetEnvironmentValue("RUVO_STATE_DIR", folder.Native(name));
    }

    /// Two events are taken; the third request is answered with a refused password, or an abort.
    SExtractionReport Visit(bool isRefused) {
        PasswordState() = SPasswordState{};
        server.events.assign(3, Event(0, {"240107"}));
        server.onCall = [count = 0, isRefused](SCall& call) mutable -> std::optional<std::int64_t> {
            if (call.name != "GetEvent" || ++count < 3)
                return std::nullopt;
            PasswordState().callbackCalled = isRefused;
            return 18;
        };
        told.clear();
        SExtractionReport report;
        CRunLedger ledger(folder.Path("ev"), [this](const SLedgerReport& what) { told.push_back(what); });
        CVisitCustody custody(&ledger, "RV001");
        const auto extract = [&] {
            ExtractEventsToFile(5, folder.Path("ev"), kNoEventLimit, &report, {}, &custody);
        };
        if (isRefused)
            extract();
        else
            EXPECT_THROW(extract(), CStatus);
        custody.End();
        EXPECT_TRUE(std::filesystem::is_empty(folder.Native("ev"))) << "nothing of it is in the event root";
        return report;
    }
    /// The path of the files beside the journals, by name.
    std::vector<std::filesystem::path> Files(const std::string& ending) const {
        std::vector<std::filesystem::path> files;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(folder.Native("state")))
            if (entry.path().extension() == ending)
                files.push_back(entry.path());
        std::ranges::sort(files);
        return files;
    }

    std::vector<SLedgerReport> told;
};

TEST_F(SetAside, TheRecordsAreInAFileThatTheLogNames) {
    server.events.assign(2, Event(0, {"240107"}));
    Extract();
    const std::string records = Day().substr(Header("000003").size());
    std::size_t number = 0;
    for (const bool isRefused : {true, false}) {
        const SExtractionReport report = Visit(isRefused);
        EXPECT_EQ(std::tuple(report.eventsSetAside, report.eventsLost, report.eventsWaiting),
                  std::tuple(2, 0, 0));
        const auto files = Files(".setaside");
        ASSERT_EQ(files.size(), ++number);
        EXPECT_EQ(files.back().filename(),
                  "AB12-00001234-2026-11-16-DEV-" + std::to_string(number) + ".setaside");
        EXPECT_EQ(std::filesystem::status(files.back()).permissions(), PermissionsOfOwn());
        const std::string reason = isRefused ? "a password was refused" : "the visit was aborted";
        const std::string head = Header(
            "000003",
            "set aside|AB12-00001234\\AB12-00001234-2026-11-16-DEV.evt|RV001|2026-11-16 23:30:00 UTC|" +
                reason);
        EXPECT_EQ(folder.Read(files.back().string().substr(folder.Native().size() + 1)), head + records);
        ASSERT_EQ(told.size(), 1U);
        EXPECT_TRUE(told[0].path.ends_with("\\" + files.back().filename().string()));
        told[0].path.clear();
        EXPECT_EQ(told[0], (SLedgerReport{ELedgerOutcome::SetAside, 2, "", "", "RV001",
                                          "2026-11-16 23:30:00 UTC", reason}));
        EXPECT_TRUE(Files(".journal").empty());
    }
}

TEST_F(SetAside, WhereNoJournalCanBeMadeTheFileIsWrittenAllTheSame) {
    Visit(true);
    const std::string place = Files(".setaside").front().parent_path().string();
    for (int number = 1; number <= 1000; ++number) // all the names that a journal of this second may have
        std::ofstream(place + "/2026-11-16T233000Z-" + std::to_string(number) + ".journal") << "x";
    EXPECT_EQ(Visit(true).eventsSetAside, 2U);
    EXPECT_EQ(Files(".setaside").size(), 2U);
    UseState("none/such");
    folder.Write("none", "no folder");
    const SExtractionReport report = Visit(true);
    EXPECT_EQ(std::tuple(report.eventsSetAside, report.eventsLost), std::tuple(0, 2));
    EXPECT_TRUE(told.empty());
}

} // namespace ruvo::test
