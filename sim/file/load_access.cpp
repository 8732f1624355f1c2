#include "link/seam/known_cells.h"
#include "model/values/character_set.h"
#include "model/values/parlane_text.h"
#include "model/values/type_codes.h"
#include "sim/file/load_tables.h"
#include "sim/file/relay_text.h"
#include "sim/file/substation_error.h"
#include "sim/file/tagged_value.h"
#include "sim/file/toml_values.h"

#include <algorithm>

namespace ruvo::sim {
namespace {

constexpr std::int64_t kLastGeneration = 3;
constexpr std::int64_t kMaxByte = 255;
constexpr std::size_t kPlainLength = 4;
constexpr std::size_t kEncipheredLength = 8;
constexpr std::size_t kUserPassword = 16;
constexpr std::size_t kLongUserPassword = 32;
constexpr std::string_view kDefaultKey = "00112233445566778899AABBCCDDEEFF";
constexpr std::string_view kDefaultColumn = "25";

SCell Writable(SCell cell) {
    cell.writable = true;
    return cell;
}

std::uint32_t ReadCount(CTableReader& table, std::string_view key) {
    return static_cast<std::uint32_t>(table.Integer(key, 0, kMaxUnsigned32).value_or(0));
}

SProtection ReadProtection(CTableReader& table) {
    SProtection protection;
    if (table.Find("protect") == nullptr) {
        protection.events = true;
        protection.cells.push_back(cells::kLoginProbe);
        return protection;
    }
    for (const STomlNode& item : table.Items("protect")) {
        RequireKind(item, ETomlKind::Text, "protect");
        if (item.text == "events") {
            protection.events = true;
        } else if (item.text == "reads") {
            protection.reads = true;
        } else if (item.text == "writes") {
            protection.writes = true;
        } else {
            protection.cells.push_back(ParseCellAddress(item.text, item.line));
        }
    }
    return protection;
}

EBlocking ReadBlocking(CTableReader& table) {
    const std::string text = table.Text("blocking").value_or("temporary");
    if (text != "temporary" && text != "permanent") {
        throw CSubstationError(table.Find("blocking")->line,
                               "blocking: expected \"temporary\" or \"permanent\", found \"" + text + "\"");
    }
    return text == "permanent" ? EBlocking::Permanent : EBlocking::Temporary;
}

std::string ReadPassword(const STomlNode& node, std::size_t maximum) {
    std::string password = ReadPasswordText(node);
    if (password.size() > maximum) {
        throw CSubstationError(node.line,
                               "password: expected at most " + std::to_string(maximum) + " characters");
    }
    return password;
}

std::string ReadPaddedPassword(CTableReader& table, std::size_t length) {
    const STomlNode* node = table.Find("password");
    std::string password = node == nullptr ? std::string() : ReadPassword(*node, length);
    password.resize(length, ' ');
    return password;
}

void ReadPlain(CTableReader& table, SRelay& relay, SAccess& access) {
    const auto length = static_cast<std::size_t>(table.Integer("length", 0, kMaxByte).value_or(kPlainLength));
    const std::string password = ReadPaddedPassword(table, length);
    access.password.assign(password.begin(), password.end());
    SCell cell = MakeValueCell(kTypePassword, Variant::Bytes(length, ' '));
    cell.limits.push_back(TaggedValue(kTypePassword, cell.data));
    relay.cells.try_emplace(cells::kPassword, std::move(cell));
}

void ReadEnciphered(CTableReader& table, SRelay& relay, SAccess& access) {
    const STomlNode* node = table.Find("key");
    const std::string key = table.Text("key").value_or(std::string(kDefaultKey));
    constexpr std::size_t kKeyBytes = 16;
    if (key.size() != 2 * kKeyBytes || ParseHexBytes(key, table.Line()).size() != kKeyBytes) {
        throw CSubstationError(node->line, "key: expected 32 hexadecimal digits");
    }
    access.password = CParlaneEncryptedPassword(ReadPaddedPassword(table, kEncipheredLength), key).GetBytes();
    relay.cells.try_emplace(cells::kEncryptionKey,
                            MakeValueCell(kTypeText, Variant::Bytes(key.begin(), key.end())));
    SCell cell = MakeValueCell(kTypeEncryptedPassword, Variant::Bytes(kEncipheredLength, 0));
    cell.limits.push_back(TaggedValue(kTypeEncryptedPassword, cell.data));
    relay.cells.try_emplace(cells::kSecurityPassword, std::move(cell));
}

std::string ReadUserName(const STomlNode& node) {
    std::string name = WithoutTrailingBlanks(DecodeDeviceBytes(ReadRelayText(node, "name")));
    if (name.empty() || name.size() > kUserNameLength) {
        throw CSubstationError(node.line,
                               "name: expected 1 to " + std::to_string(kUserNameLength) + " characters");
    }
    return name;
}

SUser ReadUser(const STomlNode& node, std::size_t passwordLength) {
    SUser user;
    if (node.kind == ETomlKind::Text) {
        user.name = ReadUserName(node);
        return user;
    }
    CTableReader table(node, "a user");
    user.name = ReadUserName(table.Require("name"));
    user.password = WithoutTrailingBlanks(ReadPassword(table.Require("password"), passwordLength));
    user.levelTooLow = table.Flag("level_too_low", false);
    table.RejectUnknownKeys();
    return user;
}

void AddUser(const STomlNode& node, std::size_t passwordLength, SRelay& relay, SAccess& access) {
    SUser user = ReadUser(node, passwordLength);
    const auto isSame = [&](const SUser& other) { return other.name == user.name; };
    if (std::any_of(access.users.begin(), access.users.end(), isSame)) {
        throw CSubstationError(node.line, "name: two users have this name");
    }
    const auto row = static_cast<std::uint8_t>(rows::kFirstUser + access.users.size());
    const std::string name = EncodeDeviceText(user.name);
    Variant::Bytes bytes(name.begin(), name.end());
    bytes.resize(kUserNameLength, ' ');
    relay.cells.try_emplace(MakeCellAddress(access.securityColumn, row),
                            MakeValueCell(kTypeText, std::move(bytes)));
    access.users.push_back(std::move(user));
}

void ReadUsers(CTableReader& table, SRelay& relay, SAccess& access) {
    const std::vector<STomlNode>& users = table.Items("users");
    if (users.size() > kMaxUsers) {
        throw CSubstationError(table.Line(), "users: expected at most " + std::to_string(kMaxUsers));
    }
    // The longer passwords of the second edition are there when the probe cell is not.
    const bool salted = table.Flag("salted", true);
    if (!salted) {
        relay.cells.try_emplace(cells::kSecondEditionProbe, MakeValueCell(kTypeUint, LittleEndian(1, 1)));
    }
    const bool longPasswords = salted && access.generation == kLastGeneration;
    for (const STomlNode& user : users) {
        AddUser(user, longPasswords ? kLongUserPassword : kUserPassword, relay, access);
    }
    relay.cells.try_emplace(cells::kUserCount, MakeValueCell(kTypeUint, LittleEndian(users.size(), 1)));
    access.freshSalt = table.Flag("fresh_salt", false);
    access.notSettable = table.Flag("not_settable", false);
}

// Cells from the file exist already and stay: try_emplace throughout.
void ReadSecurityColumn(CTableReader& table, SRelay& relay, SAccess& access) {
    access.securityColumn =
        ParseColumn(table.Text("column").value_or(std::string(kDefaultColumn)), table.Line());
    relay.cells.try_emplace(cells::kSecurityVersion,
                            MakeValueCell(kTypeUint, LittleEndian(access.generation, 1)));
    relay.cells.try_emplace(cells::kSecurityColumn,
                            MakeValueCell(kTypeUint, LittleEndian(access.securityColumn, 1)));
    if (const STomlNode* text = table.Find("display_text")) {
        relay.cells.try_emplace(MakeCellAddress(access.securityColumn, rows::kDisplayText),
                                MakeValueCell(kTypeText, ReadRelayText(*text, "display_text")));
    }
}

std::uint8_t ReadPasswordReply(CTableReader& table) {
    constexpr std::uint8_t kFirst = ReplyCodeOf(kReplyPasswordNeeded);
    constexpr std::uint8_t kSecond = ReplyCodeOf(kReplyPasswordNeededToo);
    const auto reply = static_cast<std::uint8_t>(table.Integer("reply", kFirst, kSecond).value_or(kFirst));
    if (!IsPasswordRequest(ReplyStatus(reply))) {
        throw CSubstationError(table.Find("reply")->line, "reply: expected " + std::to_string(kFirst) +
                                                              " or " + std::to_string(kSecond) +
                                                              ", the replies that ask for a password");
    }
    return reply;
}

void ReadGeneration(CTableReader& table, SRelay& relay, SAccess& access) {
    if (access.generation == 0) {
        ReadPlain(table, relay, access);
        return;
    }
    ReadSecurityColumn(table, relay, access);
    if (access.generation == 1) {
        ReadEnciphered(table, relay, access);
    } else {
        ReadUsers(table, relay, access);
    }
}

} // namespace

void ReadAccess(CTableReader& table, SRelay& relay) {
    const STomlNode* node = table.Find("access");
    if (node == nullptr) {
        return;
    }
    CTableReader reader(*node, "[relay.access]");
    SAccess access;
    access.generation = static_cast<unsigned>(reader.Integer("generation", 0, kLastGeneration).value_or(0));
    ReadGeneration(reader, relay, access);
    access.protection = ReadProtection(reader);
    access.passwordReply = ReadPasswordReply(reader);
    access.attempts = ReadCount(reader, "attempts");
    access.blocking = ReadBlocking(reader);
    access.blockedRequests = ReadCount(reader, "blocked_requests");
    access.levelTooLow = reader.Flag("level_too_low", false);
    access.forgetAfter = ReadCount(reader, "forget_after");
    reader.RejectUnknownKeys();
    relay.cells.try_emplace(cells::kLoginProbe, Writable(MakeValueCell(kTypeInt, LittleEndian(0, 2))));
    relay.access = std::move(access);
}

} // namespace ruvo::sim
