#pragma once
// The source's schema in this road's terms: tables, columns with their
// kinds, indexes with their directions, foreign keys. Read through the
// library's schema collections and type groups, with what they do not
// carry (auto-increment, the engine's own types, index kinds, foreign keys)
// asked of the engine itself.
#include "transfer/endpoint.hpp"

namespace zolsdk::transfer {

std::vector<String> SourceTableNames(const Endpoint& source);

// The table as the source holds it (no target types yet). `connection`
// is the source's own connection (none for XML).
TablePlan ReadTable(const Endpoint& source, ado::Connection* connection, const String& name);

} // namespace zolsdk::transfer
