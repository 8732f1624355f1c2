#include "tools/archive/archive_schema.h"

#include "tools/archive/archive_scripts.h"
#include "tools/archive/archive_update.h"

#include <array>
#include <string>
#include <vector>

namespace ruvo {

namespace {

constexpr std::int64_t kApplicationId = 0x5255564F; // "RUVO"

/// Of each version the script that makes its schema.
const std::array kScripts{kArchiveSchema1, kArchiveSchema2};
constexpr std::int64_t kCurrentVersion = std::tuple_size_v<decltype(kScripts)>;

struct SState {
    std::int64_t version;
    bool isEmpty;
};

void MakeSchema(CDatabase& database, std::int64_t version) {
    database.Run(kScripts.at(static_cast<std::size_t>(version - 1)));
}

/// The whole schema, without the statistics tables of SQLite's ANALYZE.
std::vector<std::string> SchemaTexts(CDatabase& database) {
    CStatement rows(database, "SELECT type || ' ' || name || ' ' || tbl_name || ' ' || ifnull(sql, '') "
                              "FROM sqlite_schema WHERE ifnull(sql, '') NOT IN "
                              "('CREATE TABLE sqlite_stat1(tbl,idx,stat)', "
                              "'CREATE TABLE sqlite_stat4(tbl,idx,neq,nlt,ndlt,sample)') ORDER BY 1");
    std::vector<std::string> texts;
    while (rows.Step()) {
        texts.push_back(rows.TextAt(0));
    }
    return texts;
}

/// A view in place of a table may never end, and a trigger may undo what is added: only a schema that this
/// program created is accepted.
void RequireOwnSchema(CDatabase& database, std::int64_t version) {
    CDatabase own;
    if (version > 0) {
        MakeSchema(own, version);
    }
    if (SchemaTexts(database) != SchemaTexts(own)) {
        throw CDatabaseError("not an archive of ruvoctl: its tables, views or triggers were modified; "
                             "move the file away and create the archive again from the day files");
    }
}

SState RequireArchive(CDatabase& database) {
    const bool isEmpty = database.Number("SELECT count(*) FROM sqlite_schema") == 0;
    if (!isEmpty && database.Number("PRAGMA application_id") != kApplicationId) {
        throw CDatabaseError("a database of another program, not an archive; use another file");
    }
    const std::int64_t version = database.Number("PRAGMA user_version");
    if (version < 0 || (version == 0 && !isEmpty)) {
        throw CDatabaseError(
            "an archive of version " + std::to_string(version) +
            ", which does not exist; move the file away and create the archive again from the day files");
    }
    if (version > kCurrentVersion) {
        throw CDatabaseError("written by a newer ruvoctl (archive version " + std::to_string(version) +
                             "); use that version of ruvoctl");
    }
    RequireOwnSchema(database, version);
    return {version, isEmpty};
}

} // namespace

EArchiveAge BringUpToDate(CDatabase& database) {
    const auto set = [&database](const char* name, std::int64_t value) {
        database.Run(("PRAGMA " + std::string(name) + " = " + std::to_string(value)).c_str());
    };
    database.Run("BEGIN IMMEDIATE");
    const SState state = RequireArchive(database);
    if (state.isEmpty) {
        MakeSchema(database, kCurrentVersion);
    } else if (state.version < kCurrentVersion) {
        UpdateArchive1(database, kScripts.back());
    }
    set("application_id", kApplicationId);
    set("user_version", kCurrentVersion);
    database.Run("COMMIT");
    return state.isEmpty                     ? EArchiveAge::New
           : state.version < kCurrentVersion ? EArchiveAge::Updated
                                             : EArchiveAge::Current;
}

void RequireCurrent(CDatabase& database) {
    const SState state = RequireArchive(database);
    if (state.isEmpty) {
        throw CDatabaseError("an empty database; fill it with ruvoctl archive");
    }
    if (state.version < kCurrentVersion) {
        throw CDatabaseError("written by an older ruvoctl; run ruvoctl archive once to update it");
    }
}

} // namespace ruvo
