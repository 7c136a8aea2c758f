#pragma once
// MariaDB to MariaDB with every column made with its source's own type:
// each value goes on in the binary form the source server sent it in (as
// a parameter of an INSERT run for arrays of rows), or as the text the
// target server reads back as the same value, never decoded into a library
// value and rendered again. Nothing is lost (fractions of a second, zero
// dates and the odd value included). Both sides of the verification hash
// the same texts.
#include <atomic>
#include <memory>

#include "transfer/verify.hpp"

namespace zolsdk::transfer {

// Whether a table goes by text from `source` to `target`: both MariaDB and
// every column of a type in the list of those whose text the server reads
// back unchanged, made on the target with the source's own type.
bool GoesByText(Engine source, Engine target, const TablePlan& t);

// The table's (or key range's) rows as the server's text, on a session
// whose time zone is UTC, so that a TIMESTAMP's text names one instant.
std::unique_ptr<ado::Connection::TextStream> OpenTextRows(ado::Connection& c, const TablePlan& t,
                                                          const KeyRange& range);

// Appends the row as one line of the bulk load's text, in the form
// AppendLoadText gives a row of values (binary columns as hex digits).
void AppendTextLine(const std::vector<Kind>& kinds, const ado::TextRow& row, std::string& out);

// The row hash of the text road: of its cells, each with its length, so
// that nothing needs escaping.
uint64_t TextRowHash(const ado::TextRow& row);

// Streams the rows of `range` from `source` into `target` (arrays of
// parameters, or a bulk load where the server takes no such arrays, or
// INSERTs of many rows where it refuses both); adds each row's hash
// to `sent`. `tick(rows read)` is asked every so often whether to go on.
// Answers the rows the target took.
int64_t CopyByText(ado::Connection& source, ado::Connection& target, const TablePlan& t, const KeyRange& range,
                   size_t batchBytes, TableSum& sent, const std::function<bool(int64_t)>& tick);

// Checksum on the text road.
TableSum TextChecksum(ado::Connection& c, const TablePlan& t, const KeyRange& range, const std::atomic<bool>* cancel);

} // namespace zolsdk::transfer
