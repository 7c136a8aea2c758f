#include "sessions/mysql_session.hpp"

#include "catalog/raise_error.hpp"
#include "dialects/name_quoting.hpp"
#include "readers/mysql_reader.hpp"
#include "sessions/open_connection.hpp"
#include "sessions/session_factory.hpp"
#include "platform/failure_chain.hpp"

namespace zolsdk {

Ref<IDBSession> NewDbMySqlDB() { return Ref<DbMySqlDB>::New(); }

namespace {

constexpr char16_t kLitCreateDB[] = u"DbMySqlDB:CreateDB Ln ";
constexpr char16_t kLitDropDB[] = u"DbMySqlDB:DropDB Ln ";
constexpr char16_t kLitIsFTSEnabled[] = u"DbMySqlDB:IsFTSEnabled Ln ";
constexpr char16_t kLitEnableFTS[] = u"DbMySqlDB:EnableFTS Ln ";
constexpr char16_t kLitFTSTableColumnExists[] = u"DbMySqlDB:FTSTableColumnExists Ln ";
constexpr char16_t kLitEnableDisableFTS[] = u"DbMySqlDB:EnableDisableFTSOnMySQL Ln ";

} // namespace

DbMySqlDB::DbMySqlDB()
    : AdoSession(DbMySqlDBId, u"DbMySqlDB",
                 SessionFeatures{/*fullTextSearch=*/true, /*connectionPooling=*/true,
                                 /*createIndexInCreateTable=*/true, /*multiRowInsert=*/true}) {}

String DbMySqlDB::GetConnectionString(bool pbServer) {
    String port = AttributeValue(u"port");
    if (port.empty()) port = u"3306";
    String text = pbServer ? u"Driver=MySQL ODBC 5.1 Driver;DATABASE=mysql;SERVER=" + AttributeValue(u"dblocation")
                           : u"Driver=MySQL ODBC 5.1 Driver;DATABASE=" + AttributeValue(u"dbname") + u";SERVER=" +
                                 AttributeValue(u"dblocation");
    text += u";UID=" + AttributeValue(u"username") + u";" + u"PASSWORD=" + AttributeValue(u"password") + u";PORT=" +
            port + u";OPTION=" + IntText(kDriverOptions) + u";";
    return text;
}

Ref<IDBReader> DbMySqlDB::MakeReader() { return Ref<DbMySQLReader>::New(); }

bool DbMySqlDB::CreateOrDropDB(bool create) {
    ZOL_ROUTINE(create ? kLitCreateDB : kLitDropDB);
    Ref<ado::Connection> connection;
    try {
        ZOL_LN; connection = Ref<ado::Connection>::New();
        ZOL_LN; Ref<IDbSqlBuilder> builder = DbSqlBuilder();
        ZOL_LN; String sql = create ? builder->CreateDBSql(AttributeValue(u"dbname"))
                                    : builder->DropDBSql(AttributeValue(u"dbname"));
        ZOL_LN; OpenConnection_Server(connection, GetConnectionString(true), SelfRef<IDBSession>(this));
        int32_t affected = 0;
        ZOL_LN; connection->Execute(sql, affected, ado::adExecuteNoRecords);
        ZOL_LN; zolsdk::CloseConnection(connection);
        if (!create) {
            connection.Release();
            return true;
        }
        if (affected != 0) {
            connection.Release();
            return affected >= 1;
        }
        ZOL_LN; RaiseError(errnum::ErrCreateDb, u"DbMySqlDB:CreateDB");
    } catch (...) {
        DbError e = CurrentFailure();
        e.AppendTrace(zol_mark_.literal, zol_mark_.line);
        DbError out = WrapForeignFailure(std::move(e), nullptr);
        if (connection) {
            if (connection->State() == ado::adStateOpen) connection->Close();
            connection.Release();
        }
        throw out;
    }
}

bool DbMySqlDB::CreateDB() { return CreateOrDropDB(true); }

bool DbMySqlDB::DropDB() { return CreateOrDropDB(false); }

// ---- full-text search -------------------------------------------------------------
// A column is under full-text search when it has a full-text index; the
// catalog name plays no part.

bool DbMySqlDB::FTSTableColumnExists(const String& psTableName, const String& psColumnName) {
    ZOL_ROUTINE(kLitFTSTableColumnExists);
    try {
        ZOL_LN; String found = ExecuteScalar(u" SHOW INDEX FROM " + QuotedName(psTableName, kBacktickQuotes) +
                                                  u" WHERE Column_name = '" + EscapedText(psColumnName, true) +
                                                  u"' AND Index_type = 'FULLTEXT'",
                                              String());
        return !found.empty();
    } ZOL_RERAISE
}

bool DbMySqlDB::EnableDisableFTSOnMySQL(const String& psTableName, const String& psColumnName, bool pbEnable) {
    ZOL_ROUTINE(kLitEnableDisableFTS);
    try {
        if (pbEnable) {
            ZOL_LN; CheckBareName(psTableName, kBacktickQuotes, u"The table name");
            ZOL_LN; ExecuteNoQuery(u" ALTER TABLE " + psTableName + u" ADD FULLTEXT " +
                                   QuotedName(u"FT_" + psColumnName, kBacktickQuotes) + u" (" +
                                   QuotedName(psColumnName, kBacktickQuotes) + u") ");
        } else {
            ZOL_LN; CheckBareName(psTableName, kBacktickQuotes, u"The table name");
            ZOL_LN; ExecuteNoQuery(u" ALTER TABLE " + psTableName + u" DROP INDEX " +
                                   QuotedName(u"FT_" + psColumnName, kBacktickQuotes) + u" ");
        }
        return true;
    } ZOL_RERAISE
}

bool DbMySqlDB::IsFTSEnabled(const String&, const String& psTableName, const String& psColumnName) {
    ZOL_ROUTINE(kLitIsFTSEnabled);
    try {
        ZOL_LN; if (IsFeatureSupported(u"fts") && FTSTableColumnExists(psTableName, psColumnName)) return true;
        return false;
    } ZOL_RERAISE
}

bool DbMySqlDB::EnableFTS(const String&, const String& psTableName, const String& psColumnName) {
    ZOL_ROUTINE(kLitEnableFTS);
    try {
        // The index is added only where one exists already: that is how the
        // switch has always behaved, and callers depend on it.
        ZOL_LN; if (IsFeatureSupported(u"fts") && FTSTableColumnExists(psTableName, psColumnName))
            EnableDisableFTSOnMySQL(psTableName, psColumnName, true);
        return true;
    } ZOL_RERAISE
}

bool DbMySqlDB::DisableFTS(const String&, const String& psTableName, const String& psColumnName) {
    if (IsFeatureSupported(u"fts") && FTSTableColumnExists(psTableName, psColumnName))
        EnableDisableFTSOnMySQL(psTableName, psColumnName, false);
    return true;
}

} // namespace zolsdk
