// Schema rowsets of MySQL-family servers, built from INFORMATION_SCHEMA.
// The field names and type numbers are those the readers expect of any
// provider: base types only in DATA_TYPE (text 130, binary 128), lengths in
// characters, booleans for flags, update and delete rules as words.
#include <algorithm>

#include "platform/ado/backend.hpp"
#include "platform/ado/schema_rowsets.hpp"
#include "platform/failure_chain.hpp"
#include "platform/ado/rowset_feed.hpp"

namespace zolsdk::ado::detail {

namespace {

using Row = std::vector<Variant>;

std::vector<Row> Query(Backend& b, const String& sql) {
    int64_t affected = 0;
    std::vector<Row> rows;
    std::unique_ptr<Cursor> c = b.Execute(sql, {}, affected, 0);
    if (!c) return rows;
    Row r;
    while (c->Fetch(r)) rows.push_back(std::move(r));
    return rows;
}

// A text literal for the server: quotes doubled, back-slashes escaped.
String Lit(const String& s) {
    String out = u"'";
    for (char16_t ch : s) {
        if (ch == u'\'') out += u"''";
        else if (ch == u'\\') out += u"\\\\";
        else out += ch;
    }
    out += u"'";
    return out;
}

String Criterion(const std::vector<Variant>& c, size_t i) {
    if (i >= c.size() || c[i].IsEmpty() || c[i].IsNull()) return {};
    return c[i].ToString();
}

String Text(const Variant& v) { return v.IsNull() || v.IsEmpty() ? String() : v.ToString(); }
Variant TextOrNull(const Variant& v) { return v.IsNull() || v.IsEmpty() ? Variant::Null() : Variant(v.ToString()); }
Variant LongOrNull(const Variant& v) {
    if (v.IsNull() || v.IsEmpty()) return Variant::Null();
    double d = v.ToDouble();
    if (d > 2147483647.0) return Variant(int32_t{2147483647});
    return Variant(static_cast<int32_t>(d));
}

struct Context {
    String catalog;   // the database the rows belong to
    bool oldLengths;  // server version text begins with a digit below 5
};

Context Current(Backend& b, const String& wantedCatalog) {
    std::vector<Row> r = Query(b, u"SELECT DATABASE(), VERSION()");
    Context cx;
    cx.catalog = wantedCatalog;
    String version;
    if (!r.empty()) {
        if (cx.catalog.empty()) cx.catalog = Text(r[0][0]);
        version = Text(r[0][1]);
    }
    cx.oldLengths = !version.empty() && version[0] >= u'0' && version[0] < u'5';
    return cx;
}

// ---- columns ----------------------------------------------------------------

struct TypeFigures {
    int32_t dataType = adType::WChar;
    Variant precision = Variant::Null();
    Variant scale = Variant::Null();
    Variant maxLength = Variant::Null();
};

int32_t DisplayWidth(const String& columnType) {
    size_t open = columnType.find(u'(');
    if (open == String::npos) return -1;
    size_t close = columnType.find(u')', open);
    if (close == String::npos) return -1;
    String digits = columnType.substr(open + 1, close - open - 1);
    if (digits.empty() || !std::all_of(digits.begin(), digits.end(), [](char16_t c) { return c >= u'0' && c <= u'9'; }))
        return -1;
    return static_cast<int32_t>(std::stol(ToUtf8(digits)));
}

// One row a server type. Precision and length are figures, or one of the
// markers below; the few rules no row can hold follow in Figures().
constexpr int32_t kNull = -1;       // no figure
constexpr int32_t kCatalog = -2;    // the catalog's figure (NUMERIC_PRECISION/SCALE, CHARACTER_MAXIMUM_LENGTH)
constexpr int32_t kCharacters = -3; // the catalog's length in characters (old servers: bytes)
constexpr int32_t kLongest = 2147483647;

struct TypeRow {
    StringView name;
    int32_t type, unsignedType;
    int32_t precision, unsignedPrecision;
    int32_t length;
};

constexpr TypeRow kTypes[] = {
    {u"tinyint", adType::TinyInt, adType::UnsignedTinyInt, 4, 3, kNull},
    {u"smallint", adType::SmallInt, adType::UnsignedSmallInt, 5, 5, kNull},
    {u"mediumint", adType::Integer, adType::UnsignedInt, 7, 8, kNull},
    {u"int", adType::Integer, adType::UnsignedInt, 10, 10, kNull},
    {u"integer", adType::Integer, adType::UnsignedInt, 10, 10, kNull},
    {u"bigint", adType::BigInt, adType::UnsignedBigInt, 19, 20, kNull},
    {u"float", adType::Single, adType::Single, 7, 7, kNull},
    {u"double", adType::Double, adType::Double, 15, 15, kNull},
    {u"real", adType::Double, adType::Double, 15, 15, kNull},
    {u"double precision", adType::Double, adType::Double, 15, 15, kNull},
    {u"decimal", adType::Numeric, adType::Numeric, kCatalog, kCatalog, kNull},
    {u"numeric", adType::Numeric, adType::Numeric, kCatalog, kCatalog, kNull},
    {u"date", adType::DBDate, adType::DBDate, kNull, kNull, kNull},
    {u"time", adType::DBTime, adType::DBTime, kNull, kNull, kNull},
    {u"datetime", adType::DBTimeStamp, adType::DBTimeStamp, kNull, kNull, kNull},
    {u"timestamp", adType::DBTimeStamp, adType::DBTimeStamp, kNull, kNull, kNull},
    {u"year", adType::SmallInt, adType::SmallInt, 4, 4, kNull},
    {u"char", adType::WChar, adType::WChar, kNull, kNull, kCharacters},
    {u"varchar", adType::WChar, adType::WChar, kNull, kNull, kCharacters},
    {u"enum", adType::WChar, adType::WChar, kNull, kNull, kCharacters},
    {u"set", adType::WChar, adType::WChar, kNull, kNull, kCharacters},
    {u"tinytext", adType::WChar, adType::WChar, kNull, kNull, 255},
    {u"text", adType::WChar, adType::WChar, kNull, kNull, 65535},
    {u"mediumtext", adType::WChar, adType::WChar, kNull, kNull, 16777215},
    {u"longtext", adType::WChar, adType::WChar, kNull, kNull, kLongest},
    {u"json", adType::WChar, adType::WChar, kNull, kNull, kLongest},
    {u"binary", adType::Binary, adType::Binary, kNull, kNull, kCatalog},
    {u"varbinary", adType::Binary, adType::Binary, kNull, kNull, kCatalog},
    {u"tinyblob", adType::Binary, adType::Binary, kNull, kNull, 255},
    {u"blob", adType::Binary, adType::Binary, kNull, kNull, 65535},
    {u"mediumblob", adType::Binary, adType::Binary, kNull, kNull, 16777215},
    {u"longblob", adType::Binary, adType::Binary, kNull, kNull, kLongest},
    {u"geometry", adType::Binary, adType::Binary, kNull, kNull, kLongest},
    {u"point", adType::Binary, adType::Binary, kNull, kNull, kLongest},
    {u"linestring", adType::Binary, adType::Binary, kNull, kNull, kLongest},
    {u"polygon", adType::Binary, adType::Binary, kNull, kNull, kLongest},
    {u"multipoint", adType::Binary, adType::Binary, kNull, kNull, kLongest},
    {u"multilinestring", adType::Binary, adType::Binary, kNull, kNull, kLongest},
    {u"multipolygon", adType::Binary, adType::Binary, kNull, kNull, kLongest},
    {u"geometrycollection", adType::Binary, adType::Binary, kNull, kNull, kLongest},
};

TypeFigures Figures(const String& dataTypeName, const String& columnType, const Variant& charMax,
                    const Variant& numPrecision, const Variant& numScale, bool oldLengths) {
    String t = LCase(dataTypeName);
    bool isUnsigned = LCase(columnType).find(u"unsigned") != String::npos;
    TypeFigures f;
    if (t == u"bit") {
        // BIT(1) is a flag; wider bit fields are bytes.
        int32_t bits = numPrecision.IsNull() ? 1 : numPrecision.ToLong();
        if (bits <= 1) {
            f.dataType = adType::Boolean;
        } else {
            f.dataType = adType::Binary;
            f.maxLength = Variant((bits + 7) / 8);
        }
        return f;
    }
    const TypeRow* row = nullptr;
    for (const TypeRow& r : kTypes)
        if (t == r.name) row = &r;
    if (!row) {
        // Types the table does not know (inet6, uuid, ...) travel as text.
        f.maxLength = charMax.IsNull() ? Variant(int32_t{0}) : LongOrNull(charMax);
        return f;
    }
    f.dataType = isUnsigned ? row->unsignedType : row->type;
    int32_t precision = isUnsigned ? row->unsignedPrecision : row->precision;
    if (precision == kCatalog) {
        f.precision = LongOrNull(numPrecision);
        f.scale = LongOrNull(numScale);
    } else if (precision != kNull) {
        f.precision = Variant(precision);
    }
    // A tinyint shows its display width (tinyint(1) is how flags are made).
    if (t == u"tinyint") {
        int32_t w = DisplayWidth(columnType);
        if (w > 0) f.precision = Variant(w);
    }
    if (row->length == kCatalog) {
        f.maxLength = LongOrNull(charMax);
    } else if (row->length == kCharacters) {
        Variant n = LongOrNull(charMax);
        // Old servers counted these lengths in bytes of UTF-8 and readers
        // divide by 3 on exactly that test, so the figure is given the same way.
        if (!n.IsNull() && oldLengths) n = Variant(static_cast<int32_t>(std::min<int64_t>(int64_t{n.ToLong()} * 3, kLongest)));
        f.maxLength = n;
    } else if (row->length != kNull) {
        f.maxLength = Variant(row->length);
    }
    return f;
}

// The default as the catalog shows it, made plain: no default is NULL (the
// server's word NULL for a nullable column included), text loses its quotes.
Variant PlainDefault(const Variant& raw) {
    if (raw.IsNull() || raw.IsEmpty()) return Variant::Null();
    String s = raw.ToString();
    if (s == u"NULL") return Variant::Null();
    if (s.size() >= 2 && s.front() == u'\'' && s.back() == u'\'') {
        String inner = s.substr(1, s.size() - 2);
        String out;
        for (size_t i = 0; i < inner.size(); ++i) {
            if (inner[i] == u'\'' && i + 1 < inner.size() && inner[i + 1] == u'\'') ++i;
            else if (inner[i] == u'\\' && i + 1 < inner.size()) ++i;
            out += inner[i];
        }
        return Variant(out);
    }
    return Variant(s);
}

Ref<Recordset> Columns(Backend& b, const std::vector<Variant>& criteria) {
    Context cx = Current(b, Criterion(criteria, 0));
    String sql =
        u"SELECT TABLE_SCHEMA, TABLE_NAME, COLUMN_NAME, ORDINAL_POSITION, COLUMN_DEFAULT, IS_NULLABLE, DATA_TYPE, "
        u"COLUMN_TYPE, CHARACTER_MAXIMUM_LENGTH, CHARACTER_OCTET_LENGTH, NUMERIC_PRECISION, NUMERIC_SCALE, "
        u"DATETIME_PRECISION, CHARACTER_SET_NAME, COLLATION_NAME, COLUMN_COMMENT FROM INFORMATION_SCHEMA.COLUMNS "
        u"WHERE TABLE_SCHEMA = " + Lit(cx.catalog);
    if (String t = Criterion(criteria, 2); !t.empty()) sql += u" AND TABLE_NAME = " + Lit(t);
    if (String c = Criterion(criteria, 3); !c.empty()) sql += u" AND COLUMN_NAME = " + Lit(c);
    sql += u" ORDER BY TABLE_NAME, ORDINAL_POSITION";
    auto rs = ColumnsSchemaRowset();
    for (const Row& r : Query(b, sql)) {
        TypeFigures f = Figures(Text(r[6]), Text(r[7]), r[8], r[10], r[11], cx.oldLengths);
        Variant def = PlainDefault(r[4]);
        bool nullable = EqualsNoCase(Text(r[5]), u"YES");
        Variant octets = LongOrNull(r[9]);
        bool textType = f.dataType == adType::WChar;
        bool datetime = f.dataType == adType::DBTimeStamp || f.dataType == adType::DBTime;
        RowsetFeed::AppendRow(*rs, {Variant(Text(r[0])), Variant::Null(), Variant(Text(r[1])), Variant(Text(r[2])), Variant::Null(),
                       Variant::Null(), LongOrNull(r[3]), Variant(!def.IsNull()), def,
                       Variant(int32_t{nullable ? 0x20 | 0x40 : 0}), Variant(nullable), Variant(f.dataType),
                       Variant::Null(), f.maxLength, f.maxLength.IsNull() ? Variant::Null() : octets, f.precision, f.scale,
                       datetime ? LongOrNull(r[12]) : Variant::Null(), Variant::Null(), Variant::Null(),
                       textType ? TextOrNull(r[13]) : Variant::Null(), Variant::Null(), Variant::Null(),
                       textType ? TextOrNull(r[14]) : Variant::Null(), Variant::Null(), Variant::Null(), Variant::Null(),
                       TextOrNull(r[15])});
    }
    if (rs->RecordCount() > 0) rs->MoveFirst();
    return rs;
}

// ---- tables ---------------------------------------------------------------------

Ref<Recordset> Tables(Backend& b, const std::vector<Variant>& criteria) {
    Context cx = Current(b, Criterion(criteria, 0));
    String sql = u"SELECT TABLE_SCHEMA, TABLE_NAME, TABLE_TYPE, TABLE_COMMENT, CREATE_TIME, UPDATE_TIME "
                 u"FROM INFORMATION_SCHEMA.TABLES WHERE TABLE_SCHEMA = " + Lit(cx.catalog);
    if (String t = Criterion(criteria, 2); !t.empty()) sql += u" AND TABLE_NAME = " + Lit(t);
    sql += u" ORDER BY TABLE_TYPE, TABLE_NAME";
    String wantedType = Criterion(criteria, 3);
    auto rs = TablesSchemaRowset();
    for (const Row& r : Query(b, sql)) {
        String native = UCase(Text(r[2]));
        String type = native == u"VIEW" ? u"VIEW" : native == u"SYSTEM VIEW" ? u"SYSTEM TABLE" : u"TABLE";
        if (!wantedType.empty() && !EqualsNoCase(wantedType, type)) continue;
        RowsetFeed::AppendRow(*rs, {Variant(Text(r[0])), Variant::Null(), Variant(Text(r[1])), Variant(type), Variant::Null(),
                       TextOrNull(r[3]), Variant::Null(), r[4], r[5]});
    }
    if (rs->RecordCount() > 0) rs->MoveFirst();
    return rs;
}

// ---- indexes and primary keys ------------------------------------------------------

Ref<Recordset> Indexes(Backend& b, const std::vector<Variant>& criteria) {
    Context cx = Current(b, Criterion(criteria, 0));
    String sql = u"SELECT TABLE_SCHEMA, TABLE_NAME, NON_UNIQUE, INDEX_NAME, SEQ_IN_INDEX, COLUMN_NAME, COLLATION, "
                 u"CARDINALITY, NULLABLE, INDEX_TYPE FROM INFORMATION_SCHEMA.STATISTICS WHERE TABLE_SCHEMA = " +
                 Lit(cx.catalog);
    if (String i = Criterion(criteria, 2); !i.empty()) sql += u" AND INDEX_NAME = " + Lit(i);
    if (String t = Criterion(criteria, 4); !t.empty()) sql += u" AND TABLE_NAME = " + Lit(t);
    sql += u" ORDER BY TABLE_NAME, INDEX_NAME <> 'PRIMARY', INDEX_NAME, SEQ_IN_INDEX";
    auto rs = IndexesSchemaRowset();
    for (const Row& r : Query(b, sql)) {
        String name = Text(r[3]);
        bool primary = name == u"PRIMARY";
        String kind = UCase(Text(r[9]));
        int32_t type = kind == u"BTREE" ? 1 : kind == u"HASH" ? 2 : 4;
        String coll = Text(r[6]);
        Variant collation = coll.empty() ? Variant::Null() : Variant(int32_t{EqualsNoCase(coll, u"D") ? 2 : 1});
        RowsetFeed::AppendRow(*rs, {Variant(Text(r[0])), Variant::Null(), Variant(Text(r[1])), Variant(Text(r[0])), Variant::Null(),
                       Variant(name), Variant(primary), Variant(r[2].IsNull() ? false : r[2].ToLong() == 0),
                       Variant(primary), Variant(type), Variant::Null(), Variant::Null(),
                       Variant(int32_t{EqualsNoCase(Text(r[8]), u"YES") ? 1 : 4}), Variant(false), Variant(true),
                       Variant(int32_t{4}), LongOrNull(r[4]), Variant(Text(r[5])), Variant::Null(), Variant::Null(),
                       collation, r[7].IsNull() ? Variant::Null() : r[7], Variant::Null(), Variant::Null(),
                       Variant(false)});
    }
    if (rs->RecordCount() > 0) rs->MoveFirst();
    return rs;
}

Ref<Recordset> PrimaryKeys(Backend& b, const std::vector<Variant>& criteria) {
    Context cx = Current(b, Criterion(criteria, 0));
    String sql = u"SELECT TABLE_SCHEMA, TABLE_NAME, COLUMN_NAME, SEQ_IN_INDEX FROM INFORMATION_SCHEMA.STATISTICS "
                 u"WHERE INDEX_NAME = 'PRIMARY' AND TABLE_SCHEMA = " + Lit(cx.catalog);
    if (String t = Criterion(criteria, 2); !t.empty()) sql += u" AND TABLE_NAME = " + Lit(t);
    sql += u" ORDER BY TABLE_NAME, SEQ_IN_INDEX";
    auto rs = PrimaryKeysSchemaRowset();
    for (const Row& r : Query(b, sql))
        RowsetFeed::AppendRow(*rs, {Variant(Text(r[0])), Variant::Null(), Variant(Text(r[1])), Variant(Text(r[2])), Variant::Null(),
                       Variant::Null(), LongOrNull(r[3]), Variant(u"PRIMARY")});
    if (rs->RecordCount() > 0) rs->MoveFirst();
    return rs;
}

// ---- foreign keys ----------------------------------------------------------------

String Rule(const Variant& v) {
    String r = UCase(Text(v));
    if (r == u"CASCADE" || r == u"SET NULL" || r == u"SET DEFAULT") return r;
    return u"NO ACTION"; // RESTRICT behaves the same: the change is refused
}

Ref<Recordset> ForeignKeys(Backend& b, const std::vector<Variant>& criteria) {
    Context cx = Current(b, Criterion(criteria, 3));
    String sql =
        u"SELECT k.REFERENCED_TABLE_SCHEMA, k.REFERENCED_TABLE_NAME, k.REFERENCED_COLUMN_NAME, k.TABLE_SCHEMA, "
        u"k.TABLE_NAME, k.COLUMN_NAME, k.ORDINAL_POSITION, r.UPDATE_RULE, r.DELETE_RULE, r.UNIQUE_CONSTRAINT_NAME, "
        u"k.CONSTRAINT_NAME FROM INFORMATION_SCHEMA.KEY_COLUMN_USAGE k JOIN "
        u"INFORMATION_SCHEMA.REFERENTIAL_CONSTRAINTS r ON r.CONSTRAINT_SCHEMA = k.CONSTRAINT_SCHEMA AND "
        u"r.CONSTRAINT_NAME = k.CONSTRAINT_NAME AND r.TABLE_NAME = k.TABLE_NAME "
        u"WHERE k.REFERENCED_TABLE_NAME IS NOT NULL AND k.TABLE_SCHEMA = " + Lit(cx.catalog);
    if (String c = Criterion(criteria, 0); !c.empty()) sql += u" AND k.REFERENCED_TABLE_SCHEMA = " + Lit(c);
    if (String t = Criterion(criteria, 2); !t.empty()) sql += u" AND k.REFERENCED_TABLE_NAME = " + Lit(t);
    if (String t = Criterion(criteria, 5); !t.empty()) sql += u" AND k.TABLE_NAME = " + Lit(t);
    sql += u" ORDER BY k.TABLE_NAME, k.CONSTRAINT_NAME, k.ORDINAL_POSITION";
    auto rs = ForeignKeysSchemaRowset();
    for (const Row& r : Query(b, sql))
        RowsetFeed::AppendRow(*rs, {Variant(Text(r[0])), Variant::Null(), Variant(Text(r[1])), Variant(Text(r[2])), Variant::Null(),
                       Variant::Null(), Variant(Text(r[3])), Variant::Null(), Variant(Text(r[4])), Variant(Text(r[5])),
                       Variant::Null(), Variant::Null(), LongOrNull(r[6]), Variant(Rule(r[7])), Variant(Rule(r[8])),
                       Variant(Text(r[9])), Variant(Text(r[10])), Variant(int16_t{3})});
    if (rs->RecordCount() > 0) rs->MoveFirst();
    return rs;
}

} // namespace

Ref<Recordset> MySqlOpenSchema(Backend& backend, int32_t schema, const std::vector<Variant>& criteria) {
    switch (schema) {
    case adSchemaColumns: return Columns(backend, criteria);
    case adSchemaTables: return Tables(backend, criteria);
    case adSchemaIndexes: return Indexes(backend, criteria);
    case adSchemaPrimaryKeys: return PrimaryKeys(backend, criteria);
    case adSchemaForeignKeys: return ForeignKeys(backend, criteria);
    default:
        RaisePlatformFrom(adErrFeatureNotAvailable, kConnectionSource,
                          u"Object or provider is not capable of performing requested operation.");
    }
}

} // namespace zolsdk::ado::detail
