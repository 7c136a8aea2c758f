#pragma once
// Rows of an exported data set as an Arrow C stream of record batches.
#include <memory>

#include "arrow_c_abi.h"
#include "row_cursor.hpp"

namespace zolsdk::py {

// Fills `out` with a stream that owns the cursor. get_next walks the rows
// under the catalog's lock and needs no GIL; a failure of the library ends
// the stream with its text (number, description and chain) as the error.
void ExportArrowStream(std::unique_ptr<RowCursor> cursor, int64_t batchRows, ArrowArrayStream* out);

} // namespace zolsdk::py
