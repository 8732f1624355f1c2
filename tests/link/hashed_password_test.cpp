// Hashed passwords, their salt, and the crypto provider behind them.
#include "fake_modules.h"
#include "support/case_table.h"
#include "support/fake_system.h"
#include "support/hex.h"

#include "link/login/hashed_password.h"
#include "platform/modules.h"

#include <algorithm>
#include <set>

namespace ruvo {

using test::g_modules;
using test::Keyed;

std::string ProgramPath() {
    return "C:\\opt\\ruvo\\ruvo";
}
bool CanReadModule(const std::string& path) {
    return path == "C:\\cur\\K.DLL";
}

namespace {

constexpr const char* kDigestOfAbc = "BA7816BF8F01CFEA414140DE5DAE2223B00361A396177A9CB410FF61F20015AD";

std::string Wire(const CParlaneData& value) {
    std::vector<std::uint8_t> bytes(value.GetSize());
    std::uint32_t type = 0;
    std::size_t size = 0;
    EXPECT_EQ(value.GetWireBytes(bytes, type, size), value.GetTypeCode());
    return {bytes.begin(), bytes.end()};
}

class HashedPassword : public testing::Test {
protected:
    HashedPassword() {
        CryptoLibrary::Uninitialize();
        g_modules = {};
        g_debugOutput.clear();
    }
};

TEST_F(HashedPassword, TheModesAndThePublishedDigests) {
    EXPECT_EQ(Keyed("what do ya want for nothing?", "Jefe"),
              "5BDCC146BF60754E6A042426089575C75A003F089D2739839DEC58B964EC3843");
    EXPECT_EQ(Wire(CParlaneHashedPassword("abc ", "x", kHashText)), kDigestOfAbc);
    const std::string once = Keyed("pass word", "ADMIN");
    EXPECT_EQ(Wire(CParlaneHashedPassword("ADMIN  ", "pass word \t", kHashKeyed)), once);
    EXPECT_EQ(Wire(CParlaneHashedPassword("ADMIN", "pass word", 7)), once);
    EXPECT_NE(Wire(CParlaneHashedPassword("ADMIN", " pass word", kHashKeyed)), once)
        << "leading blanks count";
    const CParlaneHashedPassword salted("ADMIN", "pass word       ", kHashSalted);
    char salt[17];
    salted.GetSalt(salt, sizeof salt);
    EXPECT_EQ(Wire(*salted.Clone()), Keyed(once + '\0', salt)) << "the NUL counts";
    EXPECT_EQ(salted.GetTypeCode(), 28U);
    EXPECT_EQ(test::HexDigits(Wire(*salted.CreateMinimum()) + Wire(*salted.CreateMaximum()) +
                              Wire(*salted.CreateStep())),
              "00FF01");
}

TEST_F(HashedPassword, SaltsAreFreshAndOfTheTable) {
    std::set<std::string> salts;
    for (int i = 0; i < 50; ++i) {
        std::srand(7); // as scrambling a password does within one second
        const CParlaneHashedPassword value("A", "B", kHashSalted);
        std::string salt(17, '?');
        value.GetSalt(salt.data(), 16);
        EXPECT_EQ(salt, std::string(17, '?')) << "a buffer of another length is left alone";
        value.GetSalt(salt.data(), value.GetSaltLength());
        EXPECT_TRUE(std::ranges::all_of(salt.substr(0, 16), [](char c) { return c >= ' ' && c <= '}'; }));
        EXPECT_TRUE(salt[16] == '\0' && salts.insert(salt).second);
    }
    std::srand(7);
    const int first = std::rand() % 94;
    std::srand(7);
    EXPECT_EQ(MakeSalt()[0], 0x20 + first);
}

TEST_F(HashedPassword, WithoutAWholeProviderThereIsNoDigest) {
    const std::string error = "CryptoLibrary::Initialize(): [Error] ";
    g_modules.present = false;
    EXPECT_FALSE(CParlaneHashedPassword("A", "B", kHashSalted).HasDigest());
    EXPECT_EQ(g_debugOutput, error + "Unable to load the library DLL.");
    g_modules.present = true;
    for (const unsigned ordinal : {2U, 9U, 13U}) {
        g_debugOutput.clear();
        g_modules.missingOrdinal = ordinal;
        DigestText digest{'x'};
        EXPECT_FALSE(CryptoLibrary::MakeTextDigest("x", digest));
        EXPECT_EQ(digest.data() + g_debugOutput, error + "Some functions are not available in the DLL.");
    }
    EXPECT_EQ(g_modules.unloads, 3);
    g_modules = {};
    EXPECT_EQ(CryptoLibrary::Initialize() + CryptoLibrary::Initialize(), 0) << "a failure is not final";
    CryptoLibrary::Uninitialize();
    CryptoLibrary::Uninitialize();
    EXPECT_EQ(g_modules.loads * 10 + g_modules.unloads, 11);
}

TEST_F(HashedPassword, WhereTheProviderIsLookedFor) {
    test::ForEachCase<3>("link/crypto_library_paths.txt", [](auto& name, auto& program, auto& want) {
        EXPECT_EQ(ResolveCryptoLibraryPath(name, program, "C:\\cur"), want);
    });
    EXPECT_EQ(ResolveCryptoLibraryPath("L.DLL", "C:\\a\\testhost.x86.exe", "C:\\cur"), "C:\\a\\L.DLL");
    EXPECT_EQ(g_debugOutput, "Unit tests error, C:\\cur\\L.DLL file not found\n");
}

} // namespace
} // namespace ruvo
