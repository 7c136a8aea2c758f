#pragma once
// Schema rowsets of an Access file, with the OLE DB field names and ADO type
// numbers, built from the facts that the file's own catalog gives (through
// the Java half): tables, columns, indexes and relationships.
#include <cstdint>
#include <vector>

#include "zolsdk/platform/ado/recordset.hpp"
#include "zolsdk/platform/variant.hpp"

namespace zolsdk::ado::detail::jet {

using FactRows = std::vector<std::vector<Variant>>;

// A table of facts as the Java half sends it (row count, width, cells).
FactRows DecodeFacts(const std::vector<uint8_t>& bytes);

// Rows of (name, kind, created, modified).
Ref<Recordset> TablesRowset(const FactRows& tables, const std::vector<Variant>& criteria);
// Rows of (table, column, ordinal, type, length, precision, scale,
// autonumber, hyperlink, required, default).
Ref<Recordset> ColumnsRowset(const FactRows& columns, const std::vector<Variant>& criteria);
// Rows of (table, index, primary, unique, ignore nulls, ordinal, column, ascending).
Ref<Recordset> IndexesRowset(const FactRows& indexes, const std::vector<Variant>& criteria);
Ref<Recordset> PrimaryKeysRowset(const FactRows& indexes, const std::vector<Variant>& criteria);
// Rows of (name, pk table, pk column, fk table, fk column, ordinal, cascade
// updates, cascade deletes, set null on delete, pk index).
Ref<Recordset> ForeignKeysRowset(const FactRows& relationships, const std::vector<Variant>& criteria);

} // namespace zolsdk::ado::detail::jet
