#include "transfer/type_map.hpp"

#include "zolsdk/platform/ado/types.hpp"
#include "zolsdk/schema/enums.hpp"

namespace zolsdk::transfer {

namespace {

// One row a kind: the column type on each target and, where the target
// cannot hold the kind as it is, what the plan says about it. "{n}" is the
// length, "{p}" and "{s}" precision and scale.
struct TypeRow {
    Kind kind;
    const char16_t* mysql;
    const char16_t* access;
    const char16_t* accessChange;
    const char16_t* mssql;
    const char16_t* mssqlChange;
};

constexpr TypeRow kTypes[] = {
    {Kind::Boolean, u"TINYINT(1)", u"YESNO", nullptr, u"bit", nullptr},
    {Kind::Int8, u"TINYINT", u"SMALLINT", nullptr, u"smallint", nullptr},
    {Kind::UInt8, u"TINYINT UNSIGNED", u"BYTE", nullptr, u"tinyint", nullptr},
    {Kind::Int16, u"SMALLINT", u"SMALLINT", nullptr, u"smallint", nullptr},
    {Kind::UInt16, u"SMALLINT UNSIGNED", u"LONG", nullptr, u"int", nullptr},
    {Kind::Int32, u"INT", u"LONG", nullptr, u"int", nullptr},
    {Kind::UInt32, u"INT UNSIGNED", u"DECIMAL(10,0)", u"unsigned 32-bit integer kept as Decimal(10,0)", u"bigint",
     nullptr},
    {Kind::Int64, u"BIGINT", u"DECIMAL(19,0)", u"64-bit integer kept as Decimal(19,0) (Access has none)", u"bigint",
     nullptr},
    {Kind::UInt64, u"BIGINT UNSIGNED", u"DECIMAL(20,0)",
     u"unsigned 64-bit integer kept as Decimal(20,0) (Access has none)", u"decimal(20,0)",
     u"unsigned 64-bit integer kept as decimal(20,0)"},
    {Kind::Single, u"FLOAT", u"REAL", nullptr, u"real", nullptr},
    {Kind::Double, u"DOUBLE", u"DOUBLE", nullptr, u"float", nullptr},
    {Kind::Currency, u"DECIMAL(19,4)", u"CURRENCY", nullptr, u"money", nullptr},
    {Kind::Decimal, u"DECIMAL({p},{s})", u"DECIMAL({p},{s})", nullptr, u"decimal({p},{s})", nullptr},
    {Kind::Date, u"DATE", u"DATETIME", nullptr, u"date", nullptr},
    {Kind::Time, u"TIME", u"DATETIME", u"time of day kept as a date-time on 1899-12-30", u"time(0)", nullptr},
    {Kind::DateTime, u"DATETIME", u"DATETIME", nullptr, u"datetime2(0)", nullptr},
    {Kind::Text, u"VARCHAR({n})", u"VARCHAR({n})", nullptr, u"nvarchar({n})", nullptr},
    {Kind::LongText, u"LONGTEXT", u"MEMO", nullptr, u"nvarchar(max)", nullptr},
    {Kind::Binary, u"VARBINARY({n})", u"VARBINARY({n})", nullptr, u"varbinary({n})", nullptr},
    {Kind::LongBinary, u"LONGBLOB", u"IMAGE", nullptr, u"varbinary(max)", nullptr},
    {Kind::Guid, u"CHAR(38)", u"GUID", nullptr, u"uniqueidentifier", nullptr},
};

const TypeRow& RowOf(Kind k) {
    for (const TypeRow& r : kTypes)
        if (r.kind == k) return r;
    return kTypes[0];
}

String Fill(StringView pattern, const ColumnPlan& c) {
    String out;
    for (size_t i = 0; i < pattern.size(); ++i) {
        if (pattern[i] == u'{' && i + 2 < pattern.size() && pattern[i + 2] == u'}') {
            char16_t what = pattern[i + 1];
            out += IntText(what == u'n' ? c.length : what == u'p' ? c.precision : c.scale);
            i += 2;
        } else {
            out += pattern[i];
        }
    }
    return out;
}

bool StartsWith(StringView s, StringView head) { return s.substr(0, head.size()) == head; }

String Describe(const ColumnPlan& c) {
    return c.sourceNative.empty() ? String(u"type ") + IntText(c.sourceType) : c.sourceNative;
}

// The kind a text or binary column of `length` takes on a target whose
// short type holds `limit`.
Kind Widened(Kind k, int32_t length, int32_t limit) {
    if (k == Kind::Text && (length <= 0 || length > limit)) return Kind::LongText;
    if (k == Kind::Binary && (length <= 0 || length > limit)) return Kind::LongBinary;
    return k;
}

} // namespace

bool IsLong(Kind k) { return k == Kind::LongText || k == Kind::LongBinary; }
bool IsTextual(Kind k) { return k == Kind::Text || k == Kind::LongText || k == Kind::Guid; }
bool IsNumber(Kind k) {
    switch (k) {
    case Kind::Int8: case Kind::UInt8: case Kind::Int16: case Kind::UInt16: case Kind::Int32: case Kind::UInt32:
    case Kind::Int64: case Kind::UInt64: case Kind::Single: case Kind::Double: case Kind::Currency:
    case Kind::Decimal:
        return true;
    default:
        return false;
    }
}

Kind KindOf(int32_t adoType, int32_t group, StringView nativeText, int32_t length) {
    String native = LCase(nativeText);
    if (!native.empty()) {
        bool uns = native.find(u"unsigned") != String::npos;
        if (native == u"bit(1)") return Kind::Boolean;
        if (StartsWith(native, u"bit")) return Kind::Binary;
        if (StartsWith(native, u"tinyint")) return uns ? Kind::UInt8 : Kind::Int8;
        if (StartsWith(native, u"smallint")) return uns ? Kind::UInt16 : Kind::Int16;
        if (StartsWith(native, u"mediumint") || StartsWith(native, u"int")) return uns ? Kind::UInt32 : Kind::Int32;
        if (StartsWith(native, u"bigint")) return uns ? Kind::UInt64 : Kind::Int64;
        if (StartsWith(native, u"year")) return Kind::Int16;
        if (StartsWith(native, u"float")) return Kind::Single;
        if (StartsWith(native, u"double") || StartsWith(native, u"real")) return Kind::Double;
        if (StartsWith(native, u"decimal") || StartsWith(native, u"numeric")) return Kind::Decimal;
        if (native == u"date") return Kind::Date;
        if (StartsWith(native, u"time") && !StartsWith(native, u"timestamp")) return Kind::Time;
        if (StartsWith(native, u"datetime") || StartsWith(native, u"timestamp")) return Kind::DateTime;
        if (StartsWith(native, u"enum") || StartsWith(native, u"set")) return Kind::Text;
        if (StartsWith(native, u"char") || StartsWith(native, u"varchar")) return Kind::Text;
        if (native.find(u"text") != String::npos || native == u"json" || native == u"longtext") return Kind::LongText;
        if (StartsWith(native, u"binary") || StartsWith(native, u"varbinary")) return Kind::Binary;
        if (native.find(u"blob") != String::npos) return Kind::LongBinary;
        if (native == u"uuid") return Kind::Guid;
        // Spatial and other types the server stores as bytes.
        return Kind::LongBinary;
    }
    namespace t = ado::adType;
    switch (adoType) {
    case t::Boolean: return Kind::Boolean;
    case t::TinyInt: return Kind::Int8;
    case t::UnsignedTinyInt: return Kind::UInt8;
    case t::SmallInt: return Kind::Int16;
    case t::UnsignedSmallInt: return Kind::UInt16;
    case t::Integer: return Kind::Int32;
    case t::UnsignedInt: return Kind::UInt32;
    case t::BigInt: return Kind::Int64;
    case t::UnsignedBigInt: return Kind::UInt64;
    case t::Single: return Kind::Single;
    case t::Double: return Kind::Double;
    case t::Currency: return Kind::Currency;
    case t::Decimal: case t::Numeric: return Kind::Decimal;
    case t::DBDate: return Kind::Date;
    case t::DBTime: return Kind::Time;
    case t::Date: case t::DBTimeStamp: return Kind::DateTime;
    case t::GUID: return Kind::Guid;
    case t::Binary: case t::VarBinary: return length > 0 && length <= 8000 ? Kind::Binary : Kind::LongBinary;
    case t::LongVarBinary: return Kind::LongBinary;
    case t::Char: case t::WChar: case t::VarChar: case t::VarWChar: case t::BSTR:
        return length > 0 && length < 65535 ? Kind::Text : Kind::LongText;
    case t::LongVarChar: case t::LongVarWChar: return Kind::LongText;
    default: break;
    }
    // The group alone (XML files carry nothing else).
    switch (group) {
    case dtVarChar: return length > 0 ? Kind::Text : Kind::LongText;
    case dtCharBLOB: return Kind::LongText;
    case dtInteger: return Kind::Int32;
    case dtUnsignedInteger: return Kind::UInt32;
    case dtDate: return Kind::Date;
    case dtTime: return Kind::Time;
    case dtDateTime: return Kind::DateTime;
    case dtBoolean: return Kind::Boolean;
    case dtDouble: return Kind::Double;
    case dtBinaryBLOB: return Kind::LongBinary;
    case dtSingle: return Kind::Single;
    case dtDecimal: return Kind::Decimal;
    case dtCurrency: return Kind::Currency;
    default: return Kind::LongText;
    }
}

void MapType(Engine target, ColumnPlan& c, std::vector<String>& changes) {
    auto change = [&](StringView what) { changes.push_back(c.name + u": " + Describe(c) + u" -> " + String(what)); };
    Kind k = c.kind;
    switch (target) {
    case Engine::MySql: {
        k = Widened(k, c.length, 16383);
        if (k == Kind::LongText && c.length > 0) {
            // The smallest long type that holds the length in 4-byte characters.
            c.targetType = c.length <= 16383 ? u"TEXT" : c.length <= 4194303 ? u"MEDIUMTEXT" : u"LONGTEXT";
        } else if (k == Kind::Decimal && c.precision > 65) {
            c.targetType = u"LONGTEXT";
            change(u"text (MariaDB decimals hold 65 digits)");
            return;
        } else {
            c.targetType = Fill(RowOf(k).mysql, c);
        }
        if (k == Kind::Text && c.fixedLength) c.targetType = u"CHAR(" + IntText(c.length) + u")";
        if (k == Kind::Binary && c.fixedLength) c.targetType = u"BINARY(" + IntText(c.length) + u")";
        if (k == Kind::Guid) change(u"CHAR(38), the GUID as text in braces");
        return;
    }
    case Engine::Access: {
        k = Widened(k, c.length, 255);
        const TypeRow& r = RowOf(k);
        if (k == Kind::Decimal && c.precision > 28) {
            c.targetType = u"MEMO";
            change(u"Memo (Access decimals hold 28 digits)");
            return;
        }
        if (k == Kind::Boolean && c.nullable) {
            c.targetType = u"SMALLINT";
            change(u"Integer 1/0 (an Access Yes/No column holds no Null)");
            return;
        }
        c.targetType = Fill(r.access, c);
        if (k != c.kind) change(k == Kind::LongText ? u"Memo (Access text holds 255 characters)"
                                                    : u"OLE Object (Access binary holds 255 bytes)");
        if (r.accessChange) change(r.accessChange);
        return;
    }
    case Engine::SqlServer: {
        k = Widened(k, c.length, k == Kind::Text ? 4000 : 8000);
        const TypeRow& r = RowOf(k);
        if (k == Kind::Decimal && c.precision > 38) {
            c.targetType = u"nvarchar(80)";
            change(u"nvarchar(80) (SQL Server decimals hold 38 digits)");
            return;
        }
        c.targetType = Fill(r.mssql, c);
        if (k == Kind::Text && c.fixedLength) c.targetType = u"nchar(" + IntText(c.length) + u")";
        if (r.mssqlChange) change(r.mssqlChange);
        return;
    }
    case Engine::Xml: {
        static const int32_t kGroups[] = {dtBoolean, dtInteger, dtUnsignedInteger, dtInteger, dtUnsignedInteger,
                                          dtInteger, dtUnsignedInteger, dtInteger, dtUnsignedInteger, dtSingle,
                                          dtDouble, dtCurrency, dtDecimal, dtDate, dtTime, dtDateTime, dtVarChar,
                                          dtCharBLOB, dtBinaryBLOB, dtBinaryBLOB, dtVarChar};
        int32_t g = c.group ? c.group : kGroups[static_cast<int>(k)];
        c.targetType = IntText(g);
        return;
    }
    }
}

int32_t ParameterType(Kind k) {
    namespace t = ado::adType;
    switch (k) {
    case Kind::Boolean: return t::Boolean;
    case Kind::Int8: return t::TinyInt;
    case Kind::UInt8: return t::UnsignedTinyInt;
    case Kind::Int16: return t::SmallInt;
    case Kind::UInt16: return t::Integer;
    case Kind::Int32: return t::Integer;
    case Kind::UInt32: case Kind::Int64: case Kind::UInt64: case Kind::Decimal: return t::Decimal;
    case Kind::Single: return t::Single;
    case Kind::Double: return t::Double;
    case Kind::Currency: return t::Currency;
    case Kind::Date: case Kind::Time: case Kind::DateTime: return t::Date;
    case Kind::Text: case Kind::Guid: return t::VarWChar;
    case Kind::LongText: return t::LongVarWChar;
    case Kind::Binary: return t::VarBinary;
    case Kind::LongBinary: return t::LongVarBinary;
    }
    return t::VarWChar;
}

const char* KindName(Kind k) {
    static const char* const names[] = {"boolean", "int8",    "uint8",   "int16", "uint16", "int32",
                                        "uint32",  "int64",   "uint64",  "single", "double", "currency",
                                        "decimal", "date",    "time",    "datetime", "text", "longtext",
                                        "binary",  "longbinary", "guid"};
    return names[static_cast<int>(k)];
}

} // namespace zolsdk::transfer
