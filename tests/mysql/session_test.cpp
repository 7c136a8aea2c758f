// The MySQL session against the real server: connection texts, the
// statement family, the connection scope, database creation, full-text
// switches, and every failure with its number and wording.
#include "catalog/raise_error.hpp"
#include "mysql_fixture.hpp"
#include "zolsdk/catalog/error_numbers.hpp"
#include "zolsdk/platform/datetime.hpp"

namespace zolsdk::mysqltest {
namespace {

const String kCrLf = u"\r\n";

TEST(MySqlSession, ConnectionTextsAreBuiltFromTheAttributes) {
    auto s = Ref<DbMySqlDB>::New();
    EXPECT_EQ(s->AttributeValue(u"dbtypeid"), u"2");
    s->Connect(u"dbname=shop;dblocation=db.example;username=u1;password=p=w");
    EXPECT_EQ(s->ConnectionString(),
              u"Driver=MySQL ODBC 5.1 Driver;DATABASE=shop;SERVER=db.example;UID=u1;PASSWORD=p;PORT=3306;OPTION=18475;");
    // A second Connect stacks in front; the port is taken when given.
    s->Connect(u"port=3307;dbname=other");
    EXPECT_EQ(s->ConnectionString(),
              u"Driver=MySQL ODBC 5.1 Driver;DATABASE=other;SERVER=db.example;UID=u1;PASSWORD=p;PORT=3307;OPTION=18475;");
    auto bare = Ref<DbMySqlDB>::New();
    bare->Connect(u"");
    EXPECT_EQ(bare->ConnectionString(), u"Driver=MySQL ODBC 5.1 Driver;DATABASE=;SERVER=;UID=;PASSWORD=;PORT=3306;OPTION=18475;");

    EXPECT_TRUE(s->IsFeatureSupported(u"FTS"));
    EXPECT_TRUE(s->IsFeatureSupported(u"full_text_search"));
    EXPECT_TRUE(s->IsFeatureSupported(u"Connection_Pooling"));
    EXPECT_TRUE(s->IsFeatureSupported(u"create_index_in_create_table"));
    EXPECT_TRUE(s->IsFeatureSupported(u"multi_row_insert"));
    EXPECT_FALSE(s->IsFeatureSupported(u"transactions"));
    EXPECT_FALSE(s->DbSqlBuilder().IsNothing());
    EXPECT_FALSE(s->DbSqlBuilder() == s->DbSqlBuilder()) << "a new builder at every call";
    EXPECT_TRUE(s->DbReader() == s->DbReader()) << "one reader per session";
}

TEST(MySqlSession, StatementsRunOnConnectionsOfTheirOwn) {
    ScratchDb db("stmts");
    auto s = db.Session();
    EXPECT_EQ(s->ExecuteNoQuery(u"CREATE TABLE t (id INT PRIMARY KEY, name VARCHAR(20), born DATE)"), 0);
    EXPECT_EQ(s->ExecuteNoQuery(u"INSERT INTO t VALUES (1, 'ann', '1970-01-02'), (2, NULL, NULL), (3, 'cy', NULL)"), 3);
    EXPECT_TRUE(s->ActiveConnection().IsNothing()) << "outside a bracket nothing stays open";

    Ref<ado::Recordset> rs = s->Execute(u"SELECT id, name, born FROM t ORDER BY id");
    EXPECT_EQ(rs->RecordCount(), 3);
    EXPECT_EQ(rs->Value(u"name").ToString(), u"ann");
    EXPECT_DOUBLE_EQ(rs->Value(u"born").ToDate(), DateSerial(1970, 1, 2));

    EXPECT_EQ(s->ExecuteScalar(u"SELECT name FROM t WHERE id = 3", u"dflt"), u"cy");
    EXPECT_EQ(s->ExecuteScalar(u"SELECT name FROM t WHERE id = 2", u"dflt"), u"dflt") << "null gives the default";
    EXPECT_EQ(s->ExecuteScalar(u"SELECT name FROM t WHERE id = 99", u"none"), u"none") << "no row gives the default";
    EXPECT_EQ(s->ExecuteScalar(u"SELECT COUNT(*) FROM t", u""), u"3");

    // Bound parameters, copied into the list the statement's marks derive.
    auto params = Ref<Collection>::New();
    auto p1 = Ref<ado::Parameter>::New();
    p1->Type(ado::adType::LongVarChar);
    p1->Value(Variant(String(5000, u'q')));
    p1->Size(5000);
    auto p2 = Ref<ado::Parameter>::New();
    p2->Type(ado::adType::Integer);
    p2->Value(Variant(int32_t{1}));
    params->Add(Variant(p1));
    params->Add(Variant(p2));
    s->ExecuteNoQuery(u"ALTER TABLE t MODIFY name TEXT");
    EXPECT_EQ(s->ExecuteNoQueryEx(u"UPDATE t SET name = ? WHERE id = ?", params), 1);
    EXPECT_EQ(s->ExecuteScalar(u"SELECT LENGTH(name) FROM t WHERE id = 1", u""), u"5000");
    EXPECT_EQ(s->ExecuteNoQueryEx(u"DELETE FROM t WHERE id = 3", nullptr), 1);
    // More parameters than marks is a failure of the platform, wrapped.
    DbError extra = Failure([&] { s->ExecuteNoQueryEx(u"DELETE FROM t WHERE id = ?", params); });
    EXPECT_EQ(extra.Number(), errnum::Unexpected);
    EXPECT_TRUE(Contains(extra.Source(), u"DbMySqlDB:IDBSession_ExecuteNoQueryEx Ln "));
}

TEST(MySqlSession, BracketsHoldOneConnectionAndUndoNothing) {
    ScratchDb db("bracket");
    auto s = db.Session();
    s->ExecuteNoQuery(u"CREATE TABLE t (id INT)");
    s->BeginTransaction();
    Ref<ado::Connection> held = s->ActiveConnection();
    ASSERT_FALSE(held.IsNothing());
    EXPECT_EQ(held->State(), ado::adStateOpen);
    s->ExecuteNoQuery(u"SET @marker = 42");
    s->BeginTransaction();
    EXPECT_EQ(s->ExecuteScalar(u"SELECT @marker", u""), u"42") << "the same connection serves the whole bracket";
    s->EndTransaction();
    EXPECT_TRUE(s->ActiveConnection() == held);
    s->ExecuteNoQuery(u"INSERT INTO t VALUES (1), (2)");
    s->RollbackTransaction();
    EXPECT_TRUE(s->ActiveConnection().IsNothing());
    EXPECT_EQ(held->State(), ado::adStateClosed);
    EXPECT_EQ(s->ExecuteScalar(u"SELECT COUNT(*) FROM t", u""), u"2") << "a rollback undoes nothing";
    EXPECT_EQ(s->ExecuteScalar(u"SELECT @marker", u"unset"), u"unset") << "a new connection outside the bracket";
    s->EndTransaction(); // surplus: harmless
    s->Disconnect();
    DbError e = Failure([&] { s->Execute(u"SELECT 1"); });
    EXPECT_EQ(e.Number(), errnum::DbNotInitialized);
}

TEST(MySqlSession, BangPrefixOpensAsynchronouslyOnlyInsideABracket) {
    ScratchDb db("bang");
    auto s = db.Session();
    s->ExecuteNoQuery(u"CREATE TABLE t (id INT)");
    s->ExecuteNoQuery(u"INSERT INTO t SELECT seq FROM seq_1_to_3000");

    // Outside a bracket the text goes to the server as it is, "!" included.
    DbError outside = Failure([&] { s->Execute(u"!SELECT id FROM t"); });
    EXPECT_EQ(outside.Number(), errnum::Unexpected);
    EXPECT_TRUE(Contains(outside.Description(), u"ErrSQL: \r\n!SELECT id FROM t"));

    s->BeginTransaction();
    Ref<ado::Recordset> rs = s->Execute(u"!SELECT id FROM t ORDER BY id");
    EXPECT_EQ(rs->State(), ado::adStateOpen | ado::adStateFetching);
    int64_t sum = 0;
    while (!rs->Eof()) {
        sum += rs->Value(u"id").ToLong();
        rs->MoveNext();
    }
    EXPECT_EQ(sum, int64_t{3000} * 3001 / 2);
    EXPECT_EQ(rs->State(), ado::adStateOpen);
    // Failures of the asynchronous form show the statement without its "!".
    DbError inside = Failure([&] { s->Execute(u"!SELECT nope FROM t"); });
    EXPECT_TRUE(Contains(inside.Description(), u"ErrSQL: \r\nSELECT nope FROM t"));
    EXPECT_FALSE(Contains(inside.Description(), u"!SELECT"));
    s->EndTransaction();
}

TEST(MySqlSession, FailuresCarryTheirNumbersAndWording) {
    // A call before Connect.
    auto fresh = Ref<DbMySqlDB>::New();
    DbError early = Failure([&] { fresh->ExecuteNoQuery(u"SELECT 1"); });
    EXPECT_EQ(early.Number(), errnum::DbNotInitialized);
    EXPECT_EQ(early.Description(), u"Database object not initialized.");
    // The library's own failure: no wrapping, one chain line a routine.
    const String first = u"ZolSDK => " + kCrLf + u"DbMySqlDB:OpenConnection Ln ";
    EXPECT_EQ(early.Source().substr(0, first.size()), first);
    EXPECT_TRUE(Contains(early.Source(), u" => " + kCrLf + u"DbMySqlDB:ExecuteNoQuery Ln "));
    EXPECT_EQ(Failure([&] { fresh->BeginTransaction(); }).Number(), errnum::DbNotInitialized);

    // A syntax error: the server's text inside, the statement behind ErrSQL.
    ScratchDb db("fail");
    auto s = db.Session();
    DbError syntax = Failure([&] { s->ExecuteNoQuery(u"CREAT TABLE x (a INT)"); });
    EXPECT_EQ(syntax.Number(), errnum::Unexpected);
    EXPECT_EQ(syntax.Number(), static_cast<int32_t>(0x8004FFFF));
    const String head = u"ErrNo: -2147155969" + kCrLf + u"ErrDescription: ";
    ASSERT_EQ(syntax.Description().substr(0, head.size()), head);
    EXPECT_TRUE(Contains(syntax.Description(), u"You have an error in your SQL syntax"));
    const String tail = kCrLf + u"ErrSQL: " + kCrLf + u"CREAT TABLE x (a INT)";
    EXPECT_EQ(syntax.Description().substr(syntax.Description().size() - tail.size()), tail);
    EXPECT_EQ(syntax.Source().substr(0, 12), u"ZolSDK => " + kCrLf);
    EXPECT_TRUE(Contains(syntax.Source(), String(ado::kProviderSource) + u" => " + kCrLf + u"DbMySqlDB:ExecuteNoQuery Ln "));
    for (auto [call, literal] : std::vector<std::pair<std::function<void()>, String>>{
             {[&] { s->Execute(u"SELEC 1"); }, u"DbMySqlDB:Execute Ln "},
             {[&] { s->ExecuteScalar(u"SELEC 1", u""); }, u"DbMySqlDB:ExecuteScalar Ln "}}) {
        DbError e = Failure(call);
        EXPECT_EQ(e.Number(), errnum::Unexpected);
        EXPECT_TRUE(Contains(e.Source(), literal)) << ToUtf8(e.Source());
        EXPECT_TRUE(Contains(e.Description(), u"ErrSQL: " + kCrLf + u"SELEC 1"));
    }
    EXPECT_TRUE(s->ActiveConnection().IsNothing()) << "a failure closes the statement's connection";

    // A wrong password: the provider's text in the message, its list in Source.
    auto denied = NewSession(u"dbname=" + db.Name() + u";password=surely-not-it");
    DbError login = Failure([&] { denied->ExecuteNoQuery(u"SELECT 1"); });
    EXPECT_EQ(login.Number(), errnum::ConnectFailed);
    const String start = u"Failed to connect to database '" + db.Name() + u"'. (Reason: ErrNo:" +
                         IntText(ado::kProviderFailure) + kCrLf + u" Details:";
    ASSERT_EQ(login.Description().substr(0, start.size()), start);
    EXPECT_TRUE(Contains(login.Description(), u"Access denied for user")) << ToUtf8(login.Description());
    EXPECT_EQ(login.Description().back(), u')');
    EXPECT_TRUE(Contains(login.Source(), String(ado::kProviderSource) + u" => [" + IntText(ado::kProviderFailure) +
                                             u"#1045][" + String(ado::kProviderSource) + u"][28000] "))
        << ToUtf8(login.Source());
    EXPECT_TRUE(Contains(login.Source(), u"DbMySqlDB:OpenConnection Ln "));
    EXPECT_TRUE(Contains(login.Source(), u"DbMySqlDB:ExecuteNoQuery Ln "));
    EXPECT_EQ(login.Source().substr(0, 12), u"ZolSDK => " + kCrLf);

    // A server nobody answers on.
    auto nowhere = NewSession(u"dbname=nowhere_db;port=1");
    DbError gone = Failure([&] { nowhere->Execute(u"SELECT 1"); });
    EXPECT_EQ(gone.Number(), static_cast<int32_t>(0x8004F001));
    EXPECT_EQ(gone.Description().substr(0, 40), u"Failed to connect to database 'nowhere_d");
    EXPECT_TRUE(Contains(gone.Description(), u"Can't connect")) << ToUtf8(gone.Description());
    EXPECT_TRUE(Contains(gone.Source(), u"DbMySqlDB:Execute Ln "));
}

TEST(MySqlSession, CreateAndDropDatabasesOnAServerConnection) {
    String name = FromUtf8(UniqueName("create"));
    auto s = NewSession(u"dbname=" + name);
    EXPECT_TRUE(s->CreateDB());
    EXPECT_TRUE(s->ActiveConnection().IsNothing());
    EXPECT_EQ(s->ExecuteScalar(u"SELECT DATABASE()", u""), name);
    // The database exists: the statement touches nothing.
    DbError again = Failure([&] { s->CreateDB(); });
    EXPECT_EQ(again.Number(), static_cast<int32_t>(0x8004F000));
    EXPECT_EQ(again.Description(),
              u"You do not have the privilege to create database or the database already exists.");
    EXPECT_TRUE(Contains(again.Source(), u"DbMySqlDB:CreateDB Ln "));
    EXPECT_TRUE(s->DropDB());
    EXPECT_TRUE(s->DropDB()) << "dropping what is gone is no failure";
    DbError missing = Failure([&] { s->ExecuteScalar(u"SELECT 1", u""); });
    EXPECT_EQ(missing.Number(), errnum::ConnectFailed);
    EXPECT_TRUE(Contains(missing.Description(), u"Failed to connect to database '" + name + u"'"));

    // A server-level refusal names the server, not the database.
    auto denied = NewSession(u"dbname=" + name + u";password=wrong-one");
    DbError e = Failure([&] { denied->CreateDB(); });
    EXPECT_EQ(e.Number(), errnum::ConnectFailed);
    EXPECT_EQ(e.Description().substr(0, 31 + Attr(u"dblocation").size() + 2),
              u"Failed to connect to database '" + Attr(u"dblocation") + u"'.");
    EXPECT_TRUE(Contains(e.Source(), u"OpenConnection_Server Ln "));
    EXPECT_TRUE(Contains(e.Source(), u"DbMySqlDB:CreateDB Ln "));
    // A name the server refuses: its failure wrapped, without a statement.
    auto bad = NewSession(u"dbname=" + String(70, u'n'));
    DbError tooLong = Failure([&] { bad->CreateDB(); });
    EXPECT_EQ(tooLong.Number(), errnum::Unexpected);
    EXPECT_TRUE(Contains(tooLong.Description(), u"ErrDescription: "));
    EXPECT_FALSE(Contains(tooLong.Description(), u"ErrSQL"));
}

TEST(MySqlSession, FullTextSwitchesWorkOnExistingIndexesOnly) {
    ScratchDb db("fts");
    auto s = db.Session();
    s->ExecuteNoQuery(u"CREATE TABLE doc (id INT PRIMARY KEY, body TEXT, title VARCHAR(80), FULLTEXT KEY ft (body)) "
                      u"ENGINE=InnoDB");
    EXPECT_TRUE(s->IsFTSEnabled(u"ignored", u"doc", u"body"));
    EXPECT_FALSE(s->IsFTSEnabled(u"", u"doc", u"title"));
    // Enabling a column without an index does nothing and still answers true.
    EXPECT_TRUE(s->EnableFTS(u"", u"doc", u"title"));
    EXPECT_FALSE(s->IsFTSEnabled(u"", u"doc", u"title"));
    // Disabling drops the index named for the column, which this one is not.
    DbError e = Failure([&] { s->DisableFTS(u"", u"doc", u"body"); });
    EXPECT_EQ(e.Number(), errnum::Unexpected);
    EXPECT_TRUE(Contains(e.Description(), u" ALTER TABLE doc DROP INDEX `FT_body` "));
    EXPECT_TRUE(Contains(e.Source(), u"DbMySqlDB:EnableDisableFTSOnMySQL Ln "));
    s->ExecuteNoQuery(u"ALTER TABLE doc ADD FULLTEXT `FT_title` (`title`)");
    EXPECT_TRUE(s->IsFTSEnabled(u"", u"doc", u"title"));
    // Enabling where the index exists asks for a duplicate, which is refused.
    DbError dup = Failure([&] { s->EnableFTS(u"", u"doc", u"title"); });
    EXPECT_TRUE(Contains(dup.Description(), u" ALTER TABLE doc ADD FULLTEXT `FT_title` (`title`) "));
    EXPECT_TRUE(Contains(dup.Source(), u"DbMySqlDB:EnableFTS Ln "));
    EXPECT_TRUE(s->DisableFTS(u"", u"doc", u"title"));
    EXPECT_FALSE(s->IsFTSEnabled(u"", u"doc", u"title"));
}

} // namespace
} // namespace zolsdk::mysqltest
