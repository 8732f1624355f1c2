// What a person asks the archive for, as a query of the database.
#pragma once

#include "tools/archive/database.h"

#include <string>
#include <string_view>

namespace ruvo {

struct SFindQuery {
    std::string text;  ///< words; empty for all records
    std::string since; ///< as ParseTimeKey takes it; empty for none
    std::string until; ///< likewise
    std::string relay; ///< part of the relay's name; empty for all
};

/// The words in the language of the full-text index: all of them must be there, each as the beginning of a
/// word, or as a whole phrase where the person put it in quotes. Nothing in them is taken for an operator.
/// Empty when there is no letter and no digit to look for.
[[nodiscard]] std::string FullTextQuery(std::string_view text);

/// Columns relay, day_file, byte_offset, bytes, by time; records without a real time come last, and not at
/// all where a bound is given. The query must live as long as the statement.
class CFindStatement {
public:
    CFindStatement(CDatabase& database, const SFindQuery& query);

    [[nodiscard]] CStatement& Rows() { return m_statement; }

private:
    std::string m_match;
    std::string m_since;
    std::string m_until;
    std::string m_relay;
    CStatement m_statement;
};

} // namespace ruvo
