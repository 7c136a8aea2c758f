#pragma once
// The schema rowsets that every provider's OpenSchema answers with: the
// field names and types of the platform's TABLES, COLUMNS, INDEXES,
// FOREIGN_KEYS and PRIMARY_KEYS rowsets, new, empty and open.
#include "zolsdk/platform/ado/recordset.hpp"

namespace zolsdk::ado::detail {

Ref<Recordset> TablesSchemaRowset();
Ref<Recordset> ColumnsSchemaRowset();
Ref<Recordset> IndexesSchemaRowset();
Ref<Recordset> ForeignKeysSchemaRowset();
Ref<Recordset> PrimaryKeysSchemaRowset();

} // namespace zolsdk::ado::detail
