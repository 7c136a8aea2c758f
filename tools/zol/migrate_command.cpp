// zol migrate: by default the lossless road (zolsdk::transfer): the plan
// with every change the target forces, then each table made, filled and
// verified, the foreign keys last, and a report per table. --compat takes
// the library's compatible road exactly as a library client would.
#include <iostream>

#include "commands.hpp"
#include "table_copy.hpp"
#include "transfer_output.hpp"
#include "zolsdk/transfer/transfer.hpp"
#include "zolsdk/zolsdk.hpp"

using namespace zolsdk;

namespace zol {

namespace {

int CompatRoad(const std::string& from, const std::string& to, const std::vector<String>& only, bool schemaOnly,
               std::ostream& out) {
    Ref<DbCatalog> source = OpenCatalog(from);
    Ref<DbCatalog> target = OpenCatalog(to);
    std::vector<String> names;
    if (only.empty()) {
        for (auto t : source->Tables()) names.push_back(t->TableName());
    } else {
        names = only;
    }
    ShowProgress(target, out);
    std::vector<TableReport> reports;
    auto tables = source->Tables();
    for (const String& name : names) reports.push_back(CopyTable(source, tables, target, name, schemaOnly, out));
    out << "\n" << "report:\n";
    int failures = PrintReport(reports, schemaOnly, out);
    return failures ? 1 : 0;
}

} // namespace

int MigrateCommand(const Args& args, std::ostream& out) {
    std::string from, to;
    transfer::Options options;
    bool compat = false;
    for (size_t i = 0; i < args.size(); ++i) {
        const std::string& a = args[i];
        bool hasValue = i + 1 < args.size();
        if (a == "--from" && hasValue) from = args[++i];
        else if (a == "--to" && hasValue) to = args[++i];
        else if (a == "--table" && hasValue) options.tables.push_back(FromUtf8(args[++i]));
        else if (a == "--schema-only") options.schemaOnly = true;
        else if (a == "--replace") options.replace = true;
        else if (a == "--keep-failed") options.keepFailed = true;
        else if (a == "--compat") compat = true;
        else if (a == "--lock-timeout" && hasValue) options.lockTimeoutSeconds = std::stoi(args[++i]);
        else {
            std::cerr << "zol migrate: unexpected argument '" << a << "'\n";
            return Usage(std::cerr, 2);
        }
    }
    if (from.empty() || to.empty()) {
        std::cerr << "zol migrate: --from and --to are required\n";
        return Usage(std::cerr, 2);
    }
    if (compat) return CompatRoad(from, to, options.tables, options.schemaOnly, out);

    transfer::Plan plan = transfer::MakePlan(FromUtf8(from), FromUtf8(to), options);
    PrintPlan(plan, out);
    options.progress = ProgressPrinter(out);
    transfer::Report report = transfer::Run(plan, options);
    out << "\nreport:\n" << ToUtf8(report.Text());
    return report.Ok() ? 0 : 1;
}

} // namespace zol
