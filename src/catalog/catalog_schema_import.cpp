#include "support/string_builder.hpp"
#include "zolsdk/catalog/catalog.hpp"
#include "zolsdk/dialects/sql_builder.hpp"
#include "zolsdk/readers/reader.hpp"
#include "zolsdk/schema/column.hpp"
#include "zolsdk/schema/index.hpp"
#include "zolsdk/schema/table.hpp"
#include "zolsdk/sessions/session.hpp"
#include "platform/failure_chain.hpp"

namespace zolsdk {

namespace {
// "name<,name>,..." with ">" for a descending column and "<" for any other.
String IndexColumnList(const Ref<DbIndex>& index) {
    String list;
    for (auto col : index->Columns()) {
        int32_t order = col->SortOrder();
        list += u"," + col->ColumnName() + (order != 0 && order != 1 ? u">" : u"<");
    }
    if (!list.empty()) list.erase(0, 1);
    return list;
}
} // namespace

bool DbCatalog::ImportTable(const Ref<DbTable>& poTable) {
    ZOL_ROUTINE(u"DbCatalog:ImportTable Ln ");
    try {
        ZOL_LN; Ref<IDbSqlBuilder> builder = m_oSession->DbSqlBuilder();
        ZOL_LN; Ref<DbColumns> columns = poTable->Columns();
        ZOL_LN; String columnRows = columns->GetString(u",", u";");
        String indexRows;
        ZOL_LN;
        if (m_oSession->IsFeatureSupported(u"create_index_in_create_table")) {
            CStringBuilder sb;
            ZOL_LN;
            for (auto index : poTable->Indexes()) {
                ZOL_LN; sb.Append(u";").Append(index->GetString(u",")).Append(u"|").Append(IndexColumnList(index));
            }
            if (sb.Length() > 0) sb.Remove(0, 1);
            indexRows = sb.ToString();
        }
        ZOL_LN; String sql = builder->CreateTableSql(poTable->TableName(), columnRows, indexRows);
        ZOL_LN; bool result = m_oSession->ExecuteNoQuery(sql) >= 1;
        ZOL_LN;
        if (!m_oSession->IsFeatureSupported(u"create_index_in_create_table")) {
            ZOL_LN; Ref<DbIndexes> indexes = poTable->Indexes();
            for (auto index : indexes) {
                ZOL_LN; String list = IndexColumnList(index);
                if (index->PrimaryKey()) {
                    // A key cannot stand on a nullable column: make it not null first.
                    for (auto col : index->Columns()) {
                        ZOL_LN; Ref<DbColumn> c = columns->Item(Variant(col->ColumnName()));
                        if (!c || c->IsNullable() != -1) continue;
                        String row = c->GetString(u",");
                        row = row.substr(0, row.rfind(u',') + 1) + u"0";
                        ZOL_LN; String alter = builder->AlterColumnSql(poTable->TableName(), row);
                        ZOL_LN; result = m_oSession->ExecuteNoQuery(alter) >= 1;
                    }
                }
                int32_t mask = (index->PrimaryKey() ? 1 : 0) + (index->Unique() ? 2 : 0);
                ZOL_LN; String create = builder->CreateIndexSql(index->IndexName(), poTable->TableName(), list, mask);
                ZOL_LN; result = m_oSession->ExecuteNoQuery(create) >= 1;
            }
        }
        if (result) {
            // A later Tables() on this catalog sees the new table.
            ZOL_LN; m_oSession->DbReader()->Refresh();
        }
        return result;
    } ZOL_RERAISE
}

bool DbCatalog::ImportColumns(const Ref<DbColumns>&) { return false; }
bool DbCatalog::ImportIndex(const Ref<DbIndexes>&) { return false; }

} // namespace zolsdk
