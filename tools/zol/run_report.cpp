#include "run_report.hpp"

#include <cstdio>
#include <fstream>

namespace zol {

namespace {

// A JSON string: UTF-8 passes through, quotes, backslashes and control
// characters are escaped.
std::string Quoted(const std::string& s) {
    std::string q = "\"";
    for (unsigned char c : s) {
        switch (c) {
        case '"': q += "\\\""; break;
        case '\\': q += "\\\\"; break;
        case '\n': q += "\\n"; break;
        case '\r': q += "\\r"; break;
        case '\t': q += "\\t"; break;
        default:
            if (c < 0x20) {
                char esc[8];
                std::snprintf(esc, sizeof esc, "\\u%04x", c);
                q += esc;
            } else {
                q += static_cast<char>(c);
            }
        }
    }
    return q + "\"";
}

std::string Number(double v) {
    char text[32];
    std::snprintf(text, sizeof text, "%.3f", v);
    return text;
}

std::string Count(int64_t v) { return v < 0 ? "null" : std::to_string(v); }

} // namespace

int RunOutcome::Failures() const {
    int failures = 0;
    for (const TableOutcome& t : tables) failures += t.Whole(schemaOnly) ? 0 : 1;
    return failures;
}

int PrintOutcome(const RunOutcome& run, std::ostream& out) {
    for (const TableOutcome& t : run.tables) {
        out << "  " << t.name << ": ";
        if (!t.failure.empty()) {
            out << "FAILED (" << t.failure << ")";
            if (t.rowsRead >= 0) out << ", rows read " << t.rowsRead;
        } else if (t.skipped) {
            out << "verified by an earlier run";
        } else if (run.schemaOnly) {
            out << "created";
        } else {
            out << "rows read " << t.rowsRead << ", rows written " << t.rowsWritten;
            if (t.rowsRead != t.rowsWritten) out << "  MISMATCH";
            else if (t.verified) out << ", verified";
        }
        out << "\n";
        for (const std::string& c : t.changes) out << "    changed: " << c << "\n";
    }
    int failures = run.Failures();
    out << run.tables.size() - static_cast<size_t>(failures) << " of " << run.tables.size() << " tables copied\n";
    return failures;
}

void WriteJson(const RunOutcome& run, std::ostream& out) {
    out << "{\n"
        << "  \"command\": " << Quoted(run.command) << ",\n"
        << "  \"from\": " << Quoted(run.from) << ",\n"
        << "  \"to\": " << Quoted(run.to) << ",\n"
        << "  \"schema_only\": " << (run.schemaOnly ? "true" : "false") << ",\n"
        << "  \"jobs\": " << run.jobs << ",\n"
        << "  \"seconds\": " << Number(run.seconds) << ",\n"
        << "  \"ok\": " << (run.Failures() == 0 ? "true" : "false") << ",\n"
        << "  \"tables\": [";
    for (size_t i = 0; i < run.tables.size(); ++i) {
        const TableOutcome& t = run.tables[i];
        out << (i ? "," : "") << "\n    {\"name\": " << Quoted(t.name) << ", \"rows_read\": " << Count(t.rowsRead)
            << ", \"rows\": " << Count(t.rowsWritten) << ", \"seconds\": " << Number(t.seconds)
            << ", \"verified\": " << (t.verified ? "true" : "false")
            << ", \"skipped\": " << (t.skipped ? "true" : "false") << ", \"changes_forced\": [";
        for (size_t c = 0; c < t.changes.size(); ++c) out << (c ? ", " : "") << Quoted(t.changes[c]);
        out << "], \"failure\": " << (t.failure.empty() ? "null" : Quoted(t.failure)) << "}";
    }
    out << (run.tables.empty() ? "]\n" : "\n  ]\n") << "}\n";
}

bool WriteJsonFile(const RunOutcome& run, const std::string& path, std::ostream& err) {
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    if (file) WriteJson(run, file);
    if (!file) {
        err << "zol: cannot write the report " << path << "\n";
        return false;
    }
    return true;
}

} // namespace zol
