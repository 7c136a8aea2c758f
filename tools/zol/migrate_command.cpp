// zol migrate: recreate each table of one catalog in another and copy its
// rows, with progress on long tables and a report per table at the end.
#include <chrono>
#include <cstdio>
#include <iostream>

#include "commands.hpp"
#include "zolsdk/zolsdk.hpp"

using namespace zolsdk;

namespace zol {

namespace {
struct TableReport {
    String name;
    int64_t read = -1, written = -1;
    String failure;
};

String Describe(const DbError& e) {
    char num[16];
    std::snprintf(num, sizeof num, "0x%08X", static_cast<unsigned>(e.Number()));
    return Ascii(num) + u" " + e.Description();
}

double Seconds(std::chrono::steady_clock::time_point since) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - since).count();
}
} // namespace

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

    auto source = Ref<DbCatalog>::New();
    source->Init(FromUtf8(from));
    auto target = Ref<DbCatalog>::New();
    target->Init(FromUtf8(to));

    std::vector<String> names;
    if (only.empty()) {
        for (auto t : source->Tables()) names.push_back(t->TableName());
    } else {
        names = only;
    }

    auto started = std::chrono::steady_clock::now();
    target->OnImportProgress(
        [&](const String& table, int64_t rows) {
            double s = Seconds(started);
            out << "\r  " << ToUtf8(table) << ": " << rows << " rows, "
                << static_cast<int64_t>(s > 0 ? static_cast<double>(rows) / s : 0.0) << " rows/s   " << std::flush;
        },
        50000);

    std::vector<TableReport> reports;
    auto tables = source->Tables();
    for (const String& name : names) {
        TableReport r;
        r.name = name;
        started = std::chrono::steady_clock::now();
        out << "table " << ToUtf8(name) << "\n";
        try {
            Ref<DbTable> table = tables->Item(Variant(name));
            if (!table) throw DbError(err::InvalidCall, u"zol", u"no table of that name in the source");
            target->ImportTable(table);
            if (!schemaOnly) {
                r.read = source->GetDataRowCount(name);
                Ref<DbDataSet> ds = source->ExportData(name);
                target->ImportData(name, ds);
                r.written = target->GetDataRowCount(name);
                out << "\r  " << ToUtf8(name) << ": " << r.written << " rows in " << Seconds(started) << " s"
                    << std::string(12, ' ') << "\n";
            }
        } catch (const DbError& e) {
            r.failure = Describe(e);
            out << "\n  failed: " << ToUtf8(r.failure) << "\n";
        }
        reports.push_back(std::move(r));
    }

    int failures = 0;
    out << "\n" << "report:\n";
    for (const TableReport& r : reports) {
        out << "  " << ToUtf8(r.name) << ": ";
        if (!r.failure.empty()) {
            ++failures;
            out << "FAILED (" << ToUtf8(r.failure) << ")";
            if (r.read >= 0) out << ", rows read " << r.read;
        } else if (schemaOnly) {
            out << "created";
        } else {
            out << "rows read " << r.read << ", rows written " << r.written;
            if (r.read != r.written) {
                ++failures;
                out << "  MISMATCH";
            }
        }
        out << "\n";
    }
    out << reports.size() - static_cast<size_t>(failures) << " of " << reports.size() << " tables copied\n";
    return failures ? 1 : 0;
}

} // namespace zol
