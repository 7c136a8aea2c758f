// Schema rowsets built from the driver's catalog calls, and the SQL Server
// reader's view of provider rowsets. Without a SQL Server here, the catalog
// calls and the reader run against the local MariaDB server: the rows'
// shape is the same for every driver, only the type names differ.
#include "mysql/mysql_fixture.hpp"
#include "mssql_support.hpp"
#include "platform/ado/sqlserver/odbc_catalog.hpp"
#include "platform/ado/sqlserver/sqlserver_schema.hpp"
#include "readers/mssql_reader.hpp"
#include "zolsdk/schema/enums.hpp"

namespace zolsdk::mssqltest {
namespace {

using namespace ado::detail;
namespace ad = ado::adType;

// ODBC type numbers as the driver reports them.
constexpr int32_t kOdbcBit = -7, kOdbcTinyInt = -6, kOdbcSmallInt = 5, kOdbcInteger = 4, kOdbcBigInt = -5,
                  kOdbcReal = 7, kOdbcFloat = 6, kOdbcDecimal = 3, kOdbcNumeric = 2, kOdbcTimestamp = 93,
                  kOdbcChar = 1, kOdbcVarChar = 12, kOdbcLongVarChar = -1, kOdbcWChar = -8, kOdbcWVarChar = -9,
                  kOdbcWLongVarChar = -10, kOdbcBinary = -2, kOdbcVarBinary = -3, kOdbcLongVarBinary = -4,
                  kOdbcGuid = -11;

Variant N(int32_t v) { return Variant(v); }
const Variant kNull = Variant::Null();

std::string Figures(const SqlServerTypeFigures& f) {
    auto text = [](const Variant& v) { return v.IsNull() ? std::string("-") : ToUtf8(v.ToString()); };
    return std::to_string(f.dataType) + "/" + text(f.precision) + "/" + text(f.scale) + "/" + text(f.maxLength) +
           (f.isLong ? "/long" : "");
}

TEST(MsSqlSchema, ColumnTypesAreReportedAsTheServersProviderDid) {
    struct Case {
        const char16_t* typeName;
        int32_t odbcType;
        Variant size, digits;
        std::string expected; // DATA_TYPE/NUMERIC_PRECISION/NUMERIC_SCALE/CHARACTER_MAXIMUM_LENGTH
    };
    const std::vector<Case> cases = {
        {u"bit", kOdbcBit, N(1), kNull, "11/-/-/-"},
        {u"tinyint", kOdbcTinyInt, N(3), N(0), "17/3/-/-"},
        {u"smallint", kOdbcSmallInt, N(5), N(0), "2/5/-/-"},
        {u"int", kOdbcInteger, N(10), N(0), "3/10/-/-"},
        {u"int identity", kOdbcInteger, N(10), N(0), "3/10/-/-"},
        {u"bigint", kOdbcBigInt, N(19), N(0), "20/19/-/-"},
        {u"real", kOdbcReal, N(24), kNull, "4/7/-/-"},
        {u"float", kOdbcFloat, N(53), kNull, "5/15/-/-"},
        // The driver calls money a decimal: the name decides.
        {u"money", kOdbcDecimal, N(19), N(4), "6/19/-/-"},
        {u"smallmoney", kOdbcDecimal, N(10), N(4), "6/10/-/-"},
        {u"decimal", kOdbcDecimal, N(18), N(2), "131/18/2/-"},
        {u"numeric() identity", kOdbcNumeric, N(12), N(0), "131/12/0/-"},
        {u"datetime", kOdbcTimestamp, N(23), N(3), "135/-/-/-"},
        {u"smalldatetime", kOdbcTimestamp, N(16), N(0), "135/-/-/-"},
        {u"char", kOdbcChar, N(10), kNull, "129/-/-/10"},
        {u"varchar", kOdbcVarChar, N(255), kNull, "129/-/-/255"},
        {u"varchar", kOdbcVarChar, N(0), kNull, "129/-/-/2147483647/long"},
        {u"text", kOdbcLongVarChar, N(2147483647), kNull, "129/-/-/2147483647/long"},
        {u"nchar", kOdbcWChar, N(5), kNull, "130/-/-/5"},
        {u"NVARCHAR", kOdbcWVarChar, N(300), kNull, "130/-/-/300"},
        {u"nvarchar", kOdbcWVarChar, N(1073741823), kNull, "130/-/-/1073741823/long"},
        {u"ntext", kOdbcWLongVarChar, N(1073741823), kNull, "130/-/-/1073741823/long"},
        {u"sysname", kOdbcWVarChar, N(128), kNull, "130/-/-/128"},
        {u"binary", kOdbcBinary, N(16), kNull, "128/-/-/16"},
        {u"varbinary", kOdbcVarBinary, N(8000), kNull, "128/-/-/8000"},
        {u"varbinary", kOdbcVarBinary, N(0), kNull, "128/-/-/2147483647/long"},
        {u"image", kOdbcLongVarBinary, N(2147483647), kNull, "128/-/-/2147483647/long"},
        {u"timestamp", kOdbcBinary, N(8), kNull, "128/-/-/8"},
        {u"uniqueidentifier", kOdbcGuid, N(36), kNull, "72/-/-/-"},
        // A user-defined type falls back on its base type's ODBC type.
        {u"phone_number", kOdbcVarChar, N(20), kNull, "129/-/-/20"},
        {u"account_id", kOdbcInteger, N(10), N(0), "3/10/-/-"},
        {u"amount_t", kOdbcDecimal, N(9), N(3), "131/9/3/-"},
        {u"blob_t", kOdbcLongVarBinary, N(2147483647), kNull, "128/-/-/2147483647/long"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(ToUtf8(c.typeName) + " size " + ToUtf8(c.size.ToString()));
        EXPECT_EQ(Figures(SqlServerColumnFigures(c.typeName, c.odbcType, c.size, c.digits)), c.expected);
    }
}

TEST(MsSqlSchema, RowsetsFromCatalogRowsCarryTheProviderFields) {
    // Rows as the driver gives them for a table notes(id int identity
    // primary key, price money default 0, title nvarchar(50) null, body ntext).
    CatalogRows columns = {
        {Variant(u"shop"), Variant(u"dbo"), Variant(u"notes"), Variant(u"id"), N(kOdbcInteger), Variant(u"int identity"),
         N(10), N(4), N(0), N(10), N(0), kNull, kNull, N(4), kNull, kNull, N(1), Variant(u"NO")},
        {Variant(u"shop"), Variant(u"dbo"), Variant(u"notes"), Variant(u"price"), N(kOdbcDecimal), Variant(u"money"),
         N(19), N(21), N(4), N(10), N(1), kNull, Variant(u"((0))"), N(3), kNull, kNull, N(2), Variant(u"YES")},
        {Variant(u"shop"), Variant(u"dbo"), Variant(u"notes"), Variant(u"title"), N(kOdbcWVarChar), Variant(u"nvarchar"),
         N(50), N(100), kNull, kNull, N(1), Variant(u"a title"), kNull, N(-9), kNull, N(100), N(3), Variant(u"YES")},
        {Variant(u"shop"), Variant(u"dbo"), Variant(u"notes"), Variant(u"body"), N(kOdbcWLongVarChar), Variant(u"ntext"),
         N(1073741823), N(2147483646), kNull, kNull, N(0), kNull, kNull, N(-10), kNull, N(2147483646), N(4),
         Variant(u"NO")},
    };
    Ref<ado::Recordset> rs = SqlServerColumnsRowset(columns);
    ASSERT_EQ(rs->RecordCount(), 4);
    EXPECT_EQ(rs->Value(u"TABLE_CATALOG").ToString(), u"shop");
    EXPECT_EQ(rs->Value(u"TABLE_SCHEMA").ToString(), u"dbo");
    EXPECT_EQ(rs->Value(u"COLUMN_NAME").ToString(), u"id");
    EXPECT_EQ(rs->Value(u"DATA_TYPE").ToLong(), ad::Integer);
    EXPECT_EQ(rs->Value(u"NUMERIC_PRECISION").ToLong(), 10);
    EXPECT_TRUE(rs->Value(u"NUMERIC_SCALE").IsNull());
    EXPECT_TRUE(rs->Value(u"CHARACTER_MAXIMUM_LENGTH").IsNull());
    EXPECT_FALSE(rs->Value(u"IS_NULLABLE").ToBoolean());
    EXPECT_FALSE(rs->Value(u"COLUMN_HASDEFAULT").ToBoolean());
    EXPECT_TRUE(rs->Value(u"COLUMN_DEFAULT").IsNull());
    EXPECT_EQ(rs->Value(u"COLUMN_FLAGS").ToLong(), 0x10);
    rs->MoveNext();
    EXPECT_EQ(rs->Value(u"DATA_TYPE").ToLong(), ad::Currency);
    EXPECT_EQ(rs->Value(u"NUMERIC_PRECISION").ToLong(), 19);
    EXPECT_TRUE(rs->Value(u"COLUMN_HASDEFAULT").ToBoolean());
    EXPECT_EQ(rs->Value(u"COLUMN_DEFAULT").ToString(), u"((0))") << "the constraint text as the server keeps it";
    EXPECT_TRUE(rs->Value(u"IS_NULLABLE").ToBoolean());
    EXPECT_EQ(rs->Value(u"ORDINAL_POSITION").ToLong(), 2);
    rs->MoveNext();
    EXPECT_EQ(rs->Value(u"DATA_TYPE").ToLong(), ad::WChar);
    EXPECT_EQ(rs->Value(u"CHARACTER_MAXIMUM_LENGTH").ToLong(), 50);
    EXPECT_EQ(rs->Value(u"CHARACTER_OCTET_LENGTH").ToLong(), 100);
    EXPECT_EQ(rs->Value(u"DESCRIPTION").ToString(), u"a title");
    EXPECT_EQ(rs->Value(u"COLUMN_FLAGS").ToLong(), 0x60);
    rs->MoveNext();
    EXPECT_EQ(rs->Value(u"CHARACTER_MAXIMUM_LENGTH").ToLong(), 1073741823);
    EXPECT_EQ(rs->Value(u"COLUMN_FLAGS").ToLong(), 0x80);
    EXPECT_FALSE(rs->Value(u"IS_NULLABLE").ToBoolean());

    // Indexes: the table's own statistics row goes; the primary key is the
    // index that SQLPrimaryKeys names for that table.
    CatalogRows stats = {
        {Variant(u"shop"), Variant(u"dbo"), Variant(u"notes"), kNull, kNull, kNull, N(0), kNull, kNull, kNull, N(12),
         N(1), kNull},
        {Variant(u"shop"), Variant(u"dbo"), Variant(u"notes"), N(0), Variant(u"notes"), Variant(u"PK_notes"), N(1),
         N(1), Variant(u"id"), Variant(u"A"), N(12), N(1), kNull},
        {Variant(u"shop"), Variant(u"dbo"), Variant(u"notes"), N(1), Variant(u"notes"), Variant(u"ix_title"), N(3),
         N(1), Variant(u"title"), Variant(u"D"), kNull, kNull, kNull},
        {Variant(u"shop"), Variant(u"dbo"), Variant(u"notes"), N(1), Variant(u"notes"), Variant(u"ix_title"), N(3),
         N(2), Variant(u"price"), kNull, kNull, kNull, kNull},
        {Variant(u"shop"), Variant(u"dbo"), Variant(u"other"), N(0), Variant(u"other"), Variant(u"ix_title"), N(3),
         N(1), Variant(u"x"), Variant(u"A"), kNull, kNull, kNull},
    };
    CatalogRows keys = {{Variant(u"shop"), Variant(u"dbo"), Variant(u"notes"), Variant(u"id"), N(1), Variant(u"pk_NOTES")}};
    Ref<ado::Recordset> ix = SqlServerIndexesRowset(stats, keys);
    ASSERT_EQ(ix->RecordCount(), 4);
    EXPECT_EQ(ix->Value(u"INDEX_NAME").ToString(), u"PK_notes");
    EXPECT_TRUE(ix->Value(u"PRIMARY_KEY").ToBoolean());
    EXPECT_TRUE(ix->Value(u"UNIQUE").ToBoolean());
    EXPECT_TRUE(ix->Value(u"CLUSTERED").ToBoolean());
    EXPECT_EQ(ix->Value(u"COLLATION").ToLong(), 1);
    EXPECT_EQ(ix->Value(u"CARDINALITY").ToLong(), 12);
    ix->MoveNext();
    EXPECT_FALSE(ix->Value(u"PRIMARY_KEY").ToBoolean());
    EXPECT_FALSE(ix->Value(u"UNIQUE").ToBoolean());
    EXPECT_FALSE(ix->Value(u"CLUSTERED").ToBoolean());
    EXPECT_EQ(ix->Value(u"COLLATION").ToLong(), 2);
    ix->MoveNext();
    EXPECT_EQ(ix->Value(u"ORDINAL_POSITION").ToLong(), 2);
    EXPECT_TRUE(ix->Value(u"COLLATION").IsNull());
    ix->MoveNext();
    EXPECT_FALSE(ix->Value(u"PRIMARY_KEY").ToBoolean()) << "another table's index of the same name";
    // The readers' filters work on these rowsets.
    ix->Filter(Variant(u"ORDINAL_POSITION = 1"));
    EXPECT_EQ(ix->RecordCount(), 3);

    // Foreign keys: rules as words, both names in their places.
    CatalogRows fks = {{Variant(u"shop"), Variant(u"dbo"), Variant(u"notes"), Variant(u"id"), Variant(u"shop"),
                        Variant(u"dbo"), Variant(u"likes"), Variant(u"note_id"), N(1), N(0), N(3), Variant(u"FK_likes"),
                        Variant(u"PK_notes"), N(7)},
                       {Variant(u"shop"), Variant(u"dbo"), Variant(u"notes"), Variant(u"id"), Variant(u"shop"),
                        Variant(u"dbo"), Variant(u"tags"), Variant(u"note_id"), N(1), N(2), N(4), Variant(u"FK_tags"),
                        Variant(u"PK_notes"), kNull}};
    Ref<ado::Recordset> fk = SqlServerForeignKeysRowset(fks);
    EXPECT_EQ(fk->Value(u"UPDATE_RULE").ToString(), u"CASCADE");
    EXPECT_EQ(fk->Value(u"DELETE_RULE").ToString(), u"NO ACTION");
    EXPECT_EQ(fk->Value(u"FK_NAME").ToString(), u"FK_likes");
    EXPECT_EQ(fk->Value(u"PK_NAME").ToString(), u"PK_notes");
    EXPECT_EQ(fk->Value(u"FK_TABLE_NAME").ToString(), u"likes");
    EXPECT_EQ(fk->Value(u"PK_COLUMN_NAME").ToString(), u"id");
    fk->MoveNext();
    EXPECT_EQ(fk->Value(u"UPDATE_RULE").ToString(), u"SET NULL");
    EXPECT_EQ(fk->Value(u"DELETE_RULE").ToString(), u"SET DEFAULT");

    Ref<ado::Recordset> tables = SqlServerTablesRowset(
        {{Variant(u"shop"), Variant(u"dbo"), Variant(u"notes"), Variant(u"TABLE"), kNull},
         {Variant(u"shop"), Variant(u"sys"), Variant(u"trace_xe"), Variant(u"system table"), kNull}});
    tables->Filter(Variant(u"TABLE_TYPE = 'TABLE'"));
    ASSERT_EQ(tables->RecordCount(), 1);
    EXPECT_EQ(tables->Value(u"TABLE_NAME").ToString(), u"notes");
}

TEST(MsSqlSchema, ReaderTypeGroupsDifferFromTheMySqlReaders) {
    using R = DbMsSQLReader;
    EXPECT_EQ(R::GetDataTypeGroup(ad::Currency, 19), dtCurrency);
    EXPECT_EQ(R::GetDataTypeGroup(ad::Numeric, 19), dtDecimal) << "no currency from (19,4) here";
    EXPECT_EQ(R::GetDataTypeGroup(ad::Decimal, 10), dtDecimal);
    EXPECT_EQ(R::GetDataTypeGroup(139, 10), dtDouble);
    EXPECT_EQ(R::GetDataTypeGroup(ad::TinyInt, 1), dtInteger) << "never a boolean here";
    EXPECT_EQ(R::GetDataTypeGroup(ad::UnsignedTinyInt, 1), dtUnsignedInteger);
    EXPECT_EQ(R::GetDataTypeGroup(ad::Boolean, 0), dtBoolean);
    EXPECT_EQ(R::GetDataTypeGroup(ad::SmallInt, 5), dtInteger);
    EXPECT_EQ(R::GetDataTypeGroup(ad::BigInt, 19), dtInteger);
    EXPECT_EQ(R::GetDataTypeGroup(ad::UnsignedBigInt, 20), dtUnsignedInteger);
    EXPECT_EQ(R::GetDataTypeGroup(ad::Single, 7), dtSingle);
    EXPECT_EQ(R::GetDataTypeGroup(ad::Double, 15), dtDouble);
    for (int32_t t : {ad::Char, ad::WChar, ad::VarChar, ad::VarWChar}) {
        EXPECT_EQ(R::GetDataTypeGroup(t, 255), dtVarChar);
        EXPECT_EQ(R::GetDataTypeGroup(t, 256), dtCharBLOB);
    }
    EXPECT_EQ(R::GetDataTypeGroup(ad::VarWChar, 50), dtVarChar);
    EXPECT_EQ(R::GetDataTypeGroup(ad::WChar, 300), dtCharBLOB) << "NVARCHAR(300)";
    EXPECT_EQ(R::GetDataTypeGroup(ad::LongVarWChar, 0), dtCharBLOB);
    EXPECT_EQ(R::GetDataTypeGroup(ad::LongVarChar, 0), dtCharBLOB);
    EXPECT_EQ(R::GetDataTypeGroup(ad::BSTR, 9999), dtVarChar);
    for (int32_t t : {ad::Binary, ad::VarBinary, ad::LongVarBinary}) EXPECT_EQ(R::GetDataTypeGroup(t, 8), dtBinaryBLOB);
    EXPECT_EQ(R::GetDataTypeGroup(ad::Date, 0), dtDateTime);
    EXPECT_EQ(R::GetDataTypeGroup(ad::DBTimeStamp, 0), dtDateTime);
    EXPECT_EQ(R::GetDataTypeGroup(ad::DBDate, 0), dtDate);
    EXPECT_EQ(R::GetDataTypeGroup(ad::DBTime, 0), dtTime);
    EXPECT_EQ(R::GetDataTypeGroup(ad::GUID, 0), dtUnknown);
    EXPECT_EQ(R::GetDataTypeGroup(ad::Variant, 0), dtUnknown);
}

// A MariaDB database with two related tables, read through its driver's
// catalog calls by the SQL Server schema code.
class CatalogCalls : public ::testing::Test {
protected:
    void SetUp() override {
        db_ = std::make_unique<mysqltest::ScratchDb>("ctlg");
        db_->Run(u"CREATE TABLE parent_x (id INT NOT NULL, code VARCHAR(20) DEFAULT 'x', amount DECIMAL(10,2), "
                 u"PRIMARY KEY (id), UNIQUE KEY uq_code (code DESC))");
        // A name the catalog calls would take as a pattern matching parent_x.
        db_->Run(u"CREATE TABLE parent_ (id INT NOT NULL PRIMARY KEY)");
        db_->Run(u"CREATE TABLE child (id INT PRIMARY KEY, parent_id INT, CONSTRAINT fk_parent FOREIGN KEY "
                 u"(parent_id) REFERENCES parent_x(id) ON DELETE CASCADE ON UPDATE SET NULL)");
        backend_ = MakeOdbcBackend();
        String port = mysqltest::Attr(u"port");
        backend_->Open(u"Driver=MySQL ODBC 5.1 Driver;DATABASE=" + db_->Name() + u";SERVER=" +
                           mysqltest::Attr(u"dblocation") + u";UID=" + mysqltest::Attr(u"username") + u";PASSWORD=" +
                           mysqltest::Attr(u"password") + u";PORT=" + (port.empty() ? String(u"3306") : port) +
                           u";OPTION=18475;",
                       15);
    }
    Ref<ado::Recordset> Schema(int32_t schema, const std::vector<Variant>& criteria) {
        return SqlServerOpenSchema(*backend_, schema, criteria);
    }
    std::unique_ptr<mysqltest::ScratchDb> db_;
    std::shared_ptr<Backend> backend_;
};

TEST_F(CatalogCalls, RowsetsOfALiveDriverWithExactNames) {
    Ref<ado::Recordset> tables = Schema(ado::adSchemaTables, {});
    ASSERT_EQ(tables->RecordCount(), 3) << "the current database only";
    tables = Schema(ado::adSchemaTables, {Variant(), Variant(), Variant(u"parent_")});
    ASSERT_EQ(tables->RecordCount(), 1) << "an underscore is no wildcard";
    EXPECT_EQ(tables->Value(u"TABLE_NAME").ToString(), u"parent_");
    EXPECT_EQ(tables->Value(u"TABLE_TYPE").ToString(), u"TABLE");

    Ref<ado::Recordset> columns = Schema(ado::adSchemaColumns, {Variant(), Variant(), Variant(u"parent_x")});
    ASSERT_EQ(columns->RecordCount(), 3);
    EXPECT_EQ(columns->Value(u"COLUMN_NAME").ToString(), u"id");
    EXPECT_EQ(columns->Value(u"DATA_TYPE").ToLong(), ad::Integer);
    EXPECT_FALSE(columns->Value(u"IS_NULLABLE").ToBoolean());
    columns->MoveNext();
    EXPECT_EQ(columns->Value(u"DATA_TYPE").ToLong(), ad::Char);
    EXPECT_EQ(columns->Value(u"CHARACTER_MAXIMUM_LENGTH").ToLong(), 20);
    EXPECT_TRUE(columns->Value(u"IS_NULLABLE").ToBoolean());
    columns->MoveNext();
    EXPECT_EQ(columns->Value(u"DATA_TYPE").ToLong(), ad::Numeric);
    EXPECT_EQ(columns->Value(u"NUMERIC_PRECISION").ToLong(), 10);
    EXPECT_EQ(columns->Value(u"NUMERIC_SCALE").ToLong(), 2);
    EXPECT_EQ(columns->Value(u"ORDINAL_POSITION").ToLong(), 3);

    // Indexes of one table, and of all (one call per table).
    Ref<ado::Recordset> ix =
        Schema(ado::adSchemaIndexes, {Variant(), Variant(), Variant(), Variant(), Variant(u"parent_x")});
    ASSERT_EQ(ix->RecordCount(), 2);
    ix->Filter(Variant(u"INDEX_NAME = 'uq_code'"));
    ASSERT_EQ(ix->RecordCount(), 1);
    EXPECT_FALSE(ix->Value(u"PRIMARY_KEY").ToBoolean());
    EXPECT_TRUE(ix->Value(u"UNIQUE").ToBoolean());
    EXPECT_EQ(ix->Value(u"COLUMN_NAME").ToString(), u"code");
    ix->Filter(Variant(u"INDEX_NAME = 'PRIMARY'"));
    EXPECT_TRUE(ix->Value(u"PRIMARY_KEY").ToBoolean());
    // Every table's: three primary keys, uq_code, and the index the server
    // made for the foreign key.
    EXPECT_EQ(Schema(ado::adSchemaIndexes, {}).Get().RecordCount(), 5);
    EXPECT_EQ(Schema(ado::adSchemaIndexes, {Variant(), Variant(), Variant(u"PRIMARY")}).Get().RecordCount(), 3);

    Ref<ado::Recordset> pk = Schema(ado::adSchemaPrimaryKeys, {Variant(), Variant(), Variant(u"parent_")});
    ASSERT_EQ(pk->RecordCount(), 1);
    EXPECT_EQ(pk->Value(u"TABLE_NAME").ToString(), u"parent_");
    EXPECT_EQ(pk->Value(u"PK_NAME").ToString(), u"PRIMARY");
    EXPECT_EQ(Schema(ado::adSchemaPrimaryKeys, {}).Get().RecordCount(), 3);

    Ref<ado::Recordset> fk = Schema(ado::adSchemaForeignKeys,
                                    {Variant(), Variant(), Variant(), Variant(), Variant(), Variant(u"child")});
    ASSERT_EQ(fk->RecordCount(), 1);
    EXPECT_EQ(fk->Value(u"PK_TABLE_NAME").ToString(), u"parent_x");
    EXPECT_EQ(fk->Value(u"FK_COLUMN_NAME").ToString(), u"parent_id");
    EXPECT_EQ(fk->Value(u"DELETE_RULE").ToString(), u"CASCADE");
    EXPECT_EQ(fk->Value(u"UPDATE_RULE").ToString(), u"SET NULL");
    EXPECT_EQ(fk->Value(u"FK_NAME").ToString(), u"fk_parent");
    EXPECT_EQ(Schema(ado::adSchemaForeignKeys, {}).Get().RecordCount(), 1);
    EXPECT_EQ(Schema(ado::adSchemaForeignKeys, {Variant(), Variant(), Variant(u"parent_")}).Get().RecordCount(), 0);

    // The SQL Server reader does not ask for other schemas.
    EXPECT_EQ(Failure([&] { Schema(ado::adSchemaColumns + 1, {}); }).Number(), ado::adErrFeatureNotAvailable);
}

TEST(MsSqlReader, ProviderRowsetsBecomeCanonicalRowsets) {
    // The reader over a session whose provider runs here: the MySQL one.
    mysqltest::ScratchDb db("rdr");
    db.Run(u"CREATE TABLE owner (id INT NOT NULL PRIMARY KEY)");
    db.Run(u"CREATE TABLE item (id INT NOT NULL, flag TINYINT(1), small TINYINT UNSIGNED, cost DECIMAL(19,4), "
           u"name VARCHAR(40) NOT NULL DEFAULT 'n', note VARCHAR(300), body TEXT, raw BLOB, at DATETIME, d DATE, "
           u"owner_id INT, PRIMARY KEY (id), KEY ix_two (name DESC, at), "
           u"CONSTRAINT fk_owner FOREIGN KEY (owner_id) REFERENCES owner(id))");
    Ref<DbMySqlDB> session = db.Session();
    auto reader = Ref<DbMsSQLReader>::New();
    reader->Init(session);

    Ref<ado::Recordset> tables = reader->Tables();
    EXPECT_EQ(tables->RecordCount(), 2);
    db.Run(u"CREATE TABLE later (id INT)");
    EXPECT_EQ(reader->Tables()->RecordCount(), 2) << "the table list is kept";
    EXPECT_TRUE(reader->Refresh().IsEmpty());
    EXPECT_EQ(reader->Tables()->RecordCount(), 3);

    Ref<ado::Recordset> cols = reader->TableColumns(u"item");
    ASSERT_EQ(cols->RecordCount(), 11);
    std::vector<std::pair<String, int32_t>> groups;
    for (cols->MoveFirst(); !cols->Eof(); cols->MoveNext())
        groups.push_back({cols->Value(u"column_name").ToString(), cols->Value(u"data_type_group").ToLong()});
    EXPECT_EQ(groups, (std::vector<std::pair<String, int32_t>>{
                          {u"id", dtInteger}, {u"flag", dtInteger}, {u"small", dtUnsignedInteger},
                          {u"cost", dtDecimal}, {u"name", dtVarChar}, {u"note", dtCharBLOB}, {u"body", dtCharBLOB},
                          {u"raw", dtBinaryBLOB}, {u"at", dtDateTime}, {u"d", dtDate}, {u"owner_id", dtInteger}}));
    cols->MoveFirst();
    EXPECT_FALSE(cols->Value(u"is_nullable").ToBoolean());
    EXPECT_EQ(cols->Value(u"numeric_precision").ToLong(), 10);
    EXPECT_EQ(cols->Value(u"character_maximum_length").ToLong(), 0);
    cols->Find(u"column_name = 'cost'");
    EXPECT_EQ(cols->Value(u"numeric_scale").ToLong(), 4);
    EXPECT_EQ(cols->Value(u"numeric_precision").ToLong(), 19);
    cols->MoveFirst();
    cols->Find(u"column_name = 'name'");
    // The length as the provider gives it, not divided by anything: this
    // provider counts bytes of UTF-8 for a server whose version text begins
    // with a digit below 5 ("10.x").
    EXPECT_EQ(cols->Value(u"character_maximum_length").ToLong(), 120);
    EXPECT_TRUE(cols->Value(u"has_default").ToBoolean());
    EXPECT_EQ(cols->Value(u"column_default").ToString(), u"n");
    EXPECT_FALSE(cols->Value(u"is_nullable").ToBoolean());
    cols->MoveFirst();
    cols->Find(u"column_name = 'note'");
    EXPECT_EQ(cols->Value(u"column_default").ToString(), u"");
    EXPECT_TRUE(cols->Value(u"is_nullable").ToBoolean());
    EXPECT_EQ(reader->TableColumns(u"nothing")->RecordCount(), 0);

    Ref<ado::Recordset> ix = reader->Indexes(u"item");
    ASSERT_EQ(ix->RecordCount(), 3) << "one row an index";
    ix->MoveFirst();
    ix->Find(u"index_name = 'PRIMARY'");
    EXPECT_TRUE(ix->Value(u"primary_key").ToBoolean());
    EXPECT_TRUE(ix->Value(u"unique").ToBoolean());
    ix->MoveFirst();
    ix->Find(u"index_name = 'ix_two'");
    EXPECT_FALSE(ix->Value(u"primary_key").ToBoolean());
    EXPECT_FALSE(ix->Value(u"unique").ToBoolean());

    Ref<ado::Recordset> ixc = reader->IndexColumns(u"ix_two", u"item");
    ASSERT_EQ(ixc->RecordCount(), 2);
    ixc->MoveFirst();
    EXPECT_EQ(ixc->Value(u"column_name").ToString(), u"name");
    EXPECT_EQ(ixc->Value(u"sort_order").ToLong(), 2);
    EXPECT_EQ(ixc->Value(u"index_name").ToString(), u"ix_two");
    ixc->MoveNext();
    EXPECT_EQ(ixc->Value(u"column_name").ToString(), u"at");
    EXPECT_EQ(ixc->Value(u"sort_order").ToLong(), 1);
    EXPECT_EQ(reader->IndexColumns(u"ix_none", u"item")->RecordCount(), 0);

    Ref<ado::Recordset> keys = reader->Keys(u"item");
    ASSERT_EQ(keys->RecordCount(), 1);
    keys->MoveFirst();
    EXPECT_EQ(keys->Value(u"pk_table_name").ToString(), u"owner");
    EXPECT_EQ(keys->Value(u"fk_column_name").ToString(), u"owner_id");
    EXPECT_EQ(keys->Value(u"fk_name").ToString(), u"fk_owner");
    EXPECT_EQ(reader->Keys(u"owner")->RecordCount(), 0);
}

} // namespace
} // namespace zolsdk::mssqltest
