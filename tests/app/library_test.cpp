// The shared library as other programs see it: its names, and many calls in one process.
#include "support/scratch_folder.h"

#include "include/ruvo/ruvo.h"
#include "platform/process_protection.h"

#include <gtest/gtest.h>

#include <dlfcn.h>
#include <malloc.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <tuple>

namespace ruvo {

/// What a shell command prints, and its exit status behind it.
static std::string Output(const std::string& command) {
    std::string text;
    FILE* pipe = popen(("(" + command + ") 2>&1; echo $?").c_str(), "r");
    for (int character = fgetc(pipe); character != EOF; character = fgetc(pipe))
        text += character == '\n' ? ' ' : static_cast<char>(character);
    pclose(pipe);
    return text;
}

static long Entries(const char* folder) {
    return std::distance(std::filesystem::directory_iterator(folder), {});
}

TEST(Library, ExportsItsThreeNamesAndNoOther) {
    EXPECT_EQ(Output("nm -D --defined-only '" RUVO_BIN_DIR "/libruvo.so' | sed 's/.* //'"),
              "TestConnectionExt decrypt encrypt 0 ");
    EXPECT_EQ(Output("ldd '" RUVO_BIN_DIR "/libruvo.so' | grep crypto"), "1 ") << "libcrypto stays outside";
}

TEST(Library, TwoHundredTestsLeaveNothingBehind) {
    void* const library = dlopen(RUVO_BIN_DIR "/libruvo.so", RTLD_NOW | RTLD_LOCAL);
    const auto test = reinterpret_cast<decltype(&TestConnectionExt)>(dlsym(library, "TestConnectionExt"));
    const auto scramble = reinterpret_cast<int32_t (*)(const char*, char*)>(dlsym(library, "encrypt"));
    const auto unscramble = reinterpret_cast<int32_t (*)(const char*, char*)>(dlsym(library, "decrypt"));
    const CScratchFolder folder;
    setenv("P32LS_SUBSTATION", folder.Native("substation.toml").c_str(), 1);
    setenv("RUVO_REGISTRY_USER", folder.Native("user.ini").c_str(), 1);
    setenv("RUVO_REGISTRY_MACHINE", folder.Native("machine.ini").c_str(), 1);
    folder.Write("substation.toml", "[link]\nserial = [{ port = \"COM1\", parameters = \"9600,E,8,1\" }]\n"
                                    "[[relay]]\nname = \"F\"\nserial = 1\naccess = { password = \"FDR1\" }\n"
                                    "cells = { \"00.DF\" = { uint = 0, size = 1 } }\n");
    for (const char* password : {"FDR1", "FDR2"}) {
        char scrambled[RUVO_SCRAMBLED_SIZE];
        char plain[RUVO_PASSWORD_SIZE];
        EXPECT_EQ(scramble(password, scrambled) + unscramble(scrambled, plain), 0);
        EXPECT_STREQ(plain, password);
        folder.Write(plain, "[RUVO_GENERAL]\nEventRootDir=ev\nCommPort=COM1\nBaudRate=9600\nElevenBits=1\n"
                            "[RUVO_SERIAL]\nRV001=1\n[RUVO_PASSWORDS]\nRV001=" +
                                std::string(scrambled) + "\n");
    }
    const std::string home = std::filesystem::current_path();
    std::filesystem::current_path(folder.Native()); // relative paths count from the caller's folder
    std::tuple<long, long> before;
    std::size_t memory = 0;
    for (int call = 0; call < 210; ++call) {
        if (call == 10) { // what is made once has been made
            before = {Entries("/proc/self/task"), Entries("/proc/self/fd")};
            memory = mallinfo2().uordblks;
        }
        EXPECT_EQ(test(call % 2 == 0 ? "FDR1" : "FDR2", "rv001"), call % 2 == 0 ? 0 : 6);
    }
    EXPECT_EQ(std::tuple(Entries("/proc/self/task"), Entries("/proc/self/fd")), before);
    EXPECT_LT(mallinfo2().uordblks, memory + 200) << "less than a byte per call";
    EXPECT_EQ(Output("'" RUVO_BIN_DIR "/check_relay' FDR2 RV001"), "RV001: the password was refused (6) 6 ");
    EXPECT_EQ(std::filesystem::current_path(), folder.Native());
    EXPECT_FALSE(folder.Has("ev") || folder.Has("RUVO_Errors.log"));
    std::filesystem::current_path(home);
    dlclose(library);
}

TEST(Secrets, AreInNoDump) {
    const auto protect = [] {
        ProtectProcessMemory();
        rlimit core{};
        getrlimit(RLIMIT_CORE, &core);
        std::exit(prctl(PR_GET_DUMPABLE) == 0 && core.rlim_max == 0 ? 0 : 1);
    };
    EXPECT_EXIT(protect(), testing::ExitedWithCode(0), "");
}

} // namespace ruvo
