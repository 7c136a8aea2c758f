// zol migrate: recreate each table of one catalog in another and copy its
// rows, with progress on long tables and a report per table at the end.
#include <iostream>

#include "commands.hpp"
#include "table_copy.hpp"
#include "zolsdk/zolsdk.hpp"

using namespace zolsdk;

namespace zol {

int MigrateCommand(const Args& args, std::ostream& out) {
    std::string from, to;
    std::vector<String> only;
    bool schemaOnly = false;
    for (size_t i = 0; i < args.size(); ++i) {
        const std::string& a = args[i];
        bool hasValue = i + 1 < args.size();
        if (a == "--from" && hasValue) from = args[++i];
        else if (a == "--to" && hasValue) to = args[++i];
        else if (a == "--table" && hasValue) only.push_back(FromUtf8(args[++i]));
        else if (a == "--schema-only") schemaOnly = true;
        else {
            std::cerr << "zol migrate: unexpected argument '" << a << "'\n";
            return Usage(std::cerr, 2);
        }
    }
    if (from.empty() || to.empty()) {
        std::cerr << "zol migrate: --from and --to are required\n";
        return Usage(std::cerr, 2);
    }

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

} // namespace zol
