#pragma once
// The portable type group of a schema rowset's DATA_TYPE, for each engine's
// reader. Text types go by their length; MySQL's narrow integers and exact
// numbers by their width and scale.
#include <cstdint>

namespace zolsdk {

// A column of the type group table.
enum class GroupColumn { Access, MsSql, MySql };

// `size` is the column's length (text) or precision (numbers); `scale` is
// read by MySQL's exact numbers only.
int32_t TypeGroupOf(GroupColumn engine, int32_t dataType, int32_t size, int32_t scale = 0);

} // namespace zolsdk
