#pragma once
// One side of a migration: the catalog an attribute string names, its
// engine, and connections of this road's own on it.
#include "zolsdk/catalog/catalog.hpp"
#include "platform/ado/connection.hpp"
#include "zolsdk/transfer/transfer.hpp"

namespace zolsdk::transfer {

struct Endpoint {
    String attributes;
    Engine engine = Engine::MySql;
    Ref<DbCatalog> catalog;

    // dblocation\dbname of a file engine (Access, XML).
    String FilePath() const;
    String Attribute(StringView key) const;
};

// Raises the library's failure when the string names no engine.
Endpoint OpenEndpoint(const String& attributes);

// A new open connection to the endpoint's database, with bounded lock
// waits. Not for the XML engine (it has no connection).
Ref<ado::Connection> Connect(const Endpoint& e, int32_t lockTimeoutSeconds);

// Runs a statement that returns no rows.
void Run(ado::Connection& c, const String& sql);

const char16_t* EngineName(Engine e);

} // namespace zolsdk::transfer
