#include "tools/archive/database.h"

#include "platform/file_replacement.h"
#include "tools/file_path.h"
#include "tools/whole_file.h"

#include <sqlite3.h>

#include <algorithm>
#include <array>

namespace ruvo {

namespace {

constexpr int kBusyTimeoutMilliseconds = 10'000; // for another program that writes

/// Some names have a special meaning for SQLite; none of them starts like this.
std::string PlainFileName(const std::string& path) {
    return FilePath(path).has_root_path() ? path : "./" + path;
}

struct SAdvice {
    int code;
    std::string_view text;
};
constexpr std::array kAdvice{
    SAdvice{SQLITE_BUSY,
            "another program, such as a search or a backup, is using it; run again when it has finished"},
    SAdvice{SQLITE_LOCKED, "another program is using it; run again when it has finished"},
    SAdvice{SQLITE_CANTOPEN,
            "check that it exists, and that you may read it and its folder (to archive: write them)"},
    SAdvice{SQLITE_READONLY, "you need write permission for the file and its folder"},
    SAdvice{SQLITE_PERM, "you need write permission for the file and its folder"},
    SAdvice{SQLITE_FULL, "free some disk space and run again; archived records are kept"},
    SAdvice{SQLITE_IOERR, "the disk or its file system failed; keep the archive on a local disk"},
    SAdvice{SQLITE_CORRUPT, "move the file away and create the archive again from the day files"},
    SAdvice{SQLITE_NOTADB, "use an archive, or a file that does not exist yet"},
};

/// SQLite's message, and what to do.
std::string FailureText(int code, const char* words) {
    std::string text = words;
    constexpr int kPrimaryBits = 0xFF; // the others distinguish variants of one failure
    const auto* const advice =
        std::ranges::find(kAdvice, code & kPrimaryBits, [](const SAdvice& row) { return row.code; });
    if (advice != kAdvice.end()) {
        text += "; ";
        text += advice->text;
    }
    return text;
}

// A journal may name a super-journal, for a transaction over several databases, which SQLite deletes at the
// end. No archive is ever part of such a transaction, and an attacker could name any file in the journal.
int OpenNoSuperJournal(sqlite3_vfs* /*own*/, const char* name, sqlite3_file* file, int flags, int* given) {
    if ((flags & SQLITE_OPEN_SUPER_JOURNAL) != 0) {
        file->pMethods = nullptr; // nothing to close
        return SQLITE_CANTOPEN;
    }
    sqlite3_vfs* const system = sqlite3_vfs_find(nullptr);
    return system->xOpen(system, name, file, flags, given);
}

/// SQLite's file system without super-journals.
const char* FileSystemName() {
    static sqlite3_vfs files = [] {
        sqlite3_vfs own = *sqlite3_vfs_find(nullptr);
        own.zName = "archive";
        own.xOpen = &OpenNoSuperJournal;
        return own;
    }();
    static const bool isKnown = sqlite3_vfs_register(&files, 0) == SQLITE_OK;
    return isKnown ? files.zName : "none";
}

} // namespace

// SQLite would create and change a file through another user's symbolic link. It never opens its journal
// through a link.
CDatabase::CDatabase(const std::string& path, EDatabaseAccess access) {
    if (access == EDatabaseAccess::Read) {
        Open(PlainFileName(path).c_str(), SQLITE_OPEN_READONLY);
        return;
    }
    std::string resolved;
    if (const SAccessResult result = ResolveOutputPath(path, resolved); !result.Good()) {
        throw CDatabaseError(OutputFailureText(result));
    }
    Open(PlainFileName(resolved).c_str(), SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOFOLLOW);
}

CDatabase::CDatabase() {
    Open(":memory:", SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
}

void CDatabase::Open(const char* name, int flags) {
    sqlite3* handle = nullptr;
    const int result = sqlite3_open_v2(name, &handle, flags | SQLITE_OPEN_NOMUTEX, FileSystemName());
    m_handle.reset(handle);
    if (handle == nullptr) {
        throw CDatabaseError(FailureText(result, sqlite3_errstr(result)));
    }
    if (result != SQLITE_OK ||
        sqlite3_db_config(handle, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr) != SQLITE_OK ||
        sqlite3_db_config(handle, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr) != SQLITE_OK) {
        Fail();
    }
    sqlite3_busy_timeout(handle, kBusyTimeoutMilliseconds);
}

void CDatabase::TrustSchema() {
    if (sqlite3_db_config(Handle(), SQLITE_DBCONFIG_TRUSTED_SCHEMA, 1, nullptr) != SQLITE_OK) {
        Fail();
    }
}

void CDatabase::Run(const char* statements) {
    if (sqlite3_exec(Handle(), statements, nullptr, nullptr, nullptr) != SQLITE_OK) {
        Fail();
    }
}

std::int64_t CDatabase::Number(std::string_view query) {
    CStatement statement(*this, query);
    return statement.Step() ? statement.NumberAt(0) : 0;
}

std::int64_t CDatabase::LastId() const {
    return sqlite3_last_insert_rowid(Handle());
}

void CDatabase::Fail() const {
    throw CDatabaseError(FailureText(sqlite3_errcode(Handle()), sqlite3_errmsg(Handle())));
}

void CDatabase::SClose::operator()(sqlite3* handle) const {
    sqlite3_close_v2(handle);
}

CStatement::CStatement(CDatabase& database, std::string_view sql) : m_database(database) {
    sqlite3_stmt* handle = nullptr;
    const int result =
        sqlite3_prepare_v2(database.Handle(), sql.data(), static_cast<int>(sql.size()), &handle, nullptr);
    m_handle.reset(handle);
    Check(result);
}

CStatement& CStatement::BindNull() {
    return Check(sqlite3_bind_null(m_handle.get(), m_next++));
}

CStatement& CStatement::Bind(std::int64_t number) {
    return Check(sqlite3_bind_int64(m_handle.get(), m_next++, number));
}

CStatement& CStatement::Bind(std::string_view text) {
    return Check(sqlite3_bind_text64(m_handle.get(), m_next++, text.data() != nullptr ? text.data() : "",
                                     text.size(), SQLITE_STATIC, SQLITE_UTF8));
}

CStatement& CStatement::Bind(std::span<const std::uint8_t> bytes) {
    return Check(sqlite3_bind_blob64(m_handle.get(), m_next++, bytes.data(), bytes.size(), SQLITE_STATIC));
}

bool CStatement::Step() {
    const int result = sqlite3_step(m_handle.get());
    if (result != SQLITE_ROW && result != SQLITE_DONE) {
        m_database.Fail();
    }
    return result == SQLITE_ROW;
}

void CStatement::Rewind() {
    sqlite3_reset(m_handle.get()); // returns the result of the last step, which was checked
    m_next = 1;
}

std::int64_t CStatement::NumberAt(int column) const {
    return sqlite3_column_int64(m_handle.get(), column);
}

std::string CStatement::TextAt(int column) const {
    const unsigned char* const text = sqlite3_column_text(m_handle.get(), column);
    const auto size = static_cast<std::size_t>(sqlite3_column_bytes(m_handle.get(), column));
    return text != nullptr ? std::string(reinterpret_cast<const char*>(text), size) : std::string();
}

std::span<const std::uint8_t> CStatement::BytesAt(int column) const {
    const void* const bytes = sqlite3_column_blob(m_handle.get(), column);
    const auto size = static_cast<std::size_t>(sqlite3_column_bytes(m_handle.get(), column));
    return {static_cast<const std::uint8_t*>(bytes), bytes != nullptr ? size : 0};
}

CStatement& CStatement::Check(int result) {
    if (result != SQLITE_OK) {
        m_database.Fail();
    }
    return *this;
}

void CStatement::SFinalize::operator()(sqlite3_stmt* handle) const {
    sqlite3_finalize(handle);
}

} // namespace ruvo
