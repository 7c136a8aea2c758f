#pragma once
// The fields of a result as readers and data sets see them: the ADO type
// number and size of each server type, and the value of each cell decoded
// from the text the server sends (whose length comes with it, so NULs and
// every byte pass through).
#include <mysql.h>

#include <cstddef>
#include <vector>

#include "platform/ado/backend.hpp"

namespace zolsdk::ado::detail {

// How a column's cells become values.
enum class CellKind : uint8_t {
    Int16, Byte, Int64, UInt64, Single, Double, Decimal, Date, Time, Stamp, Flag, Bytes, Text
};

struct ResultField {
    ColumnInfo info;
    CellKind kind = CellKind::Text;
};

ResultField DescribeField(const MYSQL_FIELD& field);

// One cell; `data` is null for SQL NULL.
Variant DecodeCell(CellKind kind, const char* data, size_t length);

} // namespace zolsdk::ado::detail
