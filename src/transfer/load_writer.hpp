#pragma once
// Rows into a MariaDB table by one bulk load fed from memory: the caller's
// thread turns rows into the load's text in chunks, a loader thread sends
// them while the next ones are made. At most a few chunks wait between the
// two, so memory stays bounded whatever the table's size.
#include <memory>

#include "transfer/rows.hpp"

namespace zolsdk::transfer {

// Whether the server takes client-fed loads (its local_infile is on).
bool TakesBulkLoads(ado::Connection& c);

// The LOAD DATA statement for the table's planned columns (binary ones
// arrive as hex digits and are un-hexed by the server).
String LoadDataSql(const TablePlan& t);

std::unique_ptr<RowWriter> MakeLoadWriter(ado::Connection& c, const TablePlan& t, size_t chunkBytes);

} // namespace zolsdk::transfer
