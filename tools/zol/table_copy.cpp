#include "table_copy.hpp"

#include <chrono>
#include <cstdio>
#include <memory>

using namespace zolsdk;

namespace zol {

namespace {

using Clock = std::chrono::steady_clock;

double Seconds(Clock::time_point since) { return std::chrono::duration<double>(Clock::now() - since).count(); }

bool HasBinaryColumn(const Ref<DbTable>& table) {
    for (auto c : table->Columns())
        if (c->DataTypeGroup() == dtBinaryBLOB) return true;
    return false;
}

// The start of the table being copied, for the rate on the progress line.
std::shared_ptr<Clock::time_point> ProgressStart() {
    static auto start = std::make_shared<Clock::time_point>(Clock::now());
    return start;
}

} // namespace

String Describe(const DbError& e) {
    char num[16];
    std::snprintf(num, sizeof num, "0x%08X", static_cast<unsigned>(e.Number()));
    return Ascii(num) + u" " + e.Description();
}

void ShowProgress(const Ref<DbCatalog>& target, std::ostream& out) {
    auto start = ProgressStart();
    target->OnImportProgress(
        [start, &out](const String& table, int64_t rows) {
            double s = Seconds(*start);
            out << "\r  " << ToUtf8(table) << ": " << rows << " rows, "
                << static_cast<int64_t>(s > 0 ? static_cast<double>(rows) / s : 0.0) << " rows/s   " << std::flush;
        },
        50000);
}

TableReport CopyTable(const Ref<DbCatalog>& source, const Ref<DbTables>& tables, const Ref<DbCatalog>& target,
                      const String& name, bool schemaOnly, std::ostream& out) {
    TableReport r;
    r.name = name;
    *ProgressStart() = Clock::now();
    auto started = Clock::now();
    out << "table " << ToUtf8(name) << "\n";
    try {
        Ref<DbTable> table = tables->Item(Variant(name));
        if (!table) throw DbError(err::InvalidCall, u"zol", u"no table of that name in the source");
        target->ImportTable(table);
        if (!schemaOnly) {
            r.read = source->GetDataRowCount(name);
            // The source's connection stays open while its rows are read: a
            // large table is fetched in the background on that connection.
            source->BeginTransaction();
            try {
                Ref<DbDataSet> ds;
                if (HasBinaryColumn(table)) {
                    ds = Ref<DbDataSet>::New();
                    ds->Init(source, name, u"", u"");
                } else {
                    ds = source->ExportData(name);
                }
                target->ImportData(name, ds);
            } catch (...) {
                source->RollbackTransaction();
                throw;
            }
            source->EndTransaction();
            r.written = target->GetDataRowCount(name);
            out << "\r  " << ToUtf8(name) << ": " << r.written << " rows in " << Seconds(started) << " s"
                << std::string(12, ' ') << "\n";
        }
    } catch (const DbError& e) {
        r.failure = Describe(e);
        out << "\n  failed: " << ToUtf8(r.failure) << "\n";
    }
    return r;
}

int PrintReport(const std::vector<TableReport>& reports, bool schemaOnly, std::ostream& out) {
    int failures = 0;
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
    return failures;
}

} // namespace zol
