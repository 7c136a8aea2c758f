#include "catalog/import_writer.hpp"
#include "support/split.hpp"
#include "zolsdk/catalog/catalog.hpp"
#include "mapping/mapped_value_string.hpp"
#include "zolsdk/data/data_rows.hpp"
#include "zolsdk/mapping/column_map.hpp"
#include "platform/failure_chain.hpp"

namespace zolsdk {

namespace {
// The data set's columns into the writer; large-value columns get a
// parameter named after the column.
void AddDataSetColumns(ImportWriter& w, const Ref<DbDataSet>& ds) {
    for (auto col : ds->Columns()) {
        int32_t g = col->DataTypeGroup();
        w.AddColumn(g, col->ColumnName(), g == 10 || g == 2 ? col->ColumnName() : String());
    }
}

String RowRecord(const Ref<DbDataRow>& row, const String& mark) { return row->GetString(u",", mark); }

// Every row of the data set, in the way its fill mode calls for. Lines are
// marked on the caller's routine.
void WriteRows(ImportWriter& w, const String& table, const Ref<DbDataSet>& ds, const ImportWriter::RowText& text,
               const DbCatalog::ImportProgress& progress, int32_t every, RoutineMark& zol_mark_) {
    ZOL_LN; ImportWriter::Way way = w.ChooseWay(ds->Rows()->Mode());
    w.TrackLines(&zol_mark_);
    int64_t done = 0;
    try {
        for (auto row : ds->Rows()) {
            ZOL_LN; w.Write(way, row, text);
            if (progress && ++done % every == 0) {
                // The client's callback may use the target catalog: no batch
                // is in flight while it runs.
                w.Settle();
                progress(table, done);
            }
        }
        ZOL_LN; w.Flush();
        w.Settle();
    } catch (...) {
        // A batch sent before this failure failed first.
        w.Settle();
        throw;
    }
    if (progress) progress(table, done);
}

// Ends the bracket and passes the failure on with this routine's line; a
// failure of the rollback itself takes the first one's place.
[[noreturn]] void AbortImport(const RoutineMark& mark, const Ref<IDBSession>& session) {
    DbError e = CurrentFailure();
    e.AppendTrace(mark.literal, mark.line);
    if (session) session->RollbackTransaction();
    throw e;
}
} // namespace

bool DbCatalog::ImportData(const String& psTableName, const Ref<DbDataSet>& poDataSet) {
    ZOL_ROUTINE(u"DbCatalog:ImportData Ln ");
    try {
        ZOL_LN; m_oSession->BeginTransaction();
        ImportWriter w(m_oSession, psTableName);
        ZOL_LN; AddDataSetColumns(w, poDataSet);
        WriteRows(w, psTableName, poDataSet, RowRecord, m_progress, m_progressEvery, zol_mark_);
        ZOL_LN; m_oSession->EndTransaction();
        return true;
    } catch (...) {
        AbortImport(zol_mark_, m_oSession);
    }
}

bool DbCatalog::ImportDataEx(const String& psTableName, const Ref<DbDataSet>& poDataSet,
                             const Ref<DbColumnMap>& poColumnMap) {
    ZOL_ROUTINE(u"DbCatalog:ImportDataEx Ln ");
    try {
        ZOL_LN; m_oSession->BeginTransaction();
        ImportWriter w(m_oSession, psTableName);
        // The written columns are the maps' targets, in the map's order; a
        // parameter exists for a column map of a large-value target, named
        // after the data set's column that feeds it.
        for (auto map : poColumnMap) {
            ZOL_LN; int32_t g = map->MapFrom()->DataTypeGroup();
            String parameter;
            if (map->MapType() == mtColumn && (g == 10 || g == 2)) {
                ZOL_LN; parameter = map->MapTo().As<DbColumn>()->ColumnName();
            }
            ZOL_LN; w.AddColumn(g, map->MapFrom()->ColumnName(), parameter);
        }
        auto text = [&](const Ref<DbDataRow>& row, const String& mark) {
            return MappedValueString(row, poColumnMap, u",", mark);
        };
        WriteRows(w, psTableName, poDataSet, text, m_progress, m_progressEvery, zol_mark_);
        ZOL_LN; m_oSession->EndTransaction();
        return true;
    } catch (...) {
        AbortImport(zol_mark_, m_oSession);
    }
}

void DbCatalog::OnImportProgress(ImportProgress callback, int32_t everyRows) {
    m_progress = std::move(callback);
    m_progressEvery = everyRows > 0 ? everyRows : 10000;
}

bool DbCatalog::ImportDataRow(const String& psTableName, const Ref<DbDataSet>& poDataSet,
                              const Ref<DbDataRow>& poDataRow) {
    ZOL_ROUTINE(u"DbCatalog:ImportDataRow Ln ");
    try {
        ImportWriter w(m_oSession, psTableName);
        ZOL_LN; AddDataSetColumns(w, poDataSet);
        ZOL_LN; int32_t mode = poDataSet->Rows()->Mode();
        const Ref<DbDataRow>& row = poDataRow;
        if (mode == 3 || mode == 0) {
            // No size limit here: the text goes as it is.
            ZOL_LN; String sql = w.Builder().InsertSql(psTableName, w.ColumnSet(), row->GetString(u",", u"="), u"=");
            ZOL_LN; m_oSession->ExecuteNoQuery(sql);
        } else {
            ZOL_LN; String sql = w.Builder().InsertSql(psTableName, w.ColumnSet(), row->GetString(u",", u"?"), u"?");
            ZOL_LN; w.WriteBound(row, sql);
        }
        return true;
    } ZOL_RERAISE
}

bool DbCatalog::UpdateDataByAttribute(const String& psTableName, const Ref<DbDataSet>& poDataSet,
                                      const Ref<DbDataRow>& poDataRow, const String& psAttributes,
                                      const String& psAttributeValue) {
    ZOL_ROUTINE(u"DbCatalog:UpdateDataByAttribute Ln ");
    try {
        ZOL_LN; m_oSession->BeginTransaction();
        ImportWriter w(m_oSession, psTableName);
        ZOL_LN; AddDataSetColumns(w, poDataSet);
        // The matching columns as a typed column set of their own.
        ImportWriter keys(m_oSession, psTableName);
        for (const String& name : Split(psAttributes, u",")) {
            ZOL_LN; Ref<DbDataColumn> col = poDataSet->Columns()->Item(Variant(name));
            ZOL_LN; keys.AddColumn(col->DataTypeGroup(), col->ColumnName(), u"");
        }
        ZOL_LN; int32_t mode = poDataSet->Rows()->Mode();
        const Ref<DbDataRow>& row = poDataRow;
        String mark = mode == 3 || mode == 0 ? u"=" : u"?";
        ZOL_LN; String sql = w.Builder().UpdateByAttributeSql(psTableName, w.ColumnSet(), row->GetString(u",", mark),
                                                              mark, keys.ColumnSet(), psAttributeValue);
        if (mark == u"=") {
            ZOL_LN; m_oSession->ExecuteNoQuery(sql);
        } else {
            ZOL_LN; w.WriteBound(row, sql);
        }
        ZOL_LN; m_oSession->EndTransaction();
        return true;
    } catch (...) {
        AbortImport(zol_mark_, m_oSession);
    }
}

} // namespace zolsdk
