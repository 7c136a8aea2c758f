// zol migrate: recreate each table of one catalog in another and copy its
// rows, with progress on long tables and a report per table at the end.
#include <unistd.h>

#include <chrono>
#include <iostream>

#include "commands.hpp"
#include "engines.hpp"
#include "progress.hpp"
#include "run_report.hpp"
#include "table_copy.hpp"
#include "zolsdk/zolsdk.hpp"

using namespace zolsdk;

namespace zol {

namespace {

struct MigrateOptions {
    std::string from, to;
    std::vector<std::string> tables;
    bool schemaOnly = false;
    std::string report;
};

int Migrate(const MigrateOptions& o) {
    auto started = std::chrono::steady_clock::now();
    Ref<DbCatalog> source = OpenCatalog(o.from);
    Ref<DbCatalog> target = OpenCatalog(o.to);

    std::vector<String> names;
    if (o.tables.empty())
        for (auto t : source->Tables()) names.push_back(t->TableName());
    else
        for (const std::string& t : o.tables) names.push_back(FromUtf8(t));

    RunOutcome run;
    run.command = "migrate";
    run.from = WithoutPassword(o.from);
    run.to = WithoutPassword(o.to);
    run.schemaOnly = o.schemaOnly;
    {
        Progress progress(std::cout, Progress::ModeFor(STDOUT_FILENO));
        auto tables = source->Tables();
        for (const String& name : names)
            run.tables.push_back(CopyTable(source, tables, target, name, o.schemaOnly, progress));
    }
    run.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();
    std::cout << "\nreport:\n";
    int failures = PrintOutcome(run, std::cout);
    if (!o.report.empty() && !WriteJsonFile(run, o.report, std::cerr)) return 1;
    return failures ? 1 : 0;
}

} // namespace

Command AddMigrateCommand(CLI::App& zol) {
    auto o = std::make_shared<MigrateOptions>();
    CLI::App* app = zol.add_subcommand(
        "migrate", "Recreate the tables of one catalog in another, with their keys and indexes, and copy their rows.");
    AddAttributeString(*app, "--from", o->from, "the catalog to copy from")->required();
    AddAttributeString(*app, "--to", o->to, "the catalog to copy into (it must exist: see zol create)")->required();
    app->add_option("--table", o->tables, "copy only this table (repeat for more)")->type_name("NAME");
    app->add_flag("--schema-only", o->schemaOnly, "recreate the tables without their rows");
    app->add_option("--report", o->report, "write the per-table report as JSON to FILE")->type_name("FILE");
    app->footer("Example:\n  zol migrate --from \"" + std::string(Engines()[2].example) + "\" \\\n              --to \"" +
                Engines()[0].example + "\"\n\n" + EngineHelp());
    return {app, [o] { return Migrate(*o); }};
}

} // namespace zol
