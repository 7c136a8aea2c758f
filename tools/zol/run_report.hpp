#pragma once
// What a run did to each table, printed for a person at the end and written
// as JSON (--report FILE) for scripts and CI. The JSON form is stable: keys
// are only ever added.
#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

namespace zol {

struct TableOutcome {
    std::string name;
    int64_t rowsRead = -1, rowsWritten = -1; // -1: not counted
    double seconds = 0;
    bool verified = false;            // the target's rows were checked against the source's
    bool skipped = false;             // verified by an earlier run (--resume)
    std::vector<std::string> changes; // what the target could not hold as it was, and got instead
    std::string failure;              // empty when the table came across

    bool Whole(bool schemaOnly) const {
        return failure.empty() && (schemaOnly || skipped || rowsRead == rowsWritten);
    }
};

struct RunOutcome {
    std::string command, from, to; // attribute strings without their passwords
    bool schemaOnly = false;
    int jobs = 1;
    double seconds = 0;
    std::vector<TableOutcome> tables;

    int Failures() const;
};

// One line a table and a count; returns the number of tables not whole.
int PrintOutcome(const RunOutcome& run, std::ostream& out);

void WriteJson(const RunOutcome& run, std::ostream& out);

// Writes the JSON report to `path`; false (with a word on `err`) when the file cannot be written.
bool WriteJsonFile(const RunOutcome& run, const std::string& path, std::ostream& err);

} // namespace zol
