#include "zolsdk/catalog/catalog.hpp"

#include "catalog/adaptor_factory.hpp"
#include "zolsdk/dialects/sql_builder.hpp"
#include "zolsdk/schema/table.hpp"
#include "zolsdk/sessions/session.hpp"
#include "platform/failure_chain.hpp"

namespace zolsdk {

void DbCatalog::Init(const String& psAttributes) {
    DbAdaptorFactory factory;
    m_oSession = factory.GetDbSessionAdaptor(psAttributes);
    m_oSession->Connect(psAttributes); // 91 when the dbtype named no engine
}

bool DbCatalog::Drop() {
    ZOL_ROUTINE(u"DbCatalog:Drop Ln ");
    try {
        ZOL_LN; m_oSession->DropDB();
        return true;
    } ZOL_RERAISE
}

bool DbCatalog::Create() {
    ZOL_ROUTINE(u"DbCatalog:Create Ln ");
    try {
        ZOL_LN; m_oSession->CreateDB();
        return true;
    } ZOL_RERAISE
}

String DbCatalog::Name() { return m_oSession->AttributeValue(u"dbname"); }
String DbCatalog::DBProperty(const String& psString) { return m_oSession->AttributeValue(psString); }
String DbCatalog::CatalogType() { return m_oSession->AttributeValue(u"dbtype"); }
String DbCatalog::Location() { return m_oSession->AttributeValue(u"dblocation"); }

Ref<DbTables> DbCatalog::Tables() {
    ZOL_ROUTINE(u"DbCatalog:Tables Ln ");
    try {
        auto tables = Ref<DbTables>::New();
        ZOL_LN; tables->Init(SelfRef<DbCatalog>(this));
        return tables;
    } ZOL_RERAISE
}

int32_t DbCatalog::GetDataRowCount(const String& psTableName) {
    Ref<IDbSqlBuilder> builder = m_oSession->DbSqlBuilder();
    String sql = builder->CountSql(psTableName);
    return Variant(m_oSession->ExecuteScalar(sql, u"0")).ToLong();
}

bool DbCatalog::IsFeatureSupported(const String& psFeature) { return m_oSession->IsFeatureSupported(psFeature); }

bool DbCatalog::IsFTSEnabled(const String& c, const String& t, const String& col) {
    return m_oSession->IsFTSEnabled(c, t, col);
}

bool DbCatalog::EnableFTS(const String& c, const String& t, const String& col) {
    return m_oSession->EnableFTS(c, t, col);
}

bool DbCatalog::DisableFTS(const String& c, const String& t, const String& col) {
    return m_oSession->DisableFTS(c, t, col);
}

void DbCatalog::BeginTransaction() {
    ZOL_ROUTINE(u"DbCatalog:BeginTransaction Ln ");
    try {
        ZOL_LN; m_oSession->BeginTransaction();
    } ZOL_RERAISE
}

void DbCatalog::EndTransaction() {
    ZOL_ROUTINE(u"DbCatalog:EndTransaction Ln ");
    try {
        ZOL_LN; m_oSession->EndTransaction();
    } ZOL_RERAISE
}

void DbCatalog::RollbackTransaction() {
    ZOL_ROUTINE(u"DbCatalog:RollbackTransaction Ln ");
    try {
        ZOL_LN; m_oSession->RollbackTransaction();
    } ZOL_RERAISE
}

} // namespace zolsdk
