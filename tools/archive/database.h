// RAII owners for SQLite's objects. A failure throws CDatabaseError with SQLite's message and what to do.
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

/// One open database file. For writing it is created if missing, and only symbolic links of the user and of
/// root are followed. An open transaction is rolled back at the end. The file is not trusted: its schema can
/// neither damage it nor call functions with effects outside it, and its journal cannot make SQLite delete
/// another file.
class CDatabase {
public:
    CDatabase(const std::string& path, EDatabaseAccess access);
    /// A database in memory.
    CDatabase();

    /// Lets triggers and views use virtual tables. Only for a schema that was verified.
    void TrustSchema();
    /// Runs statements without results.
    void Run(const char* statements);
    /// The first column of the first row.
    [[nodiscard]] std::int64_t Number(std::string_view query);

    /// The row that was inserted last.
    [[nodiscard]] std::int64_t LastId() const;

    [[nodiscard]] sqlite3* Handle() const { return m_handle.get(); }
    [[noreturn]] void Fail() const;

private:
    void Open(const char* name, int flags);

    struct SClose {
        void operator()(sqlite3* handle) const;
    };
    std::unique_ptr<sqlite3, SClose> m_handle;
};

/// A prepared statement; its database must outlive it. A bound value must live until the statement has run;
/// a column's value lives until the next Step.
class CStatement {
public:
    CStatement(CDatabase& database, std::string_view sql);

    /// Binds the next parameter; Rewind starts over.
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
