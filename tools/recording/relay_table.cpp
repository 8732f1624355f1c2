#include "tools/recording/relay_table.h"

#include "base/text.h"
#include "link/seam/known_cells.h"
#include "tools/recording/substation_file.h"
#include "tools/recording/toml_text.h"

#include <algorithm>
#include <array>

namespace ruvo {

namespace {

constexpr std::size_t kHead = 2; // type code and length of a tagged value
constexpr std::string_view kOtherPassword = "ELSE";
constexpr unsigned kLastGeneration = 3;
constexpr std::size_t kPlainLength = 4;
constexpr std::size_t kEncipheredLength = 8;

const SCellFacts* FindCell(const CRelayFacts& relay, CellAddress cell) {
    const auto found = relay.cells.find({ColumnOf(cell), std::nullopt, cell});
    return found == relay.cells.end() ? nullptr : &found->second;
}

/// The first byte of a cell's value.
std::optional<std::uint8_t> FirstByteOf(const CRelayFacts& relay, CellAddress cell) {
    const SCellFacts* facts = FindCell(relay, cell);
    if (facts == nullptr || !facts->packed || facts->packed->back().bytes.empty()) {
        return std::nullopt;
    }
    return facts->packed->back().bytes.front();
}

unsigned GenerationOf(const CRelayFacts& relay) {
    return std::min<unsigned>(FirstByteOf(relay, cells::kSecurityVersion).value_or(0), kLastGeneration);
}

bool HasAccess(const CRelayFacts& relay) {
    return relay.passwordReply != 0 || relay.hasAccepted || relay.hasRejected;
}

/// The length of the first limit's data: that of the password.
std::size_t LimitLength(const CRelayFacts& relay, CellAddress cell, std::size_t fallback) {
    const SCellFacts* facts = FindCell(relay, cell);
    if (facts == nullptr || !facts->limits || facts->limits->items.empty()) {
        return fallback;
    }
    const std::size_t length = facts->limits->items.front().length.value_or(0);
    return length < kHead ? fallback : length - kHead;
}

std::string AddressText(const CRelayFacts& relay) {
    const std::string address = ", address = " + std::to_string(relay.address) + " }\n";
    switch (relay.link.kind) {
    case ELinkKind::Serial:
        return "serial = { port = " + TomlText(relay.link.name) + address;
    case ELinkKind::Modem:
        return "modem = { number = " + TomlText(relay.link.name) + address;
    case ELinkKind::Ethernet:
        return "ethernet = { ip = " + TomlText(relay.link.name) +
               ", bus = " + std::to_string(relay.link.bus) + address;
    }
    return {};
}

std::string UsersText(const CRelayFacts& relay) {
    std::string users;
    const std::uint8_t column = FirstByteOf(relay, cells::kSecurityColumn).value_or(0);
    for (unsigned row = rows::kFirstUser; row <= 0xFFU; ++row) {
        const SCellFacts* facts = FindCell(relay, MakeCellAddress(column, static_cast<std::uint8_t>(row)));
        if (facts == nullptr || !facts->packed) {
            break;
        }
        const std::span<const std::uint8_t> bytes = facts->packed->back().bytes;
        std::string name(bytes.begin(), bytes.end());
        name.erase(name.find_last_not_of(' ') + 1);
        const bool isPlain = std::ranges::all_of(
            name, [](char c) { return c >= ' ' && c <= '~'; }); // others have a form of their own
        if (!name.empty() && isPlain) {
            users += (users.empty() ? "" : ", ") + ("{ name = " + TomlText(name)) +
                     ", password = " + TomlText(kStandInPassword) + " }";
        }
    }
    return "users = [" + users + "]\n";
}

std::string ProtectText(const CRelayFacts& relay) {
    std::string protect = relay.protectsEvents ? "\"events\"" : "";
    for (const CellAddress cell : relay.protectedCells) {
        protect += (protect.empty() ? "" : ", ") + TomlText(TomlCell(cell));
    }
    return "protect = [" + protect + "]\n";
}

std::string AccessTable(const CRelayFacts& relay) {
    if (!HasAccess(relay)) {
        return {};
    }
    const unsigned generation = GenerationOf(relay);
    std::string text = "\n[relay.access]\ngeneration = " + std::to_string(generation) + "\n";
    if (generation > 0) {
        const auto column = FirstByteOf(relay, cells::kSecurityColumn);
        text += column ? "column = " + TomlText(TomlColumn(*column)) + "\n" : "";
    }
    if (generation > 1) {
        text += UsersText(relay);
    } else {
        const bool isRejected = relay.hasRejected && !relay.hasAccepted;
        const std::size_t length =
            generation == 0 ? LimitLength(relay, cells::kPassword, kPlainLength) : kEncipheredLength;
        const std::string_view password = isRejected ? kOtherPassword : kStandInPassword;
        text += "password = " + TomlText(password.substr(0, length)) + "\n";
        text += generation == 0 ? "length = " + std::to_string(length) + "\n" : "";
    }
    text += ProtectText(relay);
    text += relay.passwordReply != 0 ? "reply = " + std::to_string(relay.passwordReply) + "\n" : "";
    return text;
}

/// Cells that the access table makes, and whose contents the recording masks.
bool IsMadeByAccess(const CRelayFacts& relay, CellAddress cell) {
    if (!HasAccess(relay)) {
        return false;
    }
    const bool isOddLength = cell == cells::kSecurityPassword && GenerationOf(relay) == 1 &&
                             LimitLength(relay, cell, kEncipheredLength) != kEncipheredLength;
    const SCellFacts* facts = FindCell(relay, cell);
    const bool isRefused = facts != nullptr && facts->refusal != 0 && !facts->packed && !facts->limits;
    return (IsLoginCell(cell) || cell == cells::kEncryptionKey) && !isOddLength && !isRefused;
}

/// Where nothing makes the cell, it need not be said that there is none.
std::string Refusal(const CRelayFacts& relay, const SCellFacts& facts) {
    const bool isNeeded =
        facts.refusal != 0 && (facts.refusal != ReplyCodeOf(kReplyNoSuchCell) || HasAccess(relay));
    return isNeeded ? "answers = " + std::to_string(facts.refusal) : "";
}

/// The members of the value, in the form in which it was seen first.
std::string ValueMembers(const SCellFacts& facts, const SRecordedValue* listed) {
    std::string value = facts.packed ? TomlPacked(*facts.packed) : "";
    const SRecordedValue* tagged = listed;
    if (facts.tagged) {
        tagged = &*facts.tagged;
    } else if (listed == nullptr && facts.label) {
        tagged = &*facts.label;
    }
    const bool isTagged = tagged != nullptr && tagged->kind == EValueKind::Bytes &&
                          tagged->bytes.size() >= kHead && tagged->bytes[1] == tagged->bytes.size() - kHead;
    if (value.empty() && isTagged) {
        value = TomlMembers(tagged->bytes[0], tagged->bytes.subspan(kHead));
    }
    return value.empty() ? "invalid = true" : value;
}

std::string CellMembers(const CRelayFacts& relay, const SCellFacts& facts, const SRecordedValue* listed) {
    if (!facts.IsAnswered() && listed == nullptr) {
        return Refusal(relay, facts);
    }
    std::string text = ValueMembers(facts, listed);
    text += facts.limits ? ", limits = " + TomlValues(*facts.limits) : "";
    text += facts.strings ? ", strings = " + TomlValues(*facts.strings) : "";
    text += facts.label ? ", label = " + TomlValue(*facts.label) : "";
    text += facts.isWritable ? ", writable = true" : "";
    return text;
}

/// The value that the column's listing has for the cell; null for none.
const SRecordedValue* ListedValue(const CRelayFacts& relay, const ColumnKey& column, CellAddress cell) {
    const auto found = relay.listings.find(column);
    if (found == relay.listings.end() || !found->second.contains("values")) {
        return nullptr;
    }
    const std::vector<SRecordedValue>& locations = found->second.at("locations").items;
    const std::vector<SRecordedValue>& values = found->second.at("values").items;
    for (std::size_t i = 0; i < locations.size() && i < values.size(); ++i) {
        if (locations[i].bytes.size() > kHead && locations[i].bytes[kHead] == RowOf(cell)) {
            return &values[i];
        }
    }
    return nullptr;
}

std::string ListingText(const CRelayFacts& relay, const ColumnKey& column) {
    const auto found = relay.listings.find(column);
    if (found == relay.listings.end()) {
        return {};
    }
    std::string text;
    for (const auto& [name, list] : found->second) {
        text += (text.empty() ? "" : ", ") + name + " = " + TomlValues(list);
    }
    return "listing = { " + text + " }\n";
}

bool HasRecords(const CRelayFacts& relay, std::uint8_t column) {
    const auto isOfRecord = [column](const ColumnKey& key) { return key.first == column; };
    return std::ranges::any_of(relay.records, isOfRecord);
}

/// The cells of a column while that record is selected; of all columns, without a record, for none.
std::string CellLines(const CRelayFacts& relay, std::optional<std::uint8_t> column, RecordNumber record) {
    std::string lines;
    for (const auto& [key, facts] : relay.cells) {
        const CellAddress cell = std::get<2>(key);
        const bool isSelector = RowOf(cell) == rows::kSelectRecord && HasRecords(relay, std::get<0>(key));
        if (std::get<1>(key) != record || (column && std::get<0>(key) != *column) || isSelector ||
            IsMadeByAccess(relay, cell)) {
            continue;
        }
        const ColumnKey listing{std::get<0>(key), record};
        const std::string members = CellMembers(relay, facts, ListedValue(relay, listing, cell));
        if (!members.empty()) {
            lines += "\"" + TomlCell(cell) + "\" = { " + members + " }\n";
        }
    }
    return lines;
}

std::string RecordTables(const CRelayFacts& relay) {
    std::set<ColumnKey> records = relay.records;
    for (const auto& [key, listing] : relay.listings) {
        records.insert(key);
    }
    std::string text;
    for (const auto& [column, record] : records) {
        if (!record) {
            const std::string listing = ListingText(relay, {column, record});
            text += listing.empty() ? "" : "\n[relay.columns.\"" + TomlColumn(column) + "\"]\n" + listing;
            continue;
        }
        text += "\n[[relay.record]]\ncolumn = " + TomlText(TomlColumn(column)) +
                "\nnumber = " + std::to_string(*record) + "\n" + ListingText(relay, {column, record});
        const std::string cells = CellLines(relay, column, record);
        text += cells.empty() ? "" : "[relay.record.cells]\n" + cells;
    }
    return text;
}

std::string EventTables(const CRelayFacts& relay) {
    std::string text;
    for (const SEventFacts& event : relay.events) {
        text += "\n[[relay.event]]\nkind = " + std::to_string(event.kind) +
                "\nelements = " + TomlValues(event.values) + "\nmore = " + (event.isMore ? "true" : "false") +
                "\n";
    }
    if (relay.hasMoreEvents) {
        text += "\n# The relay had more, which the recording does not show.\n[[relay.event]]\nkind = 0\n"
                "elements = []\n";
    }
    return text;
}

} // namespace

std::string NameOf(const CRelayFacts& relay) {
    std::string name;
    for (const char character : relay.link.name) { // a name has no control characters in the file
        if (static_cast<unsigned char>(character) < ' ') {
            name += "\\x";
            AppendHexByte(name, static_cast<unsigned char>(character));
        } else {
            name += character;
        }
    }
    const std::string bus =
        relay.link.kind == ELinkKind::Ethernet ? " bus " + std::to_string(relay.link.bus) : "";
    return name + bus + " address " + std::to_string(relay.address);
}

std::string RelayTable(const CRelayFacts& relay) {
    std::string text = "\n[[relay]]\nname = " + TomlText(NameOf(relay)) + "\n" + AddressText(relay);
    text += relay.statusByte == 0 ? "" : "status_byte = " + std::to_string(relay.statusByte) + "\n";
    text += AccessTable(relay);
    const std::string cells = CellLines(relay, std::nullopt, std::nullopt);
    text += cells.empty() ? "" : "\n[relay.cells]\n" + cells;
    return text + RecordTables(relay) + EventTables(relay);
}

} // namespace ruvo
