#pragma once
// The engines this library reaches, one row each: the dbtype an attribute
// string names, the engine number sessions carry, and the makers of the
// engine's session and SQL dialect. Adding an engine is adding a row here.
#include <span>

#include "zolsdk/dialects/sql_builder.hpp"
#include "zolsdk/sessions/session.hpp"

namespace zolsdk {

struct Engine {
    StringView dbtype;
    DbTypeId id;
    Ref<IDBSession> (*newSession)();
    Ref<IDbSqlBuilder> (*newSqlBuilder)();
};

std::span<const Engine> Engines();
// Case-blind; nothing for a name no row has.
const Engine* EngineByType(StringView dbtype);
const Engine* EngineById(int32_t id);

} // namespace zolsdk
