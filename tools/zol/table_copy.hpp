#pragma once
// The copy of one table from a catalog into another by the library's own
// classes, as zol migrate --compat and zol demo make it: the table recreated
// with its keys and indexes, then its rows (unless only the schema is wanted).
#include "progress.hpp"
#include "run_report.hpp"
#include "zolsdk/zolsdk.hpp"

namespace zol {

// Recreates `name` of `source` in `target` and copies its rows. Tables with
// binary columns take the road of bound parameters (the text road carries
// no bytes). A failure is caught and reported, not raised.
TableOutcome CopyTable(const zolsdk::Ref<zolsdk::DbCatalog>& source, const zolsdk::Ref<zolsdk::DbTables>& tables,
                       const zolsdk::Ref<zolsdk::DbCatalog>& target, const zolsdk::String& name, bool schemaOnly,
                       Progress& progress);

} // namespace zol
