#include "table_copy.hpp"

#include <chrono>
#include <cstdio>

#include "commands.hpp"

using namespace zolsdk;

namespace zol {

namespace {

bool HasBinaryColumn(const Ref<DbTable>& table) {
    for (auto c : table->Columns())
        if (c->DataTypeGroup() == dtBinaryBLOB) return true;
    return false;
}

} // namespace

TableOutcome CopyTable(const Ref<DbCatalog>& source, const Ref<DbTables>& tables, const Ref<DbCatalog>& target,
                       const String& name, bool schemaOnly, Progress& progress) {
    TableOutcome r;
    r.name = ToUtf8(name);
    auto started = std::chrono::steady_clock::now();
    int line = progress.Begin(r.name);
    target->OnImportProgress([&progress, line](const String&, int64_t rows) { progress.Rows(line, rows); }, 50000);
    try {
        Ref<DbTable> table = tables->Item(Variant(name));
        if (!table) throw DbError(err::InvalidCall, u"zol", u"no table of that name in the source");
        target->ImportTable(table);
        if (!schemaOnly) {
            r.rowsRead = source->GetDataRowCount(name);
            // The source's connection stays open while its rows are read: a
            // large table is fetched in the background on that connection.
            source->BeginTransaction();
            try {
                Ref<DbDataSet> ds;
                if (HasBinaryColumn(table)) {
                    ds = Ref<DbDataSet>::New();
                    ds->Init(source, name, u"", u"");
                } else {
                    ds = source->ExportData(name);
                }
                target->ImportData(name, ds);
            } catch (...) {
                source->RollbackTransaction();
                throw;
            }
            source->EndTransaction();
            r.rowsWritten = target->GetDataRowCount(name);
        }
    } catch (const DbError& e) {
        r.failure = Describe(e);
    }
    target->OnImportProgress(nullptr);
    r.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();
    char done[64];
    if (!r.failure.empty())
        progress.End(line, "  " + r.name + ": failed: " + r.failure);
    else if (schemaOnly)
        progress.End(line, "  " + r.name + ": created");
    else {
        std::snprintf(done, sizeof done, " rows in %.1f s", r.seconds);
        progress.End(line, "  " + r.name + ": " + std::to_string(r.rowsWritten) + done);
    }
    return r;
}

} // namespace zol
