#include "zolsdk/catalog/class_factory.hpp"

#include <functional>
#include <utility>

#include "zolsdk/catalog/catalog.hpp"
#include "zolsdk/data/blob.hpp"
#include "zolsdk/data/data_rows.hpp"
#include "zolsdk/mapping/column_map.hpp"
#include "zolsdk/mapping/map_expression.hpp"
#include "zolsdk/query/query.hpp"
#include "zolsdk/schema/column.hpp"
#include "zolsdk/schema/index.hpp"
#include "zolsdk/schema/table.hpp"
#include "zolsdk/support/encrypt.hpp"

namespace zolsdk {

namespace {
using Maker = std::function<Ref<Object>()>;

template <class T>
std::pair<const char16_t*, Maker> Entry(const char16_t* name) {
    return {name, [] { return Ref<Object>(Ref<T>::New()); }};
}

const std::vector<std::pair<const char16_t*, Maker>>& Registry() {
    static const std::vector<std::pair<const char16_t*, Maker>> r = {
        Entry<DbCatalog>(u"DbCatalog"),     Entry<DbTables>(u"DbTables"),
        Entry<DbTable>(u"DbTable"),         Entry<DbColumns>(u"DbColumns"),
        Entry<DbColumn>(u"DbColumn"),       Entry<DbIndexes>(u"DbIndexes"),
        Entry<DbIndex>(u"DbIndex"),         Entry<DbIdxColumns>(u"DbIdxColumns"),
        Entry<DbIdxColumn>(u"DbIdxColumn"), Entry<DbKeys>(u"DbKeys"),
        Entry<DbKey>(u"DbKey"),             Entry<DbBlob>(u"DbBlob"),
        Entry<DbDataSet>(u"DbDataSet"),     Entry<DbDataRow>(u"DbDataRow"),
        Entry<DbDataRows>(u"DbDataRows"),   Entry<DbDataColumns>(u"DbDataColumns"),
        Entry<DbDataColumn>(u"DbDataColumn"),
        Entry<DbQuery>(u"DbQuery"),         Entry<DbConditionExpression>(u"DbConditionExpression"),
        Entry<DbCondition>(u"DbCondition"), Entry<DbSortExpression>(u"DbSortExpression"),
        Entry<DbJoinExpression>(u"DbJoinExpression"), Entry<DbParameter>(u"DbParameter"),
        Entry<DbColumnMap>(u"DbColumnMap"), Entry<DbMap>(u"DbMap"),
        Entry<DbMapExpression>(u"DbMapExpression"), Entry<DbMapVariable>(u"DbMapVariable"),
        Entry<DbMapVariables>(u"DbMapVariables"), Entry<DbMapExpressions>(u"DbMapExpressions"),
        Entry<dbEncrypt>(u"dbEncrypt"),
    };
    return r;
}
} // namespace

Ref<Object> CreateObject(StringView className) {
    String name(className);
    // A qualified name ("zolsdk.DbCatalog") names the same class.
    if (auto dot = name.rfind(u'.'); dot != String::npos) name = name.substr(dot + 1);
    for (const auto& [n, make] : Registry())
        if (EqualsNoCase(n, name)) return make();
    throw DbError(429, u"zolsdk", u"ActiveX component can't create object: " + String(className));
}

std::vector<String> CreatableClassNames() {
    std::vector<String> names;
    for (const auto& e : Registry()) names.emplace_back(e.first);
    return names;
}

} // namespace zolsdk
