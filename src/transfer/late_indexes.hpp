#pragma once
// The steps of a run that builds a table's secondary indexes after its
// rows (on MariaDB: one sorted build instead of upkeep row by row).
#include "zolsdk/transfer/transfer.hpp"

namespace zolsdk::transfer {

// CreateTable, with the indexes IndexAfterRows names left out when rows
// are to come (not with options.schemaOnly).
TableResult CreateForRows(const Plan& plan, const TablePlan& table, const Options& options);

// Adds the indexes CreateForRows left out (those an earlier run added are
// kept); the server's text when they could not be made, empty when done.
String AddLateIndexes(const Plan& plan, const TablePlan& table, const Options& options);

} // namespace zolsdk::transfer
