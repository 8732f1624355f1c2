// Entering passwords: when, with what requests, and what the application is told.
#include "support/scripted_server.h"

#include "link/client.h"
#include "model/values/parlane_integers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

namespace ruvo {

inline std::string g_debugOutput; // as support/fake_system.h has it

namespace test {
namespace {

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

class PasswordEntry : public testing::Test {
protected:
    PasswordEntry() {
        g_application = SApplication{};
        CP32Wrap::SetGetPasswordCallback(&GivePassword);
        CP32Wrap::SetPasswordAcceptedCallback(&NoteAccepted);
        CP32Wrap::SetLoginCancelledCallback([] { ++g_application.cancelled; });
        EXPECT_EQ(CP32Wrap::CreateInstance(), kLinkGood);
        server.values = {{0x0004, TextHex("Feeder 1")},
                         {0x0005, TextHex("Plant")},
                         {0x0006, TextHex("MODEL-LONGER-THAN-16")},
                         {0x0008, TextHex("SERIAL")},
                         {0x0011, TextHex("Software 3")}};
        server.limits = {{0x0002, {"1C0420202020"}}};
        server.onCall = [this](SCall& call) -> std::optional<std::int64_t> { return Answer(call); };
    }
    ~PasswordEntry() override {
        CP32Wrap::DestroyInstance();
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
            std::string bytes;
            for (const std::uint8_t byte : *call.inputs[2].AsBytes())
                bytes += std::to_string(byte) + " ";
            written.push_back(bytes);
        }
        return std::nullopt;
    }

    LinkStatus Read() {
        std::unique_ptr<CParlaneData> text;
        return CP32Wrap::GetInstance()->GetText(nullptr, 0x0101, text);
    }

    CScriptedServer server;
    int passwordRequests = 1;
    std::vector<std::string> written;
};

TEST_F(PasswordEntry, PlainLoginMakesExactlyTheseRequests) {
    server.texts[0x0101] = TextHex("ok");
    EXPECT_EQ(Read(), kLinkGood);
    const std::vector<std::string> want{"GetText 01.01",          "GetSettingLimits BF.03", "GetValue BF.03",
                                        "GetValue BF.12",         "GetValue 00.04",         "GetValue 00.05",
                                        "GetValue 00.06",         "GetValue 00.08",         "GetValue 00.11",
                                        "GetValue 00.DF",         "GetValue 00.D1",         "GetValue 00.DF",
                                        "GetSettingLimits 00.02", "ChangeSetting 00.02",    "GetText 01.01"};
    EXPECT_EQ(server.calls, want);
    EXPECT_EQ(written, std::vector<std::string>{"28 4 65 65 65 65 "});
    EXPECT_EQ(g_application.codes, std::vector<int>{0});
    EXPECT_EQ(g_application.maxLength, 4U);
    EXPECT_EQ(g_application.accepted, std::vector<std::string>{"MODEL-LONGER-THA"});
    const SPasswordRequest& request = g_application.request;
    EXPECT_EQ(std::string(request.description) + "|" + request.plant + "|" + request.model + "|" +
                  request.serialNumber + "|" + request.software + "|" + request.displayText,
              "Feeder 1|Plant|MODEL-LONGER-THA|SERIAL|Software 3|");
    server.limits.clear(); // of a length that nobody tells
    passwordRequests = 1;
    EXPECT_EQ(Read(), kLinkGood);
    EXPECT_EQ(g_application.maxLength, 0U);
    EXPECT_EQ(written.back(), "28 0 ");
}

TEST_F(PasswordEntry, TheGuardCellIsClearedAndRestored) {
    struct SRow {
        const char* name;
        std::vector<std::string> limits;
        std::string value;
        std::vector<std::string> written;
        std::map<std::string, std::int64_t> statuses = {};
    };
    const std::string password = "28 4 65 65 65 65 ";
    const SRow rows[] = {
        {"five limits hold the value",
         {"240107", "240100", "2401FF", "240101", "240100"},
         "240109",
         {"36 1 0 ", password, "36 1 7 "}},
        {"four limits do not",
         {"240107", "240100", "2401FF", "240101"},
         "28020900",
         {"40 2 0 0 ", password, "40 2 9 0 "}},
        {"a string index", {}, "500203 00", {"80 2 0 0 ", password, "80 2 3 0 "}},
        {"zero needs no clearing", {}, "240100", {password}},
        {"a text is no guard", {}, TextHex("x"), {password}},
        {"flags are no guard", {}, "200101", {password}},
        {"six limits do not hold the value",
         {"240107", "240100", "2401FF", "240101", "240100", "240100"},
         "240109",
         {"36 1 0 ", password, "36 1 9 "}},
        {"limits that end with an abort", {}, "240109", {password}, {{"GetSettingLimits BF.03", 18}}},
        {"status 1 clears it", {}, "240109", {"36 1 0 ", password, "36 1 9 "}, {{"ChangeSetting BF.03", 1}}},
    };
    for (const SRow& row : rows) {
        written.clear();
        passwordRequests = 1;
        server.texts[0x0101] = TextHex("ok");
        server.limits[0xBF03] = row.limits;
        server.values[0xBF03] = row.value;
        server.statuses = row.statuses;
        EXPECT_EQ(Read(), kLinkGood) << row.name;
        EXPECT_EQ(written, row.written) << row.name;
    }
    server.limits[0xBF03] = {"240109", "240100", "2401FF", "240101", "240101"};
    server.statuses["ChangeSetting BF.03"] = 0x0411; // a guard that is not cleared is not restored either
    for (const std::string& after : {std::string("240109"), std::string("240100"), TextHex("x")}) {
        written.clear();
        passwordRequests = 1;
        server.values[0xBF03] = after;
        EXPECT_EQ(Read(), kLinkGood);
        EXPECT_EQ(written, (std::vector<std::string>{"36 1 0 ", password})) << after;
    }
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
        {"accepted, but the level does not suffice", 0, 2, {0, 2}, kLinkAborted, 1},
        {"status 1 is accepted too", 1, 1, {0}, kLinkGood, 1},
        {"rejected", 0x0411, 1, {0, 3}, kLinkAborted, 0, "incorrect"},
        {"another reply", 0x0511, 1, {0, 6}, kLinkAborted, 0, "error"},
        {"the server is gone", CScriptedServer::kComFailure, 1, {0, 6}, kLinkAborted, 0, "error"},
        {"the password cell itself asks for a password", 0x0611, 1, {0, 6}, kLinkAborted, 0, "error"},
    };
    const std::string version =
        "CP32Wrap::ExtractCSVersion : Error during obtaining Cyber Security version.\n";
    const std::string dialog = "CP32Wrap::EnterNonCyberSecurityPassword : Password dialog : Password : ";
    for (const SRow& row : rows) {
        g_application.codes.clear();
        g_application.accepted.clear();
        g_application.cancelled = 0;
        server.texts[0x0101] = TextHex("ok");
        server.statuses["ChangeSetting 00.02"] = row.writeStatus;
        passwordRequests = row.requests;
        g_debugOutput.clear();
        EXPECT_EQ(Read(), row.status) << row.name;
        EXPECT_EQ(!row.trace.empty(),
                  g_debugOutput.ends_with(" *** [ PARLANE QTV ERR  ] " + version +
                                          " *** [ PARLANE QTV ERR  ] " + dialog + row.trace + "\n"))
            << g_debugOutput;
        EXPECT_EQ(g_application.codes, row.codes) << row.name;
        EXPECT_EQ(g_application.accepted.size(), row.accepted) << row.name;
        EXPECT_EQ(g_application.cancelled, row.status == kLinkAborted ? 1 : 0) << row.name;
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
        server.texts[0x0101] = TextHex("ok");
        server.calls.clear();
        written.clear();
        passwordRequests = 1;
        g_application.codes.clear();
        server.onCall = [&](SCall& call) -> std::optional<std::int64_t> {
            const auto reads = std::ranges::count(server.calls, "GetValue 00.DF");
            server.values[0x00DF] = reads < 2 ? row.first : row.second;
            return server.values[0x00DF].empty() && server.calls.back() == "GetValue 00.DF" ? 0x0111
                                                                                            : Answer(call);
        };
        EXPECT_EQ(Read(), row.isSent ? kLinkGood : kLinkAborted);
        EXPECT_EQ(written.size(), row.isSent ? 1U : 0U) << row.first << " then " << row.second;
        EXPECT_EQ(g_application.codes.size(), written.size());
    }
}

TEST_F(PasswordEntry, ARelayThatAsksDuringTheEntryStartsNoSecondOne) {
    server.onCall = [](SCall&) { return 0x0611; };
    EXPECT_EQ(Read(), kLinkAborted);
    EXPECT_EQ(g_application.codes, (std::vector<int>{0, 6}));
    EXPECT_LT(server.calls.size(), 25U);
    server.calls.clear();
    EXPECT_EQ(Read(), kLinkAborted) << "the next request enters a password again";
    EXPECT_GT(server.calls.size(), 1U);
}

TEST_F(PasswordEntry, AnAbortEndsTheEntryAndRestoresTheGuard) {
    server.texts[0x0101] = TextHex("ok");
    const auto abortAt = [&](const std::string& where) {
        written.clear();
        passwordRequests = 1;
        server.calls.clear();
        server.onCall = [&, where](SCall& call) -> std::optional<std::int64_t> {
            if (server.calls.back() == where) {
                CP32Wrap::GetInstance()->RequestAbort();
            }
            return Answer(call);
        };
        return Read();
    };
    server.values[0xBF03] = "240107";
    server.values[0x00DF] = "240102"; // a relay that must never be sent a plain password
    const std::vector<std::string> guardOnly{"36 1 0 ", "36 1 7 "};
    for (const char* where : {"GetValue BF.12", "GetValue 00.08", "GetValue 00.01", "GetValue 00.DF"}) {
        EXPECT_EQ(abortAt(where), kLinkAborted) << where;
        EXPECT_EQ(written, guardOnly) << where;
    }
    server.values.erase(0x00DF);
    EXPECT_EQ(abortAt("GetSettingLimits 00.02"), kLinkAborted);
    EXPECT_EQ(written, guardOnly) << "no password after the abort";
    EXPECT_EQ(abortAt("GetText 01.01"), kLinkAborted);
    EXPECT_TRUE(written.empty());
    server.onCall = nullptr;
    EXPECT_EQ(Read(), kLinkGood) << "the abort is used up";
}

TEST_F(PasswordEntry, ASecurityEventCallbackThatThrowsDecidesNothing) {
    CP32Wrap::SetSecurityEventCallback([](auto...) { throw std::runtime_error("callback"); });
    server.texts[0x0101] = TextHex("ok");
    server.values[0xBF03] = "240107";
    EXPECT_EQ(Read(), kLinkGood);
    EXPECT_EQ(written, (std::vector<std::string>{"36 1 0 ", "28 4 65 65 65 65 ", "36 1 7 "}));
    CP32Wrap::SetSecurityEventCallback(nullptr);
}

TEST_F(PasswordEntry, TheApplicationMaySilenceTheAcceptance) {
    g_application.noNotify = 1;
    server.texts[0x0101] = TextHex("ok");
    EXPECT_EQ(Read(), kLinkGood);
    EXPECT_TRUE(g_application.accepted.empty());
}

} // namespace test
} // namespace ruvo
