#include "query/condition_builder.hpp"
#include "support/replace_text.hpp"
#include "zolsdk/catalog/catalog.hpp"
#include "zolsdk/data/data_rows.hpp"
#include "zolsdk/dialects/sql_builder.hpp"
#include "zolsdk/readers/reader.hpp"
#include "zolsdk/sessions/session.hpp"
#include "platform/failure_chain.hpp"

namespace zolsdk {

namespace {
// Up to this many rows a set is read at once; above, in the background.
constexpr int32_t kAsyncThreshold = 100000;
int32_t ModeFor(int32_t rows) { return rows > kAsyncThreshold ? 3 : 0; }
} // namespace

Ref<DbDataSet> DbCatalog::ExportData(const String& psTableName) {
    ZOL_ROUTINE(u"DbCatalog:ExportData Ln ");
    try {
        auto ds = Ref<DbDataSet>::New();
        ZOL_LN; int32_t rows = GetDataRowCount(psTableName);
        ZOL_LN; ds->Init(SelfRef<DbCatalog>(this), psTableName, u"", u"", ModeFor(rows));
        return ds;
    } ZOL_RERAISE
}

Ref<DbDataSet> DbCatalog::ExportDataByQuery(const Ref<DbQuery>& poQuery) {
    ZOL_ROUTINE(u"DbCatalog:ExportDataByQuery Ln ");
    try {
        ZOL_LN; Ref<IDbSqlBuilder> builder = m_oSession->DbSqlBuilder();
        String filter;
        {
            auto conditions = Ref<DbConditionBuilder>::New();
            ZOL_LN; filter = conditions->ToString(builder, poQuery->Criteria(), poQuery->Parameters(),
                                                  poQuery->TableName());
        }
        auto ds = Ref<DbDataSet>::New();
        // The count comes from the plain select with its first "*" made a COUNT.
        ZOL_LN; String sql = builder->SelectSql(poQuery->TableName(), u"", filter);
        int32_t once = 1;
        sql = ReplaceText(sql, u"*", u"COUNT(*)", 1, once, false);
        ZOL_LN; int32_t rows = Variant(m_oSession->ExecuteScalar(sql, u"0")).ToLong();
        ZOL_LN; ds->Init(SelfRef<DbCatalog>(this), poQuery->TableName(), poQuery->ColumnSet(), filter, ModeFor(rows));
        return ds;
    } ZOL_RERAISE
}

Variant DbCatalog::ClearData(const String& psTableName) {
    ZOL_ROUTINE(u"DbCatalog:ClearData Ln ");
    try {
        if (psTableName.empty()) {
            // No table: forget the cached schema, touch no data.
            ZOL_LN; m_oSession->DbReader()->Refresh();
        } else {
            ZOL_LN; String sql = m_oSession->DbSqlBuilder()->DeleteSql(psTableName);
            ZOL_LN; m_oSession->ExecuteNoQuery(sql);
        }
        return Variant(true);
    } ZOL_RERAISE
}

bool DbCatalog::PassThroughQuery(const String& psSQL) {
    ZOL_ROUTINE(u"DbCatalog:PassThroughQuery Ln ");
    try {
        ZOL_LN; return m_oSession->ExecuteNoQuery(psSQL) >= 1;
    } ZOL_RERAISE
}

} // namespace zolsdk
