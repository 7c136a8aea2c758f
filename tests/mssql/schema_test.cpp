// Schema rowsets built from the driver's catalog calls, and the SQL Server
// reader's view of provider rowsets. With no SQL Server here, the catalog
// calls and the reader also run against the local MariaDB server: the rows'
// shape is the same for every driver, only the type names differ.
#include "mysql/mysql_fixture.hpp"
#include "mssql_support.hpp"
#include "platform/ado/sqlserver/sqlserver_schema.hpp"
#include "readers/mssql_reader.hpp"
#include "zolsdk/schema/enums.hpp"

namespace zolsdk::mssqltest {
namespace {

using namespace ado::detail;
namespace ad = ado::adType;
const Variant kNull = Variant::Null();
Variant N(int32_t v) { return Variant(v); }
Variant T(const char16_t* v) { return Variant(v); }

TEST(MsSqlSchema, ColumnTypesAreReportedByTypeName) {
    auto figures = [](const char16_t* name, int32_t odbcType, int32_t size, const Variant& digits) {
        SqlServerTypeFigures f = SqlServerColumnFigures(name, odbcType, N(size), digits);
        auto text = [](const Variant& v) { return v.IsNull() ? std::string("-") : ToUtf8(v.ToString()); };
        return std::to_string(f.dataType) + "/" + text(f.precision) + "/" + text(f.scale) + "/" +
               text(f.maxLength) + (f.isLong ? "/long" : "");
    };
    // DATA_TYPE / NUMERIC_PRECISION / NUMERIC_SCALE / CHARACTER_MAXIMUM_LENGTH
    EXPECT_EQ(figures(u"bit", -7, 1, kNull), "11/-/-/-");
    EXPECT_EQ(figures(u"tinyint", -6, 3, N(0)), "17/3/-/-");
    EXPECT_EQ(figures(u"int identity", 4, 10, N(0)), "3/10/-/-");
    EXPECT_EQ(figures(u"bigint", -5, 19, N(0)), "20/19/-/-");
    EXPECT_EQ(figures(u"float", 6, 53, kNull), "5/15/-/-");
    // The driver calls money a decimal: the name decides.
    EXPECT_EQ(figures(u"money", 3, 19, N(4)), "6/19/-/-");
    EXPECT_EQ(figures(u"decimal", 3, 18, N(2)), "131/18/2/-");
    EXPECT_EQ(figures(u"numeric() identity", 2, 12, N(0)), "131/12/0/-");
    EXPECT_EQ(figures(u"datetime", 93, 23, N(3)), "135/-/-/-");
    EXPECT_EQ(figures(u"char", 1, 10, kNull), "129/-/-/10");
    EXPECT_EQ(figures(u"varchar", 12, 0, kNull), "129/-/-/2147483647/long") << "varchar(max)";
    EXPECT_EQ(figures(u"text", -1, 2147483647, kNull), "129/-/-/2147483647/long");
    EXPECT_EQ(figures(u"NVARCHAR", -9, 300, kNull), "130/-/-/300");
    EXPECT_EQ(figures(u"nvarchar", -9, 1073741823, kNull), "130/-/-/1073741823/long");
    EXPECT_EQ(figures(u"ntext", -10, 1073741823, kNull), "130/-/-/1073741823/long");
    EXPECT_EQ(figures(u"varbinary", -3, 8000, kNull), "128/-/-/8000");
    EXPECT_EQ(figures(u"image", -4, 2147483647, kNull), "128/-/-/2147483647/long");
    EXPECT_EQ(figures(u"timestamp", -2, 8, kNull), "128/-/-/8");
    EXPECT_EQ(figures(u"uniqueidentifier", -11, 36, kNull), "72/-/-/-");
    // A user-defined type falls back on its base type's ODBC type.
    EXPECT_EQ(figures(u"phone_number", 12, 20, kNull), "129/-/-/20");
    EXPECT_EQ(figures(u"amount_t", 3, 9, N(3)), "131/9/3/-");
}

TEST(MsSqlSchema, CatalogRowsOfTheServerBecomeProviderRowsets) {
    // SQLColumns rows for price money default 0 and body ntext not null.
    Ref<ado::Recordset> cols = SqlServerColumnsRowset(
        {{T(u"shop"), T(u"dbo"), T(u"notes"), T(u"price"), N(3), T(u"money"), N(19), N(21), N(4), N(10), N(1), kNull,
          T(u"((0))"), N(3), kNull, kNull, N(2), T(u"YES")},
         {T(u"shop"), T(u"dbo"), T(u"notes"), T(u"body"), N(-10), T(u"ntext"), N(1073741823), N(2147483646), kNull,
          kNull, N(0), T(u"text"), kNull, N(-10), kNull, N(2147483646), N(4), T(u"NO")}});
    ASSERT_EQ(cols->RecordCount(), 2);
    EXPECT_EQ(cols->Value(u"DATA_TYPE").ToLong(), ad::Currency);
    EXPECT_TRUE(cols->Value(u"COLUMN_HASDEFAULT").ToBoolean());
    EXPECT_EQ(cols->Value(u"COLUMN_DEFAULT").ToString(), u"((0))") << "the constraint text as the server keeps it";
    EXPECT_TRUE(cols->Value(u"IS_NULLABLE").ToBoolean());
    EXPECT_EQ(cols->Value(u"ORDINAL_POSITION").ToLong(), 2);
    cols->MoveNext();
    EXPECT_EQ(cols->Value(u"CHARACTER_MAXIMUM_LENGTH").ToLong(), 1073741823);
    EXPECT_FALSE(cols->Value(u"COLUMN_HASDEFAULT").ToBoolean());
    EXPECT_FALSE(cols->Value(u"IS_NULLABLE").ToBoolean());
    EXPECT_EQ(cols->Value(u"DESCRIPTION").ToString(), u"text");

    // SQLStatistics: the table's own row goes; the primary key is the index
    // SQLPrimaryKeys names for that table, not another table's namesake.
    auto stat = [](const char16_t* table, const Variant& nonUnique, const Variant& index, int32_t type,
                   int32_t position, const char16_t* order) {
        return CatalogRow{T(u"shop"), T(u"dbo"), T(table), nonUnique, kNull, index, N(type), N(position),
                          T(u"c"), order ? T(order) : kNull, N(5), kNull, kNull};
    };
    Ref<ado::Recordset> ix = SqlServerIndexesRowset(
        {stat(u"notes", kNull, kNull, 0, 0, nullptr), stat(u"notes", N(0), T(u"PK_notes"), 1, 1, u"A"),
         stat(u"notes", N(1), T(u"ix"), 3, 1, u"D"), stat(u"notes", N(1), T(u"ix"), 3, 2, nullptr),
         stat(u"other", N(0), T(u"PK_notes"), 3, 1, u"A")},
        {{T(u"shop"), T(u"dbo"), T(u"notes"), T(u"c"), N(1), T(u"pk_NOTES")}});
    ASSERT_EQ(ix->RecordCount(), 4);
    std::vector<std::string> rows;
    for (; !ix->Eof(); ix->MoveNext())
        rows.push_back(ToUtf8(ix->Value(u"TABLE_NAME").ToString() + u"." + ix->Value(u"INDEX_NAME").ToString()) +
                       " pk=" + std::to_string(ix->Value(u"PRIMARY_KEY").ToBoolean()) +
                       " unique=" + std::to_string(ix->Value(u"UNIQUE").ToBoolean()) +
                       " clustered=" + std::to_string(ix->Value(u"CLUSTERED").ToBoolean()) + " collation=" +
                       (ix->Value(u"COLLATION").IsNull() ? "-" : ToUtf8(ix->Value(u"COLLATION").ToString())));
    EXPECT_EQ(rows, (std::vector<std::string>{"notes.PK_notes pk=1 unique=1 clustered=1 collation=1",
                                              "notes.ix pk=0 unique=0 clustered=0 collation=2",
                                              "notes.ix pk=0 unique=0 clustered=0 collation=-",
                                              "other.PK_notes pk=0 unique=1 clustered=0 collation=1"}));

    // Foreign keys: rules as words.
    Ref<ado::Recordset> fk = SqlServerForeignKeysRowset(
        {{T(u"shop"), T(u"dbo"), T(u"notes"), T(u"id"), T(u"shop"), T(u"dbo"), T(u"tags"), T(u"note_id"), N(1), N(2),
          N(4), T(u"FK_tags"), T(u"PK_notes"), kNull}});
    EXPECT_EQ(fk->Value(u"UPDATE_RULE").ToString() + u"|" + fk->Value(u"DELETE_RULE").ToString() + u"|" +
                  fk->Value(u"FK_NAME").ToString() + u"|" + fk->Value(u"PK_NAME").ToString(),
              u"SET NULL|SET DEFAULT|FK_tags|PK_notes");
}

TEST(MsSqlSchema, ReaderTypeGroupsDifferFromTheMySqlReaders) {
    using R = DbMsSQLReader;
    const std::vector<std::tuple<int32_t, int32_t, int32_t>> cases = {
        {ad::Currency, 19, dtCurrency},    {ad::Numeric, 19, dtDecimal},  {ad::Decimal, 10, dtDecimal},
        {139, 10, dtDouble},               {ad::TinyInt, 1, dtInteger},   {ad::UnsignedTinyInt, 1, dtUnsignedInteger},
        {ad::Boolean, 0, dtBoolean},       {ad::BigInt, 19, dtInteger},   {ad::UnsignedBigInt, 20, dtUnsignedInteger},
        {ad::Single, 7, dtSingle},         {ad::Double, 15, dtDouble},    {ad::VarWChar, 255, dtVarChar},
        {ad::WChar, 300, dtCharBLOB},      {ad::Char, 256, dtCharBLOB},   {ad::LongVarWChar, 0, dtCharBLOB},
        {ad::BSTR, 9999, dtVarChar},       {ad::VarBinary, 8, dtBinaryBLOB}, {ad::Date, 0, dtDateTime},
        {ad::DBTimeStamp, 0, dtDateTime},  {ad::DBDate, 0, dtDate},       {ad::DBTime, 0, dtTime},
        {ad::GUID, 0, dtUnknown},          {ad::Variant, 0, dtUnknown}};
    for (auto [type, size, group] : cases)
        EXPECT_EQ(R::GetDataTypeGroup(type, size), group) << "type " << type << " size " << size;
}

TEST(MsSqlSchema, CatalogCallsOfALiveDriverWithExactNames) {
    mysqltest::ScratchDb db("ctlg");
    db.Run(u"CREATE TABLE parent_x (id INT NOT NULL PRIMARY KEY, code VARCHAR(20), UNIQUE KEY uq_code (code DESC))");
    // A name the catalog calls would take as a pattern matching parent_x.
    db.Run(u"CREATE TABLE parent_ (id INT NOT NULL PRIMARY KEY)");
    db.Run(u"CREATE TABLE child (id INT PRIMARY KEY, parent_id INT, CONSTRAINT fk_parent FOREIGN KEY (parent_id) "
           u"REFERENCES parent_x(id) ON DELETE CASCADE ON UPDATE SET NULL)");
    std::shared_ptr<Backend> b = MakeOdbcBackend();
    String port = mysqltest::Attr(u"port");
    b->Open(u"Driver=MySQL ODBC 5.1 Driver;DATABASE=" + db.Name() + u";SERVER=" + mysqltest::Attr(u"dblocation") +
                u";UID=" + mysqltest::Attr(u"username") + u";PASSWORD=" + mysqltest::Attr(u"password") + u";PORT=" +
                (port.empty() ? String(u"3306") : port) + u";OPTION=18475;",
            15);
    auto count = [&](int32_t schema, const std::vector<Variant>& criteria) {
        return SqlServerOpenSchema(*b, schema, criteria)->RecordCount();
    };
    EXPECT_EQ(count(ado::adSchemaTables, {}), 3) << "the current database only";
    Ref<ado::Recordset> t = SqlServerOpenSchema(*b, ado::adSchemaTables, {Variant(), Variant(), T(u"parent_")});
    ASSERT_EQ(t->RecordCount(), 1) << "an underscore is no wildcard";
    EXPECT_EQ(t->Value(u"TABLE_NAME").ToString(), u"parent_");
    Ref<ado::Recordset> c = SqlServerOpenSchema(*b, ado::adSchemaColumns, {Variant(), Variant(), T(u"parent_x")});
    ASSERT_EQ(c->RecordCount(), 2);
    c->MoveNext();
    EXPECT_EQ(c->Value(u"DATA_TYPE").ToLong(), ad::Char);
    EXPECT_EQ(c->Value(u"CHARACTER_MAXIMUM_LENGTH").ToLong(), 20);
    // Indexes of all tables: three primary keys, uq_code, the foreign key's.
    EXPECT_EQ(count(ado::adSchemaIndexes, {}), 5);
    Ref<ado::Recordset> ix = SqlServerOpenSchema(*b, ado::adSchemaIndexes,
                                                 {Variant(), Variant(), T(u"uq_code"), Variant(), T(u"parent_x")});
    ASSERT_EQ(ix->RecordCount(), 1);
    EXPECT_FALSE(ix->Value(u"PRIMARY_KEY").ToBoolean());
    EXPECT_TRUE(ix->Value(u"UNIQUE").ToBoolean());
    EXPECT_EQ(count(ado::adSchemaPrimaryKeys, {}), 3);
    EXPECT_EQ(count(ado::adSchemaPrimaryKeys, {Variant(), Variant(), T(u"parent_")}), 1);
    Ref<ado::Recordset> fk =
        SqlServerOpenSchema(*b, ado::adSchemaForeignKeys, {Variant(), Variant(), Variant(), Variant(), Variant(), T(u"child")});
    ASSERT_EQ(fk->RecordCount(), 1);
    EXPECT_EQ(fk->Value(u"PK_TABLE_NAME").ToString() + u"|" + fk->Value(u"DELETE_RULE").ToString() + u"|" +
                  fk->Value(u"UPDATE_RULE").ToString(),
              u"parent_x|CASCADE|SET NULL");
    EXPECT_EQ(count(ado::adSchemaForeignKeys, {}), 1);
    EXPECT_EQ(count(ado::adSchemaForeignKeys, {Variant(), Variant(), T(u"parent_")}), 0);
}

TEST(MsSqlSchema, ReaderMakesCanonicalRowsetsFromProviderRowsets) {
    // The reader over a session whose provider runs here: the MySQL one.
    mysqltest::ScratchDb db("rdr");
    db.Run(u"CREATE TABLE owner (id INT NOT NULL PRIMARY KEY)");
    db.Run(u"CREATE TABLE item (id INT NOT NULL, flag TINYINT(1), cost DECIMAL(19,4), name VARCHAR(40) DEFAULT 'n', "
           u"body TEXT, raw BLOB, at DATETIME, owner_id INT, PRIMARY KEY (id), KEY ix_two (name DESC, at), "
           u"CONSTRAINT fk_owner FOREIGN KEY (owner_id) REFERENCES owner(id))");
    Ref<DbMySqlDB> session = db.Session(); // the reader holds its session weakly
    auto reader = Ref<DbMsSQLReader>::New();
    reader->Init(session);
    EXPECT_EQ(reader->Tables()->RecordCount(), 2);
    db.Run(u"CREATE TABLE later (id INT)");
    EXPECT_EQ(reader->Tables()->RecordCount(), 2) << "the table list is kept";
    reader->Refresh();
    EXPECT_EQ(reader->Tables()->RecordCount(), 3);

    Ref<ado::Recordset> cols = reader->TableColumns(u"item");
    std::vector<std::string> seen;
    for (cols->MoveFirst(); !cols->Eof(); cols->MoveNext())
        seen.push_back(ToUtf8(cols->Value(u"column_name").ToString()) + ":" +
                       std::to_string(cols->Value(u"data_type_group").ToLong()) + ":" +
                       std::to_string(cols->Value(u"numeric_scale").ToLong()) + ":" +
                       ToUtf8(cols->Value(u"column_default").ToString()) + ":" +
                       std::to_string(cols->Value(u"is_nullable").ToBoolean()));
    // No currency from (19,4) and no boolean from TINYINT(1) in this reader.
    EXPECT_EQ(seen, (std::vector<std::string>{"id:3:0::0", "flag:3:0::1", "cost:12:4::1", "name:1:0:n:1",
                                              "body:2:0::1", "raw:10:0::1", "at:7:0::1", "owner_id:3:0::1"}));
    EXPECT_EQ(reader->TableColumns(u"nothing")->RecordCount(), 0);

    Ref<ado::Recordset> ix = reader->Indexes(u"item");
    EXPECT_EQ(ix->RecordCount(), 3) << "one row an index";
    ix->MoveFirst();
    ix->Find(u"index_name = 'PRIMARY'");
    EXPECT_TRUE(ix->Value(u"primary_key").ToBoolean());
    Ref<ado::Recordset> ixc = reader->IndexColumns(u"ix_two", u"item");
    ASSERT_EQ(ixc->RecordCount(), 2);
    ixc->MoveFirst();
    EXPECT_EQ(ixc->Value(u"column_name").ToString() + u":" + ixc->Value(u"sort_order").ToString(), u"name:2");
    Ref<ado::Recordset> keys = reader->Keys(u"item");
    ASSERT_EQ(keys->RecordCount(), 1);
    keys->MoveFirst();
    EXPECT_EQ(keys->Value(u"pk_table_name").ToString() + u"." + keys->Value(u"fk_name").ToString(), u"owner.fk_owner");
}

} // namespace
} // namespace zolsdk::mssqltest
