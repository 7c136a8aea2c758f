#pragma once
// Statements that make a planned table on each target, drop it, and add
// its foreign keys. Every name is quoted the target's way.
#include "zolsdk/transfer/transfer.hpp"

namespace zolsdk::transfer {

// CREATE TABLE, then whatever indexes the target makes apart from it.
// With `indexesLater`, the indexes IndexAfterRows names are left out, for
// AddIndexesSql once the rows are in.
std::vector<String> CreateTableSql(Engine target, const TablePlan& t, bool indexesLater = false);

// On MariaDB a secondary index is built once over the rows (a sort) faster
// than it is kept up row by row during the load. The primary key, an index
// that leads with an auto-increment column (the engine wants one with the
// table) and full-text and spatial indexes stay with the table.
bool IndexAfterRows(Engine target, const TablePlan& t, const IndexPlan& x);
// One ALTER TABLE that adds the indexes left for after the rows, but those
// named in `existing` (made by an earlier run); empty when none is left.
String AddIndexesSql(Engine target, const TablePlan& t, const std::vector<String>& existing);
String DropTableSql(Engine target, StringView table);
String ForeignKeySql(Engine target, const ForeignKeyPlan& fk);
// Statements that ask whether a table exists: one that gives a row when it does.
String TableExistsSql(Engine target, StringView table);

// Decides, for a planned table, which indexes the target can make and how
// (prefixes for long texts on MariaDB, none over Access memos), noting
// what changes in t.changes.
void FitIndexes(Engine target, TablePlan& t);

} // namespace zolsdk::transfer
