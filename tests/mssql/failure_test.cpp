// How the SQL Server session fails when it cannot reach its server or is
// asked for a form that cannot work here: the library's connection failure
// with a reason a person can act on, and the chain of routines it passed.
#include "catalog/raise_error.hpp"
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

TEST(MsSqlFailures, AnUnreachableServerFailsEveryStatementWithTheConnectionFailure) {
    auto s = Session(u"dbname=shop;" + String(kRefusingServer));
    const std::vector<std::pair<const char16_t*, std::function<void()>>> statements = {
        {u"DbMsSqlDB:Execute Ln ", [&] { s->Execute(u"SELECT 1"); }},
        {u"DbMsSqlDB:ExecuteNoQuery Ln ", [&] { s->ExecuteNoQuery(u"DELETE FROM t"); }},
        {u"DbMsSqlDB:IDBSession_ExecuteNoQueryEx Ln ", [&] { s->ExecuteNoQueryEx(u"DELETE FROM t", nullptr); }},
        {u"DbMsSqlDB:ExecuteScalar Ln ", [&] { s->ExecuteScalar(u"SELECT 1", u"d"); }},
    };
    for (const auto& [literal, run] : statements) {
        SCOPED_TRACE(ToUtf8(literal));
        DbError e = Failure(run);
        EXPECT_EQ(e.Number(), errnum::ConnectFailed);
        EXPECT_EQ(e.Description().substr(0, kFailedShop.size()), kFailedShop);
        EXPECT_TRUE(Contains(e.Description(), u"No SQL Server answered at 127.0.0.1, port 1 over TCP/IP"));
        EXPECT_TRUE(Contains(e.Description(), u"Unable to connect")) << "the driver's own words stay";
        EXPECT_EQ(e.Description().back(), u')');
        // The driver's error list is in the trace, the open and the
        // statement are its last two lines.
        EXPECT_EQ(e.Source().substr(0, 10), u"ZolSDK => ");
        EXPECT_TRUE(Contains(e.Source(), u"][ODBC Provider][08S01] [FreeTDS]"));
        size_t open = e.Source().find(u" => \r\nDbMsSqlDB:OpenConnection Ln ");
        size_t statement = e.Source().find(String(u" => \r\n") + literal);
        ASSERT_NE(open, String::npos);
        ASSERT_NE(statement, String::npos);
        EXPECT_LT(open, statement);
        EXPECT_TRUE(s->ActiveConnection().IsNothing()) << "nothing is left open";
    }
    // A bracket fails at its start; nothing is held afterwards.
    DbError e = Failure([&] { s->BeginTransaction(); });
    EXPECT_EQ(e.Number(), errnum::ConnectFailed);
    EXPECT_TRUE(s->ActiveConnection().IsNothing());
    s->EndTransaction();

    // After Disconnect the session says it is not initialised instead.
    s->Disconnect();
    e = Failure([&] { s->ExecuteScalar(u"SELECT 1", u""); });
    EXPECT_EQ(e.Number(), errnum::DbNotInitialized);
    EXPECT_EQ(e.Description(), u"Database object not initialized.");
}

TEST(MsSqlFailures, FormsThatCannotWorkHereFailAtTheFirstStatement) {
    struct Case {
        String attributes, reason;
    };
    const std::vector<Case> cases = {
        {u"protocol=1;auth_mode=OS", u"Integrated security (the system's own login) is not available on this system"},
        {u"protocol=2", u"Named pipes (Network Library=DBNMPNTW) is not available on this system"},
        {u"protocol=3", u"IPX/SPX (Network Library=DBMSSPXN) is not available on this system"},
        {u"protocol=4", u"Multiprotocol RPC (Network Library=DBMSRPCN) is not available on this system"},
        {u"protocol=1;port=http", u"'http' is not a port number"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(ToUtf8(c.attributes));
        // Connect itself accepts them: it opens nothing.
        auto s = Session(u"dbname=shop;dblocation=db.example;" + c.attributes);
        DbError e = Failure([&] { s->ExecuteNoQuery(u"SELECT 1"); });
        EXPECT_EQ(e.Number(), errnum::ConnectFailed);
        EXPECT_EQ(e.Description().substr(0, kFailedShop.size()), kFailedShop);
        EXPECT_TRUE(Contains(e.Description(), c.reason));
        EXPECT_TRUE(Contains(e.Source(), u"[ODBC Provider][08001] "));
        EXPECT_TRUE(Contains(e.Source(), u"DbMsSqlDB:ExecuteNoQuery Ln "));
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
    // The catalog's Create passes the session's failure on.
    auto catalog = Ref<DbCatalog>::New();
    catalog->Init(u"dbtype=mssql;dbname=shop;" + String(kRefusingServer));
    DbError e = Failure([&] { catalog->Create(); });
    EXPECT_EQ(e.Number(), errnum::ConnectFailed);
    EXPECT_TRUE(Contains(e.Source(), u"DbCatalog:Create Ln "));

    // The reader opens the database through OpenConnection_DB.
    e = Failure([&] { s->DbReader()->Tables(); });
    EXPECT_EQ(e.Number(), errnum::ConnectFailed);
    EXPECT_TRUE(Contains(e.Description(), u"Failed to connect to database 'shop'."));
    EXPECT_TRUE(Contains(e.Source(), u" => \r\nOpenConnection_DB Ln "));
    EXPECT_TRUE(Contains(e.Source(), u" => \r\nDbMsSQLReader:IDBReader_Tables Ln "));
    // A reader without its session says what is missing; where it opens a
    // connection, the connection routine words it, with no name to give.
    auto orphan = Ref<DbMsSQLReader>::New();
    e = Failure([&] { orphan->GetVersion(); });
    EXPECT_EQ(e.Number(), err::ObjectNotSet);
    EXPECT_EQ(e.Description().substr(e.Description().size() - 13), u" (DBSession).");
    EXPECT_TRUE(Contains(e.Source(), u" => \r\nDbMsSQLReader:GetVersion Ln "));
    e = Failure([&] { orphan->Keys(u"t"); });
    EXPECT_EQ(e.Number(), errnum::ConnectFailed);
    EXPECT_TRUE(Contains(e.Description(), u"Failed to connect to database ''. (Reason: ErrNo:91"));
    EXPECT_TRUE(Contains(e.Source(), u" => \r\nDbMsSQLReader:IDBReader_Keys Ln "));
}

TEST(MsSqlFailures, CreateAndDropReportTheProvidersWords) {
    using S = RecordingSession;
    DbError foreign(static_cast<int32_t>(0x80040E14u), u"Microsoft OLE DB Provider for SQL Server",
                    u"Database 'shop' already exists.");
    DbError created = S::WordDatabaseFailure(foreign, true, 42);
    EXPECT_EQ(created.Number(), errnum::CreateDbFailed);
    EXPECT_EQ(created.Description(), u"ErrNo: -2147160064\r\nErrDescription: Database 'shop' already exists.");
    EXPECT_EQ(created.Source(),
              u"ZolSDK => \r\nMicrosoft OLE DB Provider for SQL Server => \r\nDbMsSqlDB:CreateDB Ln 42");
    DbError dropped = S::WordDatabaseFailure(foreign, false, 7);
    EXPECT_EQ(dropped.Number(), static_cast<int32_t>(0x80040E14u));
    EXPECT_EQ(dropped.Description(), u"ErrNo: -2147217900\r\nErrDescription: Database 'shop' already exists.");
    EXPECT_EQ(dropped.Source(),
              u"ZolSDK => \r\nMicrosoft OLE DB Provider for SQL Server => \r\nDbMsSqlDB:DropDB Ln 7");
    // The library's own failures keep number and words, and gain the line.
    DbError own(errnum::ConnectFailed, u"ZolSDK => \r\nOpenConnection_Server Ln 3", u"Failed to connect");
    DbError kept = S::WordDatabaseFailure(own, true, 9);
    EXPECT_EQ(kept.Number(), errnum::ConnectFailed);
    EXPECT_EQ(kept.Description(), u"Failed to connect");
    EXPECT_EQ(kept.Source(), u"ZolSDK => \r\nOpenConnection_Server Ln 3 => \r\nDbMsSqlDB:CreateDB Ln 9");

    // The statements they send, for the session's database.
    auto s = Ref<S>::New();
    s->Connect(u"protocol=1;dbname=shop_2");
    EXPECT_EQ(s->DatabaseStatement(true), u"CREATE DATABASE shop_2");
    EXPECT_EQ(s->DatabaseStatement(false), u"DROP DATABASE shop_2");
}

TEST(MsSqlFailures, StatementsRunWithoutATimeLimitExceptTheAsynchronousOpen) {
    auto s = Ref<RecordingSession>::New();
    using K = RecordingSession::StatementKind;
    for (K kind : {K::Rows, K::NoRows, K::BoundParameters, K::Scalar}) {
        ado::Connection c;
        ASSERT_NE(c.CommandTimeout(), 0);
        s->BeforeStatement(kind, c);
        EXPECT_EQ(c.CommandTimeout(), 0);
    }
    ado::Connection async;
    int32_t before = async.CommandTimeout();
    s->BeforeStatement(K::AsyncRows, async);
    EXPECT_EQ(async.CommandTimeout(), before);
}

} // namespace
} // namespace zolsdk::mssqltest
