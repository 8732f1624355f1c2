// Entering passwords: when, with what requests, and what the application is told.
#include "support/case_table.h"
#include "support/linked_test.h"

#include "model/values/parlane_integers.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <utility>

namespace ruvo::test {
namespace {

const std::string kPassword = "1C0441414141 "; ///< as it is written

/// What the callbacks were told, and what they answer.
struct SApplication {
    std::vector<int> codes;
    std::vector<std::string> accepted;
    SPasswordRequest request{};
    std::uint32_t maxLength = 0;
    int cancelled = 0;
    int declineFrom = 2; ///< the callback gives up from this code on
    std::uint32_t noNotify = 0;
    std::function<void()> inside; ///< what the next call of the callback does first
} g_application;

int GivePassword(const SPasswordRequest& request, char** buffer, std::uint32_t maxLength,
                 std::uint32_t* noNotify, int code, std::int32_t extra) {
    EXPECT_EQ(extra, -1);
    EXPECT_EQ(*noNotify, 0U);
    EXPECT_EQ(std::string(*buffer), std::string(maxLength, ' '));
    g_application.request = request;
    g_application.maxLength = maxLength;
    g_application.codes.push_back(code);
    if (const auto act = std::exchange(g_application.inside, nullptr))
        act();
    std::memcpy(*buffer, "AAAA", std::min<std::size_t>(4, maxLength));
    *noNotify = g_application.noNotify;
    return code >= g_application.declineFrom ? 1 : 0;
}

int NoteAccepted(const char* model) {
    g_application.accepted.emplace_back(model);
    return 0;
}

} // namespace

class PasswordEntry : public LinkedTest {
protected:
    PasswordEntry() {
        g_application = SApplication{};
        CP32Wrap::SetGetPasswordCallback(&GivePassword);
        CP32Wrap::SetPasswordAcceptedCallback(&NoteAccepted);
        CP32Wrap::SetLoginCancelledCallback([] { ++g_application.cancelled; });
        server.values = {{0x0004, TextHex("FEEDER-LONGER-THAN-16")},
                         {0x0005, TextHex("PLANT-LONGER-THAN-16")},
                         {0x0006, TextHex("MODEL-LONGER-THAN-16")},
                         {0x0008, TextHex("SERIAL-LONGER-THAN-16")},
                         {0x0011, TextHex("SOFTWARE-LONGER-THAN-16")}};
        server.limits = {{0x0002, {"1C0420202020"}}};
        server.texts[0x0101] = TextHex("ok");
        server.onCall = [this](SCall& call) -> std::optional<std::int64_t> { return Answer(call); };
    }
    ~PasswordEntry() override {
        CP32Wrap::SetGetPasswordCallback(nullptr);
        CP32Wrap::SetPasswordAcceptedCallback(nullptr);
        CP32Wrap::SetLoginCancelledCallback(nullptr);
    }

    /// Asks for the password as often as told; notes what is written.
    std::optional<std::int64_t> Answer(SCall& call) {
        if (call.name == "GetText" && passwordRequests > 0) {
            --passwordRequests;
            return 0x0611;
        }
        if (call.name == "ChangeSetting")
            written += Describe(call.inputs[2]) + " ";
        return std::nullopt;
    }

    /// Reads a text that wants the password as often as told.
    LinkStatus Read(int requests = 1) {
        g_application.codes.clear();
        g_application.accepted.clear();
        g_application.cancelled = 0;
        passwordRequests = requests;
        written.clear();
        server.calls.clear();
        std::unique_ptr<CParlaneData> text;
        return link->GetText(nullptr, 0x0101, text);
    }

    int passwordRequests = 0;
    std::string written; ///< tagged values in hex, a blank behind each
};

TEST_F(PasswordEntry, PlainLoginMakesExactlyTheseRequests) {
    EXPECT_EQ(Read(), kLinkGood);
    const std::vector<std::string> want{"GetText 01.01",          "GetSettingLimits BF.03", "GetValue BF.03",
                                        "GetValue BF.12",         "GetValue 00.04",         "GetValue 00.05",
                                        "GetValue 00.06",         "GetValue 00.08",         "GetValue 00.11",
                                        "GetValue 00.DF",         "GetValue 00.D1",         "GetValue 00.DF",
                                        "GetSettingLimits 00.02", "ChangeSetting 00.02",    "GetText 01.01"};
    EXPECT_EQ(server.calls, want);
    EXPECT_EQ(written, kPassword);
    EXPECT_EQ(g_application.codes, std::vector<int>{0});
    EXPECT_EQ(g_application.maxLength, 4U);
    EXPECT_EQ(g_application.accepted, std::vector<std::string>{"MODEL-LONGER-THA"});
    const SPasswordRequest& request = g_application.request;
    EXPECT_EQ(std::string(request.description) + "|" + request.plant + "|" + request.model + "|" +
                  request.serialNumber + "|" + request.software + "|" + request.displayText,
              "FEEDER-LONGER-TH|PLANT-LONGER-THA|MODEL-LONGER-THA|SERIAL-LONGER-TH|SOFTWARE-LONGER-|");
    g_application.noNotify = 1;
    server.limits[0x0002].clear(); // of a length that nobody tells
    EXPECT_EQ(Read(), kLinkGood);
    EXPECT_TRUE(g_application.accepted.empty()) << "the application may silence it";
    EXPECT_EQ(g_application.maxLength, 0U);
    EXPECT_EQ(written, "1C00 ");
}

TEST_F(PasswordEntry, TheGuardCellIsClearedAndRestored) {
    ForEachCase<6>("link/guard_cell.txt", [this](auto& limits, auto& value, auto& before, auto& after,
                                                 auto& call, auto& status) {
        std::istringstream words(limits);
        server.limits[0xBF03] = {std::istream_iterator<std::string>(words), {}};
        server.values[0xBF03] = value;
        server.statuses.clear();
        if (!call.empty())
            server.statuses[call] = std::stoi(status, nullptr, 0);
        EXPECT_EQ(Read(), kLinkGood);
        const auto apart = [](const std::string& word) { return word.empty() ? "" : word + " "; };
        EXPECT_EQ(written, apart(before) + kPassword + apart(after));
    });
}

TEST_F(PasswordEntry, TheApplicationLearnsWhyItIsAskedAgain) {
    const std::string version =
        "CP32Wrap::ExtractCSVersion : Error during obtaining Cyber Security version.\n";
    const std::string dialog = "CP32Wrap::EnterNonCyberSecurityPassword : Password dialog : Password : ";
    ForEachCase<6>("link/password_answers.txt", [&](auto& answer, auto& requests, auto& codes, auto& status,
                                                    auto& accepted, auto& trace) {
        server.statuses["ChangeSetting 00.02"] = std::stoll(answer, nullptr, 0);
        g_debugOutput.clear();
        EXPECT_EQ(Read(std::stoi(requests)), std::stoul(status));
        EXPECT_EQ(!trace.empty(),
                  g_debugOutput.ends_with(" *** [ PARLANE QTV ERR  ] " + version +
                                          " *** [ PARLANE QTV ERR  ] " + dialog + trace + "\n"))
            << g_debugOutput;
        std::string told;
        for (const int code : g_application.codes)
            told += (told.empty() ? "" : " ") + std::to_string(code);
        EXPECT_EQ(told, codes);
        EXPECT_EQ(g_application.accepted.size(), std::stoul(accepted));
        EXPECT_EQ(g_application.cancelled, status == "18" ? 1 : 0);
    });
}

TEST_F(PasswordEntry, OneBadAnswerDoesNotSendThePasswordAsItIs) {
    ForEachCase<3>("link/version_reads.txt", [this](auto& first, auto& second, auto& sent) {
        server.onCall = [&](SCall& call) -> std::optional<std::int64_t> {
            const auto reads = std::ranges::count(server.calls, "GetValue 00.DF");
            const std::string value = server.values[0x00DF] = reads < 2 ? first : second;
            return value.empty() && server.calls.back() == "GetValue 00.DF" ? 0x0111 : Answer(call);
        };
        g_debugOutput.clear();
        EXPECT_EQ(Read(), sent.empty() ? 18U : 0U);
        EXPECT_EQ(written, sent.empty() ? "" : kPassword);
        const std::string before = first.empty() ? "" : std::to_string(Hex(first).back());
        EXPECT_EQ(g_debugOutput.ends_with("CP32Wrap::EnterPassword : Cell 00.DF gave " + before +
                                          " before and gives no version now\n"),
                  sent.empty())
            << g_debugOutput;
        EXPECT_EQ(g_application.codes.size(), sent.empty() ? 0U : 1U);
    });
}

TEST_F(PasswordEntry, ARelayThatAsksDuringTheEntryStartsNoSecondOne) {
    server.onCall = [](SCall&) { return 0x0611; };
    EXPECT_EQ(Read(), 18U);
    EXPECT_EQ(g_application.codes, (std::vector<int>{0, 6}));
    EXPECT_LT(server.calls.size(), 25U);
    EXPECT_EQ(Read(), 18U) << "the next request enters a password again";
    EXPECT_GT(server.calls.size(), 1U);
}

TEST_F(PasswordEntry, AnAbortEndsTheEntryAndRestoresTheGuard) {
    const auto abortAt = [&](const std::string& where) {
        server.onCall = [&, where](SCall& call) -> std::optional<std::int64_t> {
            if (server.calls.back() == where)
                link->RequestAbort();
            return Answer(call);
        };
        return Read();
    };
    server.values[0xBF03] = "240107";
    server.values[0x00DF] = "240102"; // a relay that must never be sent a plain password
    const std::string guardOnly = "240100 240107 ";
    for (const char* where : {"GetValue BF.12", "GetValue 00.08", "GetValue 00.01", "GetValue 00.DF"}) {
        EXPECT_EQ(abortAt(where), 18U) << where;
        EXPECT_EQ(written, guardOnly) << where;
        EXPECT_EQ(std::ranges::count(server.calls, where), 1) << where;
    }
    server.values.erase(0x00DF);
    EXPECT_EQ(abortAt("GetSettingLimits 00.02"), 18U);
    EXPECT_EQ(written, guardOnly) << "no password after the abort";
    EXPECT_EQ(abortAt("GetText 01.01"), 18U);
    EXPECT_TRUE(written.empty());
    server.onCall = nullptr;
    EXPECT_EQ(Read(), kLinkGood) << "the abort is used up";
}

TEST_F(PasswordEntry, AnEntryOutOfACallbackLeavesTheOneAroundItAsItWas) {
    enum class EThen : bool { Nothing, Abort };
    struct SRow {
        const char* name;
        EThen before, behind; ///< the inner entry
        std::int64_t restored;
        LinkStatus inner, outer;
        std::string passwords;
    };
    const SRow rows[] = {
        {"both are accepted", EThen::Nothing, EThen::Nothing, 0, 0, 0, kPassword + kPassword},
        {"an abort ends both", EThen::Abort, EThen::Nothing, 0, 18, 18, ""},
        {"an abort ends the outer one", EThen::Nothing, EThen::Abort, 0, 0, 18, kPassword},
        {"no third one", EThen::Nothing, EThen::Nothing, 0x0611, 0, 0, kPassword + kPassword},
    };
    for (const SRow& row : rows) {
        SCOPED_TRACE(row.name);
        server.values[0xBF03] = "240107";
        server.statuses.clear();
        const auto act = [&](EThen then) { then == EThen::Abort ? link->RequestAbort() : void(); };
        g_application.inside = [&] {
            server.values[0xBF03] = "240100";
            act(row.before);
            EXPECT_EQ(link->EnterPassword(nullptr, false), row.inner);
            act(row.behind);
            server.statuses["ChangeSetting BF.03"] = row.restored;
        };
        g_debugOutput.clear();
        EXPECT_EQ(Read(), row.outer);
        EXPECT_EQ(written, "240100 " + row.passwords + "240107 ");
        const char* const failed = "CP32Wrap::EnterPassword : Cell BF.03 could not be restored\n";
        EXPECT_EQ(bool(Contains(g_debugOutput, failed)), row.restored != 0);
        EXPECT_EQ(g_application.codes, std::vector<int>(row.inner == 0 ? 2 : 1, 0));
    }
    EXPECT_EQ(Read(), kLinkGood) << "no abort is left";
}

TEST_F(PasswordEntry, ASecurityEventCallbackThatThrowsDecidesNothing) {
    CP32Wrap::SetSecurityEventCallback([](auto...) { throw std::runtime_error("callback"); });
    server.values[0xBF03] = "240107";
    g_debugOutput.clear();
    EXPECT_EQ(Read(), kLinkGood);
    EXPECT_EQ(written, "240100 " + kPassword + "240107 ");
    EXPECT_TRUE(Contains(g_debugOutput, "] A security event could not be reported\n"));
    CP32Wrap::SetSecurityEventCallback(nullptr);
}

// The reads of the entry have taken the monitor out.
TEST_F(PasswordEntry, ReportsTheProgressOfThePasswordsWriteAndOfTheRequest) {
    CProgressRecorder recorder;
    server.onCall = [&](SCall& call) -> std::optional<std::int64_t> {
        const std::optional<std::int64_t> answer = Answer(call);
        const bool isPassword = call.name == "ChangeSetting" && call.Cell() == 0x0002;
        if (isPassword || (call.name == "GetText" && !answer))
            server.sink->OnProgress(Variant::FromI4(isPassword ? 1 : 3), Variant::FromI4(4));
        return answer;
    };
    passwordRequests = 1;
    std::unique_ptr<CParlaneData> text;
    EXPECT_EQ(link->GetText(&recorder, 0x0101, text), kLinkGood);
    server.sink->OnProgress(Variant::FromI4(1), Variant::FromI4(2)); // nobody listens any more
    EXPECT_EQ(recorder.percents, (std::vector{25, 75}));
}

} // namespace ruvo::test
