#include "sessions/mssql_session.hpp"

#include "catalog/raise_error.hpp"
#include "readers/mssql_reader.hpp"
#include "sessions/open_connection.hpp"
#include "sessions/session_factory.hpp"
#include "platform/failure_chain.hpp"

namespace zolsdk {

Ref<IDBSession> NewDbMsSqlDB() { return Ref<DbMsSqlDB>::New(); }

namespace {
constexpr char16_t kLitGetConnectionString[] = u"DbMsSqlDB:GetConnectionString Ln ";
constexpr char16_t kLitCreateDB[] = u"DbMsSqlDB:CreateDB Ln ";
constexpr char16_t kLitDropDB[] = u"DbMsSqlDB:DropDB Ln ";
} // namespace

DbMsSqlDB::DbMsSqlDB()
    : AdoSession(DbMsSqlDBId, u"DbMsSqlDB",
                 // Full-text search is the server's answer (FullTextSearchSupported).
                 SessionFeatures{/*fullTextSearch=*/false, /*connectionPooling=*/true,
                                 /*createIndexInCreateTable=*/false, /*multiRowInsert=*/false}) {}

String DbMsSqlDB::GetConnectionString(bool pbServer) {
    ZOL_ROUTINE(kLitGetConnectionString);
    try {
        ZOL_LN; String dbname = AttributeValue(u"dbname");
        ZOL_LN; String location = AttributeValue(u"dblocation");
        ZOL_LN; String username = AttributeValue(u"username");
        ZOL_LN; String password = AttributeValue(u"password");
        ZOL_LN; String port = AttributeValue(u"port");
        ZOL_LN; String authMode = AttributeValue(u"auth_mode");
        // Every caller must name the network library: no number, no session.
        ZOL_LN; int16_t protocol = Variant(AttributeValue(u"protocol")).ToInteger();

        String network, portPart;
        switch (protocol) {
        case 1:
            network = u"Network Library=DBMSSOCN;";
            portPart = u"," + (port.empty() ? IntText(kDefaultPort) : port);
            break;
        case 2: network = u"Network Library=DBNMPNTW;"; break;
        case 3: network = u"Network Library=DBMSSPXN;"; break;
        case 4: network = u"Network Library=DBMSRPCN;"; break;
        default: break;
        }
        String login = EqualsNoCase(authMode, u"os")
                           ? String(u"Integrated Security=SSPI;")
                           : u"User ID=" + username + u";Password=" + password + u";";
        String text = u"Provider=SQLOLEDB.1;Persist Security Info=False;" + network + login;
        if (!pbServer) text += u"Initial Catalog=" + dbname + u";";
        text += u"Data Source=" + location + portPart + u";";
        return text;
    } ZOL_RERAISE
}

Ref<IDBReader> DbMsSqlDB::MakeReader() { return Ref<DbMsSQLReader>::New(); }

void DbMsSqlDB::BeforeStatement(StatementKind kind, ado::Connection& connection) {
    if (kind != StatementKind::AsyncRows) connection.CommandTimeout(0);
}

String DbMsSqlDB::DatabaseStatement(bool create) {
    Ref<IDbSqlBuilder> builder = DbSqlBuilder();
    String dbname = AttributeValue(u"dbname");
    return create ? builder->CreateDBSql(dbname) : builder->DropDBSql(dbname);
}

DbError DbMsSqlDB::WordDatabaseFailure(DbError failure, bool create, int line) {
    failure.AppendTrace(create ? kLitCreateDB : kLitDropDB, line);
    if (failure.Source().find(kLibrarySource) != String::npos) return failure;
    int32_t number = create ? errnum::CreateDbFailed : failure.Number();
    return DbError(number, String(kLibrarySource) + u" => \r\n" + failure.Source(),
                   u"ErrNo: " + IntText(number) + u"\r\nErrDescription: " + failure.Description());
}

bool DbMsSqlDB::CreateOrDropDB(bool create) {
    ZOL_ROUTINE(create ? kLitCreateDB : kLitDropDB);
    Ref<ado::Connection> connection;
    try {
        ZOL_LN; connection = Ref<ado::Connection>::New();
        ZOL_LN; String sql = DatabaseStatement(create);
        ZOL_LN; OpenConnection_Server(connection, GetConnectionString(true), SelfRef<IDBSession>(this));
        int32_t affected = 0;
        ZOL_LN; connection->Execute(sql, affected, ado::adExecuteNoRecords);
        ZOL_LN; zolsdk::CloseConnection(connection);
        connection.Release();
        return affected > 0;
    } catch (...) {
        DbError out = WordDatabaseFailure(CurrentFailure(), create, zol_mark_.line);
        if (connection) {
            try {
                if (connection->State() == ado::adStateOpen) connection->Close();
            } catch (...) {
                // The failure being reported matters more than a refused close.
            }
            connection.Release();
        }
        throw out;
    }
}

bool DbMsSqlDB::CreateDB() { return CreateOrDropDB(true); }

bool DbMsSqlDB::DropDB() { return CreateOrDropDB(false); }

} // namespace zolsdk
