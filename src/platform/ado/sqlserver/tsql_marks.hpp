#pragma once
// The "?" parameter marks of a Transact-SQL statement. Its quoting differs
// from the common rules: a doubled quote is the only escape in texts (a
// back-slash is an ordinary character), names are quoted with "..." or
// [...], block comments nest, and "#" begins a temporary table's name, not
// a comment.
#include <cstdint>

#include "zolsdk/platform/text.hpp"

namespace zolsdk::ado::detail {

int32_t CountTSqlParameterMarks(StringView sql);

} // namespace zolsdk::ado::detail
