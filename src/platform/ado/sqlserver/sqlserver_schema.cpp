#include "platform/ado/sqlserver/sqlserver_schema.hpp"

#include "platform/ado/schema_rowsets.hpp"
#include <map>

#include "platform/ado/odbc/odbc_catalog.hpp"
#include "platform/failure_chain.hpp"
#include "platform/ado/rowset_feed.hpp"

namespace zolsdk::ado::detail {

namespace {

// ODBC type numbers of the catalog rows (sql.h names, kept local so this
// file needs no driver headers).
constexpr int32_t kSqlChar = 1, kSqlNumeric = 2, kSqlDecimal = 3, kSqlInteger = 4, kSqlSmallInt = 5, kSqlFloat = 6,
                  kSqlReal = 7, kSqlDouble = 8, kSqlVarChar = 12, kSqlTypeDate = 91, kSqlTypeTime = 92,
                  kSqlTypeTimestamp = 93, kSqlLongVarChar = -1, kSqlBinary = -2, kSqlVarBinary = -3,
                  kSqlLongVarBinary = -4, kSqlBigInt = -5, kSqlTinyInt = -6, kSqlBit = -7, kSqlWChar = -8,
                  kSqlWVarChar = -9, kSqlWLongVarChar = -10, kSqlGuid = -11, kSqlSsTime2 = -154, kSqlSsXml = -152;
constexpr int32_t kOdbcTableStat = 0, kOdbcIndexClustered = 1, kOdbcNullable = 1;

// The longest narrow and wide texts and the longest binary a column holds.
constexpr int32_t kLongNarrow = 2147483647, kLongWide = 1073741823, kLongBinary = 2147483647;
// Above this a declared size means "(max)".
constexpr int32_t kMaxDeclared = 8000;

String Text(const Variant& v) { return v.IsNull() || v.IsEmpty() ? String() : v.ToString(); }
Variant TextOrNull(const Variant& v) { return v.IsNull() || v.IsEmpty() ? Variant::Null() : Variant(v.ToString()); }
Variant LongOrNull(const Variant& v) {
    if (v.IsNull() || v.IsEmpty()) return Variant::Null();
    double d = v.ToDouble();
    if (d > 2147483647.0) return Variant(int32_t{2147483647});
    return Variant(static_cast<int32_t>(d));
}
int32_t LongOr(const Variant& v, int32_t fallback) { return v.IsNull() || v.IsEmpty() ? fallback : LongOrNull(v).ToLong(); }
const Variant& Cell(const CatalogRow& r, size_t i) {
    static const Variant null = Variant::Null();
    return i < r.size() ? r[i] : null;
}

Ref<Recordset> Finish(Ref<Recordset> rs) {
    if (rs->RecordCount() > 0) rs->MoveFirst();
    return rs;
}

// A declared length, or the long figure when the type is a (max) one.
Variant DeclaredLength(const Variant& columnSize, int32_t longFigure, bool& isLong) {
    int32_t n = LongOr(columnSize, 0);
    if (n <= 0 || n > kMaxDeclared) {
        isLong = true;
        return Variant(longFigure);
    }
    return Variant(n);
}

SqlServerTypeFigures ByOdbcType(int32_t odbcType, const Variant& columnSize, const Variant& decimalDigits) {
    SqlServerTypeFigures f;
    auto number = [&](int32_t type, int32_t precision) {
        f.dataType = type;
        f.precision = Variant(precision);
    };
    switch (odbcType) {
    case kSqlBit: f.dataType = adType::Boolean; break;
    case kSqlTinyInt: number(adType::UnsignedTinyInt, 3); break;
    case kSqlSmallInt: number(adType::SmallInt, 5); break;
    case kSqlInteger: number(adType::Integer, 10); break;
    case kSqlBigInt: number(adType::BigInt, 19); break;
    case kSqlReal: number(adType::Single, 7); break;
    case kSqlFloat: case kSqlDouble: number(adType::Double, 15); break;
    case kSqlDecimal: case kSqlNumeric:
        f.dataType = adType::Numeric;
        f.precision = LongOrNull(columnSize);
        f.scale = LongOrNull(decimalDigits).IsNull() ? Variant(int32_t{0}) : LongOrNull(decimalDigits);
        break;
    case kSqlTypeDate: f.dataType = adType::DBDate; break;
    case kSqlTypeTime: case kSqlSsTime2: f.dataType = adType::DBTime; break;
    case kSqlTypeTimestamp: f.dataType = adType::DBTimeStamp; break;
    case kSqlChar: case kSqlVarChar: case kSqlLongVarChar:
        f.dataType = adType::Char;
        f.maxLength = odbcType == kSqlLongVarChar ? (f.isLong = true, Variant(kLongNarrow))
                                                  : DeclaredLength(columnSize, kLongNarrow, f.isLong);
        break;
    case kSqlBinary: case kSqlVarBinary: case kSqlLongVarBinary:
        f.dataType = adType::Binary;
        f.maxLength = odbcType == kSqlLongVarBinary ? (f.isLong = true, Variant(kLongBinary))
                                                    : DeclaredLength(columnSize, kLongBinary, f.isLong);
        break;
    case kSqlGuid: f.dataType = adType::GUID; break;
    case kSqlWLongVarChar: case kSqlSsXml:
        f.dataType = adType::WChar;
        f.isLong = true;
        f.maxLength = Variant(kLongWide);
        break;
    case kSqlWChar: case kSqlWVarChar:
    default:
        // Wide text, and whatever else the driver has: it travels as text.
        f.dataType = adType::WChar;
        f.maxLength = DeclaredLength(columnSize, kLongWide, f.isLong);
        break;
    }
    return f;
}

} // namespace

namespace {

// How a type's length is figured.
enum class Length { None, Declared, Long, Fixed, SizeOr };
// Precision from COLUMN_SIZE and scale from DECIMAL_DIGITS (exact numbers).
constexpr int32_t kFromColumn = -1;

struct TypeRow {
    StringView name;
    int32_t dataType;
    int32_t precision; // 0: none
    Length length;
    int32_t figure;    // the long figure, the fixed length or the fallback
};

constexpr TypeRow kTypes[] = {
    //  TYPE_NAME            DATA_TYPE                 precision    length           figure
    {u"bit",              adType::Boolean,          0,           Length::None,     0},
    {u"tinyint",          adType::UnsignedTinyInt,  3,           Length::None,     0},
    {u"smallint",         adType::SmallInt,         5,           Length::None,     0},
    {u"int",              adType::Integer,          10,          Length::None,     0},
    {u"bigint",           adType::BigInt,           19,          Length::None,     0},
    {u"real",             adType::Single,           7,           Length::None,     0},
    {u"float",            adType::Double,           15,          Length::None,     0},
    {u"money",            adType::Currency,         19,          Length::None,     0},
    {u"smallmoney",       adType::Currency,         10,          Length::None,     0},
    {u"decimal",          adType::Numeric,          kFromColumn, Length::None,     0},
    {u"numeric",          adType::Numeric,          kFromColumn, Length::None,     0},
    {u"datetime",         adType::DBTimeStamp,      0,           Length::None,     0},
    {u"smalldatetime",    adType::DBTimeStamp,      0,           Length::None,     0},
    {u"datetime2",        adType::DBTimeStamp,      0,           Length::None,     0},
    {u"date",             adType::DBDate,           0,           Length::None,     0},
    {u"time",             adType::DBTime,           0,           Length::None,     0},
    {u"char",             adType::Char,             0,           Length::Declared, kLongNarrow},
    {u"varchar",          adType::Char,             0,           Length::Declared, kLongNarrow},
    {u"text",             adType::Char,             0,           Length::Long,     kLongNarrow},
    {u"nchar",            adType::WChar,            0,           Length::Declared, kLongWide},
    {u"nvarchar",         adType::WChar,            0,           Length::Declared, kLongWide},
    {u"sysname",          adType::WChar,            0,           Length::Fixed,    128},
    {u"ntext",            adType::WChar,            0,           Length::Long,     kLongWide},
    {u"xml",              adType::WChar,            0,           Length::Long,     kLongWide},
    {u"binary",           adType::Binary,           0,           Length::Declared, kLongBinary},
    {u"varbinary",        adType::Binary,           0,           Length::Declared, kLongBinary},
    {u"image",            adType::Binary,           0,           Length::Long,     kLongBinary},
    {u"geography",        adType::Binary,           0,           Length::Long,     kLongBinary},
    {u"geometry",         adType::Binary,           0,           Length::Long,     kLongBinary},
    {u"hierarchyid",      adType::Binary,           0,           Length::Long,     kLongBinary},
    {u"timestamp",        adType::Binary,           0,           Length::Fixed,    8},
    {u"rowversion",       adType::Binary,           0,           Length::Fixed,    8},
    {u"uniqueidentifier", adType::GUID,             0,           Length::None,     0},
    // No date type keeps the offset: the text form does.
    {u"datetimeoffset",   adType::WChar,            0,           Length::SizeOr,   34},
    {u"sql_variant",      adType::WChar,            0,           Length::Fixed,    kMaxDeclared},
};

} // namespace

SqlServerTypeFigures SqlServerColumnFigures(const String& typeName, int32_t odbcType, const Variant& columnSize,
                                            const Variant& decimalDigits) {
    String t = LCase(Trim(typeName));
    // Identity columns come as "int identity", "numeric() identity", ...
    if (size_t p = t.find(u" identity"); p != String::npos) t = Trim(t.substr(0, p));
    if (size_t p = t.find(u"()"); p != String::npos) t = t.substr(0, p);
    const TypeRow* row = nullptr;
    for (const TypeRow& r : kTypes)
        if (r.name == t) row = &r;
    // A user-defined type (or one newer than this table): its ODBC type is
    // the base type's.
    if (!row) return ByOdbcType(odbcType, columnSize, decimalDigits);

    SqlServerTypeFigures f;
    f.dataType = row->dataType;
    if (row->precision == kFromColumn) {
        f.precision = LongOrNull(columnSize);
        f.scale = LongOrNull(decimalDigits).IsNull() ? Variant(int32_t{0}) : LongOrNull(decimalDigits);
    } else if (row->precision > 0) {
        f.precision = Variant(row->precision);
    }
    switch (row->length) {
    case Length::None: break;
    case Length::Declared: f.maxLength = DeclaredLength(columnSize, row->figure, f.isLong); break;
    case Length::Long:
        f.maxLength = Variant(row->figure);
        f.isLong = true;
        break;
    case Length::Fixed: f.maxLength = Variant(row->figure); break;
    case Length::SizeOr: f.maxLength = Variant(LongOr(columnSize, row->figure)); break;
    }
    return f;
}

// ---- tables --------------------------------------------------------------------
// SQLTables: TABLE_CAT, TABLE_SCHEM, TABLE_NAME, TABLE_TYPE, REMARKS.

Ref<Recordset> SqlServerTablesRowset(const CatalogRows& rows) {
    auto rs = TablesSchemaRowset();
    for (const CatalogRow& r : rows)
        RowsetFeed::AppendRow(*rs, {TextOrNull(Cell(r, 0)), TextOrNull(Cell(r, 1)), Variant(Text(Cell(r, 2))),
                       Variant(UCase(Text(Cell(r, 3)))), Variant::Null(), TextOrNull(Cell(r, 4)), Variant::Null(),
                       Variant::Null(), Variant::Null()});
    return Finish(rs);
}

// ---- columns -------------------------------------------------------------------
// SQLColumns: TABLE_CAT, TABLE_SCHEM, TABLE_NAME, COLUMN_NAME, DATA_TYPE,
// TYPE_NAME, COLUMN_SIZE, BUFFER_LENGTH, DECIMAL_DIGITS, NUM_PREC_RADIX,
// NULLABLE, REMARKS, COLUMN_DEF, SQL_DATA_TYPE, SQL_DATETIME_SUB,
// CHAR_OCTET_LENGTH, ORDINAL_POSITION, IS_NULLABLE.

Ref<Recordset> SqlServerColumnsRowset(const CatalogRows& rows) {
    auto rs = ColumnsSchemaRowset();
    for (const CatalogRow& r : rows) {
        int32_t odbcType = LongOr(Cell(r, 4), 0);
        SqlServerTypeFigures f = SqlServerColumnFigures(Text(Cell(r, 5)), odbcType, Cell(r, 6), Cell(r, 8));
        const Variant& nullableCode = Cell(r, 10);
        bool nullable = nullableCode.IsNull() ? EqualsNoCase(Text(Cell(r, 17)), u"YES")
                                              : nullableCode.ToLong() == kOdbcNullable;
        Variant def = TextOrNull(Cell(r, 12));
        Variant octets = Variant::Null();
        if (!f.maxLength.IsNull()) {
            int64_t n = f.maxLength.ToLong();
            if (f.dataType == adType::WChar) n *= 2;
            octets = Variant(static_cast<int32_t>(std::min<int64_t>(n, 2147483647)));
        }
        bool fixed = f.maxLength.IsNull() || EqualsNoCase(Text(Cell(r, 5)), u"char") ||
                     EqualsNoCase(Text(Cell(r, 5)), u"nchar") || EqualsNoCase(Text(Cell(r, 5)), u"binary");
        // DBCOLUMNFLAGS: 0x10 fixed length, 0x20 | 0x40 nullable, 0x80 long.
        int32_t flags = (fixed && !f.isLong ? 0x10 : 0) | (nullable ? 0x60 : 0) | (f.isLong ? 0x80 : 0);
        bool datetime = f.dataType == adType::DBTimeStamp || f.dataType == adType::DBTime;
        RowsetFeed::AppendRow(*rs, {TextOrNull(Cell(r, 0)), TextOrNull(Cell(r, 1)), Variant(Text(Cell(r, 2))),
                       Variant(Text(Cell(r, 3))), Variant::Null(), Variant::Null(), LongOrNull(Cell(r, 16)),
                       Variant(!def.IsNull()), def, Variant(flags), Variant(nullable), Variant(f.dataType),
                       Variant::Null(), f.maxLength, octets, f.precision, f.scale,
                       datetime ? LongOrNull(Cell(r, 8)) : Variant::Null(), Variant::Null(), Variant::Null(),
                       Variant::Null(), Variant::Null(), Variant::Null(), Variant::Null(), Variant::Null(),
                       Variant::Null(), Variant::Null(), TextOrNull(Cell(r, 11))});
    }
    return Finish(rs);
}

// ---- indexes -------------------------------------------------------------------
// SQLStatistics: TABLE_CAT, TABLE_SCHEM, TABLE_NAME, NON_UNIQUE,
// INDEX_QUALIFIER, INDEX_NAME, TYPE, ORDINAL_POSITION, COLUMN_NAME,
// ASC_OR_DESC, CARDINALITY, PAGES, FILTER_CONDITION.
// SQLPrimaryKeys: TABLE_CAT, TABLE_SCHEM, TABLE_NAME, COLUMN_NAME, KEY_SEQ,
// PK_NAME.

Ref<Recordset> SqlServerIndexesRowset(const CatalogRows& statistics, const CatalogRows& primaryKeys) {
    // Table (schema-qualified, case-blind) to the name of its primary key.
    std::map<String, String> pkOf;
    auto key = [](const CatalogRow& r) { return LCase(Text(Cell(r, 1))) + u"." + LCase(Text(Cell(r, 2))); };
    for (const CatalogRow& r : primaryKeys) pkOf.emplace(key(r), Text(Cell(r, 5)));
    auto rs = IndexesSchemaRowset();
    for (const CatalogRow& r : statistics) {
        // The row that describes the table itself names no index.
        if (LongOr(Cell(r, 6), kOdbcTableStat) == kOdbcTableStat) continue;
        String name = Text(Cell(r, 5));
        auto pk = pkOf.find(key(r));
        bool primary = pk != pkOf.end() && EqualsNoCase(pk->second, name);
        String order = UCase(Text(Cell(r, 9)));
        Variant collation = order.empty() ? Variant::Null() : Variant(int32_t{order == u"D" ? 2 : 1});
        const Variant& nonUnique = Cell(r, 3);
        bool unique = !nonUnique.IsNull() && !nonUnique.ToBoolean();
        RowsetFeed::AppendRow(*rs, {TextOrNull(Cell(r, 0)), TextOrNull(Cell(r, 1)), Variant(Text(Cell(r, 2))),
                       TextOrNull(Cell(r, 0)), TextOrNull(Cell(r, 1)), Variant(name), Variant(primary),
                       Variant(unique), Variant(LongOr(Cell(r, 6), 0) == kOdbcIndexClustered), Variant(int32_t{1}),
                       Variant::Null(), Variant::Null(), Variant::Null(), Variant(false), Variant(true),
                       Variant(int32_t{4}), LongOrNull(Cell(r, 7)), Variant(Text(Cell(r, 8))), Variant::Null(),
                       Variant::Null(), collation, LongOrNull(Cell(r, 10)), LongOrNull(Cell(r, 11)),
                       TextOrNull(Cell(r, 12)), Variant(false)});
    }
    return Finish(rs);
}

Ref<Recordset> SqlServerPrimaryKeysRowset(const CatalogRows& rows) {
    auto rs = PrimaryKeysSchemaRowset();
    for (const CatalogRow& r : rows)
        RowsetFeed::AppendRow(*rs, {TextOrNull(Cell(r, 0)), TextOrNull(Cell(r, 1)), Variant(Text(Cell(r, 2))),
                       Variant(Text(Cell(r, 3))), Variant::Null(), Variant::Null(), LongOrNull(Cell(r, 4)),
                       Variant(Text(Cell(r, 5)))});
    return Finish(rs);
}

// ---- foreign keys ----------------------------------------------------------------
// SQLForeignKeys: PKTABLE_CAT, PKTABLE_SCHEM, PKTABLE_NAME, PKCOLUMN_NAME,
// FKTABLE_CAT, FKTABLE_SCHEM, FKTABLE_NAME, FKCOLUMN_NAME, KEY_SEQ,
// UPDATE_RULE, DELETE_RULE, FK_NAME, PK_NAME, DEFERRABILITY.

namespace {
String Rule(const Variant& v) {
    if (v.IsNull() || v.IsEmpty()) return u"NO ACTION";
    switch (v.ToLong()) {
    case 0: return u"CASCADE";
    case 2: return u"SET NULL";
    case 4: return u"SET DEFAULT";
    default: return u"NO ACTION"; // 1 restrict and 3 no action refuse the change alike
    }
}
} // namespace

Ref<Recordset> SqlServerForeignKeysRowset(const CatalogRows& rows) {
    auto rs = ForeignKeysSchemaRowset();
    for (const CatalogRow& r : rows) {
        const Variant& deferrability = Cell(r, 13);
        RowsetFeed::AppendRow(*rs, {TextOrNull(Cell(r, 0)), TextOrNull(Cell(r, 1)), Variant(Text(Cell(r, 2))),
                       Variant(Text(Cell(r, 3))), Variant::Null(), Variant::Null(), TextOrNull(Cell(r, 4)),
                       TextOrNull(Cell(r, 5)), Variant(Text(Cell(r, 6))), Variant(Text(Cell(r, 7))), Variant::Null(),
                       Variant::Null(), LongOrNull(Cell(r, 8)), Variant(Rule(Cell(r, 9))), Variant(Rule(Cell(r, 10))),
                       Variant(Text(Cell(r, 12))), Variant(Text(Cell(r, 11))),
                       Variant(static_cast<int16_t>(deferrability.IsNull() ? 7 : deferrability.ToLong()))});
    }
    return Finish(rs);
}

// ---- reading through the driver ------------------------------------------------------

namespace {

String Criterion(const std::vector<Variant>& c, size_t i) {
    if (i >= c.size() || c[i].IsEmpty() || c[i].IsNull()) return {};
    return c[i].ToString();
}

CatalogRows Call(Backend& odbc, OdbcCatalogCall call, const std::vector<String>& args) {
    CatalogRows rows;
    std::unique_ptr<Cursor> c = OdbcCatalog(odbc, call, args);
    if (!c) return rows;
    CatalogRow r;
    while (c->Fetch(r)) rows.push_back(std::move(r));
    return rows;
}

// Keeps the rows whose field `i` equals `wanted` (case-blind, as the
// server's names compare); an empty `wanted` keeps all. The driver takes
// names as patterns or folds them its own way: this makes the
// restriction exact.
void Keep(CatalogRows& rows, size_t i, const String& wanted) {
    if (wanted.empty()) return;
    std::erase_if(rows, [&](const CatalogRow& r) { return !EqualsNoCase(Text(Cell(r, i)), wanted); });
}

// The user tables (catalog, schema, name) a rowset that spans tables must visit.
CatalogRows UserTables(Backend& odbc, const String& catalog, const String& schema) {
    CatalogRows tables = Call(odbc, OdbcCatalogCall::Tables, {catalog, schema, String(), String()});
    std::erase_if(tables, [](const CatalogRow& r) { return !EqualsNoCase(Text(Cell(r, 3)), u"TABLE"); });
    return tables;
}

// Runs a per-table catalog call for one table, or for every user table.
CatalogRows PerTable(Backend& odbc, OdbcCatalogCall call, const String& catalog, const String& schema,
                     const String& table) {
    if (!table.empty()) return Call(odbc, call, {catalog, schema, table});
    CatalogRows all;
    for (const CatalogRow& t : UserTables(odbc, catalog, schema)) {
        CatalogRows part = Call(odbc, call, {Text(Cell(t, 0)), Text(Cell(t, 1)), Text(Cell(t, 2))});
        Keep(part, 2, Text(Cell(t, 2)));
        for (auto& r : part) all.push_back(std::move(r));
    }
    return all;
}

} // namespace

Ref<Recordset> SqlServerOpenSchema(Backend& odbc, int32_t schema, const std::vector<Variant>& criteria) {
    switch (schema) {
    case adSchemaTables: {
        CatalogRows rows = Call(odbc, OdbcCatalogCall::Tables,
                                {Criterion(criteria, 0), Criterion(criteria, 1), Criterion(criteria, 2), String()});
        Keep(rows, 2, Criterion(criteria, 2));
        Keep(rows, 3, Criterion(criteria, 3));
        return SqlServerTablesRowset(rows);
    }
    case adSchemaColumns: {
        CatalogRows rows = Call(odbc, OdbcCatalogCall::Columns,
                                {Criterion(criteria, 0), Criterion(criteria, 1), Criterion(criteria, 2),
                                 Criterion(criteria, 3)});
        Keep(rows, 2, Criterion(criteria, 2));
        Keep(rows, 3, Criterion(criteria, 3));
        return SqlServerColumnsRowset(rows);
    }
    case adSchemaIndexes: {
        String catalog = Criterion(criteria, 0), owner = Criterion(criteria, 1), table = Criterion(criteria, 4);
        CatalogRows stats = PerTable(odbc, OdbcCatalogCall::Statistics, catalog, owner, table);
        Keep(stats, 2, table);
        Keep(stats, 5, Criterion(criteria, 2));
        CatalogRows keys = PerTable(odbc, OdbcCatalogCall::PrimaryKeys, catalog, owner, table);
        return SqlServerIndexesRowset(stats, keys);
    }
    case adSchemaPrimaryKeys: {
        String table = Criterion(criteria, 2);
        CatalogRows rows =
            PerTable(odbc, OdbcCatalogCall::PrimaryKeys, Criterion(criteria, 0), Criterion(criteria, 1), table);
        Keep(rows, 2, table);
        return SqlServerPrimaryKeysRowset(rows);
    }
    case adSchemaForeignKeys: {
        String pkTable = Criterion(criteria, 2), fkTable = Criterion(criteria, 5);
        CatalogRows rows;
        if (!pkTable.empty() || !fkTable.empty()) {
            rows = Call(odbc, OdbcCatalogCall::ForeignKeys,
                        {Criterion(criteria, 0), Criterion(criteria, 1), pkTable, Criterion(criteria, 3),
                         Criterion(criteria, 4), fkTable});
        } else {
            // The driver wants one of the two tables: visit each as the
            // holder of keys.
            for (const CatalogRow& t : UserTables(odbc, Criterion(criteria, 3), Criterion(criteria, 4))) {
                CatalogRows part = Call(odbc, OdbcCatalogCall::ForeignKeys,
                                        {String(), String(), String(), Text(Cell(t, 0)), Text(Cell(t, 1)),
                                         Text(Cell(t, 2))});
                for (auto& r : part) rows.push_back(std::move(r));
            }
        }
        Keep(rows, 2, pkTable);
        Keep(rows, 6, fkTable);
        return SqlServerForeignKeysRowset(rows);
    }
    default:
        RaisePlatformFrom(adErrFeatureNotAvailable, kConnectionSource,
                          u"Object or provider is not capable of performing requested operation.");
    }
}

} // namespace zolsdk::ado::detail
