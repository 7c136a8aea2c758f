#include "platform/ado/mariadb/result_fields.hpp"

#include <algorithm>
#include <charconv>
#include <climits>

#include "zolsdk/platform/datetime.hpp"
#include "zolsdk/platform/decimal.hpp"

namespace zolsdk::ado::detail {

namespace {

// One row a server type: the ADO type signed / unsigned, how cells decode,
// and the size a field reports when it is not a length of characters.
struct TypeRow {
    enum_field_types server;
    int32_t type, unsignedType;
    CellKind kind, unsignedKind;
    int32_t size; // -1: the field's own length
};

constexpr TypeRow kTypes[] = {
    {MYSQL_TYPE_TINY, adType::TinyInt, adType::UnsignedTinyInt, CellKind::Int16, CellKind::Byte, 3},
    {MYSQL_TYPE_SHORT, adType::SmallInt, adType::UnsignedSmallInt, CellKind::Int16, CellKind::Int64, 5},
    {MYSQL_TYPE_INT24, adType::Integer, adType::UnsignedInt, CellKind::Int64, CellKind::Int64, 8},
    {MYSQL_TYPE_LONG, adType::Integer, adType::UnsignedInt, CellKind::Int64, CellKind::Int64, 10},
    {MYSQL_TYPE_LONGLONG, adType::BigInt, adType::UnsignedBigInt, CellKind::Int64, CellKind::UInt64, 19},
    {MYSQL_TYPE_YEAR, adType::SmallInt, adType::SmallInt, CellKind::Int16, CellKind::Int16, 4},
    {MYSQL_TYPE_FLOAT, adType::Single, adType::Single, CellKind::Single, CellKind::Single, 7},
    {MYSQL_TYPE_DOUBLE, adType::Double, adType::Double, CellKind::Double, CellKind::Double, 15},
    {MYSQL_TYPE_DECIMAL, adType::Numeric, adType::Numeric, CellKind::Decimal, CellKind::Decimal, -1},
    {MYSQL_TYPE_NEWDECIMAL, adType::Numeric, adType::Numeric, CellKind::Decimal, CellKind::Decimal, -1},
    {MYSQL_TYPE_DATE, adType::DBDate, adType::DBDate, CellKind::Date, CellKind::Date, 10},
    {MYSQL_TYPE_NEWDATE, adType::DBDate, adType::DBDate, CellKind::Date, CellKind::Date, 10},
    {MYSQL_TYPE_TIME, adType::DBTime, adType::DBTime, CellKind::Time, CellKind::Time, 8},
    {MYSQL_TYPE_DATETIME, adType::DBTimeStamp, adType::DBTimeStamp, CellKind::Stamp, CellKind::Stamp, 19},
    {MYSQL_TYPE_TIMESTAMP, adType::DBTimeStamp, adType::DBTimeStamp, CellKind::Stamp, CellKind::Stamp, 19},
    // Text types; binary columns (character set 63) take the types below.
    {MYSQL_TYPE_STRING, adType::WChar, adType::WChar, CellKind::Text, CellKind::Text, -1},
    {MYSQL_TYPE_VAR_STRING, adType::VarWChar, adType::VarWChar, CellKind::Text, CellKind::Text, -1},
    {MYSQL_TYPE_VARCHAR, adType::VarWChar, adType::VarWChar, CellKind::Text, CellKind::Text, -1},
    {MYSQL_TYPE_ENUM, adType::WChar, adType::WChar, CellKind::Text, CellKind::Text, -1},
    {MYSQL_TYPE_SET, adType::WChar, adType::WChar, CellKind::Text, CellKind::Text, -1},
    {MYSQL_TYPE_TINY_BLOB, adType::LongVarWChar, adType::LongVarWChar, CellKind::Text, CellKind::Text, -1},
    {MYSQL_TYPE_BLOB, adType::LongVarWChar, adType::LongVarWChar, CellKind::Text, CellKind::Text, -1},
    {MYSQL_TYPE_MEDIUM_BLOB, adType::LongVarWChar, adType::LongVarWChar, CellKind::Text, CellKind::Text, -1},
    {MYSQL_TYPE_LONG_BLOB, adType::LongVarWChar, adType::LongVarWChar, CellKind::Text, CellKind::Text, -1},
    {MYSQL_TYPE_JSON, adType::LongVarWChar, adType::LongVarWChar, CellKind::Text, CellKind::Text, -1},
    {MYSQL_TYPE_GEOMETRY, adType::LongVarBinary, adType::LongVarBinary, CellKind::Bytes, CellKind::Bytes, -1},
};

// The binary counterpart of a text type.
int32_t BinaryType(int32_t textType) {
    switch (textType) {
    case adType::WChar: return adType::Binary;
    case adType::VarWChar: return adType::VarBinary;
    default: return adType::LongVarBinary;
    }
}

constexpr unsigned kBinaryCharset = 63;

int32_t Clamp(unsigned long n) { return n > static_cast<unsigned long>(INT32_MAX) ? INT32_MAX : static_cast<int32_t>(n); }

// Characters of a text field: its length is in bytes of the result's
// character set.
int32_t Characters(const MYSQL_FIELD& f) {
    const MARIADB_CHARSET_INFO* cs = mariadb_get_charset_by_nr(f.charsetnr);
    unsigned width = cs && cs->char_maxlen > 0 ? cs->char_maxlen : 1;
    return Clamp(f.length / width);
}

bool Digits(const char*& p, const char* end, int& out) {
    auto r = std::from_chars(p, end, out);
    if (r.ec != std::errc()) return false;
    p = r.ptr;
    return true;
}

// "YYYY-MM-DD[ hh:mm:ss[.ffffff]]": false when the text is none of these.
bool ReadDate(const char* p, const char* end, DateParts& d, bool withTime) {
    if (!Digits(p, end, d.year) || p == end || *p++ != '-' || !Digits(p, end, d.month) || p == end || *p++ != '-' ||
        !Digits(p, end, d.day))
        return false;
    if (!withTime || p == end) return true;
    ++p;
    return Digits(p, end, d.hour) && p != end && *p++ == ':' && Digits(p, end, d.minute) && p != end && *p++ == ':' &&
           Digits(p, end, d.second);
}

Variant Text(const char* data, size_t length) {
    // Plain ASCII, the common case, widens without decoding.
    const char* end = data + length;
    const char* p = data;
    while (p != end && static_cast<unsigned char>(*p) < 0x80) ++p;
    if (p == end) return Variant(String(data, end));
    return Variant(FromUtf8(std::string_view(data, length)));
}

Variant ToDecimal(const char* data, size_t length) {
    // The server's text of a decimal: at most 65 digits, a sign and a point.
    char16_t wide[96];
    if (length > 0 && length < std::size(wide)) {
        std::copy(data, data + length, wide);
        Decimal d;
        try {
            if (Decimal::TryParse(StringView(wide, length), u'.', d)) return Variant(d);
        } catch (const DbError&) {
            // More digits than a decimal holds: a double is the closest.
        }
    }
    double x = 0;
    if (std::from_chars(data, data + length, x).ec == std::errc()) return Variant(x);
    return Text(data, length);
}

} // namespace

ResultField DescribeField(const MYSQL_FIELD& f) {
    ResultField r;
    r.info.name = FromUtf8(std::string_view(f.name, f.name_length));
    bool isUnsigned = (f.flags & UNSIGNED_FLAG) != 0;
    bool binary = f.charsetnr == kBinaryCharset;
    if (f.type == MYSQL_TYPE_BIT) {
        // BIT(1) is a flag; wider bit fields are their bytes.
        bool flag = f.length <= 1;
        r.info.type = flag ? adType::Boolean : adType::Binary;
        r.info.size = flag ? 1 : Clamp((f.length + 7) / 8);
        r.kind = flag ? CellKind::Flag : CellKind::Bytes;
        return r;
    }
    const TypeRow* row = nullptr;
    for (const TypeRow& t : kTypes)
        if (t.server == f.type) row = &t;
    if (!row) {
        // NULL columns and types of newer servers read as text.
        r.info.type = binary ? adType::VarBinary : adType::VarWChar;
        r.info.size = binary ? Clamp(f.length) : Characters(f);
        r.kind = binary ? CellKind::Bytes : CellKind::Text;
        return r;
    }
    r.info.type = isUnsigned ? row->unsignedType : row->type;
    r.kind = isUnsigned ? row->unsignedKind : row->kind;
    if (r.kind == CellKind::Text && binary) {
        r.info.type = BinaryType(r.info.type);
        r.kind = CellKind::Bytes;
    }
    if (r.kind == CellKind::Text && f.org_table_length > 0) {
        // A table's text column is long exactly when the schema reader makes
        // it a long text (more than 255 characters): a data row then builds
        // a blob for it, whatever the server's type (VARCHAR(300) is long,
        // TINYTEXT short). Computed columns keep the type of their value.
        const bool longText = Characters(f) > 255;
        if (longText) r.info.type = adType::LongVarWChar;
        else if (r.info.type == adType::LongVarWChar) r.info.type = adType::VarWChar;
    }
    if (r.info.type == adType::Numeric) {
        // The length counts the digits, the point and the sign.
        unsigned long digits = f.length - (f.decimals > 0 ? 1 : 0) - (isUnsigned ? 0 : 1);
        r.info.precision = static_cast<uint8_t>(std::min<unsigned long>(digits, 255));
        r.info.scale = static_cast<uint8_t>(f.decimals);
        r.info.size = r.info.precision;
    } else if (row->size >= 0) {
        r.info.size = row->size + (isUnsigned && row->server == MYSQL_TYPE_LONGLONG ? 1 : 0);
    } else {
        r.info.size = r.kind == CellKind::Text ? Characters(f) : Clamp(f.length);
    }
    return r;
}

Variant DecodeCell(CellKind kind, const char* data, size_t length) {
    if (!data) return Variant::Null();
    const char* end = data + length;
    switch (kind) {
    case CellKind::Int16:
    case CellKind::Int64: {
        int64_t v = 0;
        if (std::from_chars(data, end, v).ec != std::errc()) return Text(data, length);
        if (kind == CellKind::Int16 && v >= INT16_MIN && v <= INT16_MAX) return Variant(static_cast<int16_t>(v));
        return Variant::FromInt64(v);
    }
    case CellKind::Byte:
    case CellKind::UInt64: {
        uint64_t v = 0;
        if (std::from_chars(data, end, v).ec != std::errc()) return Text(data, length);
        if (kind == CellKind::Byte && v <= 255) return Variant(static_cast<uint8_t>(v));
        if (v > static_cast<uint64_t>(INT64_MAX)) return Variant(Decimal::FromUInt64(v));
        return Variant::FromInt64(static_cast<int64_t>(v));
    }
    case CellKind::Single: {
        float v = 0;
        if (std::from_chars(data, end, v).ec != std::errc()) return Text(data, length);
        return Variant(v);
    }
    case CellKind::Double: {
        double v = 0;
        if (std::from_chars(data, end, v).ec != std::errc()) return Text(data, length);
        return Variant(v);
    }
    case CellKind::Decimal: return ToDecimal(data, length);
    case CellKind::Date:
    case CellKind::Stamp: {
        DateParts d;
        if (!ReadDate(data, end, d, kind == CellKind::Stamp)) return Text(data, length);
        if (d.year == 0 || d.month == 0 || d.day == 0) return Variant::Null(); // zero date
        // The server's year is the year: no two-digit window (0029 stays 0029).
        return Variant::FromDate(JoinDate(d));
    }
    case CellKind::Time: {
        // "[-]h:mm:ss[.ffffff]"; hours may pass 24.
        const char* p = data;
        bool negative = p != end && *p == '-';
        if (negative) ++p;
        int h = 0, m = 0, s = 0;
        if (!(Digits(p, end, h) && p != end && *p++ == ':' && Digits(p, end, m) && p != end && *p++ == ':' &&
              Digits(p, end, s)))
            return Text(data, length);
        int sign = negative ? -1 : 1;
        return Variant::FromDate(TimeSerial(sign * h, sign * m, sign * s));
    }
    case CellKind::Flag: return Variant(length > 0 && data[length - 1] != 0);
    case CellKind::Bytes: return Variant(Bytes(reinterpret_cast<const uint8_t*>(data), reinterpret_cast<const uint8_t*>(end)));
    case CellKind::Text: break;
    }
    return Text(data, length);
}

} // namespace zolsdk::ado::detail
