#include "zolsdk/schema/table.hpp"

#include "zolsdk/catalog/catalog.hpp"
#include "zolsdk/readers/reader.hpp"
#include "zolsdk/schema/column.hpp"
#include "zolsdk/schema/index.hpp"
#include "zolsdk/sessions/session.hpp"

namespace zolsdk {

void DbTable::Init(const Ref<DbCatalog>& poDB, const String& psTableName) {
    m_oDB = poDB;
    m_sTableName = psTableName;
}

Ref<DbColumns> DbTable::Columns() {
    auto c = Ref<DbColumns>::New();
    c->Init(m_oDB, m_sTableName);
    return c;
}

Ref<DbIndexes> DbTable::Indexes() {
    auto c = Ref<DbIndexes>::New();
    c->Init(m_oDB, m_sTableName);
    return c;
}

String DbTable::GetString(const String&) const { return m_sTableName; }

DbTables::DbTables() : SchemaCollection(u"DbTables", u"table_name") {}

void DbTables::Init(const Ref<DbCatalog>& poDB) {
    m_oDB = poDB;
    m_oRS = poDB->Session()->DbReader()->Tables();
}

void DbTables::Fill(DbTable& item) { item.Init(m_oDB, m_oRS->Value(u"table_name").ToString()); }

} // namespace zolsdk
