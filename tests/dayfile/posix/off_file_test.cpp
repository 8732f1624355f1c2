// The output file: header lines and their filter, and failures that take nothing along.
#include "support/scratch_folder.h"
#include "support/scripted_server.h"

#include "dayfile/day_file_writer.h"
#include "dayfile/off_file.h"

#include <gtest/gtest.h>

#include <csignal>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace ruvo::test {

namespace {

std::string WriteHeaderTo(const CScratchFolder& folder, const CTextFileHeader& header) {
    COffFile file;
    CFileException failure;
    EXPECT_TRUE(file.Open(folder.Path("h"), {.read = true, .write = true, .create = true, .truncate = true},
                          failure));
    const std::size_t written = file.WriteHeader(header);
    EXPECT_EQ(written, file.GetLength());
    file.Close();
    return folder.Read("h");
}

/// A list of one simple record whose image has 60 bytes or more.
CEventList OneRecord(const std::string& name) {
    CEventList list;
    list.SetName(name);
    list.GetRecords().push_back(std::make_unique<CSimpleEventRecord>(
        0, 0, std::uint8_t{5}, CParlaneIEC870(), "Trip", nullptr, "a", "b", "c", std::uint16_t{1},
        std::string(60, 'f'), CParlaneDataList()));
    return list;
}

} // namespace

TEST(OffFile, HeaderLinesAndTheirFilter) {
    const CScratchFolder folder;
    EXPECT_EQ(WriteHeaderTo(folder, MakeEventListHeader(7, "headerText")).size(), 81U);
    EXPECT_EQ(MakeEventListHeader(1234567, "").lines[3], "NEXTEXTENDED: 1234567");
    EXPECT_EQ(WriteHeaderTo(folder, {}), "\x1A");
    const CTextFileHeader tools{{"Q7_MODEL_1: x", "Q7_LANG: en", "q7_lower", "Q7_VERSION: old", "Q7_LANG"}};
    EXPECT_EQ(WriteHeaderTo(folder, tools), "Q7_LANG: en\r\nq7_lower\r\n\x1A");
    const std::string key = "[SOFTWARE\\Halvex\\Norvo Q7 Studio\\Recset-Parlane]\r\nEngineerMode=dword:";
    folder.Write("registry.ini", key + "00000001\r\n");
    setenv("RUVO_REGISTRY_MACHINE", folder.Native("registry.ini").c_str(), 1);
    EXPECT_EQ(WriteHeaderTo(folder, tools),
              "Q7_MODEL_1: x\r\nQ7_LANG: en\r\nq7_lower\r\nQ7_VERSION:1700000000\r\nQ7_LANG\r\n\x1A");
    folder.Write("registry.ini", key + "00000002\r\n");
    EXPECT_EQ(WriteHeaderTo(folder, tools), "Q7_LANG: en\r\nq7_lower\r\n\x1A") << "bit 0 counts";
}

TEST(OffFile, ClosingWhatWasNeverOpenedDoesNothing) {
    COffFile file;
    file.Close();
    EXPECT_TRUE(file.Remove());
    CFileException failure;
    EXPECT_FALSE(file.Open("C:\\no\\such\\folder\\x", {.write = true, .create = true}, failure));
    EXPECT_EQ(failure.GetCause(), EFileCause::BadPath);
}

TEST(OffFile, AFileThatDoesNotTakeBytesIsInvalid) {
    const CScratchFolder folder;
    for (const bool isOpen : {false, true}) { // or open for reading alone
        CStdioFileThrower file;
        EXPECT_EQ(file.Open(folder.Write("old", "x"), {.read = true}).Good(), true);
        if (!isOpen)
            file.Close();
        try {
            file.WriteString("x");
            ADD_FAILURE() << isOpen;
        } catch (const CFileException& raised) {
            EXPECT_EQ(std::tuple(raised.GetCause(), raised.GetSystemCode(), raised.GetPath()),
                      std::tuple(EFileCause::InvalidFile, EBADF, folder.Path("old")));
        }
    }
}

/// Runs in a child process whose files may not grow beyond so many bytes: a full disk that any machine has.
template <class Action>
int WithFileSizeLimit(rlim_t bytes, Action action) {
    const pid_t child = fork();
    if (child == 0) {
        const rlimit limit{bytes, bytes};
        setrlimit(RLIMIT_FSIZE, &limit);
        _exit(action());
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST(WriteEventFile, AFullDiskCostsNoEarlierRecord) {
    const CScratchFolder folder;
    const auto append = [&](const std::string& name, EFileCause cause) {
        return [&folder, name, cause] {
            CEventList list = OneRecord(folder.Path(name));
            CErrorList errors;
            SWritingNotes notes;
            const bool refused = !WriteEventFile(list, "headerText", errors, notes) && errors.size() == 1 &&
                                 dynamic_cast<CFileError&>(*errors[0]).GetCause() == static_cast<int>(cause);
            return refused ? 0 : 1;
        };
    };
    const std::string earlier(200, 'e');
    folder.Write("day.evt", earlier);
    EXPECT_EQ(WithFileSizeLimit(230, append("day.evt", EFileCause::DiskFull)), 0);
    EXPECT_EQ(folder.Read("day.evt"), earlier);
    EXPECT_EQ(WithFileSizeLimit(100, append("new.evt", EFileCause::DiskFull)), 0)
        << "fails behind the header";
    EXPECT_FALSE(folder.Has("new.evt"));
    EXPECT_EQ(WithFileSizeLimit(40, append("new.evt", EFileCause::DiskFull)), 0) << "fails inside the header";
    EXPECT_FALSE(folder.Has("new.evt"));
    folder.Write("empty.evt", "");
    EXPECT_EQ(WithFileSizeLimit(100, append("empty.evt", EFileCause::DiskFull)), 0);
    EXPECT_EQ(folder.Read("empty.evt"), "") << "made by somebody else, who may have it open";
}

/// As when it is put there while the relay is read.
TEST(WriteEventFile, FollowsNoLink) {
    const CScratchFolder folder;
    std::filesystem::create_directory(folder.Native("out"));
    std::filesystem::create_directory(folder.Native("dev"));
    folder.Write("out/empty.evt", "");
    std::filesystem::create_directory_symlink(folder.Native("out"), folder.Native("linked"));
    std::filesystem::create_symlink(folder.Native("out/empty.evt"), folder.Native("dev/file.evt"));
    std::filesystem::create_symlink(folder.Native("out/new.evt"), folder.Native("dev/none.evt"));
    for (const char* const name :
         {"linked\\empty.evt", "linked\\new.evt", "dev\\file.evt", "dev\\none.evt"}) {
        CEventList list = OneRecord(folder.Path(name));
        CErrorList errors;
        SWritingNotes notes;
        EXPECT_FALSE(WriteEventFile(list, "headerText", errors, notes)) << name;
        ASSERT_EQ(errors.size(), 1U) << name;
        EXPECT_EQ(dynamic_cast<CFileError&>(*errors[0]).GetCause(),
                  static_cast<int>(EFileCause::AccessDenied))
            << name;
        EXPECT_TRUE(folder.Has("out/empty.evt") && folder.Read("out/empty.evt").empty()) << name;
        EXPECT_FALSE(folder.Has("out/new.evt")) << name;
    }
}

} // namespace ruvo::test
