// Against a real SQL Server, when ZOLSDK_MSSQL_ATTRS gives one: the
// statement family, schema reading with the provider's figures, a table
// migrated there from MariaDB and back, and the full-text switches. Each
// test works in a database of its own and drops it.
#include "migration/row_compare.hpp"
#include "mssql_support.hpp"
#include "readers/mssql_reader.hpp"
#include "zolsdk/zolsdk.hpp"

namespace zolsdk::mssqltest {
namespace {

// A database on the live server, made through the session and dropped
// when the test ends.
class LiveDb {
public:
    explicit LiveDb(const std::string& stem) : name_(FromUtf8(mysqltest::UniqueName(stem))) {
        catalog_ = Ref<DbCatalog>::New();
        catalog_->Init(u"dbtype=mssql;dbname=" + name_ + u";" + LiveAttributes());
        catalog_->Create();
    }
    ~LiveDb() {
        try {
            catalog_->Session()->Disconnect();
            auto s = Ref<DbMsSqlDB>::New();
            s->Connect(u"dbname=" + name_ + u";" + LiveAttributes());
            s->DropDB();
        } catch (...) {
        }
    }
    LiveDb(const LiveDb&) = delete;
    LiveDb& operator=(const LiveDb&) = delete;

    const String& Name() const { return name_; }
    const Ref<DbCatalog>& Catalog() const { return catalog_; }
    Ref<IDBSession> Session() const { return catalog_->Session(); }

private:
    String name_;
    Ref<DbCatalog> catalog_;
};

TEST(LiveMsSql, StatementsBracketsAndFailures) {
    ZOLSDK_REQUIRE_LIVE_SERVER();
    LiveDb db("mss_stmt");
    Ref<IDBSession> s = db.Session();
    s->ExecuteNoQuery(u"CREATE TABLE t (id INT NOT NULL PRIMARY KEY, name NVARCHAR(20) NULL)");
    EXPECT_EQ(s->ExecuteNoQuery(u"INSERT INTO t VALUES (1, N'Grüße'), (2, NULL), (3, N'cy')"), 3);
    EXPECT_EQ(s->ExecuteScalar(u"SELECT name FROM t WHERE id = 1", u"d"), u"Grüße");
    EXPECT_EQ(s->ExecuteScalar(u"SELECT name FROM t WHERE id = 2", u"d"), u"d");
    auto params = Ref<Collection>::New();
    auto p = Ref<ado::Parameter>::New();
    p->Value(Variant(String(u"bound")));
    params->Add(Variant(p));
    EXPECT_EQ(s->ExecuteNoQueryEx(u"UPDATE t SET name = ? WHERE id = 3", params), 1);
    // A bracket holds one connection; "!" opens asynchronously inside it.
    s->BeginTransaction();
    Ref<ado::Recordset> async = s->Execute(u"!SELECT name FROM t WHERE id = 3");
    async->MoveFirst();
    EXPECT_EQ(async->Value(u"name").ToString(), u"bound");
    s->EndTransaction();

    DbError e = Failure([&] { s->ExecuteNoQuery(u"SELEC nothing"); });
    EXPECT_EQ(e.Number(), errnum::Unexpected);
    EXPECT_TRUE(Contains(e.Description(), u"ErrSQL: \r\nSELEC nothing"));
    // Creating it again: the provider's words under the privilege number.
    EXPECT_EQ(Failure([&] { s->CreateDB(); }).Number(), errnum::CreateDbFailed);
    auto wrong = Ref<DbMsSqlDB>::New();
    wrong->Connect(u"dbname=" + db.Name() + u";password=surely-not-this;" + LiveAttributes());
    EXPECT_EQ(Failure([&] { wrong->ExecuteScalar(u"SELECT 1", u""); }).Number(), errnum::ConnectFailed);
}

TEST(LiveMsSql, SchemaIsReadWithTheProvidersFigures) {
    ZOLSDK_REQUIRE_LIVE_SERVER();
    LiveDb db("mss_schema");
    Ref<IDBSession> s = db.Session();
    s->ExecuteNoQuery(u"CREATE TABLE owner (id INT NOT NULL CONSTRAINT PK_owner PRIMARY KEY)");
    s->ExecuteNoQuery(
        u"CREATE TABLE item (id INT IDENTITY(1,1) NOT NULL, flag BIT, tiny TINYINT, price MONEY DEFAULT 0, "
        u"cost DECIMAL(10,2), at DATETIME, code CHAR(5), title NVARCHAR(50) NOT NULL, note VARCHAR(300), body NTEXT, "
        u"raw VARBINARY(MAX), tag UNIQUEIDENTIFIER, owner_id INT, CONSTRAINT PK_item PRIMARY KEY (id), "
        u"CONSTRAINT fk_owner FOREIGN KEY (owner_id) REFERENCES owner(id) ON DELETE CASCADE)");
    s->ExecuteNoQuery(u"CREATE INDEX ix_title ON item (title DESC, at)");

    Ref<IDBReader> reader = s->DbReader();
    EXPECT_EQ(reader->Tables()->RecordCount(), 2);
    Ref<ado::Recordset> cols = reader->TableColumns(u"item");
    ASSERT_EQ(cols->RecordCount(), 13);
    std::vector<std::pair<String, int32_t>> groups;
    for (cols->MoveFirst(); !cols->Eof(); cols->MoveNext())
        groups.push_back({cols->Value(u"column_name").ToString(), cols->Value(u"data_type_group").ToLong()});
    EXPECT_EQ(groups, (std::vector<std::pair<String, int32_t>>{
                          {u"id", dtInteger}, {u"flag", dtBoolean}, {u"tiny", dtUnsignedInteger},
                          {u"price", dtCurrency}, {u"cost", dtDecimal}, {u"at", dtDateTime}, {u"code", dtVarChar},
                          {u"title", dtVarChar}, {u"note", dtCharBLOB}, {u"body", dtCharBLOB},
                          {u"raw", dtBinaryBLOB}, {u"tag", dtUnknown}, {u"owner_id", dtInteger}}));
    cols->MoveFirst();
    EXPECT_FALSE(cols->Value(u"is_nullable").ToBoolean());
    cols->Find(u"column_name = 'price'");
    EXPECT_EQ(cols->Value(u"numeric_scale").ToLong(), 4);
    EXPECT_TRUE(cols->Value(u"has_default").ToBoolean());
    EXPECT_EQ(cols->Value(u"column_default").ToString(), u"((0))");
    cols->MoveFirst();
    cols->Find(u"column_name = 'cost'");
    EXPECT_EQ(cols->Value(u"numeric_precision").ToLong(), 10);
    EXPECT_EQ(cols->Value(u"numeric_scale").ToLong(), 2);

    Ref<ado::Recordset> ix = reader->Indexes(u"item");
    EXPECT_EQ(ix->RecordCount(), 2);
    ix->MoveFirst();
    ix->Find(u"index_name = 'PK_item'");
    ASSERT_FALSE(ix->Eof());
    EXPECT_TRUE(ix->Value(u"primary_key").ToBoolean());
    Ref<ado::Recordset> ixc = reader->IndexColumns(u"ix_title", u"item");
    ASSERT_EQ(ixc->RecordCount(), 2);
    ixc->MoveFirst();
    EXPECT_EQ(ixc->Value(u"column_name").ToString(), u"title");
    EXPECT_EQ(ixc->Value(u"sort_order").ToLong(), 2);
    Ref<ado::Recordset> keys = reader->Keys(u"item");
    ASSERT_EQ(keys->RecordCount(), 1);
    keys->MoveFirst();
    EXPECT_EQ(keys->Value(u"pk_table_name").ToString(), u"owner");
    EXPECT_EQ(keys->Value(u"delete_rule").ToString(), u"CASCADE");

    auto version = Ref<DbMsSQLReader>::New();
    version->Init(s);
    EXPECT_NE(version->GetVersion(), u"");
}

TEST(LiveMsSql, ATableMigratesFromMariaDbAndBack) {
    ZOLSDK_REQUIRE_LIVE_SERVER();
    mysqltest::ScratchDb source("mss_src");
    mysqltest::ScratchDb back("mss_back");
    source.Run(u"CREATE TABLE film (id INT NOT NULL PRIMARY KEY, title VARCHAR(60) NOT NULL, rate DECIMAL(6,2), "
               u"shown DATETIME, plot TEXT, KEY ix_title (title))");
    source.Run(u"INSERT INTO film VALUES (1, 'Alpha', 2.99, '2001-02-03 04:05:06', 'long plot'), "
               u"(2, 'Grüße', NULL, NULL, NULL), (3, 'it''s', 0.5, '1999-12-31 23:59:59', '')");
    LiveDb middle("mss_mid");
    auto catalog = [](const String& dbname) {
        auto c = Ref<DbCatalog>::New();
        c->Init(u"dbname=" + dbname + u";" + mysqltest::ServerAttributes());
        return c;
    };
    Ref<DbCatalog> src = catalog(source.Name()), dst = catalog(back.Name());

    Ref<DbTable> film = src->Tables()->Item(Variant(u"film"));
    middle.Catalog()->ImportTable(film);
    ASSERT_TRUE(middle.Catalog()->ImportData(u"film", src->ExportData(u"film")));
    EXPECT_EQ(middle.Catalog()->GetDataRowCount(u"film"), 3);

    Ref<DbTable> there = middle.Catalog()->Tables()->Item(Variant(u"film"));
    dst->ImportTable(there);
    ASSERT_TRUE(dst->ImportData(u"film", middle.Catalog()->ExportData(u"film")));
    EXPECT_EQ(migrationtest::FirstDifference(migrationtest::TableLines(source.Name(), u"film"),
                                             migrationtest::TableLines(back.Name(), u"film")),
              "");
}

TEST(LiveMsSql, FullTextSwitches) {
    ZOLSDK_REQUIRE_LIVE_SERVER();
    LiveDb db("mss_fts");
    Ref<IDBSession> s = db.Session();
    if (!s->IsFeatureSupported(u"fts")) GTEST_SKIP() << "the test server has no full-text search";
    s->ExecuteNoQuery(u"CREATE TABLE notes (id INT NOT NULL CONSTRAINT PK_notes PRIMARY KEY, body NVARCHAR(200))");
    // DisableFTS puts the column in: a new catalog, the table under PK_notes.
    EXPECT_TRUE(s->DisableFTS(u"zolcat", u"notes", u"body"));
    EXPECT_EQ(s->ExecuteScalar(u"SELECT COUNT(*) FROM sys.fulltext_catalogs WHERE name = 'zolcat'", u"0"), u"1");
    EXPECT_EQ(s->ExecuteScalar(u"SELECT COUNT(*) FROM sys.fulltext_index_columns", u"0"), u"1");
    EXPECT_TRUE(s->IsFTSEnabled(u"1", u"notes", u"body"));
    // EnableFTS takes it out of service: tracking stopped, table deactivated.
    EXPECT_TRUE(s->EnableFTS(u"zolcat", u"notes", u"body"));
    EXPECT_EQ(s->ExecuteScalar(u"SELECT CAST(is_enabled AS INT) FROM sys.fulltext_indexes", u"x"), u"0");
}

} // namespace
} // namespace zolsdk::mssqltest
