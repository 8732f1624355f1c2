// SQLite with owners for what it hands out. A failure throws CDatabaseError with the library's words
// and what to do about it.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>

struct sqlite3;
struct sqlite3_stmt;

namespace ruvo {

class CDatabaseError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

enum class EDatabaseAccess : bool { Read, Write };

/// One open database file; made when it is missing and is to be written, which only the user's own links and
/// those of root lead to. What a transaction left open is
/// rolled back at the end. The file may come from anybody: what stands in its schema can neither damage it
/// nor call anything that reaches beyond it, and no journal beside it names another file to be removed.
class CDatabase {
public:
    CDatabase(const std::string& path, EDatabaseAccess access);
    /// One in memory, which goes with this.
    CDatabase();

    /// Lets triggers and views use virtual tables: for a schema that was found to be our own.
    void TrustSchema();
    /// Runs statements that give nothing back.
    void Run(const char* statements);
    /// The first column of the first row.
    [[nodiscard]] std::int64_t Number(std::string_view query);

    [[nodiscard]] sqlite3* Handle() const { return m_handle.get(); }
    [[noreturn]] void Fail() const;

private:
    void Open(const char* name, int flags);

    struct SClose {
        void operator()(sqlite3* handle) const;
    };
    std::unique_ptr<sqlite3, SClose> m_handle;
};

/// A prepared statement; its database must outlive it. What is bound must live until the statement has run;
/// what a column gives lives until the next Step.
class CStatement {
public:
    CStatement(CDatabase& database, std::string_view sql);

    /// Values go to the parameters one after the other; Rewind begins again.
    CStatement& BindNull();
    CStatement& Bind(std::int64_t number);
    CStatement& Bind(std::string_view text);
    CStatement& Bind(std::span<const std::uint8_t> bytes);
    /// True when there is a row.
    bool Step();
    /// Makes it ready to run again.
    void Rewind();

    [[nodiscard]] std::int64_t NumberAt(int column) const;
    [[nodiscard]] std::string TextAt(int column) const;
    [[nodiscard]] std::span<const std::uint8_t> BytesAt(int column) const;

private:
    struct SFinalize {
        void operator()(sqlite3_stmt* handle) const;
    };
    CStatement& Check(int result);

    CDatabase& m_database;
    std::unique_ptr<sqlite3_stmt, SFinalize> m_handle;
    int m_next = 1;
};

} // namespace ruvo
