// zol verify: compares the tables of two catalogs by row count and an
// order-independent checksum of their normalised values, without copying.
#include <chrono>
#include <iostream>

#include "commands.hpp"
#include "engines.hpp"
#include "run_report.hpp"
#include "zolsdk/transfer/transfer.hpp"

using namespace zolsdk;

namespace zol {

Command AddVerifyCommand(CLI::App& zol) {
    struct Options {
        std::string from, to, report;
        std::vector<std::string> tables;
        int lockTimeout = 30;
    };
    auto o = std::make_shared<Options>();
    CLI::App* app = zol.add_subcommand(
        "verify", "Compare the rows of two catalogs' tables by count and checksum, without copying anything.");
    AddAttributeString(*app, "--from", o->from, "the catalog copied from")->required();
    AddAttributeString(*app, "--to", o->to, "the catalog copied into")->required();
    app->add_option("--table", o->tables, "compare only this table (repeat for more)")->type_name("NAME");
    app->add_option("--lock-timeout", o->lockTimeout, "give up on a lock held by another session after SECONDS")
        ->type_name("SECONDS")
        ->check(CLI::Range(1, 86400));
    app->add_option("--report", o->report, "write the per-table report as JSON to FILE")->type_name("FILE");
    return {app, [o] {
                auto started = std::chrono::steady_clock::now();
                transfer::Options options;
                for (const std::string& t : o->tables) options.tables.push_back(FromUtf8(t));
                options.lockTimeoutSeconds = o->lockTimeout;
                transfer::Plan plan = transfer::MakePlan(FromUtf8(o->from), FromUtf8(o->to), options);
                transfer::Report report = transfer::VerifyAll(plan, options);
                std::cout << ToUtf8(report.Text());
                RunOutcome run;
                run.command = "verify";
                run.from = WithoutPassword(o->from);
                run.to = WithoutPassword(o->to);
                for (const transfer::TableResult& r : report.tables) {
                    TableOutcome t;
                    t.name = ToUtf8(r.table);
                    t.rowsRead = r.rowsRead;
                    t.rowsWritten = r.rowsWritten;
                    t.seconds = r.seconds;
                    t.verified = r.Ok();
                    if (!r.Ok()) t.failure = r.failure.empty() ? ToUtf8(r.verification.firstDifference) : ToUtf8(r.failure);
                    if (!r.Ok() && t.failure.empty()) t.failure = transfer::OutcomeName(r.outcome);
                    run.tables.push_back(t);
                }
                run.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();
                if (!o->report.empty() && !WriteJsonFile(run, o->report, std::cerr)) return 1;
                return report.Ok() ? 0 : 1;
            }};
}

} // namespace zol
