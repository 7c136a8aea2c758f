#include "catalog/engines.hpp"

namespace zolsdk {

Ref<IDbSqlBuilder> NewSqlBuilder(int32_t dbTypeId) {
    const Engine* engine = EngineById(dbTypeId);
    return engine ? engine->newSqlBuilder() : nullptr;
}

} // namespace zolsdk
