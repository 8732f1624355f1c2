// Entering passwords: when, with what requests, and what the application is told.
#include "support/case_table.h"
#include "support/linked_test.h"

#include "model/values/parlane_integers.h"

#include <algorithm>
#include <cstring>

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
} g_application;

int GivePassword(const SPasswordRequest& request, char** buffer, std::uint32_t maxLength,
                 std::uint32_t* noNotify, int code, std::int32_t extra) {
    EXPECT_EQ(extra, -1);
    EXPECT_EQ(*noNotify, 0U);
    EXPECT_EQ(std::string(*buffer), std::string(maxLength, ' '));
    g_application.request = request;
    g_application.maxLength = maxLength;
    g_application.codes.push_back(code);
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
        server.values = {{0x0004, TextHex("Feeder 1")},
                         {0x0005, TextHex("Plant")},
                         {0x0006, TextHex("MODEL-LONGER-THAN-16")},
                         {0x0008, TextHex("SERIAL")},
                         {0x0011, TextHex("Software 3")}};
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
        if (call.name == "ChangeSetting") {
            written += Describe(call.inputs[2]) + " ";
        }
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
              "Feeder 1|Plant|MODEL-LONGER-THA|SERIAL|Software 3|");
    server.limits.clear(); // of a length that nobody tells
    EXPECT_EQ(Read(), kLinkGood);
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
    struct SRow {
        const char* name;
        std::int64_t writeStatus;
        int requests;
        std::vector<int> codes;
        LinkStatus status;
        std::size_t accepted;
        std::string trace = {};
    };
    const SRow rows[] = {
        {"accepted, but the level does not suffice", 0, 2, {0, 2}, 18U, 1},
        {"status 1 is accepted too", 1, 1, {0}, kLinkGood, 1},
        {"rejected", 0x0411, 1, {0, 3}, 18U, 0, "incorrect"},
        {"another reply", 0x0511, 1, {0, 6}, 18U, 0, "error"},
        {"the server is gone", CScriptedServer::kComFailure, 1, {0, 6}, 18U, 0, "error"},
        {"the password cell itself asks for a password", 0x0611, 1, {0, 6}, 18U, 0, "error"},
    };
    const std::string version =
        "CP32Wrap::ExtractCSVersion : Error during obtaining Cyber Security version.\n";
    const std::string dialog = "CP32Wrap::EnterNonCyberSecurityPassword : Password dialog : Password : ";
    for (const SRow& row : rows) {
        server.statuses["ChangeSetting 00.02"] = row.writeStatus;
        g_debugOutput.clear();
        EXPECT_EQ(Read(row.requests), row.status) << row.name;
        EXPECT_EQ(!row.trace.empty(),
                  g_debugOutput.ends_with(" *** [ PARLANE QTV ERR  ] " + version +
                                          " *** [ PARLANE QTV ERR  ] " + dialog + row.trace + "\n"))
            << g_debugOutput;
        EXPECT_EQ(g_application.codes, row.codes) << row.name;
        EXPECT_EQ(g_application.accepted.size(), row.accepted) << row.name;
        EXPECT_EQ(g_application.cancelled, row.status == 18U ? 1 : 0) << row.name;
    }
}

TEST_F(PasswordEntry, OneBadAnswerDoesNotSendThePasswordAsItIs) {
    struct SRow {
        std::string first, second; ///< values of cell 00.DF as it is read twice, empty for none
        bool isSent;
    };
    const SRow rows[] = {{"240101", "", false},       {"240102", "FF00", false},
                         {"240103", "580100", false}, {"240101", "240100", false},
                         {"240104", "240100", false}, {"240100", "", true},
                         {"", "240100", true},        {"240100", "240100", true}};
    for (const SRow& row : rows) {
        server.onCall = [&](SCall& call) -> std::optional<std::int64_t> {
            const auto reads = std::ranges::count(server.calls, "GetValue 00.DF");
            server.values[0x00DF] = reads < 2 ? row.first : row.second;
            return server.values[0x00DF].empty() && server.calls.back() == "GetValue 00.DF" ? 0x0111
                                                                                            : Answer(call);
        };
        EXPECT_EQ(Read(), row.isSent ? kLinkGood : 18U);
        EXPECT_EQ(written, row.isSent ? kPassword : "") << row.first << " then " << row.second;
        EXPECT_EQ(g_application.codes.size(), row.isSent ? 1U : 0U);
    }
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
            if (server.calls.back() == where) {
                link->RequestAbort();
            }
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
    }
    server.values.erase(0x00DF);
    EXPECT_EQ(abortAt("GetSettingLimits 00.02"), 18U);
    EXPECT_EQ(written, guardOnly) << "no password after the abort";
    EXPECT_EQ(abortAt("GetText 01.01"), 18U);
    EXPECT_TRUE(written.empty());
    server.onCall = nullptr;
    EXPECT_EQ(Read(), kLinkGood) << "the abort is used up";
}

TEST_F(PasswordEntry, ASecurityEventCallbackThatThrowsDecidesNothing) {
    CP32Wrap::SetSecurityEventCallback([](auto...) { throw std::runtime_error("callback"); });
    server.values[0xBF03] = "240107";
    EXPECT_EQ(Read(), kLinkGood);
    EXPECT_EQ(written, "240100 " + kPassword + "240107 ");
    CP32Wrap::SetSecurityEventCallback(nullptr);
}

TEST_F(PasswordEntry, TheApplicationMaySilenceTheAcceptance) {
    g_application.noNotify = 1;
    EXPECT_EQ(Read(), kLinkGood);
    EXPECT_TRUE(g_application.accepted.empty());
}

} // namespace ruvo::test
