#include "platform/ado/jet/jet_types.hpp"

#include "zolsdk/platform/ado/types.hpp"

namespace zolsdk::ado::detail::jet {

namespace {

// The sizes Jet gives recordset fields of the long types.
constexpr int32_t kMemoSize = 536870910;
constexpr int32_t kOleSize = 1073741823;

AccessFigures Fixed(int32_t type, Variant precision, int32_t size) {
    AccessFigures f;
    f.dataType = type;
    f.fieldType = type;
    f.precision = std::move(precision);
    f.definedSize = size;
    f.fixedLength = true;
    return f;
}

AccessFigures Text(int32_t length) {
    AccessFigures f;
    f.dataType = adType::WChar;
    f.fieldType = adType::VarWChar;
    f.maxLength = Variant(length);
    f.octetLength = Variant(length * 2);
    f.definedSize = length;
    return f;
}

AccessFigures Memo() {
    AccessFigures f;
    f.dataType = adType::WChar;
    f.fieldType = adType::LongVarWChar;
    f.maxLength = Variant(int32_t{0});
    f.octetLength = Variant(int32_t{0});
    f.definedSize = kMemoSize;
    f.isLong = true;
    return f;
}

AccessFigures Binary(int32_t length, bool isLong) {
    AccessFigures f;
    f.dataType = adType::Binary;
    f.fieldType = isLong ? adType::LongVarBinary : adType::VarBinary;
    f.maxLength = Variant(isLong ? 0 : length);
    f.octetLength = f.maxLength;
    f.definedSize = isLong ? kOleSize : length;
    f.isLong = isLong;
    return f;
}

AccessFigures Decimal(int32_t precision, int32_t scale) {
    AccessFigures f = Fixed(adType::Numeric, Variant(precision), 19);
    f.scale = Variant(scale);
    return f;
}

} // namespace

AccessFigures FiguresOfFileType(StringView type, int32_t length, int32_t precision, int32_t scale) {
    if (type == u"TEXT") return Text(length);
    if (type == u"MEMO" || type == u"COMPLEX_TYPE") return Memo();
    if (type == u"BYTE") return Fixed(adType::UnsignedTinyInt, Variant(int32_t{3}), 1);
    if (type == u"INT") return Fixed(adType::SmallInt, Variant(int32_t{5}), 2);
    if (type == u"LONG") return Fixed(adType::Integer, Variant(int32_t{10}), 4);
    if (type == u"BIG_INT") return Fixed(adType::BigInt, Variant(int32_t{19}), 8);
    if (type == u"FLOAT") return Fixed(adType::Single, Variant(int32_t{7}), 4);
    if (type == u"DOUBLE") return Fixed(adType::Double, Variant(int32_t{15}), 8);
    if (type == u"MONEY") return Fixed(adType::Currency, Variant(int32_t{19}), 8);
    if (type == u"NUMERIC") return Decimal(precision, scale);
    if (type == u"SHORT_DATE_TIME" || type == u"EXT_DATE_TIME") return Fixed(adType::Date, Variant::Null(), 8);
    if (type == u"BOOLEAN") return Fixed(adType::Boolean, Variant::Null(), 2);
    if (type == u"OLE") return Binary(0, true);
    if (type == u"BINARY") return Binary(length, false);
    if (type == u"GUID") return Fixed(adType::GUID, Variant::Null(), 16);
    // Types this table does not know are handed out as their bytes.
    return Binary(0, true);
}

AccessFigures FiguresOfSqlType(int32_t sqlType, int32_t size, int32_t precision, int32_t scale) {
    switch (sqlType) {
    case 16: case -7: return FiguresOfFileType(u"BOOLEAN", 0, 0, 0);            // BOOLEAN, BIT
    case -6: return FiguresOfFileType(u"BYTE", 0, 0, 0);                        // TINYINT
    case 5: return FiguresOfFileType(u"INT", 0, 0, 0);                          // SMALLINT
    case 4: return FiguresOfFileType(u"LONG", 0, 0, 0);                         // INTEGER
    case -5: return FiguresOfFileType(u"BIG_INT", 0, 0, 0);                     // BIGINT
    case 7: return FiguresOfFileType(u"FLOAT", 0, 0, 0);                        // REAL
    case 6: case 8: return FiguresOfFileType(u"DOUBLE", 0, 0, 0);               // FLOAT, DOUBLE
    case 2: case 3: return Decimal(precision > 28 ? 28 : precision, scale);     // NUMERIC, DECIMAL
    case 91: case 92: case 93: case 2013: case 2014:                            // DATE, TIME, TIMESTAMP
        return FiguresOfFileType(u"SHORT_DATE_TIME", 0, 0, 0);
    case -2: case -3: return Binary(size > 0 && size < 256 ? size : 255, false); // BINARY, VARBINARY
    case -4: case 2004: return Binary(0, true);                                 // LONGVARBINARY, BLOB
    case -1: case -16: case 2005: case 2011: return Memo();                     // LONGVARCHAR, CLOB
    case 0: return Text(255);                                                   // NULL (a bare NULL column)
    default:                                                                    // CHAR, VARCHAR and the rest
        return size > 0 && size <= 255 ? Text(size) : Memo();
    }
}

} // namespace zolsdk::ado::detail::jet
