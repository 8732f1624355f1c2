#include "tools/visit/visit_options.h"

#include "base/text.h"
#include "tools/given_time.h"

#include <algorithm>

namespace ruvo {

namespace {

/// A pause may also be of seconds.
std::optional<std::int64_t> ParsePause(const std::string& text) {
    constexpr std::size_t kLongest = 6;
    const bool isSeconds = text.size() > 1 && text.size() <= kLongest && text.ends_with('s') &&
                           std::all_of(text.begin(), text.end() - 1, IsDigit);
    return isSeconds ? std::optional<std::int64_t>(std::stoi(text)) : ParseLength(text);
}

} // namespace

std::optional<SRetry> ReadRetry(const CArguments& arguments) {
    SRetry retry;
    if (const std::string number = arguments.Get("--retry"); arguments.Has("--retry")) {
        if (number.size() != 1 || !IsDigit(number.front())) {
            return std::nullopt;
        }
        retry.most = static_cast<unsigned>(number.front() - '0');
    }
    if (arguments.Has("--after")) {
        const auto length = ParsePause(arguments.Get("--after"));
        if (!length) {
            return std::nullopt;
        }
        retry.after = std::chrono::seconds(*length);
    }
    return retry;
}

} // namespace ruvo
