#include "base/digest.h"
#include "model/status/progress.h"
#include "model/status/status.h"
#include "model/status/status_string_ids.h"
#include "model/status/string_table.h"
#include "model/values/parlane_text.h"
#include "platform/debug_output.h"
#include "platform/trace.h"

#include <gtest/gtest.h>

#include <set>
#include <stdexcept>
#include <tuple>

namespace ruvo {

static std::string g_output; // what reached the debugger output, a bar behind each call

void WriteDebugOutput(const std::string& text) noexcept {
    g_output += text + "|";
}

namespace {

bool Accepted(unsigned status, int level) {
    return IsAcceptable(CStatus(status), level);
}

TEST(Statuses, AcceptedAtEachLevel) {
    const std::tuple<int, std::set<unsigned>> kReplies[] = {
        {-1, {}}, {0, {}}, {1, {9}}, {2, {2, 3, 5}}, {3, {1, 2, 6}}, {4, {12}}, {7, {5, 14}}, {8, {}}};
    for (const auto& [level, codes] : kReplies) {
        for (unsigned reply = 17; reply < 0x10000; reply += 256) {
            EXPECT_EQ(Accepted(reply, level), codes.contains(reply / 256)) << level << " " << reply;
            EXPECT_TRUE(Accepted(reply - 17, level) && Accepted(reply - 16, level));
            EXPECT_TRUE(Accepted(reply, 5) && Accepted(reply, 6));
        }
        EXPECT_FALSE(Accepted(2, level) || Accepted(0x0912, level));
        EXPECT_THROW(Accepted(18, level), CStatus);
    }
    for (const unsigned value : {2U, 8U, 15U, 18U})
        EXPECT_TRUE(!Accepted(value, 6) && Accepted(value + 256, 6));
    EXPECT_FALSE(Accepted(3, 5));
    EXPECT_EQ(CStatus::FromReplyCode(0), CStatus(0));
    EXPECT_EQ(CStatus::FromReplyCode(8), CStatus(0x0801));
    EXPECT_EQ(CStatus::FromReplyCode(13), CStatus(0x0D11));
}

TEST(Statuses, TextNumbers) {
    const std::tuple<unsigned, unsigned> kCases[] = {
        {0x0011, 138}, {0x0111, 129}, {0x0911, 137}, {0x0A11, 102}, {0x0D11, 105}, {0x0E11, 106},
        {0x0F11, 138}, {0, 209},      {0x0801, 209}, {0x0502, 139}, {54, 191},     {55, 184},
        {56, 193},     {58, 195},     {61, 198},     {62, 195},     {67, 195},     {68, 205},
        {69, 205},     {0x0147, 208}, {72, 138},     {250, 213},    {251, 210},    {249, 138},
        {253, 212},    {254, 138},    {0x01FA, 138}};
    for (const auto& [status, id] : kCases)
        EXPECT_EQ(CStatus(status).GetMessageId(), id) << status;
    EXPECT_EQ(CommsStatusStringId(69), 206U);
}

TEST(Statuses, FailureIsRecordedAndTraced) {
    CErrorList errors;
    g_output.clear();
    EXPECT_FALSE(CheckStatus(CStatus(0x0211), 0, 246, 244, 0x0A05, errors));
    const std::string mark = " *** [ PARLANE STATUS   ] Error";
    const std::string detail =
        " event file\nMV Event Extraction process:  [0A05]  Cell data not available\n|";
    EXPECT_EQ(g_output, mark + "\n|" + mark + " message: Failed to save" + detail + mark +
                            " log    : Failed to open" + detail);
    EXPECT_THROW(CheckStatus(CStatus(18), 0, 222, 526, kNoErrorCode, errors), CStatus);
    EXPECT_FALSE(CheckStatus(CStatus(18), 6, 222, 526, kNoErrorCode, errors));
    EXPECT_TRUE(CheckStatus(CStatus(0x0211), 2, 222, 526, kNoErrorCode, errors));
    ASSERT_EQ(errors.size(), 3U);
    EXPECT_EQ(errors[0]->Clone()->GetStatusCode(), 0x0211U);
    EXPECT_EQ(dynamic_cast<CRelayError&>(*errors[2]).GetDetail(), " P32LS Error - Function Aborted by User");
}

TEST(Errors, Texts) {
    // An error, whether it has a message and a log text, and both.
    const std::tuple<std::unique_ptr<IError>, bool, bool, std::string, std::string> kCases[] = {
        {std::make_unique<CEventError>(0), false, true, "-", "Error during Fetch Device Values: %1\n"},
        {std::make_unique<CEventError>(3), true, true, "Failed to save event file\n%1",
         "Failed to open event file\n%1"},
        {std::make_unique<CEventError>(4), true, true, "Failed to open setting file\n%1",
         "Failed to open event file\n%1"},
        {std::make_unique<CCellError>(229, "%2", "b", "c"), true, true,
         "Max value \"%2\" not aligned on step \"b\" from min value \"c\".",
         "Value \"%2\" < min value \"b\"."},
        {std::make_unique<CCellError>(239), true, false, "Unknown", "-"},
        {std::make_unique<CFileError>("f", 5, "No %1", 246), true, true, "Failed to save event file\nNo %1",
         "Failed to open event file\nNo %1"},
        {std::make_unique<CFileError>("f", 5, "no", 239), true, false, "Unknown", "-"},
        {std::make_unique<CRelayError>(243, 242, 0x0A05, 139, 0x0502), true, true,
         "Error Connecting To Device:\nSet Password operation:  [0A05]  P32LS Error - Busy Counter overflow",
         "MV Event Extraction process: "},
        {std::make_unique<CRelayError>(239, 0, kNoErrorCode, 0, 0), true, false, "Unknown", "-"},
        {std::make_unique<CCellError>(200), false, false, "", ""}};
    for (const auto& [error, hasMessage, hasLog, message, log] : kCases) {
        std::string shown, logged;
        error->GetMessageText(shown);
        error->Clone()->GetLogText(logged);
        EXPECT_EQ(std::tuple(error->HasMessage(), error->HasLog(), shown, logged),
                  std::tuple(hasMessage, hasLog, message, log));
    }
    EXPECT_EQ(FormatPositional(std::string_view("100%% %3%2%9%1%1").substr(0, 15), {"a"}), "100% a%");
    EXPECT_EQ(FormatPositional("%2%1", {"a", "b"}), "ba");
    EXPECT_EQ(CFileError(239U, 247).GetDetail(), "Unknown");
    EXPECT_EQ(CFileError(239U, 247).GetCause(), 0);
    EXPECT_EQ(CEventError(0).GetStatusCode(), 0U);
    EXPECT_EQ(CRelayError(0, 0, 0, 0, 0).GetDetail(), " [0000]  ");
    EXPECT_EQ(CRelayError(0, 0, 0xFFFFFFFE, 0, 0).GetDetail(), " [FFFFFFFE]  ");
}

TEST(Errors, OurTextsStayAsTheyAre) { // users and scripts know them, and their numbers
    std::string all;
    for (unsigned id = 0; id < 1000; ++id) {
        const char* const text = LoadStringText(id);
        all += text == nullptr ? "" : std::to_string(id) + text + "|";
    }
    EXPECT_EQ(DigestOf(all), "A0EB08787E29BACA");
}

TEST(Traces, Lines) {
    const std::string longText(600, 'x');
    g_output.clear();
    TraceError("%s %d", "a\r\nb\x1B\x7F", 7);
    SetTraceTag("RUVO");
    TraceWarning("%s", longText.c_str());
    SetTraceTag("");
    TraceFunction("TenLetters", EFunctionState::Started);
    TraceSeparator();
    EXPECT_EQ(g_output, " *** [ PARLANE QTV ERR  ] a\r\nb\x1B\x7F 7\n|  *  [ PARLANE RUVO WARN ] " +
                            longText + "\n|     [ PARLANE QTV INFO ] Function  ##  TenLetters" +
                            std::string(38, ' ') + "  ##  started\n|" + std::string(128, '-') + "\n|");
}

TEST(Traces, StatesOfAFunction) {
    g_output.clear();
    for (const EFunctionState state :
         {EFunctionState::Started, EFunctionState::Succeeded, EFunctionState::Failed})
        TraceFunction(std::string(48, 'F'), state);
    const std::string line = "     [ PARLANE QTV INFO ] Function  ##  " + std::string(48, 'F') + "  ##  ";
    EXPECT_EQ(g_output, line + "started\n|" + line + "succeeded\n|" + line + "failed\n|");
}

TEST(EncipheredPasswords, BuiltFromPasswordAndKey) {
    const std::string mark = " *** [ PARLANE QTV ERR  ] ";
    const std::string length = mark + "Password size must be equal to 8 bytes.\n|";
    const std::string keyLength = mark + "Encryption key size must be equal to 16 bytes (64 bits).\n|";
    const char* const kKey = "00112233445566778899AABBccddeeff";
    const std::tuple<const char*, const char*, std::vector<std::uint8_t>, std::string> kCases[] = {
        {"AbcdEf12", kKey, {0x33, 0xBF, 0xEF, 0x4B, 0x12, 0x22, 0x8A, 0x97}, ""},
        {"AbcdEf12x", kKey, {0x33, 0xBF, 0xEF, 0x4B, 0x12, 0x22, 0x8A, 0x97, 0}, length},
        {"AbcdEf12", "0011223", {0x10, 0x91, 0xFF, 0x19, 0xBA, 0x29, 0x6F, 0xA6}, keyLength}};
    for (const auto& [password, key, bytes, trace] : kCases) {
        g_output.clear();
        EXPECT_EQ(CParlaneEncryptedPassword(password, key).GetBytes(), bytes);
        EXPECT_EQ(g_output, trace);
    }
    g_output.clear();
    EXPECT_THROW(CParlaneEncryptedPassword("AbcdEf1", "0"), std::invalid_argument);
    EXPECT_EQ(g_output, length + keyLength);
}

struct CRecorder final : CProgressMonitor {
    CRecorder() : CProgressMonitor(nullptr, 0, 100) {}
    void SetPercent(int percent) override { seen += std::to_string(percent) + " "; }
    std::string seen;
};

TEST(Progress, MapsOntoThePartOfTheParent) {
    CRecorder recorder;
    CProgressMonitor part(&recorder, 20, 50);
    using Report = std::pair<std::uint32_t, std::uint32_t>;
    for (const auto& [done, total] :
         {Report{5, 0}, {0, 3}, {1, 3}, {34, 100}, {36, 100}, {0xFFFFFFFE, 0xFFFFFFFF}, {7, 3}})
        part.SetProgress(done, total);
    CProgressMonitor(&recorder, 0, 100).SetProgress(0, 3); // the first report is no repetition
    EXPECT_EQ(recorder.seen, "20 29 30 49 50 0 ");
    EXPECT_FALSE(part.IsTiming());
    part.SetTiming(true);
    EXPECT_TRUE(part.IsTiming());
}

} // namespace
} // namespace ruvo
