#pragma once
// What the SQL Server tests share: a session whose statement runner is
// observable (the statements the real routines send are recorded, and the
// few questions they ask the server are answered from a script), a server
// address that refuses at once, and the live server's attributes when the
// environment gives them (ZOLSDK_MSSQL_ATTRS).
#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <map>
#include <vector>

#include "common/failure.hpp"
#include "catalog/attributes.hpp"
#include "sessions/mssql_session.hpp"
#include "zolsdk/catalog/error_numbers.hpp"
#include "platform/ado/connection.hpp"
#include "platform/ado/rowset_feed.hpp"

namespace zolsdk::mssqltest {

using zoltest::Failure;

// Nothing listens on port 1 of the loopback: a connection there is refused
// at once.
inline constexpr char16_t kRefusingServer[] = u"dblocation=127.0.0.1;port=1;protocol=1;username=sa;password=pw";

// The live server's attribute string, or empty when none is given.
inline String LiveAttributes() {
    const char* env = std::getenv("ZOLSDK_MSSQL_ATTRS");
    return env && *env ? FromUtf8(env) : String();
}

#define ZOLSDK_REQUIRE_LIVE_SERVER()                                                                            \
    if (::zolsdk::mssqltest::LiveAttributes().empty())                                                          \
    GTEST_SKIP() << "no SQL Server to test against: set ZOLSDK_MSSQL_ATTRS to its attribute string "            \
                    "(dbtype=mssql;dblocation=...;protocol=1;port=...;username=...;password=...)"

// DbMsSqlDB with its statement family recorded instead of sent. Scalars
// are answered by the first scripted fragment the statement contains
// (the default otherwise); rowsets by a scripted single-field rowset.
class RecordingSession : public DbMsSqlDB {
public:
    std::vector<String> sent;
    std::vector<std::pair<String, String>> scalars;                      // fragment -> answer
    std::vector<std::pair<String, std::pair<String, std::vector<String>>>> rowsets; // fragment -> field, values
    String failOn;                                                       // fragment whose statement fails

    Ref<ado::Recordset> Execute(const String& psSQL) override {
        Record(psSQL);
        for (const auto& [fragment, answer] : rowsets) {
            if (psSQL.find(fragment) == String::npos) continue;
            Ref<ado::Recordset> rs = ado::NewRowset({{answer.first.c_str(), ado::adType::VarWChar, 128}});
            for (const String& v : answer.second) ado::RowsetFeed::AppendRow(*rs, {Variant(v)});
            if (rs->RecordCount() > 0) rs->MoveFirst();
            return rs;
        }
        return ado::NewRowset({{u"unused", ado::adType::VarWChar, 128}});
    }
    int32_t ExecuteNoQuery(const String& psSQL) override {
        Record(psSQL);
        return 0;
    }
    String ExecuteScalar(const String& psSQL, const String& psDefault) override {
        Record(psSQL);
        for (const auto& [fragment, answer] : scalars)
            if (psSQL.find(fragment) != String::npos) return answer;
        return psDefault;
    }

    // A server with full-text search, a database with it switched on or off.
    void FullTextServer(bool databaseEnabled) {
        scalars.push_back({u"IsFulltextInstalled", u"1"});
        scalars.push_back({u"IsFulltextEnabled", databaseEnabled ? u"1" : u"0"});
    }

    using DbMsSqlDB::DatabaseStatement;
    using DbMsSqlDB::FTSCatalogTableExists;
    using DbMsSqlDB::GetConnectionString;
    using DbMsSqlDB::GetFTSPopulateStatus;
    using DbMsSqlDB::PopulateFTSCatalog;
    using DbMsSqlDB::SetFTSChangeTracking;
    using DbMsSqlDB::WordDatabaseFailure;

private:
    void Record(const String& sql) {
        sent.push_back(sql);
        if (!failOn.empty() && sql.find(failOn) != String::npos)
            throw DbError(errnum::Unexpected, u"ZolSDK => \r\nDbMsSqlDB:ExecuteNoQuery Ln 1", u"refused: " + sql);
    }
};

inline bool Contains(const String& text, StringView part) { return text.find(part) != String::npos; }

} // namespace zolsdk::mssqltest
