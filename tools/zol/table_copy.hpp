#pragma once
// The copy of one table from a catalog into another, as zol migrate and
// zol demo make it: the table recreated with its keys and indexes, then its
// rows (unless only the schema is wanted), with a per-table report.
#include <ostream>
#include <vector>

#include "zolsdk/zolsdk.hpp"

namespace zol {

struct TableReport {
    zolsdk::String name;
    int64_t read = -1, written = -1; // -1: not counted
    zolsdk::String failure;          // empty when the table came across
};

// Recreates `name` of `source` in `target` and copies its rows. Tables with
// binary columns take the road of bound parameters (the text road carries
// no bytes). Progress and a line per table go to `out`; a failure is caught
// and reported, not raised.
TableReport CopyTable(const zolsdk::Ref<zolsdk::DbCatalog>& source, const zolsdk::Ref<zolsdk::DbTables>& tables,
                      const zolsdk::Ref<zolsdk::DbCatalog>& target, const zolsdk::String& name, bool schemaOnly,
                      std::ostream& out);

// Shows import progress of `target` on `out`, from now on.
void ShowProgress(const zolsdk::Ref<zolsdk::DbCatalog>& target, std::ostream& out);

// The report of a run, one line a table; the number of tables that failed
// or whose counts differ.
int PrintReport(const std::vector<TableReport>& reports, bool schemaOnly, std::ostream& out);

// "0x8004F001 Failed to connect ..." for a person.
zolsdk::String Describe(const zolsdk::DbError& e);

} // namespace zol
