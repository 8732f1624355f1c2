// A thousand planted passwords: no program may let one of them out.
#include "config/scramble.h"
#include "e2e/cases.h"
#include "e2e/program.h"

#include <gtest/gtest.h>

#include <random>

namespace ruvo::test {
namespace {

struct SSecret {
    std::string plain;
    std::string scrambled;
};

std::vector<SSecret> PlantSecrets(std::size_t count) {
    std::mt19937 draw(20261125);
    std::vector<SSecret> secrets(count);
    for (SSecret& secret : secrets) {
        for (int i = 0; i < 8; ++i)
            secret.plain += static_cast<char>('A' + draw() % 26); // letters that every relay's password has
        char scrambled[23];
        ScramblePassword(secret.plain.c_str(), scrambled);
        secret.scrambled = scrambled;
    }
    return secrets;
}

/// What can be wrong with a relay's login, by the relay's number in the substation: what its access table
/// holds beside the generation and the password, and a fault.
struct SFlow {
    const char* name;
    const char* access;
    bool knowsPassword; ///< else the relay has a planted password that is not the INI file's
    const char* fault;
};
const SFlow kFlows[] = {
    {"plain", "length = 8", true, ""},
    {"plain, wrong", "length = 8", false, ""},
    {"plain, for reading too", "length = 8\nprotect = [\"events\", \"reads\", \"writes\"]", true, ""},
    {"plain, blocked", "length = 8\nattempts = 1\nblocked_requests = 200", false, ""},
    {"plain, entry fails", "length = 8", true, "operation = \"ChangeSetting\"\nstatus = 7\n"},
    {"plain, useless reply", "length = 8", true, "operation = \"ChangeSetting\"\nwrong_type = 0\n"},
    {"plain, level too low", "length = 8\nlevel_too_low = true", true, ""},
    {"enciphered", "generation = 1", true, ""},
    {"enciphered, wrong", "generation = 1\nattempts = 2", false, ""},
    {"enciphered, refused", "generation = 1", true, "operation = \"ChangeSetting\"\nreply = 9\n"},
    {"enciphered, no key", "generation = 1", true,
     "operation = \"GetValue\"\ncell = \"BF.10\"\nstatus = 8\n"},
    {"user names", "generation = 2", true, ""},
    {"hashed", "generation = 3", true, ""},
    {"hashed, wrong", "generation = 3", false, ""},
};
constexpr std::size_t kRelays = 100; // in one substation

struct SSite {
    std::string substation = kLink;
    std::string sections = "[RUVO_SERIAL]\n";
};

std::string Access(const SFlow& flow, const std::string& password) {
    const std::string access = flow.access;
    const bool users = access.starts_with("generation = 2") || access.starts_with("generation = 3");
    return "[relay.access]\n" + access + "\n" +
           (users ? "users = [{ name = \"ENGINEER\", password = \"" + password + "\" }]\n"
                  : "password = \"" + password + "\"\n") +
           (access.starts_with("generation") ? "" : "[relay.cells]\n\"00.DF\" = { uint = 0, size = 1 }\n");
}

SSite MakeSite(const std::vector<SSecret>& secrets, std::size_t first) {
    SSite site;
    std::string passwords = "[RUVO_PASSWORDS]\n";
    std::string faults;
    for (std::size_t i = 0; i < kRelays; ++i) {
        const SFlow& flow = kFlows[i % std::size(kFlows)];
        const SSecret& ours = secrets[first + i];
        const SSecret& other = secrets[(first + i + 1) % secrets.size()];
        const std::string number = std::to_string(100 + i);
        site.substation += Relay("serial = " + number,
                                 Access(flow, flow.knowsPassword ? ours.plain : other.plain) + kTrip, number);
        if (*flow.fault != '\0')
            faults += "[[fault]]\nrelay = \"R" + number + "\"\n" + flow.fault;
        site.sections += "RV" + number + "=" + number + "\n";
        passwords += "RV" + number + "=" + ours.scrambled + "\n";
    }
    site.substation += faults;
    site.sections += passwords;
    return site;
}

/// The password in the forms in which bytes get into a text: as it is, as hexadecimal digits in the ways that
/// traces and the companion write them, as 16-bit characters; and the scrambled text, which is as good.
std::vector<std::string> FormsOf(const SSecret& secret) {
    std::vector<std::string> forms = {secret.plain, secret.scrambled, "", "", "", ""};
    for (const char character : secret.plain) {
        char text[8];
        std::snprintf(text, sizeof text, "0x%02X ", static_cast<unsigned>(character));
        forms[2] += text;
        forms[3] += std::string(text + 2, 2);
        forms[4] += std::string(text + 2, 3);
        forms[5] += std::string(1, character) + '\0';
    }
    forms[2].pop_back();
    forms[4].pop_back();
    return forms;
}

/// All that the programs wrote: files but for the ones we made ourselves, and the output.
std::string Leavings(const CProgramRun& run, const std::string& output) {
    std::string all = output;
    for (const auto& [name, bytes] : FilesBelow(run.Folder().Native()))
        if (name != "site.ini" && name != "substation.toml" && name != "script.sh")
            all += name + "\n" + bytes + "\n";
    return all;
}

TEST(Secrets, AThousandPasswordsStayInside) {
    const std::vector<SSecret> secrets = PlantSecrets(1000);
    for (std::size_t first = 0; first < secrets.size(); first += kRelays) {
        const SSite site = MakeSite(secrets, first);
        const CProgramRun run(site.substation, "", site.sections);
        std::string output = run.Shell("export RUVO_DEBUG_OUTPUT=$DIR/debug.txt RUVO_RECORD=$DIR/calls.rec\n"
                                       "$RUVO -t $DIR/site.ini; $RUVO $DIR/site.ini\n"
                                       "${RUVO}ctl check $DIR/site.ini\n"
                                       "for n in {100..113}; do ${RUVO}ctl test $DIR/site.ini RV$n; done\n"
                                       "${RUVO}ctl recording show $DIR/calls.rec\n"
                                       "${RUVO}ctl recording to-substation $DIR/calls.rec");
        for (std::size_t i = first; i < first + 5; ++i) { // typed, and never repeated
            output += run.Shell("plain=" + secrets[i].plain + " scrambled=" + secrets[i].scrambled +
                                "\necho ${plain}123 | ${RUVO}ctl password encrypt --key RV100\n"
                                "echo ${scrambled}X | ${RUVO}ctl password encrypt\n"
                                "${RUVO}ctl password encrypt $plain\n"
                                "${RUVO}ctl password decrypt $scrambled");
        }
        const std::string all = Leavings(run, output);
        EXPECT_NE(all.find("Invalid password. Connection details"), std::string::npos)
            << "the failures have happened";
        EXPECT_NE(all.find("calls EnterPassword"), std::string::npos) << "the traces were written";
        EXPECT_GT(run.Files().size(), 10U) << "and some logins were good";
        EXPECT_NE(all.find("ChangeSetting 101 00.02 (masked 1C)"), std::string::npos) << "and recorded";
        EXPECT_TRUE(run.Folder().Has("calls-15.rec")) << "as were the tests of the connection";
        for (const SSecret& secret : secrets)
            for (const std::string& form : FormsOf(secret))
                ASSERT_EQ(all.find(form), std::string::npos) << secret.plain << " got out as " << form;
    }
}

TEST(Secrets, AreInNoArgumentNoEnvironmentAndNoCoreImage) {
    const std::vector<SSecret> secrets = PlantSecrets(kRelays);
    const SSite site = MakeSite(secrets, 0);
    const CProgramRun run(site.substation +
                              "[[fault]]\noperation = \"ChangeSetting\"\ncell = \"00.02\"\ndelay = 600000\n",
                          "", site.sections);
    // In the middle of its first password entry, which does not end by itself.
    const std::string seen =
        run.Shell("ulimit -c unlimited; cd $DIR; $RUVO $DIR/site.ini & pid=$!\n"
                  "for i in {1..3000}; do grep -qs GetSettingLimits trace.txt && break; sleep 0.01; done\n"
                  "cat /proc/$pid/cmdline; cat /proc/$pid/environ; ps -fww $pid 2>/dev/null\n"
                  "awk '/core/ {print \"largest image \" $5 \"/\" $6}' /proc/$pid/limits\n"
                  "kill -ABRT $pid; wait $pid; echo ended with $?; ls");
    EXPECT_NE(seen.find("ended with 134"), std::string::npos) << seen;
    EXPECT_NE(seen.find("site.ini"), std::string::npos) << seen;
    EXPECT_EQ(seen.find("core"), std::string::npos) << seen;
    EXPECT_NE(seen.find("largest image 0/0\n"), std::string::npos) << seen;
    for (const SSecret& secret : secrets) {
        EXPECT_EQ(seen.find(secret.plain), std::string::npos);
        EXPECT_EQ(seen.find(secret.scrambled), std::string::npos);
    }
}

} // namespace
} // namespace ruvo::test
