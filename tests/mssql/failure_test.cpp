// How the SQL Server session fails when it cannot reach its server or is
// asked for a form that cannot work here: the library's connection failure
// with a reason a person can act on, and the chain of routines it passed.
#include "mssql_support.hpp"
#include "readers/mssql_reader.hpp"
#include "zolsdk/catalog/catalog.hpp"

namespace zolsdk::mssqltest {
namespace {

const String kFailedShop = u"Failed to connect to database 'shop'. (Reason: ErrNo:-2147467259\r\n Details:";

Ref<DbMsSqlDB> Session(const String& attributes) {
    auto s = Ref<DbMsSqlDB>::New();
    s->Connect(attributes);
    return s;
}

bool StartsWith(const String& text, const String& head) { return text.compare(0, head.size(), head) == 0; }

TEST(MsSqlFailures, AnUnreachableServerFailsEveryStatementWithTheConnectionFailure) {
    auto s = Session(u"dbname=shop;" + String(kRefusingServer));
    const std::vector<std::pair<const char16_t*, std::function<void()>>> statements = {
        {u"DbMsSqlDB:Execute Ln ", [&] { s->Execute(u"SELECT 1"); }},
        {u"DbMsSqlDB:ExecuteNoQuery Ln ", [&] { s->ExecuteNoQuery(u"DELETE FROM t"); }},
        {u"DbMsSqlDB:IDBSession_ExecuteNoQueryEx Ln ", [&] { s->ExecuteNoQueryEx(u"DELETE FROM t", nullptr); }},
        {u"DbMsSqlDB:ExecuteScalar Ln ", [&] { s->ExecuteScalar(u"SELECT 1", u"d"); }},
        {u"DbMsSqlDB:OpenConnection Ln ", [&] { s->BeginTransaction(); }},
    };
    for (const auto& [literal, run] : statements) {
        SCOPED_TRACE(ToUtf8(literal));
        DbError e = Failure(run);
        EXPECT_EQ(e.Number(), errnum::ConnectFailed);
        EXPECT_TRUE(StartsWith(e.Description(), kFailedShop));
        EXPECT_TRUE(Contains(e.Description(), u"No SQL Server answered at 127.0.0.1, port 1 over TCP/IP"));
        EXPECT_TRUE(Contains(e.Description(), u"Unable to connect")) << "the driver's own words stay";
        // The driver's error list is in the trace; the routine is its last line.
        EXPECT_TRUE(StartsWith(e.Source(), u"ZolSDK => "));
        EXPECT_TRUE(Contains(e.Source(), u"][ODBC Provider][08S01] [FreeTDS]"));
        EXPECT_TRUE(Contains(e.Source(), u" => \r\nDbMsSqlDB:OpenConnection Ln "));
        EXPECT_EQ(e.Source().substr(e.Source().rfind(u" => \r\n") + 6, String(literal).size()), literal);
        EXPECT_TRUE(s->ActiveConnection().IsNothing()) << "nothing is left open";
    }
    s->Disconnect();
    DbError e = Failure([&] { s->ExecuteScalar(u"SELECT 1", u""); });
    EXPECT_EQ(e.Number(), errnum::DbNotInitialized);
}

TEST(MsSqlFailures, FormsThatCannotWorkHereFailAtTheFirstStatement) {
    const std::vector<std::pair<String, String>> cases = {
        {u"protocol=1;auth_mode=OS", u"Integrated security (the system's own login) is not available on this system"},
        {u"protocol=2", u"Named pipes (Network Library=DBNMPNTW) is not available on this system"},
        {u"protocol=3", u"IPX/SPX (Network Library=DBMSSPXN) is not available on this system"},
        {u"protocol=4", u"Multiprotocol RPC (Network Library=DBMSRPCN) is not available on this system"},
        {u"protocol=1;port=http", u"'http' is not a port number"},
    };
    for (const auto& [attributes, reason] : cases) {
        SCOPED_TRACE(ToUtf8(attributes));
        auto s = Session(u"dbname=shop;dblocation=db.example;" + attributes); // opens nothing yet
        DbError e = Failure([&] { s->ExecuteNoQuery(u"SELECT 1"); });
        EXPECT_EQ(e.Number(), errnum::ConnectFailed);
        EXPECT_TRUE(StartsWith(e.Description(), kFailedShop + reason));
        EXPECT_TRUE(Contains(e.Source(), u"[ODBC Provider][08001] "));
    }
}

TEST(MsSqlFailures, DatabaseCreationAndTheReaderUseConnectionsOfTheirOwn) {
    auto s = Session(u"dbname=shop;" + String(kRefusingServer));
    // Server-level: the message names the server, not the database.
    for (bool create : {true, false}) {
        DbError e = Failure([&] { create ? s->CreateDB() : s->DropDB(); });
        EXPECT_EQ(e.Number(), errnum::ConnectFailed);
        EXPECT_TRUE(Contains(e.Description(), u"Failed to connect to database '127.0.0.1'. (Reason: "));
        EXPECT_TRUE(Contains(e.Source(), u" => \r\nOpenConnection_Server Ln "));
        EXPECT_TRUE(Contains(e.Source(), create ? u" => \r\nDbMsSqlDB:CreateDB Ln " : u" => \r\nDbMsSqlDB:DropDB Ln "));
    }
    auto catalog = Ref<DbCatalog>::New();
    catalog->Init(u"dbtype=mssql;dbname=shop;" + String(kRefusingServer));
    EXPECT_TRUE(Contains(Failure([&] { catalog->Create(); }).Source(), u"DbMsSqlDB:CreateDB Ln "));

    DbError e = Failure([&] { s->DbReader()->Tables(); });
    EXPECT_TRUE(StartsWith(e.Description(), u"Failed to connect to database 'shop'."));
    EXPECT_TRUE(Contains(e.Source(), u" => \r\nOpenConnection_DB Ln "));
    EXPECT_TRUE(Contains(e.Source(), u" => \r\nDbMsSQLReader:IDBReader_Tables Ln "));
    // A reader without its session says what is missing; where it opens a
    // connection, the connection routine words it, with no name to give.
    auto orphan = Ref<DbMsSQLReader>::New();
    e = Failure([&] { orphan->GetVersion(); });
    EXPECT_EQ(e.Number(), err::ObjectNotSet);
    EXPECT_EQ(e.Description().substr(e.Description().size() - 13), u" (DBSession).");
    e = Failure([&] { orphan->Keys(u"t"); });
    EXPECT_TRUE(StartsWith(e.Description(), u"Failed to connect to database ''. (Reason: ErrNo:91"));
}

TEST(MsSqlFailures, CreateAndDropReportTheProvidersWords) {
    DbError foreign(static_cast<int32_t>(0x80040E14u), u"Provider", u"Database 'shop' already exists.");
    DbError created = RecordingSession::WordDatabaseFailure(foreign, true, 42);
    EXPECT_EQ(created.Number(), errnum::CreateDbFailed);
    EXPECT_EQ(created.Description(), u"ErrNo: -2147160064\r\nErrDescription: Database 'shop' already exists.");
    EXPECT_EQ(created.Source(), u"ZolSDK => \r\nProvider => \r\nDbMsSqlDB:CreateDB Ln 42");
    DbError dropped = RecordingSession::WordDatabaseFailure(foreign, false, 7);
    EXPECT_EQ(dropped.Number(), static_cast<int32_t>(0x80040E14u));
    EXPECT_EQ(dropped.Description(), u"ErrNo: -2147217900\r\nErrDescription: Database 'shop' already exists.");
    EXPECT_EQ(dropped.Source(), u"ZolSDK => \r\nProvider => \r\nDbMsSqlDB:DropDB Ln 7");
    // The library's own failures keep number and words, and gain the line.
    DbError own(errnum::ConnectFailed, u"ZolSDK => \r\nOpenConnection_Server Ln 3", u"Failed to connect");
    DbError kept = RecordingSession::WordDatabaseFailure(own, true, 9);
    EXPECT_EQ(kept.Number(), errnum::ConnectFailed);
    EXPECT_EQ(kept.Description(), u"Failed to connect");
    EXPECT_EQ(kept.Source(), u"ZolSDK => \r\nOpenConnection_Server Ln 3 => \r\nDbMsSqlDB:CreateDB Ln 9");

    auto s = Ref<RecordingSession>::New();
    s->Connect(u"protocol=1;dbname=shop_2");
    EXPECT_EQ(s->DatabaseStatement(true), u"CREATE DATABASE shop_2");
    EXPECT_EQ(s->DatabaseStatement(false), u"DROP DATABASE shop_2");
}

} // namespace
} // namespace zolsdk::mssqltest
