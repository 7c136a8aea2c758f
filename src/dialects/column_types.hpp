#pragma once
// The column types of CREATE TABLE and ALTER TABLE statements, by the
// portable type group, for each engine that takes DDL.
#include <cstdint>

#include "zolsdk/platform/text.hpp"

namespace zolsdk {

// A column of the type table. The XML dialect writes Access's types.
enum class TypeColumn { MySql, MsSql, Access };

// The type text of a column, or "" when the engine has no type for it (the
// definition then goes without one). The native data type plays no part.
String ColumnTypeText(TypeColumn engine, int32_t group, int32_t precision, int32_t scale, int32_t maxLength);

} // namespace zolsdk
