#include "link/login/security_cells.h"

#include "link/seam/known_cells.h"
#include "model/values/parlane_integers.h"
#include "model/values/parlane_text.h"
#include "platform/trace.h"

#include <algorithm>

namespace ruvo {

namespace {

/// A user name out of a relay's text: cut or filled up with blanks.
SUserName MakeUserName(const std::string& text) {
    SUserName name{};
    std::fill_n(name.text, kUserNameLength, ' ');
    text.copy(name.text, kUserNameLength);
    return name;
}

} // namespace

std::unique_ptr<CParlaneData> CSecurityCells::ReadFirstValue(CellAddress cell, LinkStatus& status) {
    CParlaneDataArray values;
    status = m_reads.GetValue(m_channel.EntryMonitor(), cell, values);
    const bool hasValue =
        status == kLinkGood && !values.empty() && values.front()->GetTypeCode() != kTypeInvalid;
    return hasValue ? std::move(values.front()) : nullptr;
}

std::optional<std::int64_t> CSecurityCells::ReadNumber(CellAddress cell, LinkStatus& status) {
    const std::unique_ptr<CParlaneData> value = ReadFirstValue(cell, status);
    if (value == nullptr) {
        return std::nullopt;
    }
    // A negative number must stay one: the number of users is compared with 0.
    const std::uint32_t number = value->GetUnsigned();
    return value->GetTypeCode() == kTypeInt ? std::int64_t{static_cast<std::int32_t>(number)}
                                            : std::int64_t{number};
}

std::optional<std::string> CSecurityCells::ReadText(CellAddress cell, LinkStatus& status) {
    const std::unique_ptr<CParlaneData> value = ReadFirstValue(cell, status);
    const auto* text = dynamic_cast<const CParlaneText*>(value.get());
    return text == nullptr ? std::nullopt : std::optional(text->GetText());
}

LinkStatus CSecurityCells::ReadLimits(CellAddress cell, CParlaneDataArray& limits) {
    return m_reads.GetSettingLimits(m_channel.EntryMonitor(), cell, limits);
}

std::optional<std::uint32_t> CSecurityCells::ReadPasswordLength(CellAddress cell) {
    CParlaneDataArray limits;
    if (ReadLimits(cell, limits) != kLinkGood || limits.empty() ||
        limits.front()->GetTypeCode() == kTypeInvalid) {
        return std::nullopt;
    }
    return static_cast<std::uint32_t>(limits.front()->GetSize());
}

bool CSecurityCells::ReadUserNames(std::uint8_t securityColumn, std::int64_t count,
                                   std::vector<SUserName>& names, ENameTrace trace) {
    names.clear();
    if (count > static_cast<std::int64_t>(kMaxUsers)) {
        return false;
    }
    for (std::int64_t i = 0; i < count; ++i) {
        const auto row = static_cast<std::uint8_t>(rows::kFirstUser + i);
        LinkStatus status = kLinkGood;
        const std::optional<std::string> text = ReadText(MakeCellAddress(securityColumn, row), status);
        if (!text) {
            return false;
        }
        names.push_back(MakeUserName(*text));
        if (trace == ENameTrace::Traced) {
            TraceInfo("CP32Wrap::ExtractCSAvailableUsernames : Username: %s", names.back().text);
        }
    }
    return true;
}

LinkStatus CSecurityCells::ExtractCSVersion(std::uint32_t& version) {
    LinkStatus status = kLinkGood;
    const std::unique_ptr<CParlaneData> value = ReadFirstValue(cells::kSecurityVersion, status);
    if (value == nullptr) {
        TraceError("CP32Wrap::ExtractCSVersion : Error during obtaining Cyber Security version.");
        return kLinkAborted;
    }
    version = value->GetUnsigned();
    TraceInfo("CP32Wrap::ExtractCSVersion : Cyber Security version: %d", static_cast<int>(version));
    return kLinkGood;
}

LinkStatus CSecurityCells::ExtractCSUsernamesCount(std::int64_t& count) {
    LinkStatus status = kLinkGood;
    const std::optional<std::int64_t> number = ReadNumber(cells::kUserCount, status);
    if (!number) {
        TraceError(
            "CP32Wrap::ExtractCSUsernamesCount : Error during obtaining number of users from the device");
        return kLinkAborted;
    }
    count = *number;
    return kLinkGood;
}

LinkStatus CSecurityCells::ExtractCSAvailableUsernames(std::vector<SUserName>& names) {
    LinkStatus status = kLinkGood;
    std::uint32_t length = 0;
    std::int64_t count = 0;
    const std::optional<std::int64_t> column = ReadNumber(cells::kSecurityColumn, status);
    if (!column || DetermineCSUsernameMaxLength(length) != kLinkGood ||
        ExtractCSUsernamesCount(count) != kLinkGood ||
        !ReadUserNames(static_cast<std::uint8_t>(*column & 0xFF), count, names, ENameTrace::Traced)) {
        TraceError(
            "CP32Wrap::ExtractCSAvailableUsernames : Error during obtaining list of usernames from the "
            "device.");
        return kLinkAborted;
    }
    return kLinkGood;
}

bool CSecurityCells::ExtractCSEd3SATSupported() {
    LinkStatus status = kLinkGood;
    const bool present = ReadFirstValue(cells::kSecondEditionProbe, status) != nullptr;
    TraceInfo("CP32Wrap::ExtractCSEd3SATSupported : CP32Wrap::GetValue: %d", static_cast<int>(status));
    return !present;
}

LinkStatus CSecurityCells::DetermineCSPasswordMaxLength(std::uint32_t& length) {
    constexpr std::uint32_t kLengths[] = {4, 8, 16}; // by version
    constexpr std::uint32_t kLongLength = 32;
    length = kLengths[0];
    std::uint32_t version = 0;
    if (ExtractCSVersion(version) != kLinkGood) {
        TraceInfo("CP32Wrap::DetermineCSPasswordMaxLength : Enable to extract CS version.");
        return kLinkAborted;
    }
    if (version < std::size(kLengths)) {
        length = kLengths[version];
    } else {
        length = ExtractCSEd3SATSupported() ? kLongLength : kLengths[2];
    }
    TraceInfo("CP32Wrap::DetermineCSPasswordMaxLength : Password length: %d", static_cast<int>(length));
    return kLinkGood;
}

LinkStatus CSecurityCells::DetermineCSUsernameMaxLength(std::uint32_t& length) {
    constexpr std::uint32_t kUntracedVersion = 2; // its names have the same length
    length = kUserNameLength;
    std::uint32_t version = 0;
    if (ExtractCSVersion(version) != kLinkGood) {
        TraceError(
            "CP32Wrap::DetermineCSUsernameMaxLength : Error during obtaining length of username from the "
            "device");
        return kLinkAborted;
    }
    if (version != kUntracedVersion) {
        TraceInfo("CP32Wrap::DetermineCSUsernameMaxLength : Username length: %d", static_cast<int>(length));
    }
    return kLinkGood;
}

LinkStatus CSecurityCells::DetermineCSSATSupported(bool& supported) {
    constexpr std::uint32_t kLastVersionWithout = 2;
    std::uint32_t version = 0;
    supported = false;
    if (ExtractCSVersion(version) != kLinkGood) {
        TraceInfo("CP32Wrap::DetermineCSSATSupported : Error during obtaining whether is Cyber Security SAT "
                  "supported.");
        return kLinkAborted;
    }
    // The probe cell is read only where it decides.
    supported = version > kLastVersionWithout && ExtractCSEd3SATSupported();
    TraceError("CP32Wrap::DetermineCSSATSupported(): Is Cyber Security SAT supported: %d", supported ? 1 : 0);
    return kLinkGood;
}

} // namespace ruvo
