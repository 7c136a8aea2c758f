#pragma once
// The one table of types on this road: what kind of value a source column
// holds, and the column type each target gives that kind.
#include "zolsdk/transfer/transfer.hpp"

namespace zolsdk::transfer {

// The kind of a source column from its type number, group and the source
// engine's own type text ("int(10) unsigned", "year"), when there is one.
Kind KindOf(int32_t adoType, int32_t group, StringView native, int32_t length);

// Fills column.targetType for `target`, and adds to `changes` what the
// target cannot hold as the source does.
void MapType(Engine target, ColumnPlan& column, std::vector<String>& changes);

// The type number a bound parameter of this kind carries.
int32_t ParameterType(Kind k);

bool IsLong(Kind k);
bool IsNumber(Kind k);
bool IsTextual(Kind k);

} // namespace zolsdk::transfer
