#include "dialects/access_sql_builder.hpp"
#include "dialects/mssql_sql_builder.hpp"
#include "dialects/mysql_sql_builder.hpp"
#include "dialects/xml_sql_builder.hpp"

namespace zolsdk {

Ref<IDbSqlBuilder> NewSqlBuilder(int32_t dbTypeId) {
    switch (dbTypeId) {
    case 0: return Ref<DbMsAccessSQLBuilder>::New();
    case 1: return Ref<DbMsSqlSQLBuilder>::New();
    case 2: return Ref<DbMySqlSQLBuilder>::New();
    case 3: return Ref<DbMsXMLSQLBuilder>::New();
    default: return nullptr;
    }
}

} // namespace zolsdk
