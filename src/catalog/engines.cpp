#include "catalog/engines.hpp"

#include "dialects/access_sql_builder.hpp"
#include "dialects/mssql_sql_builder.hpp"
#include "dialects/mysql_sql_builder.hpp"
#include "dialects/xml_sql_builder.hpp"
#include "sessions/session_factory.hpp"
#include "zolsdk/catalog/class_factory.hpp"

namespace zolsdk {

namespace {
template <class Builder>
Ref<IDbSqlBuilder> NewBuilder() { return Ref<Builder>::New(); }

constexpr Engine kEngines[] = {
    {u"msaccess", DbMsAccessDBId, NewDbMsAccessDB, NewBuilder<DbMsAccessSQLBuilder>},
    {u"mssql",    DbMsSqlDBId,    NewDbMsSqlDB,    NewBuilder<DbMsSqlSQLBuilder>},
    {u"mysql",    DbMySqlDBId,    NewDbMySqlDB,    NewBuilder<DbMySqlSQLBuilder>},
    {u"msxml",    DbMsXMLId,      NewDbMsXML,      NewBuilder<DbMsXMLSQLBuilder>},
};
} // namespace

std::span<const Engine> Engines() { return kEngines; }

const Engine* EngineByType(StringView dbtype) {
    for (const Engine& e : kEngines)
        if (EqualsNoCase(e.dbtype, dbtype)) return &e;
    return nullptr;
}

const Engine* EngineById(int32_t id) {
    for (const Engine& e : kEngines)
        if (e.id == id) return &e;
    return nullptr;
}

std::vector<String> EngineTypeNames() {
    std::vector<String> names;
    for (const Engine& e : kEngines) names.emplace_back(e.dbtype);
    return names;
}

} // namespace zolsdk
