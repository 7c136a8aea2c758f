#pragma once
// Running a plan with several tables, and key ranges of large tables, at
// once, and picking a stopped run up where it left off.
//
//   transfer::ParallelOptions p;
//   p.jobs = 4;
//   p.stateFile = transfer::DefaultStateFile(plan.to);
//   p.resume = true;   // skip what an earlier run verified
//   transfer::Report report = transfer::RunParallel(plan, options, p);
//
// Each table, or key range, is copied and verified on connections of its
// own. A table above `splitAbove` rows whose primary key (or a unique index)
// starts with a non-null integer or text column is cut into key ranges by
// that column; others go whole. Foreign keys are added after every table
// has its rows. The state file records the tables made and the tables and
// key ranges verified, one line at a time as they are; a rerun with
// `resume` skips those and redoes the rest, clearing a half-copied range
// on the target first, so no row arrives twice. A run that ends with every
// table verified and every foreign key added removes its record.
#include <functional>

#include "zolsdk/export.hpp"
#include "zolsdk/transfer/transfer.hpp"

namespace zolsdk::transfer {

struct ParallelOptions {
    int32_t jobs = 1;           // tables and key ranges copied at once
    int64_t splitAbove = 400000; // tables with more rows go in key ranges ...
    int64_t rangeRows = 250000;  // ... of about this many rows (at least `jobs` of them)
    String stateFile;            // where the run records its progress; empty: nowhere
    bool resume = false;         // skip what the state file records as verified
    // A table starts (its rows in the source, the server's estimate for a
    // MariaDB table; -1 when not counted) and ends.
    // `earlier` is true when an earlier run had verified all of it.
    // Called from the workers' threads, one call at a time.
    std::function<void(const String& table, int64_t rows)> tableStarted;
    std::function<void(const TableResult& result, bool earlier)> tableDone;
};

// The state file kept beside the target when none is named: beside the file
// of a file engine, else in the working folder, named after the database.
ZOLSDK_API String DefaultStateFile(const String& toAttributes);

// Like Run, with `parallel.jobs` workers. options.progress hears each
// table's total rows so far, whatever ranges it is copied in. A state file
// that records a run between other catalogs is refused (DbError).
ZOLSDK_API Report RunParallel(const Plan& plan, const Options& options, const ParallelOptions& parallel);

} // namespace zolsdk::transfer
