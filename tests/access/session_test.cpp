// The Access session: its connection text, files made and removed, failures
// of files that are missing or no databases, statements, bound parameters
// and the statements the driver cannot run as Jet did.
#include <fstream>
#include <regex>

#include "access/access_fixture.hpp"
#include "platform/ado/connection.hpp"

namespace zolsdk::accesstest {
namespace {

std::string N(const String& s) { return ToUtf8(s); }
const String kCrLf = u"\r\n";

TEST(AccessSession, ConnectionTextFeaturesAndFullText) {
    auto s = Session(u"dbname=shop.mdb;dblocation=/data/x");
    EXPECT_EQ(N(s->ConnectionString()), "Provider=Microsoft.Jet.OLEDB.4.0;Data Source=/data/x\\shop.mdb;"
                                         "Persist Security Info=False;Jet OLEDB:Database Password=Tul4ra9mex");
    EXPECT_EQ(N(s->AttributeValue(u"dbtypeid")), "0");
    auto p = Session(u"dbname=a.mdb;dblocation=C:\\db;password=s3cret");
    EXPECT_EQ(N(p->ConnectionString()), "Provider=Microsoft.Jet.OLEDB.4.0;Data Source=C:\\db\\a.mdb;"
                                         "Persist Security Info=False;Jet OLEDB:Database Password=s3cret");
    for (const char16_t* f : {u"full_text_search", u"FTS", u"connection_pooling", u"create_index_in_create_table",
                              u"multi_row_insert", u"anything"})
        EXPECT_FALSE(s->IsFeatureSupported(f)) << N(f);
    EXPECT_FALSE(s->IsFTSEnabled(u"c", u"t", u"k"));
    EXPECT_FALSE(s->EnableFTS(u"c", u"t", u"k"));
    EXPECT_TRUE(s->DisableFTS(u"c", u"t", u"k"));
    EXPECT_EQ(N(s->DbSqlBuilder()->CountSql(u"t")), "SELECT COUNT(*) FROM [t]");
    EXPECT_EQ(s->DbReader(), s->DbReader());
}

TEST(AccessSession, CreateAndDropFiles) {
    Workspace w;
    String attrs = w.Attrs("made.mdb");
    auto db = Catalog(attrs);
    EXPECT_TRUE(db->Create());
    // A Jet 4 file (the format byte at 0x14 is 1), without a password: the
    // built-in one of the connection text is ignored.
    std::ifstream f(w.File("made.mdb"), std::ios::binary);
    char head[0x15] = {};
    f.read(head, sizeof head);
    EXPECT_EQ(head[0x14], 1);
    EXPECT_TRUE(db->Tables()->Count() == 0);
    db->PassThroughQuery(u"CREATE TABLE [t] ([a] INTEGER)");
    EXPECT_TRUE(db->PassThroughQuery(u"INSERT INTO [t] ([a]) VALUES (1)"));

    DbError again = Failure([&] { db->Create(); });
    EXPECT_EQ(again.Number(), errnum::CreateDbFailed);
    EXPECT_EQ(N(again.Description()),
              "You do not have the privilege to create database or the database already exists.");
    EXPECT_TRUE(std::regex_match(N(again.Source()), std::regex("ZolSDK => \r\nDbMsAccessDB:CreateDB Ln [0-9]+ => "
                                                               "\r\nDbCatalog:Create Ln [0-9]+")))
        << N(again.Source());

    // A file held open by a bracket cannot be deleted.
    db->BeginTransaction();
    DbError open = Failure([&] { db->Drop(); });
    EXPECT_EQ(open.Number(), err::PermissionDenied);
    EXPECT_TRUE(Contains(open.Source(), u" => " + kCrLf + u"DbMsAccessDB:DropDB Ln "));
    db->EndTransaction();
    EXPECT_TRUE(std::filesystem::exists(w.File("made.mdb")));

    EXPECT_TRUE(db->Drop());
    EXPECT_FALSE(std::filesystem::exists(w.File("made.mdb")));
    EXPECT_TRUE(db->Drop()); // nothing to delete is no failure

    // Made again at the same path, the file is new: nothing of the old one
    // shows, although the provider kept the old one in memory.
    EXPECT_TRUE(db->Create());
    EXPECT_EQ(db->Tables()->Count(), 0);
    DbError gone = Failure([&] { db->Session()->ExecuteScalar(u"SELECT COUNT(*) FROM [t]", u""); });
    EXPECT_EQ(gone.Number(), errnum::Unexpected);
}

TEST(AccessSession, MissingFilesAndFilesThatAreNoDatabase) {
    Workspace w;
    auto missing = Session(w.Attrs("nofile.mdb"));
    DbError e = Failure([&] { missing->ExecuteScalar(u"SELECT 1", u""); });
    EXPECT_EQ(e.Number(), errnum::ConnectFailed);
    EXPECT_TRUE(Contains(e.Description(), u"Failed to connect to database 'nofile.mdb'. (Reason: ErrNo:"))
        << N(e.Description());
    EXPECT_TRUE(Contains(e.Description(), u"Details:Could not find file '" + w.Dir().Location() + u"/nofile.mdb'.)"))
        << N(e.Description());
    EXPECT_FALSE(std::filesystem::exists(w.File("nofile.mdb"))); // no new database made on the way
    EXPECT_TRUE(Contains(e.Source(), u"DbMsAccessDB:OpenConnection Ln "));
    EXPECT_TRUE(Contains(e.Source(), u"DbMsAccessDB:ExecuteScalar Ln "));

    w.Dir().Write("notes.mdb", std::string(4096, 'x'));
    auto notes = Session(w.Attrs("notes.mdb"));
    DbError bad = Failure([&] { notes->BeginTransaction(); });
    EXPECT_EQ(bad.Number(), errnum::ConnectFailed);
    EXPECT_TRUE(Contains(bad.Description(), u"Failed to connect to database 'notes.mdb'. (Reason: ErrNo:"));
    EXPECT_TRUE(Contains(bad.Description(), u"Details:Unrecognized database format '")) << N(bad.Description());

    auto unconnected = Ref<DbMsAccessDB>::New();
    DbError early = Failure([&] { unconnected->ExecuteNoQuery(u"DELETE FROM [t]"); });
    EXPECT_EQ(early.Number(), errnum::DbNotInitialized);

    // A password given for a file that has none is ignored.
    auto withPassword = Session(w.Sample("indexTestV2003.mdb") + u";password=wrong");
    EXPECT_EQ(N(withPassword->ExecuteScalar(u"SELECT COUNT(*) FROM [Table2]", u"")), "3");
}

TEST(AccessSession, StatementsAndTheirFailures) {
    Workspace w;
    auto s = Session(w.Sample("indexTestV2003.mdb"));
    EXPECT_EQ(s->ExecuteNoQuery(u"UPDATE [Table1] SET [data] = 'x' WHERE [otherfk1] = 1"), 2);
    EXPECT_EQ(N(s->ExecuteScalar(u"SELECT [data] FROM [Table1] WHERE [id] = 99", u"none")), "none");
    EXPECT_EQ(N(s->ExecuteScalar(u"SELECT NULL FROM [Table1]", u"dflt")), "dflt");

    DbError syntax = Failure([&] { s->ExecuteNoQuery(u"UPDAT [Table1] SET x = 1"); });
    EXPECT_EQ(syntax.Number(), errnum::Unexpected);
    EXPECT_TRUE(Contains(syntax.Description(), u"ErrNo: -2147155969" + kCrLf + u"ErrDescription: "));
    EXPECT_TRUE(Contains(syntax.Description(), kCrLf + u"ErrSQL: " + kCrLf + u"UPDAT [Table1] SET x = 1"));
    EXPECT_TRUE(Contains(syntax.Source(), u"ZolSDK => " + kCrLf));
    EXPECT_TRUE(Contains(syntax.Source(), u"DbMsAccessDB:ExecuteNoQuery Ln "));

    // "!" inside a bracket: the rows come in the background.
    s->BeginTransaction();
    Ref<ado::Recordset> rs = s->Execute(u"!SELECT [id] FROM [Table3] ORDER BY [id]");
    int count = 0;
    for (rs->MoveFirst(); !rs->Eof(); rs->MoveNext()) ++count;
    EXPECT_EQ(count, 4);
    s->EndTransaction();
    // Outside one the "!" goes to the driver, which refuses it.
    DbError bang = Failure([&] { s->Execute(u"!SELECT 1"); });
    EXPECT_EQ(bang.Number(), errnum::Unexpected);
    EXPECT_TRUE(Contains(bang.Description(), u"ErrSQL: " + kCrLf + u"!SELECT 1"));
}

TEST(AccessSession, BoundLongTextAndBytes) {
    Workspace w;
    auto db = Catalog(w.Attrs("bound.mdb"));
    db->Create();
    auto s = db->Session();
    s->ExecuteNoQuery(u"CREATE TABLE [b] ([id] INTEGER, [d] DATETIME, [memo] LONGTEXT, [pic] IMAGE)");
    String text;
    for (int i = 0; i < 20000; ++i) text += u"Zoë ";
    Bytes bytes(200000);
    for (size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<uint8_t>(i * 31 + 7);
    auto params = Ref<Collection>::New();
    params->Add(Variant(Ref<ado::Parameter>::New(u"memo", ado::adType::LongVarChar, 1, 0, Variant(text))));
    params->Add(Variant(Ref<ado::Parameter>::New(u"pic", ado::adType::LongVarBinary, 1, 0, Variant(bytes))));
    // A date between "#" marks and a text ending in a back-slash before the
    // marks: both are Jet's own and hide no mark.
    EXPECT_EQ(s->ExecuteNoQueryEx(u"INSERT INTO [b] ([id],[d],[memo],[pic]) VALUES (1, #02/29/2024# ,?,?)", params), 1);
    Ref<ado::Recordset> rs = s->Execute(u"SELECT [memo], [pic], [d] FROM [b] WHERE [id] = 1");
    ASSERT_EQ(rs->RecordCount(), 1);
    EXPECT_EQ(rs->Value(u"memo").ToString(), text);
    EXPECT_EQ(rs->Value(u"pic").ToBytes(), bytes);
    EXPECT_EQ(N(DateText(rs->Value(u"d").ToDate())), "2024-02-29");

    auto nulls = Ref<Collection>::New();
    nulls->Add(Variant(Ref<ado::Parameter>::New(u"memo", ado::adType::LongVarChar, 1, 0, Variant::Null())));
    nulls->Add(Variant(Ref<ado::Parameter>::New(u"pic", ado::adType::LongVarBinary, 1, 0, Variant::Null())));
    EXPECT_EQ(s->ExecuteNoQueryEx(u"INSERT INTO [b] ([id],[memo],[pic]) VALUES (2,?,?)", nulls), 1);
    EXPECT_EQ(N(s->ExecuteScalar(u"SELECT COUNT(*) FROM [b] WHERE [pic] IS NULL AND [memo] IS NULL", u"")), "1");
}

TEST(AccessSession, WhatTheDriverCannotDoFailsClearly) {
    Workspace w;
    auto db = Catalog(w.Sample("testV2000.mdb"));
    auto s = db->Session();
    auto sql = s->DbSqlBuilder();
    for (const String& statement : {sql->DropColumnSql(u"Table1", u"B"), sql->DropIndexSql(u"B", u"Table1", 0),
                                    sql->DropIndexSql(u"PrimaryKey", u"Table1", 1)}) {
        SCOPED_TRACE(N(statement));
        DbError e = Failure([&] { s->ExecuteNoQuery(statement); });
        EXPECT_EQ(e.Number(), errnum::Unexpected);
        EXPECT_TRUE(Contains(e.Description(), u"is not possible on an Access file through this provider"))
            << N(e.Description());
        EXPECT_TRUE(Contains(e.Description(), u"ErrSQL: " + kCrLf + statement));
    }
    // ALTER COLUMN: a new type is refused, NULL / NOT NULL is made.
    DbError retype = Failure([&] { s->ExecuteNoQuery(sql->AlterColumnSql(u"Table1", u"Table1,B,2,202,1,False,,0,0,80,True")); });
    EXPECT_TRUE(Contains(retype.Description(), u"(from TEXT(100) to TEXT(80))")) << N(retype.Description());
    s->ExecuteNoQuery(sql->AlterColumnSql(u"Table1", u"Table1,B,2,202,1,False,,0,0,100,False"));
    db->ClearData(u"");
    for (auto c : db->Tables()->Item(Variant(u"Table1"))->Columns()) {
        if (c->ColumnName() == u"B") {
            EXPECT_EQ(c->IsNullable(), 0);
        }
    }
    // The file refuses a row without B now, and the table is still usable.
    EXPECT_THROW(s->ExecuteNoQuery(u"INSERT INTO [Table1] ([A]) VALUES ('new')"), DbError);
    EXPECT_EQ(s->ExecuteNoQuery(u"INSERT INTO [Table1] ([A],[B],[H]) VALUES ('new','b',12345.67)"), 1);
}

} // namespace
} // namespace zolsdk::accesstest
