// The output file: header lines and their filter, and failures that take nothing along.
#include "support/scratch_folder.h"
#include "support/scripted_server.h"

#include "dayfile/day_file_reader.h"
#include "dayfile/day_file_writer.h"
#include "dayfile/off_file.h"

#include <gtest/gtest.h>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace ruvo::test {

static std::string WriteHeaderTo(const CScratchFolder& folder, const CTextFileHeader& header) {
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
static CEventList OneRecord(const std::string& name) {
    CEventList list;
    list.SetName(name);
    list.GetRecords().push_back(std::make_unique<CSimpleEventRecord>(
        0, 0, std::uint8_t{5}, CParlaneIEC870(), "Trip", nullptr, "a", "b", "c", std::uint16_t{1},
        std::string(60, 'f'), CParlaneDataList()));
    return list;
}

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
    EXPECT_FALSE(file.Open("C:\\proc\\version", {.read = true}, failure));
    EXPECT_EQ(failure.GetSystemCode(), EINVAL) << "it has no end to seek";
}

TEST(OffFile, WritesFromItsStartUntilItIsClosed) {
    const CScratchFolder folder;
    CFileException failure;
    for (const char* const before : {"a", "ab"}) {
        COffFile file;
        ASSERT_TRUE(file.Open(folder.Write("f", before), {.read = true, .write = true}, failure));
        EXPECT_EQ(file.WriteLine("xy"), 4U);
        EXPECT_EQ(folder.Read("f"), "xy\r\n");
        file.Close();
        EXPECT_THROW(file.WriteLine("z"), CFileException);
        EXPECT_TRUE(file.Remove() && folder.Has("f")) << "it is no longer this object's";
    }
    COffFile file;
    ASSERT_TRUE(file.Open(folder.Path("f"), {.write = true}, failure));
    EXPECT_TRUE(file.Remove() && !folder.Has("f"));
    std::string causes; // error lists carry the numbers
    using enum EFileCause;
    for (const EFileCause cause : {None, Generic, FileNotFound, BadPath, TooManyOpenFiles, AccessDenied,
                                   InvalidFile, SharingViolation, DiskFull})
        causes += std::to_string(static_cast<int>(cause)) + " ";
    EXPECT_EQ(causes, "0 1 2 3 4 5 6 11 13 ");
    EXPECT_EQ(CFileException(Generic, "C:\\f", "why").GetSystemCode(), 0);
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

TEST(WriteEventFile, AppendsAListBehindTheHeaderOfTheFirst) {
    const CScratchFolder folder;
    CErrorList errors;
    SWritingNotes notes;
    CEventList list = OneRecord(folder.Path("simple.evt"));
    EXPECT_TRUE(WriteEventFile(list, "x", errors, notes));
    EXPECT_TRUE(folder.Read("simple.evt").starts_with(COffFile::HeaderBytes(MakeEventListHeader(1, "x"))));
    list.SetName(folder.Path("both.evt"));
    list.GetRecords().insert(list.GetRecords().begin(),
                             std::make_unique<CExtendedEventRecord>(1, 5, std::uint8_t{5}, CParlaneIEC870(),
                                                                    "Trip", nullptr, "a", "b", "c",
                                                                    std::uint16_t{1}, CCellList()));
    std::vector<std::uint8_t> images;
    for (const auto& record : list.GetRecords())
        record->Serialise(images);
    const std::string both(images.begin(), images.end());
    EXPECT_TRUE(WriteEventFile(list, "x", errors, notes) && WriteEventFile(list, "x", errors, notes));
    EXPECT_EQ(folder.Read("both.evt"), COffFile::HeaderBytes(MakeEventListHeader(6, "x")) + both + both);
    list.SetName(folder.Path("none") + "\\f.evt");
    EXPECT_FALSE(WriteEventFile(list, "x", errors, notes));
    std::string text;
    ASSERT_EQ(errors.size(), 1U);
    errors[0]->GetMessageText(text);
    EXPECT_TRUE(text.starts_with("Failed to save event file")) << text;
    EXPECT_EQ(dynamic_cast<CFileError&>(*errors[0]).GetCause(), static_cast<int>(EFileCause::AccessDenied));
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
                                 !notes.tornAfter &&
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
    EXPECT_TRUE(folder.Has("empty.evt") && folder.Read("empty.evt").empty())
        << "made by somebody else, who may have it open";
}

/// As when it is put there while the relay is read.
TEST(HeldDayFile, FollowsNoLink) {
    const CScratchFolder folder;
    std::filesystem::create_directory(folder.Native("out"));
    std::filesystem::create_directory(folder.Native("dev"));
    folder.Write("out/empty.evt", "");
    std::filesystem::create_directory_symlink(folder.Native("out"), folder.Native("linked"));
    std::filesystem::create_symlink(folder.Native("out/empty.evt"), folder.Native("dev/file.evt"));
    std::filesystem::create_symlink(folder.Native("out/new.evt"), folder.Native("dev/none.evt"));
    for (const char* const name :
         {"linked\\empty.evt", "linked\\new.evt", "dev\\file.evt", "dev\\none.evt"}) {
        for (const auto missing : {EMissingFolders::AreMade, EMissingFolders::AreAFailure}) {
            const auto failure = CHeldDayFile().Hold(folder.Path(name), missing);
            EXPECT_EQ(failure.value_or(SHoldFailure{}).cause, EFileCause::AccessDenied) << name;
        }
        EXPECT_TRUE(folder.Has("out/empty.evt") && folder.Read("out/empty.evt").empty()) << name;
        EXPECT_FALSE(folder.Has("out/new.evt")) << name;
    }
    EXPECT_FALSE(ReadDayFileEnd(folder.Path("dev\\file.evt")).isRead);
    RemoveEmptyDayFile(folder.Path("dev\\file.evt"), false);
    EXPECT_TRUE(folder.Has("dev/file.evt"));
}

TEST(HeldDayFile, AsksForItsLengthAnew) {
    const CScratchFolder folder;
    CHeldDayFile file;
    ASSERT_FALSE(file.Hold(folder.Write("f.evt", "old")));
    std::ofstream(folder.Native("f.evt"), std::ios::app) << "more"; // by a program that asks for no lock
    EXPECT_EQ(std::tuple(file.FoundLength(), file.LengthNow()), std::tuple(3U, 7U));
    CHeldDayFile made;
    ASSERT_FALSE(made.Hold(folder.Path("new.evt")));
    folder.Write("new.evt", "more");
    made.Release();
    EXPECT_EQ(folder.Read("new.evt"), "more") << "what is not empty stays";
}

} // namespace ruvo::test
