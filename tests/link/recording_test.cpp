// What a recording of the calls at the comms server has in it, and what it must not have.
#include "login_fixture.h"
#include "support/case_table.h"

#include "link/recording/call_recorder.h"
#include "link/recording/recording.h"
#include "link/recording/recording_text.h"
#include "model/values/parlane_text.h"
#include "platform/full_path.h"

namespace ruvo::test {
namespace {

std::vector<std::uint8_t> BytesOf(const std::string& text) {
    return {text.begin(), text.end()};
}

std::vector<SRecordingEntry> EntriesOf(CRecordingReader& reader) {
    std::vector<SRecordingEntry> entries;
    for (SRecordingEntry entry; reader.Next(entry);)
        entries.push_back(entry);
    return entries;
}

class Recording : public SPlannedRecording, public LoginFlows {
protected:
    /// The bytes of the recording, which is whole once the client is gone.
    std::vector<std::uint8_t> End(const std::string& name = "calls.rec") {
        CP32Wrap::DestroyInstance();
        return BytesOf(folder.Read(name));
    }
    void PassOn(const std::string& planted);
};

/// A secret as it is, as 16-bit characters, and as hexadecimal digits.
std::vector<std::string> FormsOf(const std::string& secret) {
    std::string wide, upper = HexDigits(secret), lower;
    for (const char character : secret)
        wide += {character, '\0'};
    for (const char digit : upper)
        lower += static_cast<char>(std::tolower(digit));
    return {secret, wide, upper, lower};
}

/// What a relay may give back of a password, and what another program may write.
void Recording::PassOn(const std::string& planted) {
    const std::string plantedHex = HexDigits(planted);
    const std::string tagged = "1C08" + plantedHex, text = "1808" + plantedHex;
    server.onCall = [&](SCall& call) -> std::optional<std::int64_t> { // the fixture's knows logins alone
        if (call.name == "GetValues")
            *call.outputs[0] = List({TextHex("Kept"), text});
        return call.name == "GetValues" ? std::optional<std::int64_t>(0) : std::nullopt;
    };
    CParlaneDataArray first, second, third;
    std::unique_ptr<CParlaneData> value;
    for (const CellAddress cell : std::vector<CellAddress>{0x0002, 0x00E1, 0x00E5, 0xBF10}) {
        server.values[cell] = text;
        server.texts[cell] = text;
        server.limits[cell] = {text, tagged};
        server.strings[cell] = {text};
        EXPECT_EQ(link->GetValue(nullptr, cell, first), kLinkGood);
        EXPECT_EQ(link->GetText(nullptr, cell, value), kLinkGood);
        EXPECT_EQ(link->GetSettingLimits(nullptr, cell, first), kLinkGood);
        EXPECT_EQ(link->GetStrings(nullptr, cell, first), kLinkGood);
        EXPECT_EQ(link->GetValues(nullptr, std::vector<CellAddress>{0x0006, cell}, first), kLinkGood);
        link->SetValue(nullptr, cell, CParlaneText(planted));
        link->SetBlockedValue(nullptr, cell, BytesOf(planted));
    }
    server.values[0x0533] = tagged; // by its type alone
    EXPECT_EQ(link->GetValue(nullptr, 0x0533, first), kLinkGood);
    link->ChangeSetting(nullptr, 0x0533, CParlanePassword(std::string_view(planted)));
    link->ChangeHashedPasswordSettingForCSEd3(nullptr, 0x0533, "ME", planted, 1);
    link->GetCompressDisturbanceRecord(nullptr, CParlanePassword(std::string_view(planted)), first);
    server.events.push_back({0, List({"44021201", tagged})});
    std::uint8_t kind = 0, more = 0;
    link->GetEvent(nullptr, kind, first, more);
    for (const std::string place : {"44020200", "240102", "5801FF", ""}) { // the last two are no places
        server.columns[0x00] = {List({"44020600", place}), List({TextHex("Kept"), text}),
                                List({TextHex("Kept"), text})};
        link->GetColumnTextAndValues(nullptr, 0x00, first, second, third);
    }
}

TEST_F(Recording, HoldsNoPasswordInAnyForm) {
    std::vector<std::string> secrets = {"Secr", "Secret78", "00112233445566778899aabbccddeeff", "Planted1"};
    for (int version = 0; version <= 3; ++version) {
        SetRelay(version);
        EXPECT_EQ(Enter(), kLinkGood);
        std::erase(written, TextHex("ME")); // a name, which is none
        std::erase(written, TextHex("ENGINEER OF MORE"));
        for (const std::string& value : written) { // salts, digests, the enciphered text
            const auto bytes = Hex(value.substr(4));
            secrets.emplace_back(bytes.begin(), bytes.end());
        }
    }
    EXPECT_EQ(secrets.size(), 4U + 2 + 2 * 2);
    PassOn("Planted1");
    const std::vector<std::uint8_t> bytes = End();
    const std::string all(bytes.begin(), bytes.end());
    for (const std::string& secret : secrets)
        for (const std::string& form : FormsOf(secret))
            EXPECT_EQ(all.find(form), std::string::npos) << HexDigits(secret);
    for (const char* kept : {"Kept", "M1", "VIEWER", "Notice"})
        EXPECT_NE(all.find(kept), std::string::npos) << kept;
    CRecordingReader reader(bytes);
    const auto entries = EntriesOf(reader);
    EXPECT_TRUE(reader.IsWhole() && reader.Error().empty()) << reader.Error();
    EXPECT_GT(entries.size(), 100U);
}

TEST_F(Recording, HasEveryCallItsReplyAndTheReportsBetween) {
    SetRelay(0);
    server.onCall = nullptr;
    server.columns[0x05] = {List({"44020105"}), List({TextHex("A")}), List({""})};
    server.statuses["GetText 05.01"] = 0x0111;
    CParlaneDataArray lists[3];
    std::unique_ptr<CParlaneData> text;
    EXPECT_EQ(link->GetColumnTextAndValues(nullptr, 5, lists[0], lists[1], lists[2]), kLinkGood);
    EXPECT_EQ(link->GetText(nullptr, 0x0501, text), 0x0111U);
    server.statuses["GetDeviceStatus"] = CScriptedServer::kComFailure;
    std::uint8_t byte = 0;
    EXPECT_EQ(link->GetDeviceStatus(nullptr, byte), kLinkComFailure);
    server.onCall = [](SCall&) -> std::optional<std::int64_t> { throw std::runtime_error("marshalling"); };
    EXPECT_EQ(link->GetDeviceStatus(nullptr, byte), kLinkComFailure);
    server.sink->OnProgress(Variant::FromI4(1), Variant::FromI4(2));
    server.sink->OnCommandCompleteAlt(Variant::FromUI1(3));
    std::thread([&] { server.sink->OnLineStatus(Variant::FromText("4")); }).join();
    server.sink->OnTransferProgress(Variant::FromText("5x"));
    const std::vector<std::uint8_t> bytes = End();
    CRecordingReader reader(bytes);
    std::string told;
    for (const SRecordingEntry& entry : EntriesOf(reader)) {
        const bool isCall = entry.kind == ERecordingEntry::Call || entry.kind == ERecordingEntry::Reply;
        if (entry.kind == ERecordingEntry::Event)
            told += std::to_string(entry.thread) + std::string(kSinkNames.at(entry.slot - kFirstSinkSlot));
        told += (isCall ? std::to_string(entry.number) + std::string(entry.operation->name) : "") + "/" +
                std::to_string(static_cast<int>(entry.kind)) + "(";
        if (entry.isThrough)
            told += Describe(ToVariant(entry.status)) + ": ";
        for (const SRecordedValue& value : entry.values)
            told += value.kind == EValueKind::List ? "list " : Describe(ToVariant(value)) + " ";
        told += ")\n";
    }
    EXPECT_EQ(told, "1StartGetColumnTextAndValues/1(UI1(200) UI1(5) )\n1OnCommandComplete/3(I4(0) )\n"
                    "1StartGetColumnTextAndValues/2(I4(0): )\n"
                    "2FetchColumnTextAndValues/1()\n2FetchColumnTextAndValues/2(I4(0): list list list )\n"
                    "3GetText/1(UI1(200) I2(0501) )\n3GetText/2(I4(273): EMPTY )\n"
                    "4GetDeviceStatus/1(UI1(200) )\n4GetDeviceStatus/2()\n"
                    "5GetDeviceStatus/1(UI1(200) )\n5GetDeviceStatus/2()\n"
                    "1OnProgress/3(I4(1) I4(2) )\n1OnCommandCompleteAlt/3(UI1(3) )\n"
                    "2OnLineStatus/3(I4(4) )\n1OnTransferProgress/3(OTHER )\n/5()\n");
    for (std::size_t length = 0; length < bytes.size(); ++length) { // as a killed program leaves it
        const std::vector<std::uint8_t> part(bytes.begin(), bytes.begin() + static_cast<long>(length));
        CRecordingReader cut(part);
        EXPECT_LE(EntriesOf(cut).size(), 16U);
        EXPECT_FALSE(cut.IsWhole());
    }
}

TEST_F(Recording, ThatCannotBeMadeIsTold) {
    CP32Wrap::DestroyInstance();
    PlannedRecording().path = folder.Path("none\\x.rec");
    g_standardError.clear();
    EXPECT_EQ(CP32Wrap::CreateInstance(), kLinkGood) << "the visit goes on";
    const std::string told =
        "ruvo: " + DisplayPath(PlannedRecording().path) + ": the recording cannot be made: ";
    EXPECT_TRUE(g_standardError.starts_with(told) && g_standardError.size() > told.size()) << g_standardError;
}

/// The bytes that a row of the table describes.
Variant::Bytes RecordingOf(const std::string& described) {
    if (described.empty() || described[0] == '=')
        return Hex(described.substr(described.empty() ? 0 : 1));
    Variant::Bytes bytes = Hex("5255564F5245430A 01 00");
    std::istringstream entries(described.substr(1));
    std::string entry;
    std::getline(entries, entry, ';');
    while (std::getline(entries, entry, ';')) {
        const Variant::Bytes body = Hex(entry);
        AppendNumber(bytes, body.size());
        bytes.insert(bytes.end(), body.begin(), body.end());
    }
    return bytes;
}

/// The values; of a masked one also what a server that plays it back passes on.
std::string ValuesText(const std::vector<SRecordedValue>& values) {
    std::string text;
    for (const SRecordedValue& value : values) {
        const Variant passed = ToVariant(value);
        const bool isMasked = value.kind == EValueKind::Masked;
        text += " " + ValueText(value) + (isMasked ? Describe(passed) : "");
        EXPECT_EQ(ValueText(RecordedValue(passed)) == ValueText(value), !isMasked) << text;
    }
    return text;
}

std::string EntryText(const SRecordingEntry& entry) {
    const std::string number = std::to_string(entry.number);
    switch (entry.kind) {
    case ERecordingEntry::Call:
        return number + " " + CallText(*entry.operation, entry.values);
    case ERecordingEntry::Reply:
        return number + " = " + std::string(entry.operation == nullptr ? "no call" : entry.operation->name) +
               " " + (entry.isThrough ? StatusText(entry.status) : "failed") + ValuesText(entry.values);
    case ERecordingEntry::Event:
        return std::string(kSinkNames.at(entry.slot - kFirstSinkSlot)) + "@" + std::to_string(entry.time) +
               "/" + std::to_string(entry.thread) + ValuesText(entry.values);
    case ERecordingEntry::Gap:
        return "gap " + number;
    case ERecordingEntry::End:
        break;
    }
    return entry.end == ERecordingEnd::Full ? "full" : "closed";
}

TEST(RecordingReader, TakesWhatMakesSenseAndTellsWhatDoesNot) {
    ForEachCase<2>("link/recordings.txt", [](const std::string& described, const std::string& told) {
        const Variant::Bytes bytes = RecordingOf(described);
        CRecordingReader reader(bytes);
        std::string text = reader.Begin() == 0 ? "" : "at " + std::to_string(reader.Begin()) + "; ";
        for (SRecordingEntry entry; reader.Next(entry);)
            text += EntryText(entry) + (reader.IsWhole() ? ", whole; " : "; ");
        text += reader.Error();
        EXPECT_EQ(reader.IsWhole(), told.find("whole") != std::string::npos);
        EXPECT_EQ(text.substr(0, text.find_last_not_of(' ') + 1), told);
    });
}

TEST(RecordingReader, TakesTheDeepestListThatIsRecorded) {
    Variant deep;
    for (unsigned i = 0; i <= kMaxValueDepth; ++i)
        deep = Variant::FromList(Variant::List(1, deep));
    EXPECT_EQ(ValueText(RecordedValue(deep)), "[[[[[[[[(other)]]]]]]]]");
    EXPECT_EQ(kMaxRecording, 268'435'456U) << "as people are told";
}

/// A value as the bytes of a recording have it.
Variant ValueOf(const std::string& hex) {
    const Variant::Bytes bytes = Hex(hex);
    CByteCursor cursor(bytes);
    SRecordedValue value;
    EXPECT_TRUE(TakeValue(cursor, value)) << hex;
    return ToVariant(value);
}

TEST(Masking, HidesWhatMayBeASecretAndNothingElse) {
    ForEachCase<5>("link/masked_values.txt", [](auto& name, auto& at, auto& first, auto& second, auto& told) {
        const Variant address = Variant::FromUI1(5), aim = ValueOf(at);
        Variant x = ValueOf(first), y = ValueOf(second);
        CMasking masking;
        if (const SOperationRow* start = FindOperation("StartGet" + name.substr(5)))
            static_cast<void>(masking.MaskInputs(start->operation, {&address, &aim}));
        Variant::Bytes bytes;
        AppendValues(bytes, masking.MaskOutputs(FindOperation(name)->operation, {&address, &aim}, {&x, &y}));
        EXPECT_EQ(HexDigits(bytes), "02" + HexDigits(Hex(told))) << "two values";
    });
}

TEST(RecordingFile, LeavesOutWhatTheDiskOrTheBoundHasNoRoomFor) {
    const CScratchFolder folder;
    const std::vector<std::uint8_t> body(100);
    {
        CRecordingFile file; // no disk has so much free
        EXPECT_TRUE(file.Make({folder.Path("full.rec"), UINT64_MAX, kMaxRecording}).Good());
        file.Append(ERecordingEntry::Event, body);
        file.End(ERecordingEnd::Closed);
        for (const std::uint64_t bound : {993, 994}) {
            CRecordingFile bounded;
            EXPECT_TRUE(bounded.Make({folder.Path("bound.rec"), 0, bound}).Good());
            for (int i = 0; i < 100; ++i)
                bounded.Append(ERecordingEntry::Event, body);
        }
    }
    EXPECT_LT(folder.Read("full.rec").size(), 32U);
    const std::string bytes = folder.Read("bound.rec");
    EXPECT_EQ(bytes.size(), 833U) << "a ninth entry would leave one byte too few for the end";
    EXPECT_EQ(folder.Read("bound-2.rec").size(), 935U) << "here it just fits";
    EXPECT_EQ(HexDigits(bytes.substr(bytes.size() - 3)), "020502"); // the entry that says so
}

} // namespace
} // namespace ruvo::test
