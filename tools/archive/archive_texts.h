// Texts that occur again and again, stored once under a number.
#pragma once

#include "tools/archive/database.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

namespace ruvo {

/// A text gets a number when it is met for the second time: one that is never met again stays in its record.
/// All numbered texts are held in memory, so there is a limit to them.
class CArchiveTexts {
public:
    /// Reads the texts of the archive.
    explicit CArchiveTexts(CDatabase& database);

    /// The text's number; none for one that is to be stored as it is.
    [[nodiscard]] std::optional<std::int64_t> NumberOf(const std::string& text);

private:
    [[nodiscard]] bool IsMetAgain(const std::string& text);
    [[nodiscard]] bool HasRoomFor(const std::string& text) const;
    void Remember(std::string text, std::int64_t number);

    static constexpr std::size_t kSlots = 65'536;

    CDatabase& m_database;
    CStatement m_put;
    std::unordered_map<std::string, std::int64_t> m_numbers;
    std::size_t m_bytes = 0;
    /// Hashes of texts met once. One takes the place of another: that text is then numbered later.
    std::unique_ptr<std::array<std::size_t, kSlots>> m_met =
        std::make_unique<std::array<std::size_t, kSlots>>();
};

} // namespace ruvo
