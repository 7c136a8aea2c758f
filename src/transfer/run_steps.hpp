#pragma once
// The steps of a run beside the public ones: a table's secondary indexes
// built after its rows (on MariaDB: one sorted build instead of upkeep row
// by row), and a copy whose verification may run while the next copy does.
#include <functional>

#include "transfer/verify.hpp"
#include "zolsdk/transfer/transfer.hpp"

namespace zolsdk::transfer {

// CreateTable, with the indexes IndexAfterRows names left out when rows
// are to come (not with options.schemaOnly).
TableResult CreateForRows(const Plan& plan, const TablePlan& table, const Options& options);

// Adds the indexes CreateForRows left out (those an earlier run added are
// kept); the server's text when they could not be made, empty when done.
// `starting` is called just before the statement that builds them is sent.
String AddLateIndexes(const Plan& plan, const TablePlan& table, const Options& options,
                      const std::function<void()>& starting = {});
// Whether the table has indexes CreateForRows leaves for after its rows.
bool HasLateIndexes(Engine target, const TablePlan& table);

// CopyRows without the verification: the rows copied (outcome Created, or
// why not) and the source's sum of the rows as they went by, for VerifyCopy.
TableResult CopyUnverified(const Plan& plan, const TablePlan& table, const Options& options, const KeyRange& range,
                           TableSum& sent);
// Whether a copy's rows are to be verified: they moved, and options.verify.
bool ToVerify(const Plan& plan, const Options& options, const TableResult& copied);
// Verifies what CopyUnverified copied against its sum: reads the target.
void VerifyCopy(const Plan& plan, const TablePlan& table, const Options& options, const KeyRange& range,
                const TableSum& sent, TableResult& result);

} // namespace zolsdk::transfer
