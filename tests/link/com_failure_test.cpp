// Why COM does not start the comms server, in words.
#include "link/seam/com_failure.h"
#include "support/case_table.h"
#include "support/contains.h"

#include <sstream>

namespace ruvo::test {

TEST(ComFailure, SaysWhatToDo) {
    ForEachCase<4>("link/com_failures.txt", [](auto& code, auto& registrations, auto& bits, auto& words) {
        SComFailure failure{.code = static_cast<std::uint32_t>(std::stoul(code, nullptr, 16)),
                            .step = "creating it",
                            .system = "the system's words",
                            .account = "SITE\\night",
                            .bits = static_cast<unsigned>(std::stoi(bits)),
                            .registrations = {}};
        std::istringstream each(registrations);
        for (std::string one; each >> one;)
            failure.registrations.push_back({static_cast<unsigned>(std::stoi(one)), one[2] == 'P',
                                             "C:\\P32LS\\server", !one.ends_with('!')});
        const std::string text = DescribeComFailure(failure);
        EXPECT_TRUE(text.starts_with("comms server P32LS, class {9A69E99F-")) << text;
        EXPECT_TRUE(Contains(text, "creating it failed with " + code));
        std::istringstream wanted(words);
        for (std::string part; std::getline(wanted, part, '~');)
            EXPECT_TRUE(Contains(text, part));
    });
    const SComFailure denied{
        .code = 0x80070005, .step = "creating it", .system = {}, .account = {}, .registrations = {}};
    EXPECT_TRUE(
        Contains(DescribeComFailure(denied), " and allow the account of this program: \"Local Launch\""));
}

} // namespace ruvo::test
