// The reader of recordings, and what is made of one. Input: the file's bytes.
#include "fuzz/support/require.h"

#include "link/recording/call_recorder.h"
#include "link/recording/recording.h"
#include "link/recording/recording_text.h"
#include "sim/file/substation.h"
#include "tools/recording/substation_file.h"

#include <algorithm>
#include <cstdint>
#include <string>

namespace ruvo::fuzz {

namespace {

/// What is read of a value is written as it was, shown on a line of ASCII, and carried over the seam.
void CheckValue(const SRecordedValue& value) {
    Variant::Bytes bytes;
    AppendValue(bytes, value);
    CByteCursor cursor(bytes);
    SRecordedValue again;
    Require(TakeValue(cursor, again) && cursor.Remaining() == 0, "a value that was read can be written");
    Variant::Bytes written;
    AppendValue(written, again);
    Require(written == bytes, "and is the same");
    const std::string text = ValueText(value);
    Require(!text.empty() && std::ranges::all_of(text, [](char c) { return c >= ' ' && c <= '~'; }),
            "a value is shown in ASCII");
    if (value.kind != EValueKind::Masked) {
        Require(RecordedValue(ToVariant(value)).kind == value.kind, "a value crosses the seam as it is");
    }
}

void CheckEntry(const SRecordingEntry& entry) {
    if (entry.kind == ERecordingEntry::Call) {
        Require(entry.operation != nullptr, "a call has an operation");
        Require(!CallText(*entry.operation, entry.values).empty(), "and is shown");
    }
    Require(entry.values.size() <= kMaxCallValues, "no call has more values");
    CheckValue(entry.status);
    std::ranges::for_each(entry.values, CheckValue);
}

void Check(std::span<const std::uint8_t> bytes) {
    CRecordingReader reader(bytes);
    std::size_t entries = 0;
    for (SRecordingEntry entry; reader.Next(entry); ++entries) {
        CheckEntry(entry);
    }
    Require(entries <= bytes.size(), "an entry has bytes");
    Require(!reader.IsWhole() || entries > 0, "a whole recording has its end");
    CRecordingReader again(bytes);
    const std::string text = SubstationFileOf(again);
    const sim::SLoadedSubstation loaded = sim::ReadSubstation(text, "f", "C:\\sub");
    Require(loaded.substation != nullptr, loaded.error.c_str());
}

} // namespace

} // namespace ruvo::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    ruvo::fuzz::Check({data, size});
    return 0;
}
