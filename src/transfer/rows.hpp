#pragma once
// Rows of one table streamed forward once from an engine, and written into
// another by its fastest exact road available: a
// client-fed bulk load on MariaDB (INSERTs of many rows when the server
// refuses those), bound INSERTs elsewhere.
#include <memory>

#include "transfer/endpoint.hpp"

namespace zolsdk::transfer {

// The SELECT of a table's planned columns on `e` (restricted to `range`
// on its first key column).
String SelectSql(Engine e, const TablePlan& t, const KeyRange& range);

// "INSERT INTO table (columns) VALUES " for the table's planned columns,
// quoted the engine's way; the caller adds the rows or the marks.
String InsertHead(Engine e, const TablePlan& t);

class RowReader {
public:
    RowReader(ado::Connection& c, Engine e, const TablePlan& t, const KeyRange& range);
    // Reads the next row into Row(); false at the end.
    bool Next();
    const std::vector<Variant>& Row() const { return row_; }

    ~RowReader();

private:
    class Prefetch;
    Ref<ado::Recordset> rs_;          // the rowset road (Access)
    std::unique_ptr<Prefetch> ahead_; // the row stream road (servers)
    std::vector<Variant> row_;
    bool started_ = false;
};

class RowWriter {
public:
    virtual ~RowWriter() = default;
    virtual void Add(const std::vector<Variant>& row) = 0;
    // Sends what is pending; the rows the engine took so far.
    virtual int64_t Flush() = 0;
    // Sends the rest and restores the session (identity inserts).
    virtual int64_t Finish() = 0;
};

std::unique_ptr<RowWriter> MakeWriter(ado::Connection& c, Engine target, const TablePlan& t, size_t batchBytes);

} // namespace zolsdk::transfer
