// The platform room on the system itself: files, folders, modules, registry, clock, the single-instance
// marker; and the resources and exports of the programs beside this one.
#include "model/status/string_table.h"
#include "paths/path_utilities.h"
#include "platform/clock.h"
#include "platform/environment.h"
#include "platform/file_trust.h"
#include "platform/files.h"
#include "platform/full_path.h"
#include "platform/modules.h"
#include "platform/native_text.h"
#include "platform/registry.h"
#include "platform/single_instance.h"
#include "platform/text_file.h"
#include "platform/windows/system.h"
#include "windows/checks.h"

#include <array>
#include <cstdint>

namespace ruvo::test {

namespace {

std::string g_folder; ///< of this test's own, without a separator at its end

std::string In(const std::string& name) {
    return g_folder + "\\" + name;
}

SFileResult Put(CFile& file, std::string_view text, std::size_t& count) {
    return file.Write({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()}, count);
}

std::string Content(const std::string& path) {
    std::string text;
    return ReadTextFile(path, text) ? text : "unreadable";
}

void CheckWritingAndReading() {
    CFile file;
    std::size_t count = 0;
    std::uint64_t place = 0;
    std::array<std::uint8_t, 8> buffer{};
    const std::string path = In("file");
    Expect(file.Open(path, {.read = true, .write = true, .create = true}).Good(), "a new file");
    Expect(Put(file, "abcdef", count).Good() && count == 6, "writing");
    Equal(Content(path), "abcdef", "another reader sees what was written, while the file is open");
    Expect(file.Seek(-4, ESeekOrigin::End, place).Good() && place == 2, "seeking from the end");
    Expect(file.SetLength(5).Good() && Put(file, "XY", count).Good(), "cutting keeps the position");
    Expect(file.FlushToDisk().Good(), "flushing");
    Expect(file.GetLength(place).Good() && place == 5, "length");
    Expect(file.Seek(0, ESeekOrigin::Start, place).Good(), "seeking to the start");
    Expect(file.Read(buffer, count).Good() && count == 5 && buffer[2] == 'X', "reading");
    Expect(file.Read(buffer, count).Good() && count == 0, "reading at the end");
    Expect(file.Close().Good(), "closing");
    Expect(file.Close().failure == EFileFailure::BadDescriptor, "closing a closed file");
    Expect(Put(file, "", count).failure == EFileFailure::BadDescriptor, "writing to a closed file");
    Expect(file.GetLength(place).failure == EFileFailure::BadDescriptor, "length of a closed file");
    Equal(Content(path), "abXYe", "content");
    Expect(file.Open(path, {.write = true, .truncate = true}).Good(), "cutting by opening");
    Equal(Content(path), "", "nothing is left");
}

void CheckSharing() {
    CFile made;
    CFile other;
    const std::string path = In("shared");
    const SOpenMode make{.write = true, .create = true, .exclusive = true, .removable = true};
    Expect(made.Open(path, make).Good() && !other.Open(path, make).Good(), "made by one opening");
    Expect(other.Open(path, {.write = true, .removable = true}).Good() && other.IsAt(path), "shared");
    Expect(other.TryLock() == EFileLock::Taken && made.TryLock() == EFileLock::HeldByAnother, "locked");
    Expect(other.Close().Good() && made.TryLock() == EFileLock::Taken, "the lock of a closed file");
    std::size_t count = 0;
    Expect(Put(made, "x", count).Good() && !made.RemoveIfEmpty(), "a file with something in it stays");
    Expect(MoveFileA(path.c_str(), In("moved").c_str()) != FALSE && !made.IsAt(path), "renamed meanwhile");
    Expect(MoveFileA(In("moved").c_str(), path.c_str()) != FALSE && made.IsAt(path), "and back");
    Expect(made.SetLength(0).Good() && made.RemoveIfEmpty() && made.Close().Good(), "an empty one goes");
    Expect(GetPathKind(path) == EPathKind::Missing, "and is gone");
}

void CheckWhyOpeningFails() {
    const auto failure = [](const std::string& path, SOpenMode mode) {
        CFile file;
        const SFileResult result = file.Open(path, mode);
        Expect(!file.IsOpen() && !SystemErrorText(result.systemCode).empty() &&
                   !SystemErrorText(result.systemCode).ends_with('\n'),
               "a text for the failure of " + path);
        return result.failure;
    };
    const SOpenMode write{.write = true, .create = true};
    Expect(failure(In("none"), {.read = true}) == EFileFailure::NotFound, "no such file");
    Expect(failure(In("none\\f"), write) == EFileFailure::BadPath, "no such folder");
    Expect(failure(In("file\\f"), write) == EFileFailure::BadPath, "a file in the place of a folder");
    // The system calls a missing drive a bad path, Wine a missing file.
    Expect(failure("Q:\\f", write) != EFileFailure::None, "no such drive");
    Expect(failure(g_folder, write) == EFileFailure::AccessDenied, "a folder");
    Expect(failure("NUL", write) == EFileFailure::Other, "a device");
    const HANDLE alone = CreateFileA(In("file").c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    Expect(failure(In("file"), {.read = true}) == EFileFailure::SharingViolation,
           "a file that somebody has for himself");
    const SOpenMode plain{.read = true, .write = true, .plain = true};
    Expect(failure(In("file"), plain) == EFileFailure::SharingViolation, "nor where no link may be");
    CloseHandle(alone);
    Expect(failure(In("none"), plain) == EFileFailure::NotFound, "no such plain file");
    Expect(failure(In("none\\f"), plain) == EFileFailure::BadPath, "no such plain folder");
    Expect(failure(g_folder, plain) == EFileFailure::NotPlain, "a folder for a plain file");
    Expect(failure(In("file\\f"), plain) == EFileFailure::NotPlain, "a file for a plain folder");
}

void CheckPlainFiles() {
    CFile file;
    std::size_t count = 0;
    const SOpenMode plain{.read = true, .write = true, .create = true, .plain = true};
    for (const char* const what : {"a plain file is made", "and opened again"})
        Expect(file.Open(In("plain"), plain).Good() && Put(file, "x", count).Good(), what);
    Expect(file.Close().Good() && RemovePlainFile(In("plain")) && !RemovePlainFile(In("plain")),
           "and deleted");
}

void CheckFolders() {
    Expect(MakeFolder(In("sub")).Good() && MakeFolder(In("sub")).failure == EFileFailure::Exists &&
               MakeFolder(In("none\\sub")).failure == EFileFailure::BadPath,
           "making folders");
    std::vector<SFolderEntry> entries;
    Expect(ListFolder(g_folder, entries) && entries.size() == 2, "listing");
    for (const SFolderEntry& entry : entries) {
        Expect(entry.isFolder == (entry.name == "sub") && entry.isFile != entry.isFolder,
               "kind of " + entry.name);
    }
    Expect(ListFolder(In("sub"), entries) && entries.empty(), "listing an empty folder");
    Expect(!ListFolder(In("none"), entries) && !ListFolder(In("*"), entries), "listing nothing");
    Expect(GetPathKind(In("sub")) == EPathKind::Folder && GetPathKind(In("file")) == EPathKind::File &&
               GetPathKind(In("none")) == EPathKind::Missing,
           "kinds of paths");
    Expect(!IsLink(In("file")) && !IsLink(In("none")), "no links");
    const std::string unique = MakeUniqueFile(g_folder, "RWT");
    Expect(unique.starts_with(In("RWT")) && GetPathKind(unique) == EPathKind::File, "a unique name");
    Expect(unique != MakeUniqueFile(g_folder, "RWT") && MakeUniqueFile(In("none"), "RWT").empty(),
           "another one, and none");
    Expect(CopyToNewFile(In("file"), In("copy")) && !CopyToNewFile(In("file"), In("copy")), "copying");
    Expect(RemoveFile(In("copy")) && !RemoveFile(In("copy")), "deleting");
    Expect(RemoveEmptyFolder(In("sub")) && !RemoveEmptyFolder(g_folder), "removing folders");
    Expect(FreeSpace(In("none\\deep\\file")).bytes.value_or(0) > 0 && !FreeSpace("Q:\\x").bytes,
           "free space");
    for (const std::string root : {"C:", "C:\\", "c:"})
        Expect(IsDriveRoot(root), root + " is a root");
    // Asked for what does not exist alone: Wine calls every folder that exists a root.
    for (const std::string other : {"", "Q:", "C:\\none", "\\\\server", "\\\\server\\share"})
        Expect(!IsDriveRoot(other), other + " is no root");
    Expect(SetCurrentFolder(g_folder) && CurrentFolder() == g_folder, "the current folder");
    Equal(FullPath("x"), In("x"), "a path from there");
    Expect(FullPath(" ").empty() && FullPath("").empty(), "no path");
    SetCurrentFolder("C:\\");
}

/// No server is at hand: the name that the system gives a drive has the same form,
/// \\\\server\\share\\folders.
void CheckFoldersBelowAShare() {
    const std::string drive = "\\\\.\\" + g_folder.substr(0, 2);
    const std::string top = drive + g_folder.substr(2) + "\\net";
    std::string first;
    Expect(CreateDirectoryPath(top + "\\a\\b", first), "a folder chain below a share");
    Equal(first, top, "the first folder of the chain");
    Expect(GetPathKind(In("net\\a\\b")) == EPathKind::Folder, "the chain is there");
    Expect(CanWriteInFolder(top + "\\c") && GetPathKind(top + "\\c") == EPathKind::Missing,
           "a write test below a share");
    Expect(RemoveFolderTree(In("net")), "removing it");
    for (const std::string given : {"\\\\no-such-server", "\\\\no-such-server\\share\\a", "\\\\"})
        Expect(!CreateDirectoryPath(given, first), given + " cannot be made");
}

void CheckTrustedFiles() {
    std::string text;
    const auto read = [&text](const char* name) { return ReadTrustedFile(In(name), text); };
    CFile file;
    std::size_t count = 0;
    Expect(file.Open(In("own.env"), {.write = true, .create = true, .ownerOnly = true}).Good() &&
               Put(file, "A=1\r\n", count).Good() && file.Close().Good(),
           "a file of this user");
    Expect(read("own.env") == ETrustedRead::Read && text == "A=1\r\n", "is trusted");
    Expect(read("none.env") == ETrustedRead::Missing, "a missing one");
    SECURITY_DESCRIPTOR everybody;
    InitializeSecurityDescriptor(&everybody, SECURITY_DESCRIPTOR_REVISION);
    SetSecurityDescriptorDacl(&everybody, TRUE, nullptr, FALSE);
    Expect(SetFileSecurityA(In("own.env").c_str(), DACL_SECURITY_INFORMATION, &everybody) != FALSE &&
               read("own.env") == ETrustedRead::Untrusted,
           "one that everybody may write");
    RemoveFile(In("own.env"));
}

void CheckRegistry() {
    constexpr const char* kKey = "SOFTWARE\\Ruvo Test";
    const DWORD number = 0x0000AB01;
    RegSetKeyValueA(HKEY_CURRENT_USER, kKey, "Text", REG_SZ, "C:\\x", 5);
    RegSetKeyValueA(HKEY_CURRENT_USER, kKey, "Number", REG_DWORD, &number, sizeof number);
    RegSetKeyValueA(HKEY_CURRENT_USER, kKey, nullptr, REG_SZ, "own", 4);
    const auto read = [&](const char* value, std::size_t capacity) {
        return ReadRegistryValue(ERegistryRoot::CurrentUser, kKey, value, capacity).value_or("none");
    };
    Equal(read("text", 100), std::string("C:\\x\0", 5), "a text");
    Equal(read("Text", 4), "none", "a text that does not fit");
    Equal(read("Number", 4), std::string("\x01\xAB\0\0", 4), "a number");
    Equal(read("", 100), std::string("own\0", 4), "the key's own value");
    Equal(read("Other", 100), "none", "no such value");
    Expect(!ReadRegistryValue(ERegistryRoot::LocalMachine, kKey, "Text", 100), "another root");
    RegDeleteTreeA(HKEY_CURRENT_USER, kKey);
}

void CheckModules() {
    CModule module;
    const std::string beside = CodeFolder() + "\\";
    Expect(!module.Load(beside + "missing.dll") && !module.FailureText().empty(), "a missing library");
    Expect(!module.Load(In("file")) && !module.IsLoaded(), "a file that is no library");
    Expect(CanReadModule(beside + "oncrpc.dll") && !CanReadModule(beside + "missing.dll"),
           "what can be read");
    Expect(module.Load(beside + "oncrpc.dll"), "the stand-in of the RPC library");
    Expect(module.Load(beside + "HalvexCryptoKit.dll") && module.FailureText().empty(),
           "the stand-in of the crypto provider");
    Expect(module.FindEntry(9U) != nullptr && module.FindEntry(3U) == nullptr &&
               module.FindEntry("Ordinal2") == nullptr,
           "entry points by number alone");
    const auto keyed = reinterpret_cast<void (*)(const unsigned char*, std::uint32_t, const char*, char*)>(
        module.FindEntry(2U));
    const auto plain = reinterpret_cast<void (*)(const char*, char*)>(module.FindEntry(13U));
    std::array<char, 65> digest{};
    // The published test vectors: "Jefe" and "what do ya want for nothing?"; "abc".
    keyed(reinterpret_cast<const unsigned char*>("what do ya want for nothing?"), 28, "Jefe", digest.data());
    Equal(std::string(digest.data()), "5BDCC146BF60754E6A042426089575C75A003F089D2739839DEC58B964EC3843",
          "the keyed digest");
    plain("abc", digest.data());
    Equal(std::string(digest.data()), "BA7816BF8F01CFEA414140DE5DAE2223B00361A396177A9CB410FF61F20015AD",
          "the digest");
    plain("", digest.data());
    Equal(std::string(digest.data()), "E3B0C44298FC1C149AFBF4C8996FB92427AE41E4649B934CA495991B7852B855",
          "the digest of nothing");
}

void CheckInstanceMarker() {
    const std::string name = "ruvo-test:marker";
    {
        CInstanceMarker first;
        CInstanceMarker second;
        Expect(first.Claim(name) == EInstanceClaim::Claimed, "the first claim");
        Expect(second.Claim(name) == EInstanceClaim::AlreadyRunning, "the second claim");
        Expect(second.Claim(name + "2") == EInstanceClaim::Claimed, "another name");
    }
    CInstanceMarker again;
    Expect(again.Claim(name) == EInstanceClaim::Claimed, "a claim after the first has gone");
    const HANDLE event = CreateEventA(nullptr, TRUE, FALSE, "ruvo-test:event");
    Expect(again.Claim("ruvo-test:event") == EInstanceClaim::MarkerFailed, "a name that something else has");
    CloseHandle(event);
}

void CheckSmallThings() {
    SetEnvironmentVariableA("RUVO_TEST_EMPTY", "");
    SetEnvironmentVariableA("RUVO_TEST_SET", "text");
    Expect(EnvironmentValue("RUVO_TEST_SET") == "text" && !EnvironmentValue("RUVO_TEST_EMPTY") &&
               !EnvironmentValue("RUVO_TEST_UNSET"),
           "environment");
    Equal(NativeRelayText("a\tb\x7F\xE4"), "a b \xE4", "a relay's text");
    Expect(UnixSeconds() > 1'600'000'000 && UtcTime().year >= 2020 && LocalTime().has_value(), "clock");
    TIME_ZONE_INFORMATION zone = {};
    Expect(IsDaylightTime() == (GetTimeZoneInformation(&zone) == TIME_ZONE_ID_DAYLIGHT), "daylight time");
    Expect(TemporaryFolder().ends_with('\\') && GetPathKind(TemporaryFolder()) == EPathKind::Folder,
           "the temporary folder");
    Expect(ProgramPath().starts_with(CodeFolder() + "\\"), "where the program is");
}

/// The resource of every text equals the text in the program, and there is no other.
void CheckStringTable() {
    const std::string path = CodeFolder() + "\\RUVO.exe";
    const HMODULE program = LoadLibraryExA(path.c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE);
    Expect(program != nullptr, "the program's resources");
    for (unsigned id = 0; id < 1000; ++id) {
        std::array<char, 1024> text{};
        LoadStringA(program, id, text.data(), static_cast<int>(text.size()));
        Equal(std::string(text.data()), std::string(StringTextOrEmpty(id)), "text " + std::to_string(id));
    }
    const HRSRC version = FindResourceA(program, MAKEINTRESOURCEA(1), MAKEINTRESOURCEA(16));
    const HGLOBAL loaded = version == nullptr ? nullptr : LoadResource(program, version);
    constexpr std::size_t kFixedPart = 40; // of the version block: behind its head and its name
    const auto* const fields =
        loaded == nullptr ? nullptr : static_cast<const std::uint8_t*>(LockResource(loaded)) + kFixedPart;
    std::string found; // behind the mark and the layout's version: minor, major, build, patch, 16 bits each
    for (const std::size_t at : {10U, 8U, 14U, 12U})
        found += (found.empty() ? "" : ".") + (fields == nullptr ? "" : std::to_string(fields[at]));
    Equal(found, std::string(RUVO_VERSION), "version");
    Expect(FindResourceA(program, MAKEINTRESOURCEA(1), MAKEINTRESOURCEA(24)) != nullptr, "a manifest");
    FreeLibrary(program);
}

/// The log's viewer finds a text for every number that a visit is entered with.
void CheckEventMessages() {
    const HMODULE program =
        LoadLibraryExA((CodeFolder() + "\\ruvoctl.exe").c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE);
    for (const DWORD number :
         {0x40000064U, 0x80000065U, 0xC0000066U, 0x80000067U, 0x80000068U, 0xC0000069U}) {
        std::array<char, 16> text{};
        const DWORD size =
            FormatMessageA(FORMAT_MESSAGE_FROM_HMODULE | FORMAT_MESSAGE_IGNORE_INSERTS, program, number, 0,
                           text.data(), static_cast<DWORD>(text.size()), nullptr);
        Equal(std::string(text.data(), size), std::string("%1\r\n"), "message of an event");
    }
    FreeLibrary(program);
}

} // namespace

int CheckSystem() {
    g_folder = TemporaryFolder() + "ruvo-system-" + std::to_string(GetCurrentProcessId());
    Expect(MakeFolder(g_folder).Good(), "a folder for the test");
    CheckWritingAndReading();
    CheckSharing();
    CheckWhyOpeningFails();
    CheckPlainFiles();
    CheckFolders();
    CheckFoldersBelowAShare();
    CheckTrustedFiles();
    CheckRegistry();
    CheckModules();
    CheckInstanceMarker();
    CheckSmallThings();
    CheckStringTable();
    CheckEventMessages();
    std::vector<SFolderEntry> entries;
    ListFolder(g_folder, entries);
    for (const SFolderEntry& entry : entries)
        RemoveFile(In(entry.name));
    RemoveEmptyFolder(g_folder);
    return Finish();
}

} // namespace ruvo::test

int main() {
    return ruvo::test::CheckSystem();
}
