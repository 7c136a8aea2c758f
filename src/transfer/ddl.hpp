#pragma once
// Statements that make a planned table on each target, drop it, and add
// its foreign keys. Every name is quoted the target's way.
#include "zolsdk/transfer/transfer.hpp"

namespace zolsdk::transfer {

// CREATE TABLE, then whatever indexes the target makes apart from it.
std::vector<String> CreateTableSql(Engine target, const TablePlan& t);
String DropTableSql(Engine target, StringView table);
String ForeignKeySql(Engine target, const ForeignKeyPlan& fk);
// Statements that ask whether a table exists: one that gives a row when it does.
String TableExistsSql(Engine target, StringView table);

// Decides, for a planned table, which indexes the target can make and how
// (prefixes for long texts on MariaDB, none over Access memos), noting
// what changes in t.changes.
void FitIndexes(Engine target, TablePlan& t);

} // namespace zolsdk::transfer
