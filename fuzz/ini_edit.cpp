// One entry of an INI file changed, made and taken away. Input: bytes that choose section, key and value, and
// the file's bytes.
#include "fuzz/support/input.h"
#include "fuzz/support/require.h"

#include "platform/text_file.h"
#include "tools/ini/ini_document.h"

#include <array>
#include <set>

namespace ruvo::fuzz {

namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr std::array<std::string_view, 5> kSections{"RUVO_SERIAL", "RUVO_ETHERNET", "RUVO_PASSWORDS",
                                                    "RUVO_GENERAL", "S"};
constexpr std::array<std::string_view, 6> kKeys{"RV001", "RV005", "RV000", "RV999", "UseEthernet", "K"};
constexpr std::array<std::string_view, 6> kValues{"5", "10.0.0.5,7,1", "6426392349950675645036", "a b=c", "",
                                                  "x]"};

template <std::size_t Count>
std::string Choose(const std::array<std::string_view, Count>& from, unsigned byte) {
    return std::string(from.at(byte % Count));
}

struct SEdit {
    std::string section;
    std::string key;
    std::string value;
};

/// The text in lines with their ends; a mark at its start belongs to none of them.
std::vector<std::string> LinesOf(std::string_view text) {
    std::vector<std::string> lines;
    while (!text.empty()) {
        std::size_t end = std::min(text.find_first_of("\r\n"), text.size());
        end += text.substr(end).starts_with("\r\n") ? 2 : end < text.size() ? 1 : 0;
        lines.emplace_back(text.substr(0, end));
        text.remove_prefix(end);
    }
    return lines;
}

/// The lines of the key in the section that is read.
std::set<std::size_t> LinesOfKey(const CIniText& ini, const SEdit& edit) {
    std::set<std::size_t> lines;
    if (const SIniSection* const section = ini.FindSection(edit.section)) {
        for (const SIniEntry& entry : section->entries) {
            if (EqualIniNames(entry.key, edit.key)) {
                lines.insert(entry.line);
            }
        }
    }
    return lines;
}

std::string WithoutLines(const std::string& text, const std::set<std::size_t>& lines) {
    const std::size_t mark = text.starts_with(kByteOrderMark) ? kByteOrderMark.size() : 0;
    std::string left = text.substr(0, mark);
    std::size_t number = 0;
    for (const std::string& line : LinesOf(std::string_view(text).substr(mark))) {
        left += lines.contains(++number) ? std::string() : line;
    }
    return left;
}

/// Units of two bytes, or of one.
std::vector<std::uint16_t> UnitsOf(std::string_view bytes) {
    const std::size_t size = bytes.starts_with(kUtf16Mark) ? 2 : 1;
    std::vector<std::uint16_t> units;
    for (std::size_t at = 0; at + size <= bytes.size(); at += size) {
        const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(bytes[i]); };
        units.push_back(static_cast<std::uint16_t>(byte(at) + (size == 2 ? byte(at + 1) * 256U : 0U)));
    }
    return units;
}

/// One stretch within a line is gone at most, all before and behind it is what it was.
void CheckOthersStay(std::string_view before, std::string_view after) {
    const std::vector<std::uint16_t> old = UnitsOf(before);
    const std::vector<std::uint16_t> now = UnitsOf(after);
    const auto head = std::mismatch(old.begin(), old.end(), now.begin(), now.end());
    const auto tail = std::mismatch(old.rbegin(), std::make_reverse_iterator(head.first), now.rbegin(),
                                    std::make_reverse_iterator(head.second));
    Require(std::none_of(head.first, tail.first.base(),
                         [](std::uint16_t unit) { return unit == '\r' || unit == '\n'; }),
            "no line is lost but its value");
}

void CheckSet(const CIniDocument& before, const SEdit& edit) {
    CIniDocument document = before;
    document.Set(edit.section, edit.key, edit.value);
    const std::string once = document.Bytes();
    Require(IsOnlyChange(before.Ini(), CIniDocument(once).Ini(), {edit.section, edit.key, &edit.value}),
            "the entry says what it should, and all others what they said");
    CheckOthersStay(before.Bytes(), once);
    document.Set(edit.section, edit.key, edit.value);
    Require(document.Bytes() == once, "an entry set twice is set once");
    CIniDocument again(once);
    again.Set(edit.section, edit.key, edit.value);
    Require(again.Bytes() == once, "also when the file is read again in between");
}

void CheckRemove(const CIniDocument& before, const SEdit& edit) {
    CIniDocument document = before;
    document.Remove(edit.section, edit.key);
    Require(
        IsOnlyChange(before.Ini(), CIniDocument(document.Bytes()).Ini(), {edit.section, edit.key, nullptr}),
        "no other entry goes with it");
    Require(TextOfFileBytes(document.Bytes()) ==
                WithoutLines(TextOfFileBytes(before.Bytes()), LinesOfKey(before.Ini(), edit)),
            "the key's lines go, and nothing else");
    const std::string once = document.Bytes();
    document.Remove(edit.section, edit.key);
    Require(document.Bytes() == once, "what is gone stays gone");
}

/// An entry that was made and is taken away leaves the file as it was, but for a line end that its last line
/// had to get, and a section that had to be made.
void CheckAddAndRemove(const CIniDocument& before, const SEdit& edit) {
    if (!LinesOfKey(before.Ini(), edit).empty()) {
        return;
    }
    CIniDocument document = before;
    document.Set(edit.section, edit.key, edit.value);
    document.Remove(edit.section, edit.key);
    const std::string was = TextOfFileBytes(before.Bytes());
    const std::string now = TextOfFileBytes(document.Bytes());
    Require(now.starts_with(was), "what was there before is there again");
    const bool wasOpen =
        !was.empty() && was != kByteOrderMark && !was.ends_with('\r') && !was.ends_with('\n');
    std::string rest = now.substr(was.size());
    std::erase_if(rest, [](char c) { return c == '\r' || c == '\n'; });
    const bool isMade = before.Ini().FindSection(edit.section) == nullptr;
    Require(rest == (isMade ? "[" + edit.section + "]" : std::string()) && (isMade || wasOpen || now == was),
            "an entry that was made and taken away is nothing");
}

void Check(CInput input) {
    const SEdit edit{Choose(kSections, input.TakeByte()), Choose(kKeys, input.TakeByte()),
                     Choose(kValues, input.TakeByte())};
    const CIniDocument document(std::string(input.Rest().begin(), input.Rest().end()));
    Require(WhyNotReadable(document.Bytes()).empty() || !document.WhyNotEditable().empty(),
            "what cannot be read is not edited");
    if (!document.WhyNotEditable().empty()) {
        return;
    }
    CheckSet(document, edit);
    CheckRemove(document, edit);
    CheckAddAndRemove(document, edit);
}

} // namespace

} // namespace ruvo::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    ruvo::fuzz::Check(ruvo::fuzz::CInput({data, size}));
    return 0;
}
