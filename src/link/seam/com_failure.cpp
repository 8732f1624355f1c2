#include "link/seam/com_failure.h"

#include "link/seam/class_id.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace ruvo {

namespace {

constexpr std::uint32_t kNotRegistered = 0x80040154;
constexpr std::uint32_t kFileMissing = 0x80070002;

struct SFailureRow {
    std::uint32_t code;
    std::string_view words;
    std::string_view advice; ///< %A: the account
};

constexpr std::string_view kRegister = "run the server's program once with /RegServer, as administrator";
constexpr std::string_view kGrant =
    "as administrator run dcomcnfg (for a 32-bit server on a 64-bit Windows: mmc comexp.msc /32), open "
    "Component Services, Computers, My Computer, DCOM Config, P32LS, Properties, Security, and allow %A: \"Local Launch\" and \"Local Activation\" under Launch and Activation "
    "Permissions, \"Local Access\" under Access Permissions";
constexpr std::string_view kIdentity =
    "as administrator run dcomcnfg (for a 32-bit server on a 64-bit Windows: mmc comexp.msc /32), open "
    "Component Services, Computers, My Computer, DCOM Config, P32LS, Properties, Identity, and correct the account or its password, or choose \"The launching user\"";
constexpr std::string_view kSeeEvents =
    "look for the server's program in the Event Viewer, under Windows Logs, Application and System, and start it by "
    "hand once to see what it shows";

constexpr std::array kRows{
    SFailureRow{kNotRegistered, "the server is not registered", kRegister},
    SFailureRow{0x80040111, "the server's library does not have the class", kRegister},
    SFailureRow{0x80004002, "the server has no such interface, or its type library is not registered",
                kRegister},
    SFailureRow{0x8002801D, "the server's type library is not registered", kRegister},
    SFailureRow{0x80029C4A, "the server's type library cannot be loaded", kRegister},
    SFailureRow{0x80070005, "access denied", kGrant},
    SFailureRow{0x8000401B, "access denied: this account may not start the server", kGrant},
    SFailureRow{0x8000401A, "the account under which the server is to run cannot log on", kIdentity},
    SFailureRow{0x80004015, "the server runs under another account than the one that is set for it",
                kIdentity},
    SFailureRow{0x8007052E, "the account under which the server is to run cannot log on", kIdentity},
    SFailureRow{0x80080005, "the server's program was started, but did not report within the system's time",
                kSeeEvents},
    SFailureRow{0x800706BA,
                "the server cannot be reached: its program has ended, or the service \"RPC\" does not run",
                kSeeEvents},
    SFailureRow{0x800706BE, "the server's program crashed during the call", kSeeEvents},
    SFailureRow{0x80010108, "the server's program has ended", kSeeEvents},
    SFailureRow{0x80010105, "the server failed in the call", kSeeEvents},
    SFailureRow{0x80010012, "the server's program died before the call", kSeeEvents},
    SFailureRow{kFileMissing, "the server's program or library is not where it is registered", kRegister},
    SFailureRow{0x80070003, "the folder of the server's program is not where it is registered", kRegister},
    SFailureRow{0x8007007E, "the server's library, or one that it needs, is missing",
                "install the server again"},
    SFailureRow{0x800700C1, "the server's library is for programs of the other kind (32 or 64 bits)",
                "use the ruvo of the server's kind"},
    SFailureRow{0x80070422, "the server's service is disabled", "enable it in services.msc"},
    SFailureRow{0x8007000E, "out of memory", "end other programs, or restart the machine"},
};

std::string Replaced(std::string_view text, const std::string& account) {
    std::string replaced(text);
    if (const std::size_t at = replaced.find("%A"); at != std::string::npos) {
        replaced.replace(at, 2, account.empty() ? "the account of this program" : "the account " + account);
    }
    return replaced;
}

std::string BitsText(unsigned bits) {
    return std::to_string(bits) + "-bit programs";
}

std::string RegistrationText(const SServerRegistration& registration) {
    return "for " + BitsText(registration.bits) + " (" + (registration.isProgram ? "program " : "library ") +
           registration.path + (registration.isFileThere ? ")" : ", which does not exist)");
}

/// A library serves programs of its own kind alone.
bool IsOnlyForOthers(const SComFailure& failure) {
    return !failure.registrations.empty() &&
           std::ranges::none_of(failure.registrations, [&](const SServerRegistration& registration) {
               return registration.isProgram || registration.bits == failure.bits;
           });
}

std::string RegistrationsText(const SComFailure& failure) {
    std::string text =
        "; this is a program of " + std::to_string(failure.bits) + " bits, and the server is registered ";
    if (failure.registrations.empty()) {
        return text + "for none";
    }
    for (const SServerRegistration& registration : failure.registrations) {
        text +=
            (&registration == &failure.registrations.front() ? "" : " and ") + RegistrationText(registration);
    }
    return text;
}

} // namespace

std::string DescribeComFailure(const SComFailure& failure) {
    std::array<char, 16> code{};
    std::snprintf(code.data(), code.size(), "%08X", static_cast<unsigned>(failure.code));
    std::string text = "comms server P32LS, class " + std::string(kServerClassId) + ": " +
                       std::string(failure.step) + " failed with " + code.data();
    const bool areGone = !failure.registrations.empty() &&
                         std::ranges::none_of(failure.registrations, &SServerRegistration::isFileThere);
    const std::uint32_t meant = failure.code == kNotRegistered && areGone ? kFileMissing : failure.code;
    const auto* const row = std::ranges::find(kRows, meant, &SFailureRow::code);
    if (meant == kNotRegistered && IsOnlyForOthers(failure)) {
        text += ", the server is registered for " + BitsText(failure.registrations.front().bits) +
                " alone; use the ruvo of that kind";
    } else if (row != kRows.end()) {
        text += ", " + std::string(row->words) + "; " + Replaced(row->advice, failure.account);
    } else {
        text += ", " + failure.system;
    }
    return text + RegistrationsText(failure);
}

} // namespace ruvo
