#include "zolsdk/schema/index.hpp"

#include "zolsdk/catalog/catalog.hpp"
#include "zolsdk/readers/reader.hpp"
#include "zolsdk/sessions/session.hpp"

namespace zolsdk {

void DbIndex::Init(const Ref<DbCatalog>& poDB, const String& psTableName, const String& psIndexName,
                   bool pbPrimaryKey, bool pbUnique) {
    m_oDB = poDB;
    m_sTableName = psTableName;
    m_sIndexName = psIndexName;
    m_bPrimaryKey = pbPrimaryKey;
    m_bUnique = pbUnique;
}

Ref<DbIdxColumns> DbIndex::Columns() {
    auto c = Ref<DbIdxColumns>::New();
    c->Init(m_oDB, m_sTableName, m_sIndexName);
    return c;
}

String DbIndex::GetString(const String& d) const {
    return m_sTableName + d + m_sIndexName + d + (m_bPrimaryKey ? u"-1" : u"0") + d + (m_bUnique ? u"-1" : u"0");
}

void DbIdxColumn::Init(const String& psTableName, const String& psIndexName, const String& psColumnName,
                       int32_t plPosition, int32_t peSortOrder) {
    m_sTableName = psTableName;
    m_sIndexName = psIndexName;
    m_sColumnName = psColumnName;
    m_lPosition = plPosition;
    m_eSortOrder = peSortOrder;
}

String DbIdxColumn::GetString(const String& d) const {
    return m_sTableName + d + m_sIndexName + d + m_sColumnName + d + IntText(m_lPosition) + d + IntText(m_eSortOrder);
}

DbIndexes::DbIndexes() : SchemaCollection(u"DbIndexes", u"index_name") {}

void DbIndexes::Init(const Ref<DbCatalog>& poDB, const String& psTableName) {
    m_oDB = poDB;
    m_oRS = poDB->Session()->DbReader()->Indexes(psTableName);
}

void DbIndexes::Fill(DbIndex& item) {
    ado::Recordset& rs = *m_oRS;
    // "Unique" finds the field `unique`: field names are case-blind.
    item.Init(m_oDB, rs.Value(u"table_name").ToString(), rs.Value(u"index_name").ToString(),
              rs.Value(u"primary_key").ToBoolean(), rs.Value(u"Unique").ToBoolean());
}

DbIdxColumns::DbIdxColumns() : SchemaCollection(u"DbIdxColumns", u"column_name") {}

void DbIdxColumns::Init(const Ref<DbCatalog>& poDB, const String& psTableName, const String& psIndexName) {
    m_oReader = poDB->Session()->DbReader();
    // The reader takes the index first, the table second.
    m_oRS = m_oReader->IndexColumns(psIndexName, psTableName);
}

void DbIdxColumns::Fill(DbIdxColumn& item) {
    ado::Recordset& rs = *m_oRS;
    item.Init(rs.Value(u"table_name").ToString(), rs.Value(u"index_name").ToString(),
              rs.Value(u"column_name").ToString(), rs.Value(u"ordinal_position").ToLong(),
              rs.Value(u"sort_order").ToLong());
}

} // namespace zolsdk
