#pragma once
// The driver's own catalog calls (SQLTables, SQLColumns, SQLStatistics,
// SQLPrimaryKeys, SQLForeignKeys) on an open ODBC backend, for drivers
// whose schema is best read that way rather than through statements. The
// result columns are those the ODBC catalog functions define, in their
// order; rows are read forward once like any cursor.
#include <memory>
#include <vector>

#include "platform/ado/backend.hpp"

namespace zolsdk::ado::detail {

enum class OdbcCatalogCall {
    Tables,      // catalog, schema, table (pattern), table types ("TABLE", "'TABLE','VIEW'")
    Columns,     // catalog, schema, table (pattern), column (pattern)
    Statistics,  // catalog, schema, table: every index, unique or not
    PrimaryKeys, // catalog, schema, table
    ForeignKeys  // primary key's catalog, schema, table; foreign key's catalog, schema, table
};

// Runs one catalog call on `odbc`, which must be an open backend made by
// MakeOdbcBackend. An empty argument restricts nothing (it goes to the
// driver as a null pointer); pattern arguments are taken literally: their
// wildcard characters are escaped before they reach the driver. Raises
// ProviderFailure on the driver's refusal.
std::unique_ptr<Cursor> OdbcCatalog(Backend& odbc, OdbcCatalogCall call, const std::vector<String>& arguments);

// The name the open backend's server gives itself (SQL_DBMS_NAME).
String OdbcDbmsName(Backend& odbc);

} // namespace zolsdk::ado::detail
