#pragma once
// Schema rowsets of SQL Server, read through the ODBC driver's catalog
// calls and handed out with the field names and type numbers of an OLE DB
// provider. The driver reports some types under other ODBC types (money
// as a decimal, datetime as a timestamp, identity columns as
// "int identity"), so a column's figures are chosen by its TYPE_NAME and
// only types unknown by name fall back on the ODBC type.
//
// The builders below work on the rows of the catalog calls as they come
// (fields by position, in the order the ODBC functions define), so they
// can be exercised without a server.
#include <vector>

#include "platform/ado/backend.hpp"

namespace zolsdk::ado::detail {

using CatalogRow = std::vector<Variant>;
using CatalogRows = std::vector<CatalogRow>;

// What an OLE DB provider reports for one column type.
struct SqlServerTypeFigures {
    int32_t dataType = adType::WChar;
    Variant precision = Variant::Null();
    Variant scale = Variant::Null();
    Variant maxLength = Variant::Null();
    bool isLong = false; // text, ntext, image and the (max) types
};

// The figures of a column from SQLColumns' TYPE_NAME, DATA_TYPE (ODBC),
// COLUMN_SIZE and DECIMAL_DIGITS.
SqlServerTypeFigures SqlServerColumnFigures(const String& typeName, int32_t odbcType, const Variant& columnSize,
                                            const Variant& decimalDigits);

// The schema rowsets from the rows of one catalog call (several calls'
// rows joined, where a rowset spans tables).
Ref<Recordset> SqlServerTablesRowset(const CatalogRows& sqlTables);
Ref<Recordset> SqlServerColumnsRowset(const CatalogRows& sqlColumns);
// `sqlPrimaryKeys` names the primary key of each table that has one.
Ref<Recordset> SqlServerIndexesRowset(const CatalogRows& sqlStatistics, const CatalogRows& sqlPrimaryKeys);
Ref<Recordset> SqlServerPrimaryKeysRowset(const CatalogRows& sqlPrimaryKeys);
Ref<Recordset> SqlServerForeignKeysRowset(const CatalogRows& sqlForeignKeys);

// OpenSchema for an open ODBC backend on SQL Server: adSchemaTables,
// adSchemaColumns, adSchemaIndexes, adSchemaPrimaryKeys and
// adSchemaForeignKeys with the restriction values in OLE DB order.
Ref<Recordset> SqlServerOpenSchema(Backend& odbc, int32_t schema, const std::vector<Variant>& criteria);

} // namespace zolsdk::ado::detail
