// ruvoctl recording: shows what a recording of the comms server's calls holds.
#include "base/text.h"
#include "link/recording/recording.h"
#include "link/recording/recording_text.h"
#include "platform/full_path.h"
#include "tools/command.h"
#include "tools/events/event_fields.h"
#include "tools/recording/substation_file.h"
#include "tools/text_encoding.h"
#include "tools/whole_file.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace ruvo {

namespace {

constexpr std::string_view kAction = "show|to-substation";

constexpr std::array kOptions{
    SOption{EOptionKind::Positional, kAction,
            "print the recording for reading, or create a substation file for the simulator from it"},
    SOption{EOptionKind::Positional, "FILE", "recording, which a run with RUVO_RECORD has made"},
    SOption{EOptionKind::Text, "-o,--output", "file to create or replace; default: standard output", "FILE"},
};

constexpr std::string_view kNotes =
    R"(show prints a line for each call, its reply and each report of the server: seconds since the beginning,
thread, number, contents. What may be a password is not in a recording: it is shown as (masked).
to-substation creates a substation whose relays answer as the recorded ones did. Their passwords are not in
the recording; those that were accepted become RUVO, or as much of it as a relay takes. The beginning of the
file says what it could not express.
Exit status: 0 on success, 1 if the file is no recording or damaged, or a file cannot be written, 2 on a
usage error. Of a recording that ends too early, all that is there is shown or used.

Examples: look before you send; play the relays on your desk
  ruvoctl recording show yard.rec | less
  ruvoctl recording to-substation yard.rec -o yard.toml)";

std::string MomentText(const SRecordingEntry& entry) {
    constexpr std::uint64_t kMicroseconds = 1'000'000;
    std::array<char, 80> text{};
    std::snprintf(text.data(), text.size(), "%6llu.%06u %2llu ",
                  static_cast<unsigned long long>(entry.time / kMicroseconds),
                  static_cast<unsigned>(entry.time % kMicroseconds),
                  static_cast<unsigned long long>(entry.thread));
    return text.data();
}

std::string ValuesText(const std::vector<SRecordedValue>& values) {
    std::string text;
    for (const SRecordedValue& value : values) {
        text += " " + ValueText(value);
    }
    return text;
}

std::string EntryText(const SRecordingEntry& entry) {
    const std::string numbered = MomentText(entry) + std::to_string(entry.number);
    switch (entry.kind) {
    case ERecordingEntry::Call:
        return numbered + " " + CallText(*entry.operation, entry.values);
    case ERecordingEntry::Reply:
        return numbered + " = " +
               (entry.isThrough ? StatusText(entry.status) + ValuesText(entry.values)
                                : std::string("failed: the server was not reached"));
    case ERecordingEntry::Event:
        return MomentText(entry) + "* " + std::string(kSinkNames.at(entry.slot - kFirstSinkSlot)) +
               ValuesText(entry.values);
    case ERecordingEntry::Gap:
        return "left out: " + std::to_string(entry.number) + (entry.number == 1 ? " entry" : " entries") +
               ", since the disk was nearly full";
    case ERecordingEntry::End:
        return entry.end == ERecordingEnd::Full ? "end: the recording has reached its greatest length"
                                                : "end: the server was let go";
    }
    return {};
}

bool Show(CRecordingReader& reader, SConsole& console) {
    std::string begin = "recording of ";
    AppendUtc(begin, reader.Begin() * 1000);
    console.out.Write(begin + "\n");
    for (SRecordingEntry entry; reader.Next(entry);) {
        console.out.Write(EntryText(entry) + "\n");
    }
    return true;
}

bool MakeSubstation(CRecordingReader& reader, const std::string& output, SConsole& console) {
    const std::string text = SubstationFileOf(reader);
    if (output.empty()) {
        console.out.Write(text);
        return true;
    }
    const std::string failure = ReplaceWholeFile(output, text);
    if (!failure.empty()) {
        console.error.Write("ruvoctl: " + EscapeControls(SystemTextToUtf8(output)) + ": " + failure + "\n");
    }
    return failure.empty();
}

int RunRecording(const CArguments& arguments, SConsole& console) {
    const std::string action = arguments.Get(kAction);
    const std::string path = arguments.Get("FILE");
    const bool isShow = action == "show";
    if ((!isShow && action != "to-substation") || (isShow && arguments.Has("--output"))) {
        console.error.Write("usage: ruvoctl recording show FILE\n"
                            "       ruvoctl recording to-substation FILE [-o FILE]\n");
        return kExitUsage;
    }
    const std::string begin = "ruvoctl: " + EscapeControls(SystemTextToUtf8(path)) + ": ";
    Variant::Bytes bytes;
    const ERecordingRead read = ReadRecordingFile(FullPath(path), bytes);
    if (read != ERecordingRead::Read) {
        console.error.Write(begin + (read == ERecordingRead::Unreadable ? "cannot be read" : "no recording") +
                            "\n");
        return kExitFailed;
    }
    CRecordingReader reader(bytes);
    bool isGood =
        reader.Error().empty() &&
        (isShow ? Show(reader, console) : MakeSubstation(reader, arguments.Get("--output"), console));
    if (!reader.Error().empty()) {
        console.error.Write(begin + reader.Error() + "\n");
        isGood = false;
    } else if (!reader.IsWhole()) {
        console.error.Write(begin + "it has no end: the program was ended, or still runs\n");
    }
    return isGood ? kExitGood : kExitFailed;
}

} // namespace

SCommand RecordingCommand() {
    return {"recording", "Show a recording of the comms server's calls, or simulate its relays", kNotes,
            kOptions, RunRecording};
}

} // namespace ruvo
