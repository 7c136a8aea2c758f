#pragma once
// Cutting a large table into key ranges that can be copied and verified on
// their own, and clearing a range on the target before it is copied again.
#include <optional>

#include "transfer/endpoint.hpp"

namespace zolsdk::transfer {

// The column a table can be cut by: the first of its key columns, when the
// key is the primary key or a unique index starting with it, the column
// takes no Null, and it holds integers (or text, when both sides are MariaDB
// and so order text alike). None otherwise: the table goes whole.
std::optional<Kind> RangeKeyKind(const Plan& plan, const TablePlan& t);

// Inner bounds cutting the table into about `ranges` ranges of its key
// column on the source (`rows` rows in all): for integers evenly between the
// least and the greatest key, for text at every rows/ranges-th key in order.
// Fewer bounds when the keys do not allow so many.
std::vector<Variant> CutPoints(ado::Connection& source, Engine e, const TablePlan& t, Kind k, int64_t rows,
                               int32_t ranges);

// The ranges that the inner bounds make, the first and last open-ended.
std::vector<KeyRange> RangesBetween(const std::vector<Variant>& bounds);

// The number of rows of a table on an endpoint's connection.
int64_t CountRows(ado::Connection& c, Engine e, const TablePlan& t);
// The number of rows, or the server's estimate of it when that is well
// above `near` (MariaDB keeps one; a count reads the whole table): enough
// to choose whether and how to cut a table at `near` rows.
int64_t RowsAbout(ado::Connection& c, Engine e, const TablePlan& t, int64_t near);

// Deletes the table's rows of `range` on the target (all of them for the whole range).
void ClearRange(ado::Connection& target, Engine e, const TablePlan& t, const KeyRange& range);

} // namespace zolsdk::transfer
