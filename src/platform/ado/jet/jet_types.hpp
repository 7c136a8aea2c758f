#pragma once
// The figures the Access provider reports for a column: the OLE DB schema
// figures (base type, precision, scale, maximum length) and the recordset
// field's type and size. A column of a file is described by the file's own
// type name (TEXT, MEMO, BYTE, INT, LONG, FLOAT, DOUBLE, NUMERIC, MONEY,
// SHORT_DATE_TIME, BOOLEAN, OLE, BINARY, GUID, ...); a computed column of a
// result has only the driver's SQL type number to go by.
#include <cstdint>

#include "zolsdk/platform/variant.hpp"

namespace zolsdk::ado::detail::jet {

struct AccessFigures {
    int32_t dataType = 0;                      // COLUMNS.DATA_TYPE: the base type
    Variant precision = Variant::Null();       // NUMERIC_PRECISION
    Variant scale = Variant::Null();           // NUMERIC_SCALE
    Variant maxLength = Variant::Null();       // CHARACTER_MAXIMUM_LENGTH
    Variant octetLength = Variant::Null();     // CHARACTER_OCTET_LENGTH
    int32_t fieldType = 0;                     // Recordset Field.Type
    int32_t definedSize = 0;                   // Field.DefinedSize
    bool isLong = false;                       // memo, OLE: no defined maximum
    bool fixedLength = false;
};

// `length` is in characters for text and bytes for binary.
AccessFigures FiguresOfFileType(StringView fileType, int32_t length, int32_t precision, int32_t scale);

// A computed column by its java.sql.Types number and the driver's sizes.
AccessFigures FiguresOfSqlType(int32_t sqlType, int32_t size, int32_t precision, int32_t scale);

} // namespace zolsdk::ado::detail::jet
