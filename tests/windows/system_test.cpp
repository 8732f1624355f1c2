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

CChecks g_checks;
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
    g_checks.Expect(file.Open(path, {.read = true, .write = true, .create = true}).Good(), "a new file");
    g_checks.Expect(Put(file, "abcdef", count).Good() && count == 6, "writing");
    g_checks.Equal(Content(path), "abcdef", "another reader sees what was written, while the file is open");
    g_checks.Expect(file.Seek(-4, ESeekOrigin::End, place).Good() && place == 2, "seeking from the end");
    g_checks.Expect(file.SetLength(5).Good() && Put(file, "XY", count).Good(), "cutting keeps the position");
    g_checks.Expect(file.FlushToDisk().Good(), "flushing");
    g_checks.Expect(file.GetLength(place).Good() && place == 5, "length");
    g_checks.Expect(file.Seek(0, ESeekOrigin::Start, place).Good(), "seeking to the start");
    g_checks.Expect(file.Read(buffer, count).Good() && count == 5 && buffer[2] == 'X', "reading");
    g_checks.Expect(file.Read(buffer, count).Good() && count == 0, "reading at the end");
    g_checks.Expect(file.Close().Good(), "closing");
    g_checks.Expect(file.Close().failure == EFileFailure::BadDescriptor, "closing a closed file");
    g_checks.Expect(Put(file, "", count).failure == EFileFailure::BadDescriptor, "writing to a closed file");
    g_checks.Expect(file.GetLength(place).failure == EFileFailure::BadDescriptor, "length of a closed file");
    g_checks.Equal(Content(path), "abXYe", "content");
    g_checks.Expect(file.Open(path, {.write = true, .truncate = true}).Good(), "cutting by opening");
    g_checks.Equal(Content(path), "", "nothing is left");
}

void CheckSharing() {
    CFile made;
    CFile other;
    const std::string path = In("shared");
    const SOpenMode make{.write = true, .create = true, .exclusive = true, .removable = true};
    g_checks.Expect(made.Open(path, make).Good() && !other.Open(path, make).Good(), "made by one opening");
    g_checks.Expect(other.Open(path, {.write = true, .removable = true}).Good() && other.IsAt(path),
                    "shared");
    g_checks.Expect(other.TryLock() == EFileLock::Taken && made.TryLock() == EFileLock::HeldByAnother,
                    "locked");
    g_checks.Expect(other.Close().Good() && made.TryLock() == EFileLock::Taken, "the lock of a closed file");
    std::size_t count = 0;
    g_checks.Expect(Put(made, "x", count).Good() && !made.RemoveIfEmpty(),
                    "a file with something in it stays");
    g_checks.Expect(MoveFileA(path.c_str(), In("moved").c_str()) != FALSE && !made.IsAt(path),
                    "renamed meanwhile");
    g_checks.Expect(MoveFileA(In("moved").c_str(), path.c_str()) != FALSE && made.IsAt(path), "and back");
    g_checks.Expect(made.SetLength(0).Good() && made.RemoveIfEmpty() && made.Close().Good(),
                    "an empty one goes");
    g_checks.Expect(GetPathKind(path) == EPathKind::Missing, "and is gone");
}

void CheckWhyOpeningFails() {
    const auto failure = [](const std::string& path, SOpenMode mode) {
        CFile file;
        const SFileResult result = file.Open(path, mode);
        g_checks.Expect(!file.IsOpen() && !SystemErrorText(result.systemCode).empty() &&
                            !SystemErrorText(result.systemCode).ends_with('\n'),
                        "a text for the failure of " + path);
        return result.failure;
    };
    const SOpenMode write{.write = true, .create = true};
    g_checks.Expect(failure(In("none"), {.read = true}) == EFileFailure::NotFound, "no such file");
    g_checks.Expect(failure(In("none\\f"), write) == EFileFailure::BadPath, "no such folder");
    g_checks.Expect(failure(In("file\\f"), write) == EFileFailure::BadPath,
                    "a file in the place of a folder");
    // The system calls a missing drive a bad path, Wine a missing file.
    g_checks.Expect(failure("Q:\\f", write) != EFileFailure::None, "no such drive");
    g_checks.Expect(failure(g_folder, write) == EFileFailure::AccessDenied, "a folder");
    g_checks.Expect(failure("NUL", write) == EFileFailure::Other, "a device");
    const HANDLE alone = CreateFileA(In("file").c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    g_checks.Expect(failure(In("file"), {.read = true}) == EFileFailure::SharingViolation,
                    "a file that somebody has for himself");
    const SOpenMode plain{.read = true, .write = true, .plain = true};
    g_checks.Expect(failure(In("file"), plain) == EFileFailure::SharingViolation, "nor where no link may be");
    CloseHandle(alone);
    g_checks.Expect(failure(In("none"), plain) == EFileFailure::NotFound, "no such plain file");
    g_checks.Expect(failure(In("none\\f"), plain) == EFileFailure::BadPath, "no such plain folder");
    g_checks.Expect(failure(g_folder, plain) == EFileFailure::NotPlain, "a folder for a plain file");
    g_checks.Expect(failure(In("file\\f"), plain) == EFileFailure::NotPlain, "a file for a plain folder");
}

void CheckPlainFiles() {
    CFile file;
    std::size_t count = 0;
    const SOpenMode plain{.read = true, .write = true, .create = true, .plain = true};
    for (const char* const what : {"a plain file is made", "and opened again"})
        g_checks.Expect(file.Open(In("plain"), plain).Good() && Put(file, "x", count).Good(), what);
    g_checks.Expect(file.Close().Good() && RemovePlainFile(In("plain")) && !RemovePlainFile(In("plain")),
                    "and deleted");
}

void CheckFolders() {
    g_checks.Expect(MakeFolder(In("sub")).Good() && MakeFolder(In("sub")).failure == EFileFailure::Exists &&
                        MakeFolder(In("none\\sub")).failure == EFileFailure::BadPath,
                    "making folders");
    std::vector<SFolderEntry> entries;
    g_checks.Expect(ListFolder(g_folder, entries) && entries.size() == 2, "listing");
    for (const SFolderEntry& entry : entries) {
        g_checks.Expect(entry.isFolder == (entry.name == "sub") && entry.isFile != entry.isFolder,
                        "kind of " + entry.name);
    }
    g_checks.Expect(ListFolder(In("sub"), entries) && entries.empty(), "listing an empty folder");
    g_checks.Expect(!ListFolder(In("none"), entries) && !ListFolder(In("*"), entries), "listing nothing");
    g_checks.Expect(GetPathKind(In("sub")) == EPathKind::Folder &&
                        GetPathKind(In("file")) == EPathKind::File &&
                        GetPathKind(In("none")) == EPathKind::Missing,
                    "kinds of paths");
    g_checks.Expect(!IsLink(In("file")) && !IsLink(In("none")), "no links");
    const std::string unique = MakeUniqueFile(g_folder, "RWT");
    g_checks.Expect(unique.starts_with(In("RWT")) && GetPathKind(unique) == EPathKind::File, "a unique name");
    g_checks.Expect(unique != MakeUniqueFile(g_folder, "RWT") && MakeUniqueFile(In("none"), "RWT").empty(),
                    "another one, and none");
    g_checks.Expect(CopyToNewFile(In("file"), In("copy")) && !CopyToNewFile(In("file"), In("copy")),
                    "copying");
    g_checks.Expect(RemoveFile(In("copy")) && !RemoveFile(In("copy")), "deleting");
    g_checks.Expect(RemoveEmptyFolder(In("sub")) && !RemoveEmptyFolder(g_folder), "removing folders");
    g_checks.Expect(FreeSpace(In("none\\deep\\file")).bytes.value_or(0) > 0 && !FreeSpace("Q:\\x").bytes,
                    "free space");
    for (const std::string root : {"C:", "C:\\", "c:"})
        g_checks.Expect(IsDriveRoot(root), root + " is a root");
    // Asked for what does not exist alone: Wine calls every folder that exists a root.
    for (const std::string other : {"", "Q:", "C:\\none", "\\\\server", "\\\\server\\share"})
        g_checks.Expect(!IsDriveRoot(other), other + " is no root");
    g_checks.Expect(SetCurrentFolder(g_folder) && CurrentFolder() == g_folder, "the current folder");
    g_checks.Equal(FullPath("x"), In("x"), "a path from there");
    g_checks.Expect(FullPath(" ").empty() && FullPath("").empty(), "no path");
    SetCurrentFolder("C:\\");
}

/// No server is at hand: the name that the system gives a drive has the same form,
/// \\\\server\\share\\folders.
void CheckFoldersBelowAShare() {
    const std::string drive = "\\\\.\\" + g_folder.substr(0, 2);
    const std::string top = drive + g_folder.substr(2) + "\\net";
    std::string first;
    g_checks.Expect(CreateDirectoryPath(top + "\\a\\b", first), "a folder chain below a share");
    g_checks.Equal(first, top, "the first folder of the chain");
    g_checks.Expect(GetPathKind(In("net\\a\\b")) == EPathKind::Folder, "the chain is there");
    g_checks.Expect(CanWriteInFolder(top + "\\c") && GetPathKind(top + "\\c") == EPathKind::Missing,
                    "a write test below a share");
    g_checks.Expect(RemoveFolderTree(In("net")), "removing it");
    for (const std::string given : {"\\\\no-such-server", "\\\\no-such-server\\share\\a", "\\\\"})
        g_checks.Expect(!CreateDirectoryPath(given, first), given + " cannot be made");
}

void CheckTrustedFiles() {
    std::string text;
    const auto read = [&text](const char* name) { return ReadTrustedFile(In(name), text); };
    CFile file;
    std::size_t count = 0;
    g_checks.Expect(file.Open(In("own.env"), {.write = true, .create = true, .ownerOnly = true}).Good() &&
                        Put(file, "A=1\r\n", count).Good() && file.Close().Good(),
                    "a file of this user");
    g_checks.Expect(read("own.env") == ETrustedRead::Read && text == "A=1\r\n", "is trusted");
    g_checks.Expect(read("none.env") == ETrustedRead::Missing, "a missing one");
    SECURITY_DESCRIPTOR everybody;
    InitializeSecurityDescriptor(&everybody, SECURITY_DESCRIPTOR_REVISION);
    SetSecurityDescriptorDacl(&everybody, TRUE, nullptr, FALSE);
    g_checks.Expect(SetFileSecurityA(In("own.env").c_str(), DACL_SECURITY_INFORMATION, &everybody) != FALSE &&
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
    g_checks.Equal(read("text", 100), std::string("C:\\x\0", 5), "a text");
    g_checks.Equal(read("Text", 4), "none", "a text that does not fit");
    g_checks.Equal(read("Number", 4), std::string("\x01\xAB\0\0", 4), "a number");
    g_checks.Equal(read("", 100), std::string("own\0", 4), "the key's own value");
    g_checks.Equal(read("Other", 100), "none", "no such value");
    g_checks.Expect(!ReadRegistryValue(ERegistryRoot::LocalMachine, kKey, "Text", 100), "another root");
    RegDeleteTreeA(HKEY_CURRENT_USER, kKey);
}

void CheckModules() {
    CModule module;
    const std::string beside = CodeFolder() + "\\";
    g_checks.Expect(!module.Load(beside + "missing.dll") && !module.FailureText().empty(),
                    "a missing library");
    g_checks.Expect(!module.Load(In("file")) && !module.IsLoaded(), "a file that is no library");
    g_checks.Expect(CanReadModule(beside + "oncrpc.dll") && !CanReadModule(beside + "missing.dll"),
                    "what can be read");
    g_checks.Expect(module.Load(beside + "oncrpc.dll"), "the stand-in of the RPC library");
    g_checks.Expect(module.Load(beside + "HalvexCryptoKit.dll") && module.FailureText().empty(),
                    "the stand-in of the crypto provider");
    g_checks.Expect(module.FindEntry(9U) != nullptr && module.FindEntry(3U) == nullptr &&
                        module.FindEntry("Ordinal2") == nullptr,
                    "entry points by number alone");
    const auto keyed = reinterpret_cast<void (*)(const unsigned char*, std::uint32_t, const char*, char*)>(
        module.FindEntry(2U));
    const auto plain = reinterpret_cast<void (*)(const char*, char*)>(module.FindEntry(13U));
    std::array<char, 65> digest{};
    // The published test vectors: "Jefe" and "what do ya want for nothing?"; "abc".
    keyed(reinterpret_cast<const unsigned char*>("what do ya want for nothing?"), 28, "Jefe", digest.data());
    g_checks.Equal(std::string(digest.data()),
                   "5BDCC146BF60754E6A042426089575C75A003F089D2739839DEC58B964EC3843", "the keyed digest");
    plain("abc", digest.data());
    g_checks.Equal(std::string(digest.data()),
                   "BA7816BF8F01CFEA414140DE5DAE2223B00361A396177A9CB410FF61F20015AD", "the digest");
    plain("", digest.data());
    g_checks.Equal(std::string(digest.data()),
                   "E3B0C44298FC1C149AFBF4C8996FB92427AE41E4649B934CA495991B7852B855",
                   "the digest of nothing");
}

void CheckInstanceMarker() {
    const std::string name = "ruvo-test:marker";
    {
        CInstanceMarker first;
        CInstanceMarker second;
        g_checks.Expect(first.Claim(name) == EInstanceClaim::Claimed, "the first claim");
        g_checks.Expect(second.Claim(name) == EInstanceClaim::AlreadyRunning, "the second claim");
        g_checks.Expect(second.Claim(name + "2") == EInstanceClaim::Claimed, "another name");
    }
    CInstanceMarker again;
    g_checks.Expect(again.Claim(name) == EInstanceClaim::Claimed, "a claim after the first has gone");
    const HANDLE event = CreateEventA(nullptr, TRUE, FALSE, "ruvo-test:event");
    g_checks.Expect(again.Claim("ruvo-test:event") == EInstanceClaim::MarkerFailed,
                    "a name that something else has");
    CloseHandle(event);
}

void CheckSmallThings() {
    SetEnvironmentVariableA("RUVO_TEST_EMPTY", "");
    SetEnvironmentVariableA("RUVO_TEST_SET", "text");
    g_checks.Expect(EnvironmentValue("RUVO_TEST_SET") == "text" && !EnvironmentValue("RUVO_TEST_EMPTY") &&
                        !EnvironmentValue("RUVO_TEST_UNSET"),
                    "environment");
    g_checks.Equal(NativeRelayText("a\tb\x7F\xE4"), "a b \xE4", "a relay's text");
    g_checks.Expect(UnixSeconds() > 1'600'000'000 && UtcTime().year >= 2020 && LocalTime().has_value(),
                    "clock");
    TIME_ZONE_INFORMATION zone = {};
    g_checks.Expect(IsDaylightTime() == (GetTimeZoneInformation(&zone) == TIME_ZONE_ID_DAYLIGHT),
                    "daylight time");
    g_checks.Expect(TemporaryFolder().ends_with('\\') && GetPathKind(TemporaryFolder()) == EPathKind::Folder,
                    "the temporary folder");
    g_checks.Expect(ProgramPath().starts_with(CodeFolder() + "\\"), "where the program is");
}

/// The resource of every text equals the text in the program, and there is no other.
void CheckStringTable() {
    const std::string path = CodeFolder() + "\\RUVO.exe";
    const HMODULE program = LoadLibraryExA(path.c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE);
    g_checks.Expect(program != nullptr, "the program's resources");
    for (unsigned id = 0; id < 1000; ++id) {
        std::array<char, 1024> text{};
        LoadStringA(program, id, text.data(), static_cast<int>(text.size()));
        g_checks.Equal(std::string(text.data()), std::string(StringTextOrEmpty(id)),
                       "text " + std::to_string(id));
    }
    const HRSRC version = FindResourceA(program, MAKEINTRESOURCEA(1), MAKEINTRESOURCEA(16));
    const HGLOBAL loaded = version == nullptr ? nullptr : LoadResource(program, version);
    constexpr std::size_t kFixedPart = 40; // of the version block: behind its head and its name
    const auto* const fields =
        loaded == nullptr ? nullptr : static_cast<const std::uint8_t*>(LockResource(loaded)) + kFixedPart;
    std::string found; // behind the mark and the layout's version: minor, major, build, patch, 16 bits each
    for (const std::size_t at : {10U, 8U, 14U, 12U})
        found += (found.empty() ? "" : ".") + (fields == nullptr ? "" : std::to_string(fields[at]));
    g_checks.Equal(found, std::string(RUVO_VERSION), "version");
    g_checks.Expect(FindResourceA(program, MAKEINTRESOURCEA(1), MAKEINTRESOURCEA(24)) != nullptr,
                    "a manifest");
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
        g_checks.Equal(std::string(text.data(), size), std::string("%1\r\n"), "message of an event");
    }
    FreeLibrary(program);
}

} // namespace

int CheckSystem() {
    g_folder = TemporaryFolder() + "ruvo-system-" + std::to_string(GetCurrentProcessId());
    g_checks.Expect(MakeFolder(g_folder).Good(), "a folder for the test");
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
    return g_checks.Finish();
}

} // namespace ruvo::test

int main() {
    return ruvo::test::CheckSystem();
}
