#pragma once
// The mapped counterpart of DbDataRow::GetString: one record of encoded
// values, one per map in the order of adding, for the statement builders.
#include "zolsdk/data/data_row.hpp"
#include "zolsdk/mapping/column_map.hpp"

namespace zolsdk {

// psBlobValueSubstibute stands in for the value of a large column; "="
// asks for text blobs inline. A map whose type is neither a column, a
// constant nor an expression repeats the value of the map before it.
String MappedValueString(const Ref<DbDataRow>& poDataRow, const Ref<DbColumnMap>& poColumnMap,
                         const String& psColumnDelimiter, const String& psBlobValueSubstibute);

} // namespace zolsdk
