// zol migrate: by default the lossless road (zolsdk::transfer): the plan
// with every change the target forces, then each table made, filled and
// verified (several tables and key ranges at once with --jobs), the foreign
// keys last, and a report per table. The run keeps a record beside the
// target so that --resume picks a stopped run up where it left off.
// --compat takes the library's compatible road exactly as a library client would.
#include <unistd.h>

#include <chrono>
#include <iostream>
#include <map>

#include "commands.hpp"
#include "engines.hpp"
#include "progress.hpp"
#include "run_report.hpp"
#include "table_copy.hpp"
#include "transfer_output.hpp"
#include "zolsdk/transfer/parallel_run.hpp"
#include "zolsdk/transfer/transfer.hpp"
#include "zolsdk/zolsdk.hpp"

using namespace zolsdk;

namespace zol {

namespace {

struct MigrateOptions {
    std::string from, to, report, state;
    std::vector<std::string> tables;
    bool schemaOnly = false, replace = false, keepFailed = false, compat = false, resume = false;
    int jobs = 1;
    int lockTimeout = 30;
    int64_t rangeRows = 250000;
};

using Clock = std::chrono::steady_clock;
double Since(Clock::time_point t) { return std::chrono::duration<double>(Clock::now() - t).count(); }

RunOutcome NewOutcome(const MigrateOptions& o) {
    RunOutcome run;
    run.command = "migrate";
    run.from = WithoutPassword(o.from);
    run.to = WithoutPassword(o.to);
    run.schemaOnly = o.schemaOnly;
    run.jobs = o.jobs;
    return run;
}

int Finish(RunOutcome& run, const MigrateOptions& o, Clock::time_point started, bool ok) {
    run.seconds = Since(started);
    if (!o.report.empty() && !WriteJsonFile(run, o.report, std::cerr)) return 1;
    return ok ? 0 : 1;
}

int CompatRoad(const MigrateOptions& o) {
    auto started = Clock::now();
    Ref<DbCatalog> source = OpenCatalog(o.from);
    Ref<DbCatalog> target = OpenCatalog(o.to);
    std::vector<String> names;
    if (o.tables.empty())
        for (auto t : source->Tables()) names.push_back(t->TableName());
    else
        for (const std::string& t : o.tables) names.push_back(FromUtf8(t));

    RunOutcome run = NewOutcome(o);
    {
        Progress progress(std::cout, Progress::ModeFor(STDOUT_FILENO));
        auto tables = source->Tables();
        for (const String& name : names)
            run.tables.push_back(CopyTable(source, tables, target, name, o.schemaOnly, progress));
    }
    std::cout << "\nreport:\n";
    int failures = PrintOutcome(run, std::cout);
    return Finish(run, o, started, failures == 0);
}

TableOutcome OutcomeOf(const transfer::TableResult& r, bool earlier) {
    TableOutcome t;
    t.name = ToUtf8(r.table);
    t.rowsRead = r.rowsRead;
    t.rowsWritten = r.rowsWritten;
    t.seconds = r.seconds;
    t.verified = r.outcome == transfer::Outcome::Verified;
    t.skipped = earlier;
    for (const String& c : r.changes) t.changes.push_back(ToUtf8(c));
    if (!r.Ok()) {
        t.failure = transfer::OutcomeName(r.outcome);
        if (!r.failure.empty()) t.failure += ": " + ToUtf8(r.failure);
        else if (!r.verification.firstDifference.empty())
            t.failure += ": first difference " + ToUtf8(r.verification.firstDifference);
    }
    return t;
}

std::string DoneLine(const transfer::TableResult& r, bool earlier) {
    std::string line = "  " + ToUtf8(r.table) + ": ";
    if (earlier) return line + "verified by an earlier run";
    line += transfer::OutcomeName(r.outcome);
    if (r.rowsWritten >= 0) line += ", " + std::to_string(r.rowsWritten) + " rows";
    char took[32];
    std::snprintf(took, sizeof took, " in %.1f s", r.seconds);
    line += took;
    if (!r.failure.empty()) line += " (" + ToUtf8(r.failure) + ")";
    return line;
}

int LosslessRoad(const MigrateOptions& o) {
    auto started = Clock::now();
    transfer::Options options;
    for (const std::string& t : o.tables) options.tables.push_back(FromUtf8(t));
    options.schemaOnly = o.schemaOnly;
    options.replace = o.replace;
    options.keepFailed = o.keepFailed;
    options.lockTimeoutSeconds = o.lockTimeout;

    transfer::Plan plan = transfer::MakePlan(FromUtf8(o.from), FromUtf8(o.to), options);
    PrintPlan(plan, std::cout);

    transfer::ParallelOptions parallel;
    parallel.jobs = o.jobs;
    parallel.rangeRows = o.rangeRows;
    parallel.splitAbove = o.rangeRows;
    parallel.resume = o.resume;
    parallel.stateFile = o.state.empty() ? transfer::DefaultStateFile(plan.to) : FromUtf8(o.state);
    std::cout << "record of this run: " << ToUtf8(parallel.stateFile) << (o.resume ? " (resuming)" : "") << "\n";

    RunOutcome run = NewOutcome(o);
    std::map<String, TableOutcome> outcomes;
    transfer::Report report;
    {
        Progress progress(std::cout, Progress::ModeFor(STDOUT_FILENO));
        std::map<String, int> lines; // guarded by the road: its callbacks come one at a time
        parallel.tableStarted = [&](const String& table, int64_t rows) {
            lines[table] = progress.Begin(ToUtf8(table), rows);
        };
        options.progress = [&](const transfer::Progress& p) {
            auto it = lines.find(p.table);
            if (it != lines.end()) progress.Rows(it->second, p.rows);
        };
        parallel.tableDone = [&](const transfer::TableResult& r, bool earlier) {
            outcomes[r.table] = OutcomeOf(r, earlier);
            auto it = lines.find(r.table);
            if (it != lines.end()) progress.End(it->second, DoneLine(r, earlier));
            else progress.Say(DoneLine(r, earlier));
        };
        report = transfer::RunParallel(plan, options, parallel);
    }
    for (const transfer::TableResult& r : report.tables) {
        auto it = outcomes.find(r.table);
        bool earlier = it != outcomes.end() && it->second.skipped;
        run.tables.push_back(OutcomeOf(r, earlier)); // with the changes foreign keys added
    }
    std::cout << "\nreport:\n" << ToUtf8(report.Text());
    if (!report.Ok())
        std::cout << "rerun with --resume" << (o.state.empty() ? "" : " --state " + o.state)
                  << " to copy only what did not arrive\n";
    return Finish(run, o, started, report.Ok());
}

} // namespace

Command AddMigrateCommand(CLI::App& zol) {
    auto o = std::make_shared<MigrateOptions>();
    CLI::App* app = zol.add_subcommand(
        "migrate", "Recreate the tables of one catalog in another, with their keys and indexes, copy their rows and "
                   "verify them.");
    AddAttributeString(*app, "--from", o->from, "the catalog to copy from")->required();
    AddAttributeString(*app, "--to", o->to, "the catalog to copy into (it must exist: see zol create)")->required();
    app->add_option("--table", o->tables, "copy only this table (repeat for more)")->type_name("NAME");
    app->add_flag("--schema-only", o->schemaOnly, "recreate the tables without their rows");
    app->add_flag("--replace", o->replace, "drop and recreate tables that exist on the target");
    app->add_flag("--keep-failed", o->keepFailed, "leave a table that failed in place, half-made");
    auto* jobs = app->add_option("--jobs", o->jobs, "tables and key ranges copied at once, each on its own connections")
                     ->type_name("N")
                     ->check(CLI::Range(1, 64));
    auto* rangeRows = app->add_option("--range-rows", o->rangeRows,
                                      "a table of more rows is copied and verified in key ranges of about N rows "
                                      "(default 250000)")
                          ->type_name("N")
                          ->check(CLI::Range(int64_t{1000}, int64_t{1000000000}));
    auto* resume = app->add_flag("--resume", o->resume,
                                 "skip the tables and key ranges an earlier run recorded as verified, redo the rest");
    auto* state = app->add_option("--state", o->state,
                                  "the run's record (default: beside the target's file, or NAME@HOST.zol-state "
                                  "in this folder for a server)")
                      ->type_name("FILE");
    app->add_option("--lock-timeout", o->lockTimeout, "give up on a lock held by another session after SECONDS")
        ->type_name("SECONDS")
        ->check(CLI::Range(1, 86400));
    app->add_option("--report", o->report, "write the per-table report as JSON to FILE")->type_name("FILE");
    app->add_flag("--compat", o->compat, "take the library's compatible road (one table at a time, counts only)")
        ->excludes(jobs)
        ->excludes(rangeRows)
        ->excludes(resume)
        ->excludes(state);
    app->footer("Examples:\n  zol migrate --from \"" + std::string(Engines()[2].example) + "\" \\\n              --to \"" +
                Engines()[0].example + "\"\n" +
                "  zol migrate --from \"dbtype=mysql;dbname=shop;dblocation=db1;username=u;password=p\" \\\n"
                "              --to \"dbtype=mysql;dbname=shop;dblocation=db2;username=u;password=p\" --jobs 4\n"
                "  (after a failure, the same command with --resume copies only what did not arrive)\n\n" +
                EngineHelp());
    return {app, [o] { return o->compat ? CompatRoad(*o) : LosslessRoad(*o); }};
}

} // namespace zol
